#include "page/security_search.h"

#include <chrono>
#include <initializer_list>
#include <string>

#include "base/text.h"
#include "codedata/data_manager.h"

namespace terminal {
namespace {

using luadui::CDataManager;
using luadui::CDataTable;
using luadui::CDuiString;
using luadui::CodeCandidate;

CDuiString Wide(std::string_view text) { return CDuiString(luadui::GbkToWide(text).c_str()); }
std::string Narrow(const CDuiString& text) { return luadui::WideToGbk(text.GetData()); }

const char* NameOf(luadui::CodeMatch match) {
    constexpr const char* kNames[] = {"code", "code...", "initials...", "name...", "inside"};
    return kNames[static_cast<size_t>(match)];
}

// The part of the candidate that the query matches.
std::string MatchedOf(const CodeCandidate& candidate) {
    const std::wstring fields[] = {luadui::GbkToWide(candidate.code), luadui::GbkToWide(candidate.name),
                                   luadui::GbkToWide(candidate.phonetic)};
    std::wstring text;
    for (size_t field = static_cast<size_t>(candidate.field); field < std::size(fields); ++field)
        text += fields[field];
    return candidate.start < text.size() ? luadui::WideToGbk(text.substr(candidate.start, candidate.length))
                                         : std::string();
}

void AddColumns(CDataTable& table, std::initializer_list<const char*> columns) {
    for (const char* column : columns) table.AddColumn(column);
}

void AppendRow(CDataTable& table, std::initializer_list<std::string_view> cells) {
    const int row = table.AppendRow();
    int col = 0;
    for (const std::string_view cell : cells) table.SetItemText(row, col++, cell);
}

void Search(std::string_view query, size_t max, SearchResult& result) {
    const CDuiString asked = Wide(query);
    const std::string market = Narrow(CDataManager::GetMarketFromKeyFairy(asked));
    const std::string name = Narrow(CDataManager::GetZqmcFromKeyFairy(asked, Wide(market)));
    CDuiString codeMarket;
    const std::string codeName = Narrow(CDataManager::GetZqmcFromZqdmFairy(asked, codeMarket));
    const auto began = std::chrono::steady_clock::now();
    const auto candidates = CDataManager::FindCandidates(asked, max);
    const auto took = std::chrono::steady_clock::now() - began;
    AppendRow(result.lookups,
              {query, CDataManager::isFindCodeFromKeyFairy(asked) == 1 ? "1" : "0", market, name, codeName,
               Narrow(codeMarket),
               std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(took).count())});
    for (const CodeCandidate& candidate : candidates)
        AppendRow(result.candidates, {query, candidate.code, candidate.name, candidate.market,
                                      candidate.phonetic, NameOf(candidate.match), MatchedOf(candidate)});
}

}  // namespace

SearchResult SearchSecurities(std::string_view queries, size_t max) {
    SearchResult result;
    AddColumns(result.candidates, {"query", "code", "name", "market", "phonetic", "match", "matched"});
    AddColumns(result.lookups,
               {"query", "found", "market", "name", "code_name", "code_market", "microseconds"});
    for (const std::string_view query : luadui::SplitText(queries, '|')) Search(query, max, result);
    return result;
}

}  // namespace terminal
