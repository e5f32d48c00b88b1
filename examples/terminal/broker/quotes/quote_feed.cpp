#include "broker/quotes/quote_feed.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "broker/answers.h"
#include "broker/quotes/quote_table.h"

namespace terminal {
namespace {

using luadui::CUIData;

enum QuoteRequest : int { kQuotes = 1051, kSingleQuote = 1055, kBondQuotes = 1058, kSubscribe = 1602 };

constexpr std::string_view kTopic = "hq", kBondTopic = "hq_zq";

bool IsBond(const Quote& quote) { return quote.security.market == "19" || quote.security.market == "35"; }

std::string FirstText(const CUIData& params, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (std::string text = params.GetDataString(name); !text.empty()) return text;
    return {};
}

QuoteTable EmptyTable(const CUIData& params) {
    const std::string items = params.GetDataString("DataItems");
    if (items.empty()) return {};
    std::vector<std::string> fields;
    for (const std::string_view item : luadui::SplitText(items, ',')) fields.emplace_back(item);
    return QuoteTable(fields);
}

}  // namespace

// The rows of one step, by topic.
class QuoteFeed::Pushes {
  public:
    void Append(const Quote& before, const Quote& quote, uint64_t variant) {
        (IsBond(quote) ? m_bonds : m_others).AppendChange(before, quote, variant);
    }
    std::vector<CUIData> Take() const {
        std::vector<CUIData> pushes;
        for (const auto& [topic, rows] : {std::pair(kTopic, &m_others), std::pair(kBondTopic, &m_bonds)})
            if (rows->Get().GetRowNumber() > 0) pushes.push_back(MakePush(topic, {}, rows->Get()));
        return pushes;
    }

  private:
    QuoteTable m_others, m_bonds;
};

QuoteFeed::QuoteFeed(const Exchange& exchange) : m_exchange(exchange) {
    std::vector<ListedSecurity> securities;
    for (const Security& security : exchange.Book().Securities())
        securities.push_back({security.code, security.market, security.name});
    List(std::move(securities));
}

void QuoteFeed::List(std::vector<ListedSecurity> securities) {
    m_board.SetTime(static_cast<int>(m_seconds));
    m_board.List(std::move(securities), m_exchange);
    m_subscribers.assign(m_board.Quotes().size(), 0);
    m_wanted.clear();
}

bool QuoteFeed::IsAsked(const CUIData& request) {
    const int64_t type = request.GetDataLong("REQTYPE");
    return type == kQuotes || type == kSingleQuote || type == kBondQuotes || type == kSubscribe;
}

bool QuoteFeed::Take(const CUIData& request, CUIData& answer) {
    CUIData params;
    request.GetData("Params", params);
    const std::vector<size_t> securities = _securitiesOf(params);
    const bool isSubscription = request.GetDataLong("REQTYPE") == kSubscribe;
    const bool isEnd = params.GetDataText("unsub") == "true";
    if (isEnd || isSubscription || params.GetDataText("isSub") == "true") _subscribe(securities, !isEnd);
    if (isEnd || isSubscription) return false;
    QuoteTable table = EmptyTable(params);
    for (const size_t index : securities) table.Append(m_board.At(index));
    answer = MakeAnswer(request, kDataQuotes);
    answer.SetData("Table", table.Get());
    return true;
}

std::vector<size_t> QuoteFeed::_securitiesOf(const CUIData& params) const {
    std::vector<size_t> securities;
    const std::string codes = FirstText(params, {"codeID", "stock_code", "code"});
    for (const std::string_view code : luadui::SplitText(codes, ',')) {
        const size_t colon = std::min(code.find(':'), code.size());
        const auto found = m_board.Find(code.substr(0, colon), code.substr(std::min(colon + 1, code.size())));
        securities.insert(securities.end(), found.begin(), found.end());
    }
    return securities;
}

void QuoteFeed::_subscribe(const std::vector<size_t>& securities, bool isOn) {
    for (const size_t index : securities) {
        int& count = m_subscribers[index];
        if (isOn && count++ == 0) m_wanted.push_back(index);
        if (!isOn && count > 0) --count;
    }
    if (!isOn) std::erase_if(m_wanted, [this](size_t index) { return m_subscribers[index] == 0; });
}

std::vector<CUIData> QuoteFeed::Step(std::chrono::microseconds duration) {
    const double seconds = std::chrono::duration<double>(duration).count();
    m_due += seconds * m_rate;
    m_seconds += seconds;
    m_board.SetTime(static_cast<int>(m_seconds));
    Pushes pushes;
    for (; m_due >= 1 && !m_wanted.empty(); --m_due) {
        const size_t index = m_wanted[m_random() % m_wanted.size()];
        const Quote before = m_board.At(index);
        if (!m_board.Move(index, m_exchange)) continue;
        pushes.Append(before, m_board.At(index), m_random() * uint64_t{0x9E3779B97F4A7C15});
        ++m_rows;
    }
    if (m_wanted.empty()) m_due = 0;
    return pushes.Take();
}

std::vector<CUIData> QuoteFeed::Follow(std::string_view code) {
    Pushes pushes;
    for (const size_t index : m_board.Find(code, {})) {
        const Quote before = m_board.At(index);
        m_board.Follow(index, m_exchange);
        if (m_subscribers[index] == 0) continue;
        pushes.Append(before, m_board.At(index), m_random());
        ++m_rows;
    }
    return pushes.Take();
}

}  // namespace terminal
