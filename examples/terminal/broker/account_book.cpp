#include "broker/account_book.h"

#include <algorithm>

#include "base/text.h"

namespace terminal {
namespace {

using luadui::Gbk;

template <class Items, class Test>
auto* FindIf(Items& items, Test test) {
    const auto found = std::find_if(items.begin(), items.end(), test);
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

AccountBook::AccountBook() : m_securities(SampleSecurities()) {
    m_accounts = {{.id = "1001",
                   .fundToken = "880001",
                   .customer = Gbk("李明"),
                   .funds = {{"CNY", 186'352'718, 2'500'000}, {"USD", 1'204'050}, {"HKD", 8'817'520}},
                   .positions = {}},
                  {.id = "1002",
                   .fundToken = "880002",
                   .customer = Gbk("王芳"),
                   .funds = {{"CNY", 5'240'033}},
                   .positions = {}},
                  {.id = "1003",
                   .fundToken = "880003",
                   .customer = Gbk("陈静"),
                   .funds = {{"CNY", 100'000'000}},
                   .positions = {}},
                  {.id = "2001",
                   .fundToken = "990001",
                   .customer = Gbk("李明"),
                   .isCredit = true,
                   .funds = {{"CNY", 50'000'000}},
                   .positions = {}}};
    struct Held {
        const char* code;
        Shares volume;
        Mills cost;
    };
    for (const Held& held : {Held{"600000", 12'000, 7'820},
                             {"600519", 300, 1'452'310},
                             {"000858", 1'500, 141'275},
                             {"300750", 800, 203'600},
                             {"688981", 1'200, 52'480},
                             {"510300", 50'000, 3'602},
                             {"159915", 20'000, 2'244},
                             {"900905", 2'000, 3'415},
                             {"200596", 600, 112'300}})
        _hold(m_accounts[0], held.code, held.volume, held.cost);
    for (const Held& held : {Held{"601398", 8'000, 5'120}, {"000001", 2'600, 11'930}})
        _hold(m_accounts[1], held.code, held.volume, held.cost);
    _hold(m_accounts[3], "600036", 5'000, 39'870);
    m_groups = {{"1", Gbk("核心"), {"1001"}}, {"2", Gbk("其他"), {"1002", "1003"}}};
}

void AccountBook::_hold(Account& account, std::string_view code, Shares volume, Mills cost) const {
    const Security& security = *FindSecurity(code);
    account.positions.push_back({.code = security.code,
                                 .name = security.name,
                                 .market = security.market,
                                 .volume = volume,
                                 .available = volume,
                                 .cost = cost,
                                 .price = security.last,
                                 .previousClose = security.previousClose,
                                 .opening = volume});
}

const Account* AccountBook::Find(std::string_view fundToken) const {
    return FindIf(m_accounts, [&](const Account& account) { return account.fundToken == fundToken; });
}

Account* AccountBook::Find(std::string_view fundToken) {
    return FindIf(m_accounts, [&](const Account& account) { return account.fundToken == fundToken; });
}

const Security* AccountBook::FindSecurity(std::string_view code) const {
    return FindIf(m_securities, [&](const Security& security) { return security.code == code; });
}

bool AccountBook::SetPrice(std::string_view code, Mills price) {
    Security* const security = FindIf(m_securities, [&](const Security& s) { return s.code == code; });
    if (!security || price <= 0) return false;
    security->last = price;
    for (Account& account : m_accounts) account.SetPrice(*security);
    return true;
}

}  // namespace terminal
