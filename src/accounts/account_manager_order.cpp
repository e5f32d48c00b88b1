// CAccountManager: the order of accounts, in all and in each group.
#include <algorithm>
#include <unordered_set>

#include "accounts/account_command_table.h"
#include "accounts/account_event_table.h"
#include "accounts/account_json.h"
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

using Numbers = std::vector<std::pair<std::string, int>>;

constexpr std::string_view kOrderNames[] = {"accountorder", "AccountOrder", "AllAccountOrder"};
constexpr std::string_view kGroupOrderNames[] = {"GrpAccountOrder", "AccountOrder"};
constexpr std::string_view kKeyNames[] = {"accountkey", "AccountKey", "accountid"};
constexpr std::string_view kNumberNames[] = {"order", "accountorder", "AccountOrder", "Index"};

template <class Source>
std::string FirstText(const Source& source, std::span<const std::string_view> names) {
    for (const std::string_view name : names) {
        if (std::string text = TextOf(source.Find(name)); !text.empty()) return text;
    }
    return {};
}

// False when it is no number for a name.
bool Add(const std::string& name, std::string_view number, Numbers& numbers) {
    const auto parsed = ParseOrderNumber(number);
    if (name.empty() || !parsed) return false;
    numbers.emplace_back(name, *parsed);
    return true;
}

// Elements are objects with name and number, or names in their order.
std::optional<Numbers> FromList(const CDataList& list) {
    Numbers numbers;
    for (const auto [index, value] : list) {
        CJsonObject entry;
        const bool isEntry = value.Get(entry);
        const std::string name = isEntry ? FirstText(entry, kKeyNames) : TextOf(value);
        const std::string number =
            isEntry ? FirstText(entry, kNumberNames) : std::to_string(numbers.size() + 1);
        if (!Add(name, number, numbers)) return std::nullopt;
    }
    return numbers;
}

std::optional<Numbers> FromTable(const CDataTable& table) {
    Numbers numbers;
    const int key = table.FindColumn("AccountKey"), order = table.FindColumn("AccountOrder");
    const int number = order >= 0 ? order : table.FindColumn("Index");
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        if (!Add(std::string(table.GetItemText(row, key)), table.GetItemText(row, number), numbers))
            return std::nullopt;
    }
    return numbers;
}

// The form of the settings file, of which JSON has no reading, is taken as well.
std::optional<Numbers> FromValue(const CUIData& values, const ValueView& value) {
    if (value.Kind() == kDataString && value.AsText().starts_with("[") && value.AsText().ends_with(";]")) {
        const AccountNumbers numbers = ParseOrderText(value.AsText());
        return Numbers(numbers.begin(), numbers.end());
    }
    if (const auto list = ListOf(value)) return FromList(*list);
    Numbers numbers;
    if (!Add(TextOf(values.GetDataView("AccountKey")), TextOf(value), numbers)) return std::nullopt;
    return numbers;
}

// What a command says of the order: a table, or the first of the arguments `names`. Nothing when that cannot be read, or
// is not there.
std::optional<Numbers> ReadNumbers(const CUIData& values, std::span<const std::string_view> names) {
    if (CDataTable table; values.GetData("Table", table)) return FromTable(table);
    for (const std::string_view name : names) {
        if (const ValueView value = values.GetDataView(name)) return FromValue(values, value);
    }
    return std::nullopt;
}

const AccountFailure& Unreadable() {
    static const auto* const failure = new AccountFailure(LocalFailure("解析账户排序失败！"));
    return *failure;
}

}  // namespace

// Numbers of accounts that are not here are passed over. False when it changed nothing.
bool CAccountManager::_setOrder(const Call& call, const Numbers& numbers) {
    AccountNumbers wishes;
    for (const auto& [key, number] : numbers) wishes.insert_or_assign(key, number);
    for (const std::string_view name : {"account_order_source", "ActOrderSource"}) {
        const std::string source = TextOf(call.values.GetDataView(name));
        if (source.empty()) continue;
        m_orderSource = source;
        break;
    }
    return m_accounts->SetOrder(wishes);
}

void CAccountManager::_modifyOrder(const Call& call) {
    const auto numbers = ReadNumbers(call.values, kOrderNames);
    if (!numbers) return _refuse(call.asker, Unreadable());
    const bool hasChanged = _setOrder(call, *numbers);
    if (hasChanged && !m_events.StartTimer(kOrderTimer, kOrderPeriod))
        CCounters::Add("account_timer_not_started");
    _done(call.asker);
}

