// How rows of one table update rows of another.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"
#include "platform/export.h"

namespace luadui {

// Prepared once for the columns of two tables; see CDataTable::MergeRow.
//
// Columns are matched by name, the first one of `target` if several have it. Of several columns of `source` with the
// same name the last counts that says something; columns that `target` lacks are passed over.
//
// Threads: any, once made.
class TESSEL_API RowMerge {
  public:
    // A cell that is empty or says `nothing` says nothing.
    RowMerge(const CDataTable& target, const CDataTable& source, std::string_view nothing);

    // Whether it is for tables of these columns.
    bool Fits(const CDataTable& target, const CDataTable& source) const noexcept {
        return m_target.HasSameColumns(target) && m_source.HasSameColumns(source);
    }

  private:
    friend class RowBlock;
    static constexpr uint32_t kNowhere = UINT32_MAX;

    CDataTable m_target, m_source;  // columns only
    std::string m_nothing;
    bool m_hasDoubles;  // several cells of the source have the same name
    bool m_isSame;      // cell i goes to cell i
    std::vector<uint32_t>
        m_from;  // by cell of the target: the last cell of that name in the source, or kNowhere
    std::vector<uint32_t> m_before;  // by cell of the source: the one of the same name before it, or kNowhere
};

}  // namespace luadui
