#include "datalists/quote_record.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>

#include "base/counters.h"
#include "base/fixed_text.h"
#include "base/text.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr size_t kFields = std::size(kQuoteFields);
constexpr double kLeastPrice = 0.00001;  // prices up to this one are none

// The number of a key, which must be one; does not compile for others.
consteval size_t KeyOf(std::string_view name) {
    for (size_t i = 0; i < kFields; ++i) {
        if (kQuoteFields[i].name == name) return i;
    }
    for (size_t i = 0; i < std::size(kDerivedQuoteNames); ++i) {
        if (kDerivedQuoteNames[i] == name) return kFields + i;
    }
    throw "no such key";
}

constexpr size_t kFirstRatio = KeyOf(kQuoteRatios[0].name);
static_assert(QuoteSecurity::kKeys < 255, "places are bytes");
static_assert([] {
    for (size_t i = 0; i < std::size(kQuoteRatios); ++i) {
        if (kDerivedQuoteNames[kFirstRatio - kFields + i] != kQuoteRatios[i].name) return false;
    }
    return true;
}());

const HashedKey& Key(size_t number) {
    static const auto* const keys = [] {
        auto* made = new std::vector<HashedKey>;
        for (const QuoteField& field : kQuoteFields) made->emplace_back(field.name);
        for (const std::string_view name : kDerivedQuoteNames) made->emplace_back(name);
        return made;
    }();
    return (*keys)[number];
}

// What is not below zero, cut to a whole number.
std::optional<int64_t> ReadCount(std::string_view text) {
    const auto count = ParseLong(text);
    if (!count || *count > 0) return count;
    return *count < 0 || std::signbit(ParseDouble(text).value_or(0)) ? std::nullopt : count;
}

bool IsSuspended(const HaltRule& rule, std::string_view status) {
    return std::ranges::any_of(rule.beginnings, [&](std::string_view beginning) {
        return !beginning.empty() && status.starts_with(beginning);
    });
}

}  // namespace

QuoteColumns::QuoteColumns(const CDataTable& table) {
    m_header.CopyHeader(table);
    for (size_t i = 0; i < kFields; ++i) {
        const int column = table.FindColumn(kQuoteFields[i].id);
        if (column < 0) continue;
        switch (kQuoteFields[i].kind) {
            case QuoteKind::kCode:
                m_code = column;
                break;
            case QuoteKind::kMarket:
                m_market = column;
                break;
            case QuoteKind::kChange:
                m_change = column;
                break;
            case QuoteKind::kStatus:
                m_status = column;
                break;
            default:
                m_others.emplace_back(static_cast<uint8_t>(i), column);
        }
    }
}

QuoteSecurity::QuoteSecurity(std::string_view code, int market)
    : m_decimals(CTrade::GetPriceDecimals(code, LongText(market))), m_market(market) {}

class QuoteFiller {
  public:
    QuoteFiller(QuoteSecurity& security, std::string_view key, CUIData& record)
        : m_security(security),
          m_code(key.substr(0, key.rfind(':'))),
          m_market(key.substr(m_code.size() + 1)),
          m_record(record) {}

    void Fill(const TableRow& row, const QuoteColumns& columns, bool isPush) {
        _set(KeyOf("is_push"), isPush ? 1 : 0);
        _setText(KeyOf("Zqdm"), m_code);
        _setText(KeyOf("Market"), m_market);
        for (const auto& [field, column] : columns.m_others) {
            const std::string_view cell = row[column];
            if (!SaysNothing(cell) && _text(field) != cell) _take(field, cell);
        }
        if (columns.m_status >= 0) _takeStatus(row[columns.m_status]);
        _derive(columns.m_change >= 0 ? row[columns.m_change] : TextView());
    }

  private:
    std::string_view _text(size_t key) const {
        return m_record.GetDataText(Key(key), m_security.m_places[key]);
    }
    double _number(size_t key) const { return ParseDouble(_text(key)).value_or(0); }
    void _set(size_t key, DataValue value) { m_record.SetData(Key(key), value, m_security.m_places[key]); }
    // Copies of the record stay shared where nothing changes.
    void _setText(size_t key, std::string_view text) {
        if (_text(key) != text || text.empty()) _set(key, text);
    }
    void _setCount(size_t key, std::optional<int64_t> count) {
        char digits[24];
        const char* const end = std::to_chars(digits, std::end(digits), count.value_or(0)).ptr;
        _setIf(count.has_value(), key, std::string_view(digits, end));
    }
    void _setIf(bool isReadable, size_t key, std::string_view text) {
        isReadable ? _set(key, text) : _refuse();
    }
    static void _refuse() { CCounters::Add("quote_number_unreadable"); }

