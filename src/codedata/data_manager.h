// CDataManager: the code list - which securities there are, under which code, name and market.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/export.h"

namespace luadui {

// The list is empty until a loader fills it; every lookup then answers as for an unknown security.
//
// Threads: any.
class LUADUI_API CDataManager {
  public:
    static CDataManager& Instance();

    // The host's word that its code list changed.
    void Update_CodeList(uint16_t reason, uint32_t market, uint32_t first, uint32_t last);
    // Loads the list in the background from the script or file at `path`.
    void InitKeyFairy(const std::string& path);
    // How many entries the keyboard wizard's table holds.
    size_t KeyFairyCount() const;

    // The short name of a security; empty when there is none with this code in this market.
    std::wstring GetZqmcFromFairy(const std::wstring& code, const std::wstring& market) const;
    // The market id of the security with this code and short name; empty when there is none.
    std::wstring GetMarketByCodeAndZQMC(const std::wstring& code, const std::wstring& name) const;
};

}  // namespace luadui
