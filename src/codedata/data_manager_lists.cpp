// CDataManager: the securities of a family of markets.
#include <string_view>
#include <vector>

#include "codedata/code_loader.h"
#include "codedata/data_manager.h"
#include "codedata/market_map.h"
#include "codedata/zqdm_info.h"
#include "trade/trade.h"

namespace luadui {
namespace {

// Which securities belong: those of these markets, ids between blanks, and where asked for only some types of
// them.
struct Family {
    std::string_view markets;  // empty: every one
    bool (*takes)(StockType type) = nullptr;
};

bool IsEtf(StockType type) {
    return type == StockType::kShanghaiEtf || type == StockType::kStarEtf || type == StockType::kShenzhenEtf;
}

constexpr Family kAll{};
constexpr Family kShares{" 17 18 33 34 145 146 "};
constexpr Family kEtfs{" 20 36 ", IsEtf};
constexpr Family kStockConnect{" 153 156 73 76 "};
constexpr Family kShanghaiConnect{" 153 156 "};
constexpr Family kShenzhenConnect{" 73 76 "};
constexpr Family kBonds{" 19 35 "};

int Collect(const Family& family, std::string_view code, CUIData& out) {
    std::vector<HelperZqdmInfo> found;  // the book is left before anything else is called
    {
        const auto book = CodeLoader::Instance().Read();
        for (const uint32_t entry : book->EntriesOf(code)) {
            const auto [own, name, market, phonetic] = book->At(entry);
            if (family.markets.empty() || IsMarketIn(family.markets, market))
                found.push_back(
                    {std::string(own), std::string(name), std::string(market), std::string(phonetic)});
        }
    }
    if (family.takes) {
        std::erase_if(found, [&](const HelperZqdmInfo& info) {
            return !family.takes(CTrade::GetStockType(info.code, info.marketId));
        });
    }
    for (const HelperZqdmInfo& info : found) out.SetData(info.Key(), info.ToRecord());
    return static_cast<int>(found.size());
}

}  // namespace

CUIData HelperZqdmInfo::ToRecord() const {
    CUIData record("code_info");
    record.SetData("stock_code", code);
    record.SetData("stock_name", name);
    record.SetData("stock_marketid", marketId);
    record.SetData("stock_phonetic", phonetic);
    return record;
}

int CDataManager::GetCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kAll, code, out);
}

int CDataManager::GetCodeInfoFromListBase(std::string_view code, CUIData& out) {
    return Collect(kShares, code, out);
}

int CDataManager::GetETFCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kEtfs, code, out);
}

int CDataManager::GetGgtCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kStockConnect, code, out);
}

int CDataManager::GetHGgtCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kShanghaiConnect, code, out);
}

int CDataManager::GetSGgtCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kShenzhenConnect, code, out);
}

int CDataManager::GetGzCodeInfoFromList(std::string_view code, CUIData& out) {
    return Collect(kBonds, code, out);
}

}  // namespace luadui
