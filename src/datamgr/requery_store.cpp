#include "datamgr/requery_store.h"

#include <utility>

#include "base/counters.h"

namespace luadui {
namespace {

// The names that an entry of `record` holds, a set or a single text.
size_t AddNames(const CUIData& record, std::string_view key, CDataSet& names) {
    const size_t before = names.Size();
    CDataSet set;
    if (record.GetData(key, set)) {
        for (const std::string& name : set) names.Insert(name);
    } else if (const std::string name = record.GetDataString(key); !name.empty()) {
        names.Insert(name);
    }
    return names.Size() - before;
}

}  // namespace

bool RequeryStore::Add(std::string_view queryKind, const CUIData& record) {
    if (m_names >= kMaxNames) {
        CCounters::Add("requery_refused");
        return false;
    }
    auto query = m_queries.find(queryKind);
    if (query == m_queries.end()) query = m_queries.emplace(queryKind, Query()).first;
    m_names += AddNames(record, "fund_token", query->second.tokens);
    m_names += AddNames(record, "updatecode", query->second.codes);
    return true;
}

void RequeryStore::Drop(std::string_view queryKind) {
    const auto query = m_queries.find(queryKind);
    if (query == m_queries.end()) return;
    m_names -= query->second.tokens.Size() + query->second.codes.Size();
    m_queries.erase(query);
}

std::vector<CUIData> RequeryStore::Take() {
    std::vector<CUIData> records;
    for (const auto& [kind, query] : std::exchange(m_queries, {})) {
        CUIData& record = records.emplace_back(kind);
        if (!query.tokens.IsEmpty()) record.SetData("fund_token", query.tokens);
        std::string codes;
        for (const std::string& code : query.codes) codes += (codes.empty() ? "" : ",") + code;
        if (!codes.empty()) record.SetData("stock_code", codes);
    }
    m_names = 0;
    return records;
}

}  // namespace luadui
