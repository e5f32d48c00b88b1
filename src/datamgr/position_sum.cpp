#include "datamgr/position_sum.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

constexpr std::string_view kAddedColumns[] = {
    "StockBalance",       "AvailableStockBalance", "Inst_AvailableStockBalance",
    "FrozenStockBalance", "MarketValue",           "FloatProfit",
};

struct Decimal {
    int64_t digits = 0;
    int scale = 0;  // how many of them stand behind the point
};

// Nothing for what is no plain decimal or has too many digits.
std::optional<Decimal> ParseDecimal(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    Decimal number;
    bool hasPoint = false, hasDigit = false;
    for (const char c : text) {
        if (c == '.' && !std::exchange(hasPoint, true)) continue;
        if (c < '0' || c > '9') return std::nullopt;
        if (__builtin_mul_overflow(number.digits, int64_t{10}, &number.digits) ||
            __builtin_add_overflow(number.digits, int64_t{c - '0'}, &number.digits))
            return std::nullopt;
        hasDigit = true;
        if (hasPoint) ++number.scale;
    }
    if (isNegative) number.digits = -number.digits;
    return hasDigit ? std::optional(number) : std::nullopt;
}

bool Rescale(Decimal& number, int scale) {
    for (; number.scale < scale; ++number.scale) {
        if (__builtin_mul_overflow(number.digits, int64_t{10}, &number.digits)) return false;
    }
    return true;
}

std::string DecimalText(const Decimal& number) {
    std::string text = std::to_string(number.digits);
    const bool isNegative = number.digits < 0;
    const size_t wanted = static_cast<size_t>(number.scale) + 1 + (isNegative ? 1 : 0);
    if (text.size() < wanted) text.insert(isNegative ? 1 : 0, wanted - text.size(), '0');
    if (number.scale > 0) text.insert(text.size() - static_cast<size_t>(number.scale), ".");
    return text;
}

// The sum of two texts of which `first` is a number.
std::string Sum(std::string_view first, std::string_view second) {
    auto a = ParseDecimal(first), b = ParseDecimal(second);
    Decimal sum;
    if (a && b && Rescale(*a, b->scale) && Rescale(*b, a->scale) &&
        !__builtin_add_overflow(a->digits, b->digits, &sum.digits)) {
        sum.scale = a->scale;
        return DecimalText(sum);
    }
    return DoubleText(ParseDouble(first).value_or(0) + ParseDouble(second).value_or(0));
}

// A cell to be added: empty when it is no number.
std::string_view Addend(std::string_view cell) {
    const std::string_view text = TrimText(cell);
    if (text.empty() || ParseDouble(text)) return text;
    CCounters::Add("position_cell_unreadable");
    return {};
}

class Summary {
  public:
    explicit Summary(const CDataTable& positions)
        : m_positions(positions),
          m_security(positions.FindColumn("SecurityID")),
          m_market(positions.FindColumn("Market")) {
        m_sums.CopyHeader(positions);
        for (int col = 0; col < positions.GetColumnNumber(); ++col) {
            m_isAdded.push_back(std::ranges::find(kAddedColumns, positions.GetColumnProperty(col, "name")) !=
                                std::end(kAddedColumns));
        }
    }

    CDataTable Take() {
        for (int row = 0; row < m_positions.GetRowNumber(); ++row) _add(m_positions.GetRow(row));
        return std::move(m_sums);
    }

  private:
    void _add(const TableRow& position) {
        const std::string security = position[m_security];
        int row = m_sums.GetRowNumber();
        if (!security.empty()) row = m_rows.try_emplace({security, position[m_market]}, row).first->second;
        const bool isNew = row == m_sums.GetRowNumber();
        if (isNew) m_sums.AppendRow();
        for (size_t i = 0; i < m_isAdded.size(); ++i) {
            const int col = static_cast<int>(i);
            if (m_isAdded[i]) {
                _addNumber(row, col, Addend(position[col]));
            } else if (isNew) {
                m_sums.SetItemText(row, col, position[col]);
            } else if (m_sums.GetItemText(row, col) != position[col]) {
                m_sums.SetItemText(row, col, {});
            }
        }
    }

    void _addNumber(int row, int col, std::string_view addend) {
        if (addend.empty()) return;
        const TextView sum = m_sums.GetItemText(row, col);
        m_sums.SetItemText(row, col, sum.empty() ? std::string(addend) : Sum(sum, addend));
    }

    const CDataTable& m_positions;
    const int m_security, m_market;
    std::vector<bool> m_isAdded;  // by column
    std::map<std::pair<std::string, std::string>, int> m_rows;
    CDataTable m_sums;
};

}  // namespace

CDataTable SumPositions(const CDataTable& positions) { return Summary(positions).Take(); }

void SumView(CUIData& view) {
    constexpr char kSum[] = "positionsum";
    const std::string joinedKind = view.GetType();
    CDataTable joined;
    view.GetData(joinedKind, joined);
    view.Remove(joinedKind);
    view.SetData(kSum, SumPositions(joined));
    view.SetType(kSum);
}

}  // namespace luadui
