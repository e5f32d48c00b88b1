#include "broker/exchange.h"

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace terminal {
namespace {

bool Crosses(const Order& order, Mills price) {
    return order.isSale ? order.price <= price : order.price >= price;
}

// For the order, not for the one it trades with.
bool IsBetter(const Order& order, Mills price, Mills than) {
    return order.isSale ? price > than : price < than;
}

}  // namespace

std::vector<const Order*> Exchange::OpenOrders(std::string_view code) const {
    std::vector<const Order*> orders;
    for (const OpenOrder& open : m_open)
        if (open.Get().IsOpen() && open.Get().code == code) orders.push_back(&open.Get());
    return orders;
}

const Order* Exchange::Accept(std::string_view fundToken, const Ticket& ticket, std::string& error) {
    Account* const account = m_book.Find(fundToken);
    const Security* const security = m_book.FindSecurity(ticket.code);
    const auto refuse = [&](const char* text) {
        error = text;
        return nullptr;
    };
    if (!account) return refuse("no such account");
    if (!security) return refuse("no such security");
    if (ticket.volume <= 0 || ticket.volume > kMaxVolume) return refuse("the volume is out of range");
    if (!IsWholeLots(*security, ticket.volume, ticket.isSale, account->Sellable(ticket.code)))
        return refuse("the volume is not a multiple of the lot");
    Order* const order = _accept(*account, *security, ticket, error);
    if (!order) return nullptr;
    m_open.push_back({account, account->orders.size() - 1});
    _noteOrder(m_open.back());
    _changeOf(*account).positions |= order->isSale;
    return order;
}

Order* Exchange::_accept(Account& account, const Security& security, const Ticket& ticket,
                         std::string& error) {
    if (account.orders.size() >= kMaxOrders) {
        error = "too many orders today";
        return nullptr;
    }
    const std::string number = std::to_string(m_orders + 1);
    Order order{.id = "W" + number,
                .localId = ticket.localId.empty() ? "L" + number : ticket.localId,
                .instance = ticket.instance,
                .task = ticket.task,
                .code = security.code,
                .name = security.name,
                .market = security.market,
                .isSale = ticket.isSale,
                .volume = ticket.volume,
                .price = ticket.price.value_or(security.last)};
    if (order.price <= 0 || order.price > kMaxPrice) {
        error = "the price is out of range";
        return nullptr;
    }
    if (!account.Reserve(order, error)) return nullptr;
    ++m_orders;
    account.orders.push_back(std::move(order));
    return &account.orders.back();
}

bool Exchange::Trade(std::string_view fundToken, std::string_view code, Shares volume, std::string& error) {
    const auto fail = [&](const char* text) {
        error = text;
        return false;
    };
    Account* const account = m_book.Find(fundToken);
    const Security* const security = m_book.FindSecurity(code);
    if (!account) return fail("no such account");
    if (!security) return fail("no such security");
    if (volume == 0 || volume > kMaxVolume || volume < -kMaxVolume) return fail("the volume is out of range");
    const Ticket ticket{
        .code = security->code, .volume = volume < 0 ? -volume : volume, .isSale = volume < 0};
    if (!_accept(*account, *security, ticket, error)) return false;
    _deal({account, account->orders.size() - 1}, *security, ticket.volume, security->last);
    return true;
}

bool Exchange::Cancel(std::string_view fundToken, std::string_view orderId, std::string& error) {
    for (const OpenOrder& open : m_open) {
        if (open.account->fundToken != fundToken || open.Get().id != orderId || !open.Get().IsOpen())
            continue;
        _end(open, OrderState::kCancelled);
        _forgetEnded();
        return true;
    }
    error = "no such open order";
    return false;
}

bool Exchange::SetPrice(std::string_view code, Mills price) {
    if (!m_book.SetPrice(code, price)) return false;
    for (const Account& account : m_book.Accounts()) {
        const bool isHeld =
            std::ranges::find(account.positions, code, &Position::code) != account.positions.end();
        if (isHeld) _changeOf(account).positions = true;
    }
    return true;
}

void Exchange::Step() {
    for (const OpenOrder& open : m_open) {
        if (!open.Get().IsOpen()) continue;
        if (IsWithinLimits(*m_book.FindSecurity(open.Get().code), open.Get().price)) {
            _match(open);
        } else {
            open.Get().remark = luadui::Gbk("委托价格超出涨跌幅限制");
            _end(open, OrderState::kRejected);
        }
    }
    _forgetEnded();
}

void Exchange::_forgetEnded() {
    std::erase_if(m_open, [](const OpenOrder& open) { return !open.Get().IsOpen(); });
}

void Exchange::_match(const OpenOrder& taker) {
    const Security& security = *m_book.FindSecurity(taker.Get().code);
    Shares marketLeft = m_marketVolume;
    while (taker.Get().IsOpen()) {
        const auto offer = _bestOffer(taker, security, marketLeft);
        if (!offer) break;
        const Shares volume = std::min(offer->volume, taker.Get().Rest());
        _deal(taker, security, volume, offer->price);
        if (offer->from) {
            _deal(*offer->from, security, volume, offer->price);
        } else {
            marketLeft -= volume;
        }
    }
}

std::optional<Exchange::Offer> Exchange::_bestOffer(const OpenOrder& taker, const Security& security,
                                                    Shares marketLeft) const {
    const Order& order = taker.Get();
    std::optional<Offer> best;
    for (const OpenOrder* other = m_open.data(); other != &taker; ++other) {
        const Order& against = other->Get();
        const bool isCounter = against.IsOpen() && against.code == order.code &&
                               against.isSale != order.isSale && other->account != taker.account &&
                               Crosses(order, against.price);
        if (isCounter && (!best || IsBetter(order, against.price, best->price)))
            best = Offer{other, against.price, against.Rest()};
    }
    const bool hasMarket = marketLeft > 0 && Crosses(order, security.last);
    if (hasMarket && (!best || IsBetter(order, security.last, best->price)))
        best = Offer{nullptr, security.last, marketLeft};
    return best;
}

void Exchange::_deal(const OpenOrder& side, const Security& security, Shares volume, Mills price) {
    Account& account = *side.account;
    account.Settle(side.Get(), security, volume, price, "C" + std::to_string(++m_deals));
    _noteOrder(side);
    AccountChange& change = _changeOf(account);
    change.deals.push_back(account.deals.size() - 1);
    change.positions = true;
}

void Exchange::_end(const OpenOrder& order, OrderState state) {
    order.account->End(order.Get(), state);
    _noteOrder(order);
    _changeOf(*order.account).positions |= order.Get().isSale;
}

void Exchange::_noteOrder(const OpenOrder& order) {
    auto& orders = _changeOf(*order.account).orders;
    if (std::ranges::find(orders, order.index) == orders.end()) orders.push_back(order.index);
}

AccountChange& Exchange::_changeOf(const Account& account) {
    const auto found = std::ranges::find(m_changes, &account, &AccountChange::account);
    return found == m_changes.end() ? m_changes.emplace_back(AccountChange{&account}) : *found;
}

std::vector<AccountChange> Exchange::TakeChanges() { return std::exchange(m_changes, {}); }

}  // namespace terminal
