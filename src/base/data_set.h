// CDataSet: texts in ascending order (by bytes), each once.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "base/data_value.h"

namespace luadui {

class DataSetBody;

// Copies share their storage until one is written; for threads and attachment see base/shared_value.h.
class TESSEL_API CDataSet : public SharedValue<DataSetBody> {
  public:
    using Texts = std::set<std::string, std::less<>>;
    using value_type = std::string;
    using const_iterator = Texts::const_iterator;

    // False when `text` was in the set already.
    bool Insert(std::string_view text);
    // False when `text` was not in the set.
    bool Remove(std::string_view text);
    bool Contains(std::string_view text) const;
    // The first text that is not less than `text`; end() when there is none.
    const_iterator LowerBound(std::string_view text) const;
    size_t Size() const noexcept;
    bool IsEmpty() const noexcept { return Size() == 0; }
    void Clear();

    // Ascending. The set must not change meanwhile.
    const_iterator begin() const noexcept;
    const_iterator end() const noexcept;

  private:
    const Texts& _texts() const noexcept;
};

}  // namespace luadui
