#include "trade/allocation.h"

#include <algorithm>
#include <cstddef>

namespace luadui {
namespace {

__extension__ using Wide = __int128;  // holds the product of a quantity and a weight

struct Account {
    size_t place = 0;  // in the order given
    int64_t weight = 0;
    int64_t held = 0;  // can be paid for or delivered
    int64_t most = 0;  // of that, in whole lots
    int64_t part = 0;
};

// As whole numbers whose sum fits 62 bits; the ratios stay what they are, but for digits that do not fit.
std::vector<int64_t> WholeWeights(std::span<const AllocationShare> shares) {
    Decimal largest;
    for (const AllocationShare& share : shares) largest = std::max(largest, share.weight);
    const int64_t limit = (int64_t{1} << 62) / std::max<int64_t>(1, std::ssize(shares));
    Decimal grain = Decimal::Of(1, Decimal::kDecimals);
    while (largest.WholeTimes(grain) > limit) grain = grain * 10;
    std::vector<int64_t> weights;
    weights.reserve(shares.size());
    for (const AllocationShare& share : shares)
        weights.push_back(std::max<int64_t>(0, share.weight.WholeTimes(grain)));
    return weights;
}

class Allocation {
  public:
    Allocation(int64_t whole, std::span<const AllocationShare> shares, const AllocationOrder& order)
        : m_order(order), m_rest(whole) {
        const std::vector<int64_t> weights = WholeWeights(shares);
        for (size_t i = 0; i < shares.size(); ++i) {
            if (weights[i] <= 0) continue;
            const int64_t held = shares[i].most;
            m_accounts.push_back({.place = i, .weight = weights[i], .held = held, .most = _inLots(held)});
        }
    }

    std::vector<int64_t> Divide(size_t size) {
        _giveShares();
        _giveLots();
        _giveRest();
        std::vector<int64_t> parts(size);
        for (const Account& account : m_accounts) parts[account.place] = account.part;
        return parts;
    }

  private:
    int64_t _inLots(int64_t quantity) const {
        return CTrade::RoundQuantity(m_order.stockType, quantity, m_order.direction, m_order.unit);
    }

    void _give(Account& account, int64_t part) {
        m_rest -= part - account.part;
        account.part = part;
    }

    // Accounts that can take the least of their share first: what they leave is there for all others. From the
    // first one on that can take its share, all can.
    void _giveShares() {
        std::ranges::sort(m_accounts, [](const Account& a, const Account& b) {
            return Wide{a.most} * b.weight < Wide{b.most} * a.weight;
        });
        Wide weights = 0;
        for (const Account& account : m_accounts) weights += account.weight;
        auto account = m_accounts.begin();
        for (; account != m_accounts.end(); ++account) {
            if (account->most * weights > Wide{m_rest} * account->weight) break;
            weights -= account->weight;
            _give(*account, account->most);
        }
        const Wide whole = m_rest;
        for (; account != m_accounts.end(); ++account) {
            const auto share = static_cast<int64_t>(whole * account->weight / weights);
            _give(*account, _inLots(share));
        }
    }

    void _giveLots() {
        std::ranges::sort(m_accounts, [](const Account& a, const Account& b) {
            return a.weight != b.weight ? a.weight > b.weight : a.place < b.place;
        });
        for (Account& account : m_accounts) {
            if (m_rest == 0) return;
            _give(account, _next(account));
        }
    }

    // The next larger part; the present one when there is none.
    int64_t _next(const Account& account) const {
        int64_t low = account.part, high = _inLots(low + std::min(m_rest, account.most - low));
        while (high - low > 1) {
            const int64_t middle = low + (high - low) / 2;
            (_inLots(middle) > account.part ? high : low) = middle;
        }
        return std::max(account.part, high);
    }

    // Odd lots, which would break up the lots of others if they went earlier; and where the least quantity is larger
    // than the step behind it, single lots may have left more than one.
    void _giveRest() {
        for (Account& account : m_accounts) {
            if (m_rest == 0) return;
            const int64_t part = CTrade::RoundQuantity(
                m_order.stockType, account.part + std::min(m_rest, account.held - account.part),
                m_order.direction, m_order.unit, account.held);
            _give(account, std::max(account.part, part));
        }
    }

    const AllocationOrder& m_order;
    int64_t m_rest;
    std::vector<Account> m_accounts;  // those with a share
};

}  // namespace

std::vector<int64_t> AllocateQuantity(int64_t whole, std::span<const AllocationShare> shares,
                                      const AllocationOrder& order) {
    return Allocation(std::max<int64_t>(0, whole), shares, order).Divide(shares.size());
}

}  // namespace luadui
