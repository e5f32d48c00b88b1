// Where local factories find what they work on, and how they read what a page asks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/data_set.h"
#include "base/ui_data.h"
#include "datamgr/list_store.h"
#include "trade/decimal.h"

namespace luadui {

class CUIDataManager;

// The lists among which that of `kind` is to be found: for a page and a common kind those of the common data
// manager, unless the page has that list itself.
ListStore& StoreOf(CUIDataManager& manager, std::string_view kind);

// The manager's shared record of that name, else that of the common data.
bool FindShared(CUIDataManager& manager, const std::string& name, CUIData& record);

// The accounts that the record asks for: the set "fund_token", or the one that it names; empty when there is none.
CDataSet AccountsOf(const CUIData& request);

// A number that a page gives as text, integer or double. None when it is absent or no number.
std::optional<Decimal> NumberOf(const ValueView& value);
inline std::optional<Decimal> NumberOf(const CUIData& record, DataKey key) {
    return NumberOf(record.GetDataView(key));
}
// A price as quotes have it: zero where there is none (absent, empty, "-", "--"). Nothing for what is no number, or
// one below zero.
std::optional<Decimal> PriceOf(const ValueView& value);
// A name or code that a page gives as text or integer.
std::string NameOf(const CUIData& record, DataKey key);

}  // namespace luadui
