#include "datalists/quote_record.h"

#include <algorithm>
#include <array>
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

// One that is written as it stands: digits, without zeros before them, that fit 64 bits.
bool IsPlainCount(std::string_view text) noexcept {
    if (text.empty() || text.size() > 18 || (text[0] == '0' && text.size() > 1)) return false;
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c - '0') < 10; });
}

// The fields that a column of pushes fills; kFields for none.
struct ColumnFields {
    size_t first = kFields, second = kFields;
};
constexpr auto kFieldsOfColumn = [] {
    std::array<ColumnFields, kPushColumns.size()> columns;
    for (size_t column = 0; column < columns.size(); ++column) {
        for (size_t i = 0; i < kFields; ++i) {
            if (kQuoteFields[i].id != kPushColumns[column]) continue;
            (columns[column].first == kFields ? columns[column].first : columns[column].second) = i;
        }
    }
    return columns;
}();

// Fields from which others follow.
struct NumberSource {
    size_t key;
    double QuoteNumbers::*number;
};
constexpr NumberSource kNumberSources[] = {
    {KeyOf("PriceZxjg"), &QuoteNumbers::last},   {KeyOf("PriceZrsp"), &QuoteNumbers::previousClose},
    {KeyOf("ZuiGao"), &QuoteNumbers::high},      {KeyOf("ZuiDi"), &QuoteNumbers::low},
    {KeyOf("Cjje"), &QuoteNumbers::turnover},    {KeyOf("TotalAmount"), &QuoteNumbers::volume},
    {KeyOf("Yjlx"), &QuoteNumbers::premiumBase}, {KeyOf("WaiPan"), &QuoteNumbers::volumeAtAsk},
};
// By field: which of the sources it is; std::size(kNumberSources) for none.
constexpr auto kSourceOfField = [] {
    std::array<uint8_t, kFields> sources;
    sources.fill(std::size(kNumberSources));
    for (uint8_t i = 0; i < std::size(kNumberSources); ++i) sources[kNumberSources[i].key] = i;
    return sources;
}();

bool IsSuspended(const HaltRule& rule, std::string_view status) {
    return std::ranges::any_of(rule.beginnings, [&](std::string_view beginning) {
        return !beginning.empty() && status.starts_with(beginning);
    });
}

}  // namespace

QuoteSecurity::QuoteSecurity(std::string_view code, int market)
    : m_decimals(CTrade::GetPriceDecimals(code, LongText(market))), m_market(market) {}

class QuoteFiller {
  public:
    QuoteFiller(QuoteSecurity& security, std::string_view key, CUIData& record)
        : m_security(security),
          m_code(key.substr(0, key.rfind(':'))),
          m_market(key.substr(m_code.size() + 1)),
          m_record(record) {}

    void Fill(const QuoteNews& news) {
        const bool isFirst = !m_security.m_isFilled;
        if (isFirst) _start();
        if (isFirst || m_security.m_isPush != news.isPush) _set(KeyOf("is_push"), news.isPush ? 1 : 0);
        m_security.m_isPush = news.isPush;
        for (const int column : news.changes) {
            const auto& [first, second] = kFieldsOfColumn[static_cast<size_t>(column)];
            if (first != kFields) _take(first, news.row[column]);
            if (second != kFields) _take(second, news.row[column]);
        }
        _setChange(news.change);
        if (isFirst || m_hasNewNumbers) _derive();
        _setLimits();
        m_security.m_isFilled = true;
    }

  private:
    std::string_view _text(size_t key) const {
        return m_record.GetDataText(Key(key), m_security.m_places[key]);
    }
    // The record may have fields already: they go on counting.
    void _start() {
        _setText(KeyOf("Zqdm"), m_code);
        _setText(KeyOf("Market"), m_market);
        for (const auto& [key, number] : kNumberSources) m_security.m_numbers.*number = _number(key);
    }
    double _number(size_t key) const { return ParseDouble(_text(key)).value_or(0); }
    void _set(size_t key, DataValue value) { m_record.SetData(Key(key), value, m_security.m_places[key]); }
    // Copies of the record stay shared where nothing changes.
    void _setText(size_t key, std::string_view text) {
        if (_text(key) != text || text.empty()) _set(key, text);
    }
    // What is written for it; empty, and counted, when the cell is none.
    std::string_view _setIf(bool isReadable, size_t key, std::string_view text) {
        if (isReadable) {
            _set(key, text);
            return text;
        }
        _refuse();
        return {};
    }
    static void _refuse() { CCounters::Add("quote_number_unreadable"); }

