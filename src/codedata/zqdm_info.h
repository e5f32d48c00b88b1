// HelperZqdmInfo: what pages are told of one security of the code list.
#pragma once

#include <string>

#include "base/ui_data.h"

namespace luadui {

// Texts of code page 936. Threads: as for every value.
struct HelperZqdmInfo {
    std::string code, name, marketId, phonetic;

    // "code:market", the key under which pages find the record.
    std::string Key() const { return code + ':' + marketId; }
    // A record of type "code_info" with "stock_code", "stock_name", "stock_marketid" and "stock_phonetic".
    CUIData ToRecord() const;
};

}  // namespace luadui
