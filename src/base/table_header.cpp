#include "base/table_header.h"

#include <algorithm>
#include <cstring>

#include "base/key_hash.h"

namespace luadui {
namespace {

constexpr size_t kMinSlots = 16;

// A name behind its size, so that joined names start alike only if the names themselves are equal.
std::string Packed(std::string_view name) {
    const auto size = static_cast<uint32_t>(name.size());
    std::string packed(sizeof(size), '\0');
    std::memcpy(packed.data(), &size, sizeof(size));
    return packed.append(name);
}

}  // namespace

TableHeader::TableHeader(const TableHeader& other)
    : RefCounted(), m_columns(other.m_columns), m_names(other.m_names), m_slots(other.m_slots) {}

uint32_t TableHeader::Add(std::string_view name) {
    if (m_slots.size() < 2 * (m_columns.size() + 1)) _rebuildIndex(std::max(kMinSlots, 2 * m_slots.size()));
    m_columns.push_back({std::string(name), {}});
    try {
        m_names += Packed(name);
    } catch (...) {
        m_columns.pop_back();
        throw;
    }
    const uint32_t column = Columns() - 1;
    _index(column);
    return column;
}

int TableHeader::Find(std::string_view name) const noexcept {
    if (m_slots.empty()) return -1;
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = HashKey(name) & mask;; slot = (slot + 1) & mask) {
        const int32_t column = m_slots[slot];
        if (column < 0 || m_columns[column].name == name) return column;
    }
}

void TableHeader::SetProperty(uint32_t column, std::string_view property, std::string_view value) {
    if (property == kName) return _rename(column, value);
    auto& properties = m_columns[column].properties;
    for (auto& [key, text] : properties) {
        if (key != property) continue;
        text = value;
        return;
    }
    properties.emplace_back(std::string(property), std::string(value));
}

TextView TableHeader::Property(uint32_t column, std::string_view property) const noexcept {
    const auto view = [](const std::string& text) { return TextView(text.c_str(), text.size()); };
    if (property == kName) return view(m_columns[column].name);
    for (const auto& [key, text] : m_columns[column].properties) {
        if (key == property) return view(text);
    }
    return {};
}

void TableHeader::_index(uint32_t column) noexcept {
    const std::string& name = m_columns[column].name;
    const size_t mask = m_slots.size() - 1;
    size_t slot = HashKey(name) & mask;
    while (m_slots[slot] >= 0) {
        if (m_columns[m_slots[slot]].name == name) return;  // the first of equal names is the one to be found
        slot = (slot + 1) & mask;
    }
    m_slots[slot] = static_cast<int32_t>(column);
}

void TableHeader::_rename(uint32_t column, std::string_view name) {
    std::string names;
    for (uint32_t each = 0; each < Columns(); ++each) names += Packed(each == column ? name : Name(each));
    m_columns[column].name = name;
    m_names.swap(names);
    _rebuildIndex(m_slots.size());
}

void TableHeader::_rebuildIndex(size_t slots) {
    m_slots.assign(slots, -1);
    for (uint32_t column = 0; column < Columns(); ++column) _index(column);
}

MapPtr ColumnMap::Between(const TableHeader& target, const TableHeader& source, size_t& dropped) {
    dropped = 0;
    if (target.StartsWith(source)) return {};
    std::vector<uint32_t> from(target.Columns(), kNowhere);
    for (uint32_t column = 0; column < source.Columns(); ++column) {
        const std::string& name = source.Name(column);
        // Found at once unless names repeat.
        auto to = static_cast<uint32_t>(target.Find(name));
        while (to < from.size() && (from[to] != kNowhere || target.Name(to) != name)) ++to;
        if (to < from.size()) {
            from[to] = column;
        } else {
            ++dropped;
        }
    }
    return MapPtr::Adopt(new ColumnMap(std::move(from)));
}

MapPtr ColumnMap::Chain(const MapPtr& outer, const MapPtr& inner) {
    if (!outer) return inner;
    if (!inner) return outer;
    std::vector<uint32_t> from(outer->Size());
    for (size_t column = 0; column < from.size(); ++column) {
        const uint32_t middle = outer->From(column);
        from[column] = middle == kNowhere ? kNowhere : inner->From(middle);
    }
    return MapPtr::Adopt(new ColumnMap(std::move(from)));
}

}  // namespace luadui
