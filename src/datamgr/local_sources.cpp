#include "datamgr/local_sources.h"

#include "base/text.h"
#include "datamgr/ui_registry.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {

ListStore& StoreOf(CUIDataManager& manager, std::string_view kind) {
    const bool isElsewhere = manager.getRunType() == CUIDataManager::kTypePageData && IsCommonKind(kind) &&
                             !manager.Lists().Find(kind);
    return isElsewhere ? CUIStockDataManager::get_mutable_instance().CommonData().Lists() : manager.Lists();
}

bool FindShared(CUIDataManager& manager, const std::string& name, CUIData& record) {
    const auto& common = CUIStockDataManager::get_mutable_instance().CommonData().Lists();
    return manager.Lists().Shared().GetData(name, record) || common.Shared().GetData(name, record);
}

CDataSet AccountsOf(const CUIData& request) {
    CDataSet tokens;
    if (request.GetData("fund_token", tokens)) return tokens;
    const TextView token = request.GetDataText("fund_token");
    if (!token.empty()) tokens.Insert(token);
    return tokens;
}

std::optional<Decimal> NumberOf(const ValueView& value) {
    switch (value.Kind()) {
        case kDataString:
            return Decimal::Parse(value.AsText());
        case kDataInteger:
            return Decimal(value.AsLong());
        case kDataDouble:
            return Decimal::FromDouble(value.AsDouble());
        default:
            return std::nullopt;
    }
}

std::optional<Decimal> PriceOf(const ValueView& value) {
    if (!value) return Decimal();
    if (value.Kind() == kDataString) {
        const std::string_view text = TrimText(value.AsText());
        if (text.empty() || text == "-" || text == "--") return Decimal();
    }
    const auto price = NumberOf(value);
    return price && *price >= Decimal() ? price : std::nullopt;
}

std::string NameOf(const CUIData& record, DataKey key) {
    const ValueView value = record.GetDataView(key);
    return value.Kind() == kDataInteger ? LongText(value.AsLong()) : std::string(TrimText(value.AsText()));
}

}  // namespace luadui
