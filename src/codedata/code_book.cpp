#include "codedata/code_book.h"

#include <functional>

#include "codedata/market_map.h"

namespace luadui {

CodeBook::Entry CodeBook::At(size_t entry) const {
    const Texts& texts = m_entries[entry];
    const char* at = m_texts.data() + texts.at;
    return {{at, texts.code},
            {at + texts.code, texts.name},
            m_markets[m_index.Label(static_cast<uint32_t>(entry))].id,
            {at + texts.code + texts.name, texts.phonetic}};
}

std::wstring_view CodeBook::WideName(size_t entry) const {
    return {m_wideNames.data() + m_entries[entry].wideName, m_entries[entry].wideLength};
}

std::wstring_view CodeBook::WideMarket(size_t entry) const {
    return m_markets[m_index.Label(static_cast<uint32_t>(entry))].wideId;
}

std::wstring CodeBook::SearchKey(size_t entry) const {
    const std::u16string_view key = m_index.Key(static_cast<uint32_t>(entry));
    return {key.begin(), key.end()};
}

std::optional<size_t> CodeBook::Search(std::wstring_view query) const noexcept {
    const uint32_t key = m_index.FirstKey(m_index.Find(query));
    return key == SubstringIndex::kNone ? std::nullopt : std::optional<size_t>(key);
}

std::optional<size_t> CodeBook::Search(std::wstring_view query, std::wstring_view market) const noexcept {
    for (size_t i = 0; i < m_markets.size(); ++i) {
        if (m_markets[i].wideId != market) continue;
        const uint32_t key = m_index.FirstKey(m_index.Find(query), static_cast<uint8_t>(i));
        return key == SubstringIndex::kNone ? std::nullopt : std::optional<size_t>(key);
    }
    return std::nullopt;
}

std::span<const uint32_t> CodeBook::EntriesOf(std::string_view code) const noexcept {
    if (m_slots.empty()) return {};
    const size_t mask = m_slots.size() - 1;
    size_t slot = std::hash<std::string_view>()(code) & mask;
    while (m_slots[slot] != kFree && _code(m_byCode[m_slots[slot]]) != code) slot = (slot + 1) & mask;
    if (m_slots[slot] == kFree) return {};
    size_t end = m_slots[slot] + size_t{1};
    while (end < m_byCode.size() && _code(m_byCode[end]) == code) ++end;
    return std::span(m_byCode).subspan(m_slots[slot], end - m_slots[slot]);
}

std::optional<size_t> CodeBook::Find(std::string_view code) const noexcept {
    const auto entries = EntriesOf(code);
    return entries.empty() ? std::nullopt : std::optional<size_t>(entries.front());
}

std::optional<size_t> CodeBook::Find(std::string_view code, std::string_view market) const noexcept {
    const auto entries = EntriesOf(code);
    const auto idOf = [this](uint32_t entry) -> std::string_view {
        return m_markets[m_index.Label(entry)].id;
    };
    for (const uint32_t entry : entries) {
        if (idOf(entry) == market) return entry;
    }
    for (const uint32_t entry : entries) {
        if (IsMarketOfExchange(idOf(entry), market)) return entry;
    }
    return std::nullopt;
}

std::optional<size_t> CodeBook::FindByName(std::string_view code, std::string_view name) const noexcept {
    for (const uint32_t entry : EntriesOf(code)) {
        if (At(entry).name == name) return entry;
    }
    return std::nullopt;
}

size_t CodeBook::Bytes() const noexcept {
    return sizeof *this + m_texts.capacity() + m_wideNames.capacity() * sizeof(wchar_t) +
           m_entries.capacity() * sizeof(Texts) + m_markets.capacity() * sizeof(Market) + m_parts.capacity() +
           (m_byCode.capacity() + m_slots.capacity()) * sizeof(uint32_t) + m_index.Bytes();
}

}  // namespace luadui
