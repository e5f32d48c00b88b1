// What a page has to ask again instead of taking it from pushes.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_set.h"
#include "base/ui_data.h"

namespace luadui {

// One entry per data kind, with all accounts (for quotes: securities) whose data changed: however many pushes
// there were, each is asked once.
//
// Threads: the UI thread.
class RequeryStore {
  public:
    // Takes note of a published record; `queryKind` is the kind to ask for. False, counted as
    // "requery_refused", when that would go beyond kMaxNames names.
    bool Add(std::string_view queryKind, const CUIData& record);
    void Drop(std::string_view queryKind);

    // The queries, one record per kind with "fund_token" (a set) or "stock_code" (separated by commas), and
    // empties the store.
    std::vector<CUIData> Take();

    static constexpr size_t kMaxNames = 100'000;

  private:
    struct Query {
        CDataSet tokens;
        CDataSet codes;
    };
    std::map<std::string, Query, std::less<>> m_queries;
    size_t m_names = 0;
};

}  // namespace luadui
