// CDataList: values of any kind in order.
#pragma once

#include <cstddef>

#include "base/data_value.h"

namespace luadui {

// Elements are values: what is stored is a copy, and what is read is one. Copies of the list share their
// storage until one is written; for threads and attachment see base/shared_value.h. Indexes out of range are
// absent values.
class TESSEL_API CDataList : public SharedValue<RecordBody> {
  public:
    void Append(DataValue value);
    // Replaces an element; false when there is none at `index`.
    bool Set(size_t index, DataValue value);
    // Removes an element, the later ones move up; false when there is none at `index`. Costs a move of those
    // after it.
    bool Remove(size_t index);
    void Clear();
    size_t Size() const noexcept;
    bool IsEmpty() const noexcept { return Size() == 0; }

    ValueView At(size_t index) const noexcept;
    ValueView operator[](size_t index) const noexcept { return At(index); }
    template <class T>
    bool Get(size_t index, T& out) const {
        return At(index).Get(out);
    }

    // `for (auto [key, value] : list)`; the keys are empty. The list must not change meanwhile.
    ValueIterator begin() const noexcept;
    ValueIterator end() const noexcept;
};

}  // namespace luadui
