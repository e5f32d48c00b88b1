#include "broker/quotes/quote_board.h"

#include <algorithm>
#include <functional>

namespace terminal {
namespace {

constexpr Shares kLot = 100;
constexpr int kMostLots = 50;
constexpr int kSuspendedOneIn = 40;
constexpr int kMostSteps = 3;  // of a move

// Funds, bonds and the B shares of Shanghai have three decimals.
Mills StepOf(std::string_view market) {
    constexpr std::string_view kFine[] = {"18", "19", "20", "35", "36"};
    return std::ranges::find(kFine, market) == std::end(kFine) ? 10 : 1;
}

// What the exchange trades under this code, if it is in this market.
const Security* TradedOf(const Quote& quote, const Exchange& exchange) {
    const Security* const traded = exchange.Book().FindSecurity(quote.security.code);
    return traded && traded->market == quote.security.market ? traded : nullptr;
}

void SetLimits(Quote& quote) {
    const Security asTraded{quote.security.code, {}, quote.security.market, quote.last, quote.previousClose};
    const auto [lowest, highest] = LimitsOf(asTraded);
    quote.limitUp = highest / quote.step * quote.step;
    quote.limitDown = (lowest + quote.step - 1) / quote.step * quote.step;
}

// An order joins its price's level, or makes one.
template <class IsBetter>
void Insert(Quote::Side& side, Mills price, Shares volume, IsBetter isBetter) {
    auto* const place = std::ranges::find_if(side, [&](const QuoteLevel& level) {
        return level.price == 0 || level.price == price || isBetter(price, level.price);
    });
    if (place == side.end()) return;
    if (place->price != price) {
        std::move_backward(place, side.end() - 1, side.end());
        *place = {price, 0};
    }
    place->volume += volume;
}

}  // namespace

void QuoteBoard::List(std::vector<ListedSecurity> securities, const Exchange& exchange) {
    m_quotes.clear();
    m_byCode.clear();
    for (ListedSecurity& security : securities) {
        if (!Find(security.code, security.market).empty()) continue;
        Quote quote;
        quote.security = std::move(security);
        quote.step = StepOf(quote.security.market);
        const Security* const traded = TradedOf(quote, exchange);
        quote.previousClose = traded ? traded->previousClose : _random(300, 9000) * quote.step;
        quote.last = quote.open = quote.high = quote.low = traded ? traded->last : quote.previousClose;
        quote.isSuspended = !traded && _random(1, kSuspendedOneIn) == 1;
        quote.seconds = m_seconds;
        SetLimits(quote);
        if (!quote.isSuspended) _fillLevels(quote, true, exchange);
        m_byCode.emplace(quote.security.code, m_quotes.size());
        m_quotes.push_back(std::move(quote));
    }
}

std::vector<size_t> QuoteBoard::Find(std::string_view code, std::string_view market) const {
    std::vector<size_t> found;
    const auto [first, last] = m_byCode.equal_range(code);
    for (auto entry = first; entry != last; ++entry)
        if (market.empty() || m_quotes[entry->second].security.market == market)
            found.push_back(entry->second);
    return found;
}

bool QuoteBoard::Move(size_t index, const Exchange& exchange) {
    Quote& quote = m_quotes[index];
    if (quote.isSuspended) return false;
    const Security* const traded = TradedOf(quote, exchange);
    const Mills before = quote.last;
    quote.last = traded ? traded->last : _walk(quote);
    const bool isUp = quote.last == before ? _random(0, 1) == 1 : quote.last > before;
    quote.lastTrade = _random(1, kMostLots) * kLot;
    quote.volume += quote.lastTrade;
    quote.atAsk += isUp ? quote.lastTrade : 0;
    quote.turnover += ValueOf(quote.lastTrade, quote.last);
    quote.high = std::max(quote.high, quote.last);
    quote.low = std::min(quote.low, quote.last);
    quote.seconds = m_seconds;
    _fillLevels(quote, isUp, exchange);
    return true;
}

void QuoteBoard::Follow(size_t index, const Exchange& exchange) {
    Quote& quote = m_quotes[index];
    const Security* const traded = TradedOf(quote, exchange);
    if (!traded) return;
    const bool isUp = traded->last >= quote.last;
    quote.last = traded->last;
    quote.high = std::max(quote.high, quote.last);
    quote.low = std::min(quote.low, quote.last);
    quote.seconds = m_seconds;
    _fillLevels(quote, isUp, exchange);
}

int QuoteBoard::_random(int first, int last) {
    return first + static_cast<int>(m_random() % static_cast<uint32_t>(last - first + 1));
}

Mills QuoteBoard::_walk(const Quote& quote) {
    return std::clamp(quote.last + _random(-kMostSteps, kMostSteps) * quote.step, quote.limitDown,
                      quote.limitUp);
}

// The last trade was at the best price of the side that it came to.
void QuoteBoard::_fillLevels(Quote& quote, bool isUp, const Exchange& exchange) {
    quote.buy = quote.sell = {};
    for (size_t i = 0; i < Quote::kLevels; ++i) {
        const Mills away = static_cast<Mills>(i) * quote.step;
        const Mills buy = quote.last - (isUp ? quote.step : 0) - away;
        const Mills sell = quote.last + (isUp ? 0 : quote.step) + away;
        if (buy >= quote.limitDown) quote.buy[i] = {buy, _random(1, kMostLots) * kLot};
        if (sell <= quote.limitUp) quote.sell[i] = {sell, _random(1, kMostLots) * kLot};
    }
    if (!TradedOf(quote, exchange)) return;
    for (const Order* const order : exchange.OpenOrders(quote.security.code)) {
        if (order->isSale) {
            Insert(quote.sell, order->price, order->Rest(), std::less<>());
        } else {
            Insert(quote.buy, order->price, order->Rest(), std::greater<>());
        }
    }
}

}  // namespace terminal
