// The keyboard wizard, names and markets of securities: answers from the code book of the moment.
#include <algorithm>
#include <optional>

#include "base/counters.h"
#include "base/data_table.h"
#include "base/text.h"
#include "codedata/code_book.h"
#include "codedata/code_list.h"
#include "codedata/code_loader.h"
#include "codedata/data_manager.h"
#include "codedata/market_map.h"

namespace luadui {
namespace {

using Reading = CurrentBook::Reading;

std::wstring_view View(const CDuiString& text) {
    return {text.GetData(), static_cast<size_t>(text.GetLength())};
}

CDuiString Text(std::wstring_view text) { return {text.data(), static_cast<int>(text.size())}; }

std::string Narrow(const CDuiString& text) { return WideToGbk(View(text)); }

// Digits, capitals and Chinese characters have no other case.
bool MayHaveUpperCase(wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= 0x80 && c < 0x2E80) || static_cast<uint32_t>(c) >= 0xFF00;
}

// A query as the keys are written; copied only when it has to be.
class UpperQuery {
  public:
    explicit UpperQuery(const CDuiString& query) : m_view(View(query)) {
        if (std::none_of(m_view.begin(), m_view.end(), MayHaveUpperCase)) return;
        m_copy = query;
        m_copy.MakeUpper();
        m_view = View(m_copy);
    }
    UpperQuery(const UpperQuery&) = delete;
    UpperQuery& operator=(const UpperQuery&) = delete;
    operator std::wstring_view() const { return m_view; }

  private:
    CDuiString m_copy;
    std::wstring_view m_view;
};

bool IsTooLong(const CodeBook& book, const CDuiString& query) {
    return View(query).size() > book.Index().LongestKey();
}

std::optional<size_t> Search(const CodeBook& book, const CDuiString& query) {
    return IsTooLong(book, query) ? std::nullopt : book.Search(UpperQuery(query));
}

CDuiString MarketOf(const CDuiString& query) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = Search(*book, query);
    return entry ? Text(book->WideMarket(*entry)) : CDuiString();
}

// The first of the columns that the table has.
std::string_view Cell(const CDataTable& table, int row, std::initializer_list<const char*> columns) {
    for (const char* const column : columns) {
        if (const int at = table.FindColumn(column); at >= 0) return table.GetItemText(row, at);
    }
    return {};
}

// As a record of the list has it.
std::string Clean(std::string_view text, size_t longest) {
    const std::string whole = WideToGbk(GbkToWide(text));
    return std::string(CutAtCharacter(whole, longest));
}

// Servers tell the exchange where the list has the market.
std::string_view FundMarketOf(std::string_view market) {
    if (MarketNameOf(market) != kUnknownMarketName) return market;
    for (const std::string_view funds : {"20", "36"}) {
        if (IsMarketOfExchange(funds, market)) return funds;
    }
    return market;
}

}  // namespace

bool CDataManager::HasKeyFairy() {
    const CodeLoader& loader = CodeLoader::Instance();
    return loader.IsLoading() || loader.ReadNow()->Size() > 0;
}

bool CDataManager::InitKeyFairy(const std::string& path) { return CodeLoader::Instance().Load(path); }

void CDataManager::Update_CodeList(uint16_t, uint32_t, uint32_t, uint32_t) {
    CodeLoader::Instance().Reload();
}

int CDataManager::InitETFKeyFairy(const CDataTable& funds) {
    std::vector<CodeLoader::Addition> additions;
    for (int row = 0; row < funds.GetRowNumber(); ++row) {
        const std::string_view code = TrimText(Cell(funds, row, {"stock_code", "SecurityID"}));
        const std::string_view market =
            FundMarketOf(TrimText(Cell(funds, row, {"stock_marketid", "Market"})));
        if (!CodeList::IsCode(code) || !CodeList::IsMarket(market)) {
            CCounters::Add("code_list_row_unusable");
            continue;
        }
        const std::string_view name = Cell(funds, row, {"stock_name", "SecurityName"}),
                               phonetic = Cell(funds, row, {"stock_phonetic"});
        additions.push_back({std::string(code), Clean(name, CodeList::kMaxName), std::string(market),
                             Clean(phonetic, CodeList::kMaxPhonetic)});
    }
    return static_cast<int>(CodeLoader::Instance().Add(std::move(additions)));
}

int CDataManager::isFindCodeFromKeyFairy(const CDuiString& query) {
    const Reading book = CodeLoader::Instance().Read();
    return Search(*book, query) ? 1 : 0;
}

CDuiString CDataManager::GetMarketFromKeyFairy(const CDuiString& query) { return MarketOf(query); }

CDuiString CDataManager::GetMarketCodeFromKeyFairy(const CDuiString& query) { return MarketOf(query); }

CDuiString CDataManager::GetZqmcFromKeyFairy(const CDuiString& query, const CDuiString& market) {
    const Reading book = CodeLoader::Instance().Read();
    if (IsTooLong(*book, query)) return {};
    const auto entry = book->Search(UpperQuery(query), View(market));
    return entry ? Text(book->WideName(*entry)) : CDuiString();
}

CDuiString CDataManager::GetZqmcFromZqdmFairy(const CDuiString& code, CDuiString& market) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = book->Find(Narrow(code));
    if (!entry) return {};
    market = Text(book->WideMarket(*entry));
    return Text(book->WideName(*entry));
}

int CDataManager::Get_KeyFairy_Size() { return static_cast<int>(CodeLoader::Instance().Read()->Size()); }

std::vector<CodeCandidate> CDataManager::FindCandidates(const CDuiString& query, size_t max) {
    const Reading book = CodeLoader::Instance().ReadNow();
    if (IsTooLong(*book, query)) return {};
    return luadui::FindCandidates(*book, UpperQuery(query), max);
}

CDuiString CDataManager::GetZqmcFromFairy(const CDuiString& code, const CDuiString& market) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = book->Find(Narrow(code), Narrow(market));
    return entry ? Text(book->WideName(*entry)) : CDuiString();
}

CDuiString CDataManager::GetMarketByCodeAndZQMC(const CDuiString& code, const CDuiString& name) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = book->FindByName(Narrow(code), Narrow(name));
    return entry ? Text(book->WideMarket(*entry)) : CDuiString();
}

std::string CDataManager::SecurityName(std::string_view code, std::string_view market) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = book->Find(code, market);
    return entry ? std::string(book->At(*entry).name) : std::string();
}

std::string CDataManager::SecurityMarket(std::string_view code, std::string_view name) {
    const Reading book = CodeLoader::Instance().Read();
    const auto entry = book->FindByName(code, name);
    return entry ? std::string(book->At(*entry).market) : std::string();
}

}  // namespace luadui
