#include "accounts/account_order.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "base/text.h"
#include "messaging/host_link.h"

namespace luadui {
namespace {

bool TakeEntry(std::string_view entry, AccountNumbers& numbers) {
    const size_t equals = entry.rfind('=');  // never the second byte of a character
    if (equals == std::string_view::npos || equals == 0) return false;
    const auto number = ParseOrderNumber(entry.substr(equals + 1));
    if (number) numbers.insert_or_assign(std::string(entry.substr(0, equals)), *number);
    return number.has_value();
}

}  // namespace

std::optional<int> ParseOrderNumber(std::string_view text) {
    int number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
    return number;
}

AccountNumbers ParseOrderText(std::string_view text) {
    AccountNumbers numbers;
    if (text.size() < 3) return numbers;
    const bool isWhole = text.ends_with(";]");
    auto entries = SplitText(text.substr(1, text.size() - (isWhole ? 3 : 1)), ';');
    if (!isWhole) {
        // A number that lost its end still reads as one.
        CCounters::Add("account_order_text_cut");
        entries.pop_back();
    }
    for (const std::string_view entry : entries) {
        if (!TakeEntry(entry, numbers)) CCounters::Add("account_order_entry_refused");
    }
    return numbers;
}

std::string OrderText(const AccountNumbers& numbers) {
    std::string text = "[";
    for (const auto& [key, number] : numbers) text += key + '=' + std::to_string(number) + ';';
    return text + ']';
}

std::optional<int> AccountOrder::Find(std::string_view key) const {
    const auto found = m_numbers.find(key);
    if (found == m_numbers.end()) return std::nullopt;
    return found->second;
}

bool AccountOrder::_put(std::string_view key, int number) {
    const auto [place, isNew] = m_numbers.try_emplace(std::string(key), number);
    return isNew || std::exchange(place->second, number) != number;
}

bool AccountOrder::Set(std::string_view key, int number) {
    const bool isChanged = _put(key, number);
    m_hasUnsaved = m_hasUnsaved || isChanged;
    return isChanged;
}

bool AccountOrder::Learn(std::string_view key, int number) {
    return !(m_hasUnsaved && m_numbers.contains(key)) && _put(key, number);
}

size_t AccountOrder::Append(const std::vector<std::string_view>& keys) {
    int largest = 0;
    for (const auto& [key, number] : m_numbers) largest = std::max(largest, number);
    const size_t before = m_numbers.size();
    for (const std::string_view key : keys) {
        const int next = largest == std::numeric_limits<int>::max() ? largest : largest + 1;
        if (m_numbers.try_emplace(std::string(key), next).second) largest = next;
    }
    return m_numbers.size() - before;
}

bool AccountOrder::Remove(std::string_view key) {
    const auto found = m_numbers.find(key);
    if (found == m_numbers.end()) return false;
    m_numbers.erase(found);
    return true;
}

std::vector<std::string_view> AccountOrder::Keys() const {
    std::vector<std::pair<int, std::string_view>> places;
    places.reserve(m_numbers.size());
    for (const auto& [key, number] : m_numbers) places.emplace_back(number, key);
    std::ranges::sort(places);
    std::vector<std::string_view> keys;
    keys.reserve(places.size());
    for (const auto& [number, key] : places) keys.push_back(key);
    return keys;
}

CDataTable AccountOrder::Table() const {
    CDataTable table;
    for (const std::string_view column : {"Index", "AccountKey", "AccountOrder"}) table.AddColumn(column);
    for (const std::string_view key : Keys()) {
        const int row = table.AppendRow();
        table.SetItemText(row, 0, std::to_string(row));
        table.SetItemText(row, 1, key);
        table.SetItemText(row, 2, std::to_string(m_numbers.find(key)->second));
    }
    return table;
}

std::atomic<bool> AccountOrder::s_wasRead = false;

AccountNumbers AccountOrder::ReadSavedOnce() {
    if (s_wasRead.exchange(true)) return {};
    return ParseOrderText(ReadConfig(std::string(kFile), std::string(kKey)));
}

void AccountOrder::Write() const { WriteConfig(std::string(kFile), std::string(kKey), OrderText(m_numbers)); }

}  // namespace luadui