    // What the cell says is not what the record has.
    void _take(size_t field, std::string_view cell) {
        FixedBuffer buffer;
        std::string_view fixed;
        switch (kQuoteFields[field].kind) {
            case QuoteKind::kPrice:
                fixed = FixedText(cell, m_security.m_decimals, buffer);
                return _setIf(!fixed.empty(), field, fixed);
            case QuoteKind::kAmount:
                return _setCount(field, ReadCount(cell));
            case QuoteKind::kVolume:
                fixed = FixedText(cell, 0, buffer);
                return _setIf(ReadCount(fixed).has_value(), field, fixed);
            case QuoteKind::kNumber:
                return _setIf(ParseDouble(cell).has_value(), field, cell);
            case QuoteKind::kCount:
                return _setIf(ReadCount(cell).has_value(), field, cell);
            default:
                return _set(field, cell);
        }
    }

    void _takeStatus(std::string_view status) {
        if (SaysNothing(status)) return;
        const auto* const rule = std::ranges::find_if(
            kHaltRules, [&](const HaltRule& each) { return (m_security.m_market & each.marketBit) != 0; });
        if (rule != std::end(kHaltRules)) _set(KeyOf("TPFlag"), IsSuspended(*rule, status));
        _setText(KeyOf("GzFlag"), status == kGzStatus ? kGzStatus : std::string_view());
    }

    void _derive(std::string_view change) {
        const QuoteNumbers numbers{
            .last = _number(KeyOf("PriceZxjg")),
            .previousClose = _number(KeyOf("PriceZrsp")),
            .high = _number(KeyOf("ZuiGao")),
            .low = _number(KeyOf("ZuiDi")),
            .turnover = _number(KeyOf("Cjje")),
            .volume = _number(KeyOf("TotalAmount")),
            .premiumBase = _number(KeyOf("Yjlx")),
        };
        _setChange(change, numbers);
        _set(KeyOf("NeiPan"), _long(KeyOf("TotalAmount")) - _long(KeyOf("WaiPan")));
        for (size_t i = 0; i < std::size(kQuoteRatios); ++i) {
            const double ratio = kQuoteRatios[i].of(numbers);
            _set(kFirstRatio + i, std::isfinite(ratio) ? ratio : 0.0);
        }
        _setLimits(numbers.previousClose);
    }
    int64_t _long(size_t key) const { return ParseLong(_text(key)).value_or(0); }

    void _setChange(std::string_view cell, const QuoteNumbers& numbers) {
        FixedBuffer buffer;
        std::string_view change;
        if (!SaysNothing(cell)) {
            change = FixedText(cell, 2, buffer);
            if (change.empty()) _refuse();
        }
        if (change.empty() && numbers.last > kLeastPrice && numbers.previousClose > kLeastPrice) {
            change =
                FixedText((numbers.last - numbers.previousClose) / numbers.previousClose * 100, 2, buffer);
        }
        _setText(KeyOf("Zdfd"), change.empty() ? "0%" : change);
    }

    // They are the same all day long, unless the code list tells of a warning.
    void _setLimits(double previousClose) {
        const uint64_t codes = CTrade::CodeDataVersion();
        if (m_security.m_limitsOf == previousClose && m_security.m_codesAt == codes) return;
        const Decimal close = Decimal::Parse(_text(KeyOf("PriceZrsp"))).value_or(Decimal());
        for (const auto& [key, direction] :
             {std::pair(KeyOf("PriceBuyLimit"), kTradeBuy), std::pair(KeyOf("PriceSellLimit"), kTradeSell)}) {
            const Decimal limit = CTrade::CalcLimitPrice(m_code, m_market, close, direction);
            _setText(key, limit > 0 ? limit.Text(m_security.m_decimals) : std::string());
        }
        m_security.m_limitsOf = previousClose;
        m_security.m_codesAt = codes;
    }

    QuoteSecurity& m_security;
    const std::string_view m_code, m_market;
    CUIData& m_record;
};

void FillQuote(const TableRow& row, const QuoteColumns& columns, std::string_view key, bool isPush,
               QuoteSecurity& security, CUIData& record) {
    QuoteFiller(security, key, record).Fill(row, columns, isPush);
}

}  // namespace luadui