void CAccountManager::_queryOrder(const Call& call) {
    CJsonObject data;
    data.Set("AllAccountOrder", _orderJson().GetArray("accountorder"));
    _answer(call.asker, data, m_accounts->Order().Table());
}

// Without an order of its own the command tells of the one that is.
void CAccountManager::_notifyOrderToPage(const Call& call) {
    const bool hasOrder = call.values.Has("Table") ||
                          std::ranges::any_of(kOrderNames, [&](auto name) { return call.values.Has(name); });
    if (hasOrder) {
        const auto numbers = ReadNumbers(call.values, kOrderNames);
        if (!numbers) return _refuse(call.asker, Unreadable());
        _setOrder(call, *numbers);
    }
    const int32_t self = GetHandle();
    _done(call.asker);
    if (_isAlive(self)) _tellOrder();
}

void CAccountManager::_notifyOrderToServer(const Call& call) {
    const int32_t self = GetHandle();
    if (m_accounts->Order().HasUnsaved()) m_accounts->SaveOrder();
    if (!_isAlive(self)) return;
    m_events.StopTimer(kOrderTimer);
    _done(call.asker);
}

// Those that the page does not name keep their order, behind the ones that it names.
void CAccountManager::_modifyOrderInGroup(const Call& call) {
    std::string groupId = TextOf(call.values.GetDataView("curGroupID"));
    if (groupId.empty()) groupId = TextOf(call.values.GetDataView("groupid"));
    const CAccountGroup* const group = m_groups->Find(groupId);
    auto numbers = ReadNumbers(call.values, kGroupOrderNames);
    if (!group || !numbers) return _refuse(call.asker, group ? Unreadable() : LocalFailure("账户组不存在！"));

    std::ranges::stable_sort(*numbers, {}, &Numbers::value_type::second);
    std::vector<std::string> named;
    for (auto& [name, number] : *numbers) {
        const CAccount* const account = m_accounts->Find(name);
        std::string id = account ? std::string(account->Get(AccountField::kAccountId)) : name;
        if (group->HasMember(id)) {
            named.push_back(std::move(id));
        } else {
            CCounters::Add("account_order_unknown");
        }
    }
    std::vector<std::string>& order = m_groupOrders[groupId];
    named.insert(named.end(), order.begin(), order.end());
    std::unordered_set<std::string> seen;
    std::erase_if(named, [&](const std::string& id) { return !seen.insert(id).second; });
    order = std::move(named);
    CJsonObject data;
    data.Set("curGroupID", groupId);
    data.Set("GrpAccountOrder", _membersText(*group));
    const int32_t self = GetHandle();
    _answer(call.asker, data);
    if (_isAlive(self)) _tellGroups();
}

// Members in the order that the pages gave them, the others in the order in which they were added.
std::string CAccountManager::_membersText(const CAccountGroup& group) const {
    const auto order = m_groupOrders.find(group.Info().id);
    if (order == m_groupOrders.end()) return group.MemberText();
    CDataList members;
    std::unordered_set<std::string_view> seen;
    const auto append = [&](const std::string& id) {
        if (group.HasMember(id) && seen.insert(id).second) members.Append(id);
    };
    std::ranges::for_each(order->second, append);
    std::ranges::for_each(group.MembersAsAdded(), append);
    return ArrayText(members);
}

CJsonObject CAccountManager::_orderJson() const {
    CDataList list;
    for (const std::string_view key : m_accounts->Order().Keys()) {
        CJsonObject entry;
        entry.Set("accountkey", key);
        entry.Set("order", std::to_string(m_accounts->Order().Find(key).value_or(0)));
        list.Append(entry);
    }
    CJsonObject data;
    data.Set("account_order_source", m_orderSource);
    data.Set("accountorder", list);
    return data;
}

void CAccountManager::_publishOrder(const Event&, const ResultEvent&) { _tellOrder(); }

void CAccountManager::_tellOrder() {
    const CJsonObject data = _orderJson();
    const int32_t self = GetHandle();
    if (!m_accounts->All().empty())
        m_accounts->Order().Write();  // before the first answer there is none to remember
    if (_isAlive(self)) _publish("ClientAccountOrderChanged", data.ToText());
}

void CAccountManager::_saveOrderSoon(const Event&, const ResultEvent&) {
    if (!m_events.StartTimer(kOrderTimer, kOrderPeriod)) CCounters::Add("account_timer_not_started");
}

}  // namespace luadui
