#include "datalists/row_index.h"

#include <utility>

#include "base/counters.h"
#include "base/data_value.h"

namespace luadui {
namespace {

constexpr size_t kMinSlots = 16;

// The hash of record keys: secret, so nobody outside can choose keys that collide.
uint32_t HashOf(std::string_view key) { return HashedKey(key).hash; }

}  // namespace

void RowIndex::Build(const CDataTable& table, int keyColumn) {
    Clear();
    const int rows = table.GetRowNumber();
    size_t slots = kMinSlots;
    while (slots / 4 * 3 <= static_cast<size_t>(rows)) slots *= 2;
    m_slots.resize(slots);
    m_keyColumn = keyColumn;
    for (int row = 0; row < rows; ++row) Add(table, row);
}

int RowIndex::Find(const CDataTable& table, std::string_view key) const {
    if (m_slots.empty() || key.empty()) return -1;
    return m_slots[_locate(table, key, HashOf(key))].row;
}

void RowIndex::Add(const CDataTable& table, int row) {
    m_rows = row + 1;
    const TextView key = table.GetItemText(row, m_keyColumn);
    if (key.empty()) return;
    if ((m_used + 1) > m_slots.size() / 4 * 3) _grow();
    const uint32_t hash = HashOf(key);
    Slot& slot = m_slots[_locate(table, key, hash)];
    if (slot.row >= 0) return CCounters::Add("list_row_key_doubled");
    slot = {hash, row};
    ++m_used;
}

void RowIndex::Clear() noexcept {
    m_slots = {};
    m_used = 0;
    m_keyColumn = -1;
    m_rows = 0;
}

size_t RowIndex::_locate(const CDataTable& table, std::string_view key, uint32_t hash) const {
    const size_t mask = m_slots.size() - 1;
    for (size_t at = hash & mask;; at = (at + 1) & mask) {
        const Slot& slot = m_slots[at];
        if (slot.row < 0) return at;
        if (slot.hash == hash && table.GetItemText(slot.row, m_keyColumn) == key) return at;
    }
}

void RowIndex::_grow() {
    const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(m_slots.size() * 2));
    const size_t mask = m_slots.size() - 1;
    for (const Slot& slot : old) {
        if (slot.row < 0) continue;
        size_t at = slot.hash & mask;
        while (m_slots[at].row >= 0) at = (at + 1) & mask;
        m_slots[at] = slot;
    }
}

}  // namespace luadui