    void _take(size_t field, std::string_view cell) {
        FixedBuffer buffer;
        const std::string_view written = _convert(field, cell, buffer);
        const uint8_t source = kSourceOfField[field];
        if (source == std::size(kNumberSources) || written.empty()) return;
        m_security.m_numbers.*kNumberSources[source].number = ParseDouble(written).value_or(0);
        m_hasNewNumbers = true;
    }
    // What is written, in `cell` or `buffer`, if it is a number from which others may follow.
    std::string_view _convert(size_t field, std::string_view cell, FixedBuffer& buffer) {
        switch (kQuoteFields[field].kind) {
            case QuoteKind::kPrice: {
                const std::string_view fixed = FixedText(cell, m_security.m_decimals, buffer);
                return _setIf(!fixed.empty(), field, fixed);
            }
            case QuoteKind::kAmount: {
                if (IsPlainCount(cell)) return _setIf(true, field, cell);
                const auto count = ReadCount(cell);
                _setIf(count.has_value(), field, LongText(count.value_or(0)));
                return {};  // nothing follows from amounts
            }
            case QuoteKind::kVolume: {
                if (IsPlainCount(cell)) return _setIf(true, field, cell);
                const std::string_view fixed = FixedText(cell, 0, buffer);
                return _setIf(ReadCount(fixed).has_value(), field, fixed);
            }
            case QuoteKind::kNumber:
                return _setIf(ParseDouble(cell).has_value(), field, cell);
            case QuoteKind::kCount:
                return _setIf(IsPlainCount(cell) || ReadCount(cell).has_value(), field, cell);
            case QuoteKind::kText:
                _set(field, cell);
                return {};
            case QuoteKind::kStatus:
                _setStatus(cell);
                return {};
            case QuoteKind::kCode:
            case QuoteKind::kMarket:
            case QuoteKind::kChange:
                return {};  // not as the cell says
        }
        return {};
    }

    void _setStatus(std::string_view status) {
        const auto* const rule = std::ranges::find_if(
            kHaltRules, [&](const HaltRule& each) { return (m_security.m_market & each.marketBit) != 0; });
        if (rule != std::end(kHaltRules)) _set(KeyOf("TPFlag"), IsSuspended(*rule, status));
        _setText(KeyOf("GzFlag"), status == kGzStatus ? kGzStatus : std::string_view());
    }

    void _derive() {
        const QuoteNumbers& numbers = m_security.m_numbers;
        _set(KeyOf("NeiPan"),
             static_cast<int64_t>(numbers.volume) - static_cast<int64_t>(numbers.volumeAtAsk));
        for (size_t i = 0; i < std::size(kQuoteRatios); ++i) {
            const double ratio = kQuoteRatios[i].of(numbers);
            _set(kFirstRatio + i, std::isfinite(ratio) ? ratio : 0.0);
        }
    }

    void _setChange(std::string_view cell) {
        const double last = m_security.m_numbers.last, close = m_security.m_numbers.previousClose;
        FixedBuffer buffer;
        std::string_view change;
        if (!SaysNothing(cell)) {
            change = FixedText(cell, 2, buffer);
            if (change.empty()) _refuse();
        }
        if (change.empty() && last > kLeastPrice && close > kLeastPrice)
            change = FixedText((last - close) / close * 100, 2, buffer);
        _setText(KeyOf("Zdfd"), change.empty() ? "0%" : change);
    }

    // They are the same all day long, unless the code list tells of a warning.
    void _setLimits() {
        const double previousClose = m_security.m_numbers.previousClose;
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
    bool m_hasNewNumbers = false;
};

void FillQuote(const QuoteNews& news, std::string_view key, QuoteSecurity& security, CUIData& record) {
    QuoteFiller(security, key, record).Fill(news);
}

}  // namespace luadui
