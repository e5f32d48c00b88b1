#include "broker/account_book.h"

#include <algorithm>

#include "base/text.h"

namespace terminal {
namespace {

using luadui::Gbk;

constexpr Shares kMaxVolume = 100'000'000;
constexpr size_t kMaxOrders = 10'000;  // of an account

Position Holding(const char* code, const char* name, const char* market, Shares volume, Mills cost,
                 Mills price) {
    return {.code = code,
            .name = Gbk(name),
            .market = market,
            .volume = volume,
            .available = volume,
            .cost = cost,
            .price = price};
}

template <class Items, class Test>
auto* FindIf(Items& items, Test test) {
    const auto found = std::find_if(items.begin(), items.end(), test);
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

AccountBook::AccountBook() {
    m_accounts.push_back(
        {.id = "1001",
         .fundToken = "880001",
         .customer = Gbk("李明"),
         .funds = {{"CNY", 186'352'718, 2'500'000}, {"USD", 1'204'050, 0}, {"HKD", 8'817'520, 0}},
         .positions = {Holding("600000", "浦发银行", "17", 12'000, 7'820, 10'360),
                       Holding("600519", "贵州茅台", "17", 300, 1'452'310, 1'468'000),
                       Holding("000858", "五 粮 液", "33", 1'500, 141'275, 128'450),
                       Holding("300750", "宁德时代", "33", 800, 203'600, 251'170),
                       Holding("688981", "中芯国际", "145", 1'200, 52'480, 94'260),
                       Holding("510300", "沪深300ETF", "20", 50'000, 3'602, 3'985),
                       Holding("159915", "创业板ETF", "36", 20'000, 2'244, 2'109),
                       Holding("900905", "老凤祥Ｂ", "18", 2'000, 3'415, 3'742),
                       Holding("200596", "古井贡Ｂ", "34", 600, 112'300, 118'950)}});
    m_accounts.push_back({.id = "1002",
                          .fundToken = "880002",
                          .customer = Gbk("王芳"),
                          .funds = {{"CNY", 5'240'033, 0}},
                          .positions = {Holding("601398", "工商银行", "17", 8'000, 5'120, 6'870),
                                        Holding("000001", "平安银行", "33", 2'600, 11'930, 11'540)}});
    m_accounts.push_back({.id = "1003",
                          .fundToken = "880003",
                          .customer = Gbk("陈静"),
                          .funds = {{"CNY", 100'000'000, 0}},
                          .positions = {}});
    m_groups = {{"1", Gbk("核心"), {"1001"}}, {"2", Gbk("其他"), {"1002", "1003"}}};
}

const Account* AccountBook::Find(std::string_view fundToken) const {
    return FindIf(m_accounts, [&](const Account& account) { return account.fundToken == fundToken; });
}

bool AccountBook::Trade(std::string_view fundToken, std::string_view code, Shares volume,
                        std::string& error) {
    const auto fail = [&](const char* text) {
        error = text;
        return false;
    };
    Account* account = FindIf(m_accounts, [&](const Account& a) { return a.fundToken == fundToken; });
    if (!account) return fail("no such account");
    Position* position = FindIf(account->positions, [&](const Position& p) { return p.code == code; });
    if (!position) return fail("the account does not hold this security");
    if (account->orders.size() >= kMaxOrders) return fail("too many orders today");
    if (volume == 0 || volume > kMaxVolume || volume < -kMaxVolume) return fail("the volume is out of range");
    if (-volume > position->available) return fail("not enough shares");
    Fund* fund =
        FindIf(account->funds, [&](const Fund& f) { return f.currency == CurrencyOf(position->market); });
    const Cents amount = ValueOf(volume, position->price);
    if (!fund || amount > fund->available) return fail("not enough money");

    fund->available -= amount;
    const std::string number = std::to_string(++m_orders);
    account->orders.push_back({.id = "W" + number,
                               .dealId = "C" + number,
                               .code = position->code,
                               .name = position->name,
                               .market = position->market,
                               .volume = volume,
                               .price = position->price,
                               .balance = fund->available});
    if (volume > 0) {
        const Mills paid = position->cost * position->volume + position->price * volume;
        position->cost = paid / (position->volume + volume);
    } else {
        position->available += volume;  // what was bought today is sold tomorrow
    }
    position->volume += volume;
    if (position->volume == 0)
        std::erase_if(account->positions, [](const Position& p) { return p.volume == 0; });
    return true;
}

// The B shares of Shanghai trade in dollars, those of Shenzhen in Hong Kong dollars.
std::string_view CurrencyOf(std::string_view market) {
    if (market == "18") return "USD";
    if (market == "34") return "HKD";
    return "CNY";
}

}  // namespace terminal
