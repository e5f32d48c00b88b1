// CMutiInstCfg: the settings of the page for instructions over several accounts.
#pragma once

#include "base/ui_data.h"

namespace luadui {

// A record of type "mutiinst_config" with one text per setting, in the order in which they are read.
class CMutiInstCfg : public CUIData {
  public:
    // Every setting has its default; with `load` the user's settings file is asked (a synchronous call into
    // the host per setting), and what is missing or empty there keeps the default.
    explicit CMutiInstCfg(bool load);
    ~CMutiInstCfg() override;
    const char* ClassName() const override;
};

}  // namespace luadui
