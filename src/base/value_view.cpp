#include <cmath>
#include <limits>

#include "base/data_value.h"
#include "base/number_text.h"
#include "base/record_body.h"

namespace luadui {

DataKind ValueView::Kind() const noexcept {
    return m_entry ? static_cast<DataKind>(m_entry->kind) : kDataAbsent;
}

bool ValueView::_getInteger(int64_t& bits, bool& isUnsigned) const noexcept {
    switch (Kind()) {
        case kDataInteger:
        case kDataBoolean:
            bits = m_entry->integer;
            isUnsigned = m_entry->HasFlag(RecordEntry::kUnsigned);
            return true;
        case kDataDouble:
            return TruncateDouble(m_entry->real, bits, isUnsigned);
        case kDataString:
            return ReadIntegerText(m_body->Text(*m_entry), bits, isUnsigned);
        default:
            return false;
    }
}

bool ValueView::Get(double& out) const noexcept {
    switch (Kind()) {
        case kDataInteger:
        case kDataBoolean:
            out = m_entry->HasFlag(RecordEntry::kUnsigned)
                      ? static_cast<double>(static_cast<uint64_t>(m_entry->integer))
                      : static_cast<double>(m_entry->integer);
            return true;
        case kDataDouble:
            out = m_entry->real;
            return true;
        case kDataString:
            return ReadDoubleText(m_body->Text(*m_entry), out);
        default:
            return false;
    }
}

bool ValueView::Get(float& out) const noexcept {
    double value = 0;
    if (!Get(value)) return false;
    if (std::isfinite(value) && std::abs(value) > std::numeric_limits<float>::max()) return false;
    out = static_cast<float>(value);
    return true;
}

bool ValueView::Get(bool& out) const noexcept {
    const DataKind kind = Kind();
    if (kind != kDataBoolean && kind != kDataInteger) return false;
    out = m_entry->integer != 0;
    return true;
}

bool ValueView::Get(std::string_view& out) const noexcept {
    if (Kind() != kDataString) return false;
    out = m_body->Text(*m_entry);
    return true;
}

bool ValueView::Get(std::string& out) const {
    if (Kind() != kDataString) return false;
    out = std::string_view(m_body->Text(*m_entry));
    return true;
}

bool ValueView::_getHandle(DataKind kind, SharedHandle& out) const {
    if (Kind() != kind) return false;
    RecordBody::CopyTo(*m_entry, out);
    return true;
}

int64_t ValueView::AsLong() const noexcept {
    int64_t bits = 0;
    bool isUnsigned = false;
    return _getInteger(bits, isUnsigned) ? bits : 0;
}

double ValueView::AsDouble() const noexcept {
    double value = 0;
    Get(value);
    return value;
}

bool ValueView::AsBool() const noexcept {
    bool value = false;
    Get(value);
    return value;
}

TextView ValueView::AsText() const noexcept {
    return Kind() == kDataString ? m_body->Text(*m_entry) : TextView();
}

bool ValueView::IsShared() const noexcept {
    return m_entry && m_entry->HasFlag(RecordEntry::kCell) && !m_entry->IsOpen();
}

ValueIterator::Entry ValueIterator::operator*() const noexcept {
    return RecordBody::EntryAt(m_body, m_index);
}

ValueIterator& ValueIterator::operator++() noexcept {
    m_index = m_body->NextLive(m_index + 1);
    return *this;
}

}  // namespace luadui
