#include "datalists/hq_data.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/data_set.h"
#include "datalists/quote_field_table.h"
#include "trade/trade.h"

namespace luadui {
namespace {

using Cells = std::vector<std::pair<std::string, std::string>>;

CDataTable Table(const std::vector<Cells>& rows) {
    CDataTable table;
    for (const Cells& cells : rows) {
        const int row = table.AppendRow();
        for (const auto& [field, text] : cells) {
            const int column = table.FindColumn(field);
            table.SetItemText(row, column < 0 ? table.AddColumn(field) : column, text);
        }
    }
    return table;
}

// What the record says, whatever the kind of the value.
std::string Said(const CUIData& record, const std::string& key) {
    const ValueView value = record.GetDataView(key);
    char text[40];
    switch (value.Kind()) {
        case kDataAbsent:
            return "(none)";
        case kDataString:
            return value.AsText();
        case kDataBoolean:
            return value.AsBool() ? "true" : "false";
        case kDataInteger:
            return std::to_string(value.AsLong());
        default:
            std::snprintf(text, sizeof text, "%.9g", value.AsDouble());
            return text;
    }
}

CUIData QuoteIn(const CUIData& out, const std::string& key) {
    CUIData quote;
    EXPECT_TRUE(out.GetDataShared(key, quote)) << key;
    return quote;
}

struct FieldCase {
    Cells cells;  // besides code and market
    Cells expected;
    const char *code = "600000", *market = "17";
};

TEST(HqDataTest, RowsBecomeRecords) {
    const FieldCase cases[] = {
        {{},
         {{"Zqdm", "600000"},
          {"Market", "17"},
          {"Zqmc", "(none)"},
          {"PriceZxjg", "(none)"},
          {"Zdfd", "0%"},
          {"NeiPan", "0"},
          {"TPFlag", "(none)"},
          {"GzFlag", "(none)"},
          {"ZhenFu", "0"},
          {"Junjia", "0"},
          {"YiJia", "0"},
          {"Yjl", "0"},
          {"PriceBuyLimit", ""},
          {"PriceSellLimit", ""},
          {"is_push", "0"}}},
        {{{"55", "NAME"}, {"1", "20240131"}, {"93", "x"}},
         {{"Zqmc", "NAME"}, {"DateTime", "20240131"}, {"Dsgs", "x"}}},
        {{{"10", "1.005"}, {"30", "2.675"}, {"120", "0.125"}, {"7", "3"}},
         {{"PriceZxjg", "1.00"}, {"PriceSell1", "2.67"}, {"PriceSell10", "0.12"}, {"KaiPan", "3.00"}}},
        {{{"10", "1.0055"}}, {{"PriceZxjg", "1.006"}}, "510300", "20"},
        {{{"10", "11"}, {"6", "10"}},
         {{"Zdfd", "10.00"},
          {"PriceBuyLimit", "11.00"},
          {"PriceSellLimit", "9.00"},
          {"Junjia", "10"},
          {"YiJia", "11"}}},
        {{{"10", "11"}, {"6", "0"}}, {{"Zdfd", "0%"}}},
        {{{"10", "0.01"}, {"6", "0.009"}}, {{"Zdfd", "0.00"}}},  // by the price as it is written
        {{{"10", "11"}, {"6", "10"}, {"199112", "9.996"}}, {{"Zdfd", "10.00"}}},
        {{{"10", "11"}, {"6", "10"}, {"199112", "-"}}, {{"Zdfd", "10.00"}}},
        {{{"31", "9000000000.7"}, {"25", "-5"}, {"119", "1e3"}, {"33", "9223372036854775808"}},
         {{"AmountSell1", "9000000000"},
          {"AmountBuy1", "(none)"},
          {"AmountBuy10", "1000"},
          {"AmountSell2", "(none)"}}},
        {{{"13", "1000.4"}, {"14", "300"}, {"19", "12500.5"}, {"49", "-3"}},
         {{"TotalAmount", "1000"},
          {"WaiPan", "300"},
          {"NeiPan", "700"},
          {"TotalMoney", "12500.5"},
          {"Cjje", "12500.5"},
          {"Junjia", "12.5005"},
          {"XianShou", "(none)"}}},
        {{{"6", "10"}, {"8", "11.00"}, {"9", "9.5"}},
         {{"ZuiGao", "11.00"}, {"ZuiDi", "9.5"}, {"ZhenFu", "0.15"}}},
        {{{"6", "-2"}, {"8", "3"}, {"9", "2"}}, {{"ZhenFu", "-0.5"}}},
        {{{"10", "11"}, {"80", "10"}}, {{"Yjlx", "10"}, {"YiJia", "1"}, {"Yjl", "10"}}},
        {{{"10", "11"}, {"80", "0.000001"}}, {{"Yjl", "0"}}},
        {{{"8", "1e308"}, {"9", "-1e308"}, {"6", "1"}}, {{"ZhenFu", "0"}}},  // nothing infinite
        {{{"127", "P0X"}}, {{"TPFlag", "true"}, {"GzFlag", ""}}},
        {{{"127", "T1"}}, {{"TPFlag", "false"}}},
        {{{"127", "T1"}}, {{"TPFlag", "true"}}, "000001", "33"},
        {{{"127", "P0"}}, {{"TPFlag", "false"}}, "000001", "33"},
        {{{"127", "E1 "}}, {{"TPFlag", "true"}}, "000001", "33"},
        {{{"127", "T1"}}, {{"TPFlag", "false"}}, "000001", "49"},  // both bits: the first counts
        {{{"127", "C"}}, {{"TPFlag", "(none)"}, {"GzFlag", "C"}}, "00700", "73"},
        {{{"127", "-"}}, {{"TPFlag", "(none)"}, {"GzFlag", "(none)"}}},
        {{{"10", "abc"}, {"24", "nan"}, {"26", "1e400"}, {"28", "1.0x"}, {"13", "-1"}, {"8", "inf"}},
         {{"PriceZxjg", "(none)"},
          {"PriceBuy1", "(none)"},
          {"PriceBuy2", "(none)"},
          {"PriceBuy3", "(none)"},
          {"TotalAmount", "(none)"},
          {"ZuiGao", "(none)"}}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const FieldCase& row = cases[i];
        Cells cells = row.cells;
        cells.insert(cells.end(), {{"4", row.code}, {"3", row.market}});
        CHqData quotes;
        CUIData out;
        quotes.BuildQueryQuotes(Table({cells}), out);
        const CUIData quote = QuoteIn(out, std::string(row.code) + ":" + row.market);
        for (const auto& [key, text] : row.expected)
            EXPECT_EQ(Said(quote, key), text) << "row " << i << " " << key;
        CUIData filled;
        EXPECT_TRUE(quotes.FillQuoteRecord(Table({cells}), 0, filled));
        for (const auto& [key, text] : row.expected)
            EXPECT_EQ(Said(filled, key), text) << "row " << i << " " << key;
    }
}

TEST(HqDataTest, TicksTellWhatWasPushedSinceTheLastOne) {
    CHqData quotes("hq_zq");
    CUIData out;
    EXPECT_FALSE(quotes.FlushPush(out));
    EXPECT_TRUE(out.IsEmpty());

    quotes.MergePushRows(Table({{{"4", "600000"}, {"3", "17"}, {"10", "10.5"}, {"6", "10"}, {"127", "P0"}}}));
    quotes.MergePushRows(Table({{{"10", "-"}, {"4", "600000"}, {"3", "17"}, {"13", "200"}, {"999", "x"}}}));
    CDataTable pushed;
    CUIData rows;
    EXPECT_TRUE(quotes.GetData("push_table", pushed) && quotes.GetData("push_code2row", rows));
    EXPECT_EQ(rows.GetDataLong("600000:17"), 0);
    EXPECT_EQ(pushed.GetColumnNumber(), 64);
    EXPECT_EQ(pushed.GetItemText(0, "10") + "|" + pushed.GetItemText(0, "13"), "10.5|200");

    ASSERT_TRUE(quotes.FlushPush(out));
    EXPECT_EQ(out.GetType(), "hq_zq");
    EXPECT_EQ(out.GetDataLong("is_push"), 1);
    CDataSet codes;
    EXPECT_TRUE(out.GetData("updatecode", codes));
    EXPECT_EQ(std::vector(codes.begin(), codes.end()), std::vector<std::string>{"600000:17"});
    const CUIData shown = QuoteIn(out, "600000:17");
    EXPECT_EQ(Said(shown, "is_push") + Said(shown, "PriceZxjg") + Said(shown, "TPFlag"), "110.50true");

    quotes.ClearPush();
    CUIData next;
    EXPECT_FALSE(quotes.FlushPush(next));
    quotes.MergePushRows(Table({{{"4", "600000"}, {"3", "017"}, {"10", "11"}, {"127", "T"}},
                                {{"4", "000001"}, {"3", "33"}, {"10", "abc"}}}));
    EXPECT_TRUE(quotes.FlushPush(next));
    EXPECT_TRUE(next.GetData("updatecode", codes));
    EXPECT_EQ(codes.Size(), 2u);
    // The record that was handed out is the one that goes on; the previous close is that of the first push.
    EXPECT_EQ(Said(shown, "PriceZxjg") + " " + Said(shown, "Zdfd") + " " + Said(shown, "TPFlag"),
              "11.00 10.00 false");
    CUIData found;
    EXPECT_TRUE(quotes.FindQuote("600000", "17", found));
    EXPECT_EQ(Said(found, "Zdfd"), "10.00");
    EXPECT_FALSE(quotes.FindQuote("600000", "33", found) || quotes.FindQuote("600000", "x", found));

    // An answer is newer than what was pushed before it, though told earlier.
    quotes.ClearPush();
    quotes.MergePushRows(
        Table({{{"4", "600000"}, {"3", "17"}, {"10", "10.8"}, {"13", "300"}, {"199112", "8"}}}));
    quotes.BuildQueryQuotes(Table({{{"10", "10.9"}, {"4", "600000"}, {"3", "17"}}}), next);
    quotes.FlushPush(next);
    EXPECT_EQ(Said(shown, "PriceZxjg") + " " + Said(shown, "TotalAmount") + " " + Said(shown, "Zdfd"),
              "10.90 300 9.00");

    CTrade::AddCodeData("600000", "17", "*ST");
    quotes.MergePushRows(Table({{{"4", "600000"}, {"3", "17"}, {"10", "11"}}}));
    quotes.FlushPush(next);
    CTrade::AddCodeData("600000", "17", "");
    EXPECT_EQ(Said(shown, "PriceBuyLimit"), "10.50");
    EXPECT_EQ(Said(found, "PriceBuyLimit"), "11.00") << "a copy is of its moment";
}

TEST(HqDataTest, RowsOfNoSecurityAreCounted) {
    const Cells rows[] = {{},
                          {{"4", "600000"}},
                          {{"3", "17"}},
                          {{"4", "-"}, {"3", "17"}},
                          {{"4", ""}, {"3", "17"}},
                          {{"4", "600000"}, {"3", "-"}},
                          {{"4", "600000"}, {"3", "SH"}},
                          {{"4", "600000"}, {"3", "-17"}},
                          {{"4", "600000"}, {"3", "99999999999"}},
                          {{"4", std::string(CHqData::kMostCodeBytes + 1, '6')}, {"3", "17"}}};
    for (const Cells& cells : rows) {
        CHqData quotes;
        CUIData out, record;
        const uint64_t before = CCounters::Get("quote_row_without_security");
        quotes.MergePushRows(Table({cells}));
        quotes.BuildQueryQuotes(Table({cells}), out);
        EXPECT_FALSE(quotes.FlushPush(out));
        EXPECT_FALSE(quotes.FillQuoteRecord(Table({cells}), 0, record));
        EXPECT_EQ(CCounters::Get("quote_row_without_security") - before, 3u);
        EXPECT_EQ(out.Size(), 2u) << "updatecode and is_push";
        EXPECT_TRUE(record.IsEmpty());
    }
}

// The same, said plainly: texts in maps, numbers by strtod and printf.
class PlainQuotes {
  public:
    using Record = std::map<std::string, std::string>;

    void Merge(const CDataTable& pushed) {
        for (int row = 0; row < pushed.GetRowNumber(); ++row) {
            std::string key;
            if (!_key(pushed, row, key)) continue;
            if (!m_pushed.count(key)) m_order.push_back(key);
            _keep(pushed, row, m_pushed[key]);
        }
    }
    std::set<std::string> Flush() {
        std::set<std::string> keys;
        for (const auto& [key, cells] : m_pushed) keys.insert((_fill(key, cells, 1), key));
        return keys;
    }
    void Clear() { m_pushed.clear(), m_order.clear(); }
    std::set<std::string> Query(const CDataTable& answer) {
        std::set<std::string> keys;
        for (int row = 0; row < answer.GetRowNumber(); ++row) {
            std::string key;
            if (!_key(answer, row, key)) continue;
            Record cells;
            for (int col = 0; col < answer.GetColumnNumber(); ++col) {
                const std::string text = answer.GetItemText(row, col);
                if (!text.empty() && text != "-") cells[answer.GetColumnProperty(col, "name")] = text;
            }
            cells["199112"] = answer.GetItemText(row, "199112");  // not a value that is kept
            _fill(key, cells, 0);
            keys.insert(key);
            if (!m_pushed.count(key)) continue;
            _keep(answer, row, m_pushed[key]);
            m_pushed[key]["199112"] = cells["199112"];
        }
        return keys;
    }
    const Record& Quote(const std::string& key) { return m_quotes[key]; }
    const std::map<std::string, Record>& Pushed() const { return m_pushed; }
    const std::vector<std::string>& Order() const { return m_order; }

  private:
    static bool _key(const CDataTable& table, int row, std::string& key) {
        const std::string code = table.GetItemText(row, "4"), market = table.GetItemText(row, "3");
        double number = 0;
        if (code.empty() || code == "-" || !_read(market, number) || number < 0) return false;
        key = code + ":" + std::to_string(static_cast<int>(number));
        return true;
    }
    static void _keep(const CDataTable& table, int row, Record& pushed) {
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            const std::string id = table.GetColumnProperty(col, "name"), text = table.GetItemText(row, col);
            const bool isKept = std::find(kPushColumns.begin(), kPushColumns.end(), id) != kPushColumns.end();
            if (isKept && !text.empty() && text != "-") pushed[id] = text;
        }
    }
    static bool _read(const std::string& text, double& number) {
        if (text.find_first_not_of("0123456789.-+eE") != std::string::npos) return false;
        char* end = nullptr;
        number = std::strtod(text.c_str(), &end);
        return end != text.c_str() && *end == 0 && std::isfinite(number);
    }
    static std::string _print(double number, int decimals) {
        char text[400];
        std::snprintf(text, sizeof text, "%.*f", decimals, number);
        return text;
    }
    static std::string _print9(double number) {
        char text[40];
        std::snprintf(text, sizeof text, "%.9g", std::isfinite(number) ? number : 0);
        return text;
    }

    void _fill(const std::string& key, Record cells, int isPush) {
        Record& quote = m_quotes[key];
        const std::string code = key.substr(0, key.rfind(':')), market = key.substr(code.size() + 1);
        const int decimals = CTrade::GetPriceDecimals(code, market);
        quote["Zqdm"] = code, quote["Market"] = market, quote["is_push"] = std::to_string(isPush);
        for (const QuoteField& field : kQuoteFields) {
            const std::string& text = cells[std::string(field.id)];
            double number = 0;
            if (text.empty() || text == "-") continue;
            std::string& to = quote[std::string(field.name)];
            const bool isNumber = _read(text, number);
            const bool isCount = isNumber && !std::signbit(number) && number < 9.2e18;
            if (field.kind == QuoteKind::kText || (field.kind == QuoteKind::kNumber && isNumber)) to = text;
            if (field.kind == QuoteKind::kCount && isCount) to = text;
            if (field.kind == QuoteKind::kVolume && isCount) to = _print(number, 0);
            if (field.kind == QuoteKind::kAmount && isCount)
                to = std::to_string(static_cast<int64_t>(number));
            if (field.kind == QuoteKind::kPrice && isNumber) to = _print(number, decimals);
        }
        const std::string status = cells["127"];
        if (!status.empty() && status != "-") {
            const std::string two = status.substr(0, 2);
            const int bits = std::atoi(market.c_str());
            if (bits & 0x10) {
                quote["TPFlag"] = two == "P0" ? "true" : "false";
            } else if (bits & 0x20) {
                quote["TPFlag"] = two == "T1" || two == "H0" || two == "C1" || two == "E1" ? "true" : "false";
            }
            quote["GzFlag"] = status == "C" ? "C" : "";
            m_hasStatus.insert(key);
        }
        _derive(quote, cells["199112"], code, market, decimals);
        if (!m_hasStatus.count(key)) quote.erase("GzFlag");
        for (auto entry = quote.begin(); entry != quote.end();) {  // those that were only looked for
            const bool isNone = entry->second.empty() && entry->first != "GzFlag" &&
                                entry->first != "PriceBuyLimit" && entry->first != "PriceSellLimit";
            entry = isNone ? quote.erase(entry) : std::next(entry);
        }
    }
    static void _derive(Record& quote, const std::string& change, const std::string& code,
                        const std::string& market, int decimals) {
        const auto value = [&](const char* name) { return std::strtod(quote[name].c_str(), nullptr); };
        const double last = value("PriceZxjg"), close = value("PriceZrsp"), base = value("Yjlx");
        const auto usable = [](double divisor) { return divisor < 0 || divisor > 0.000001; };
        double number = 0;
        if (!change.empty() && change != "-" && _read(change, number)) {
            quote["Zdfd"] = _print(number, 2);
        } else if (last > 0.00001 && close > 0.00001 && std::isfinite((last - close) / close * 100)) {
            quote["Zdfd"] = _print((last - close) / close * 100, 2);
        } else {
            quote["Zdfd"] = "0%";
        }
        const double volume = value("TotalAmount"), outside = value("WaiPan");
        quote["NeiPan"] = std::to_string(static_cast<int64_t>(volume) - static_cast<int64_t>(outside));
        quote["ZhenFu"] = _print9(usable(close) ? (value("ZuiGao") - value("ZuiDi")) / close : 0);
        quote["Junjia"] = _print9(volume >= 1 ? value("Cjje") / volume : close);
        quote["YiJia"] = _print9(last - base);
        quote["Yjl"] = _print9(usable(base) ? (last - base) / base * 100 : 0);
        const Decimal previous = Decimal::Parse(quote["PriceZrsp"]).value_or(Decimal());
        const Decimal high = CTrade::CalcLimitPrice(code, market, previous, kTradeBuy);
        const Decimal low = CTrade::CalcLimitPrice(code, market, previous, kTradeSell);
        quote["PriceBuyLimit"] = high > 0 ? high.Text(decimals) : "";
        quote["PriceSellLimit"] = low > 0 ? low.Text(decimals) : "";
    }

    std::map<std::string, Record> m_quotes, m_pushed;
    std::vector<std::string> m_order;
    std::set<std::string> m_hasStatus;
};

// Both, fed with the same at random: columns in any order, doubled, unknown, by the thousand now and then; cells of all
// that servers say and of what they should not.
class RandomQuotes {
  public:
    explicit RandomQuotes(uint32_t seed) : m_random(seed) {}

    void Step() {
        const uint32_t kind = _upTo(10);
        CUIData out;
        if (kind < 6) {
            const CDataTable table = _table();
            m_quotes.MergePushRows(table);
            m_plain.Merge(table);
            _checkPushTable();
        } else if (kind == 6) {
            const CDataTable table = _table();
            m_quotes.BuildQueryQuotes(table, out);
            _check(m_plain.Query(table), out, 0);
        } else {
            const std::set<std::string> keys = m_plain.Flush();
            EXPECT_EQ(m_quotes.FlushPush(out), !keys.empty());
            if (!keys.empty()) _check(keys, out, 1);
            if (kind == 9) return;  // nobody cleared: the next tick tells these again
            m_quotes.ClearPush();
            m_plain.Clear();
        }
        if (_upTo(3) == 0 && !out.IsEmpty()) m_kept = out;  // a page that holds what it was told
    }

  private:
    uint32_t _upTo(size_t limit) { return static_cast<uint32_t>(m_random() % limit); }

    std::string _id() {
        const auto& field = kQuoteFields[_upTo(std::size(kQuoteFields))];
        return _upTo(8) ? std::string(field.id) : std::to_string(_upTo(200));
    }

    std::string _cell(const std::string& id) {
        static const char* const kOdd[] = {"",
                                           "-",
                                           "abc",
                                           "nan",
                                           "1e400",
                                           "-1e400",
                                           "-5",
                                           "1e3",
                                           "1.005",
                                           "2.675",
                                           "0",
                                           "0.000001",
                                           "-0",
                                           "12 x",
                                           "P0",
                                           "T1",
                                           "C",
                                           "E1x",
                                           "99999999999999999999",
                                           "."};
        if (id == "127" && _upTo(2)) return kOdd[14 + _upTo(4)];
        if (_upTo(3) == 0) return kOdd[_upTo(std::size(kOdd))];
        char text[64];
        if (_upTo(2)) {
            std::snprintf(text, sizeof text, "%d.%0*d", static_cast<int>(_upTo(300)),
                          1 + static_cast<int>(_upTo(5)), static_cast<int>(_upTo(10)) * 5);
        } else {
            std::snprintf(text, sizeof text, "%d", static_cast<int>(_upTo(1'000'000)));
        }
        return text;
    }

    CDataTable _table() {
        if (_upTo(6) == 0) m_columns.clear();
        if (m_columns.empty()) {
            const size_t count = _upTo(50) == 0 ? 1000 : 1 + _upTo(80);
            if (_upTo(3) == 0) {
                m_columns.assign(kPushColumns.begin(), kPushColumns.end());
            } else {
                m_columns = {"4", "3"};
                while (m_columns.size() < count)
                    m_columns.insert(m_columns.begin() + _upTo(m_columns.size()), _id());
            }
        }
        CDataTable table;
        for (const std::string& id : m_columns) table.AddColumn(id);
        for (uint32_t rows = _upTo(12); rows > 0; --rows) {
            const int row = table.AppendRow();
            const bool isSparse = _upTo(2) == 0;
            for (int col = 0; col < table.GetColumnNumber(); ++col) {
                if (!isSparse || _upTo(3) == 0)
                    table.SetItemText(row, col, _cell(m_columns[static_cast<size_t>(col)]));
            }
            static const std::pair<const char*, const char*> kSecurities[] = {
                {"600000", "17"},  {"000001", "33"}, {"510300", "20"}, {"900901", "18"},  {"00700", "73"},
                {"688001", "145"}, {"-", "17"},      {"600000", ""},   {"600001", "017"}, {"x\\y:z", "0"}};
            const auto& [code, market] = kSecurities[_upTo(std::size(kSecurities))];
            for (int col = 0; col < table.GetColumnNumber(); ++col) {  // doubled ones, too
                if (m_columns[static_cast<size_t>(col)] == "4") table.SetItemText(row, col, code);
                if (m_columns[static_cast<size_t>(col)] == "3") table.SetItemText(row, col, market);
            }
        }
        return table;
    }

    void _checkPushTable() {
        CDataTable table;
        CUIData rows;
        ASSERT_TRUE(m_quotes.GetData("push_table", table) && m_quotes.GetData("push_code2row", rows));
        ASSERT_EQ(rows.Size(), m_plain.Order().size());
        for (size_t i = 0; i < rows.Size(); ++i) {
            const std::string& key = m_plain.Order()[i];
            ASSERT_EQ(rows.GetDataLong(key), static_cast<int64_t>(i));
            PlainQuotes::Record cells = m_plain.Pushed().at(key);
            for (const std::string_view id : kPushColumns)
                ASSERT_EQ(table.GetItemText(static_cast<int>(i), id), cells[std::string(id)])
                    << key << " " << id;
        }
    }

    void _check(const std::set<std::string>& keys, const CUIData& out, int isPush) {
        CDataSet codes;
        ASSERT_TRUE(out.GetData("updatecode", codes));
        ASSERT_EQ(std::set<std::string>(codes.begin(), codes.end()), keys);
        ASSERT_EQ(out.GetDataLong("is_push"), isPush);
        ASSERT_EQ(out.Size(), keys.size() + 2);
        for (const std::string& key : keys) {
            const CUIData quote = QuoteIn(out, key);
            const auto& plain = m_plain.Quote(key);
            ASSERT_EQ(quote.Size(), plain.size()) << key;
            for (const auto& [name, text] : plain) ASSERT_EQ(Said(quote, name), text) << key << " " << name;
        }
    }

    std::mt19937 m_random;
    CHqData m_quotes;
    PlainQuotes m_plain;
    std::vector<std::string> m_columns;
    CUIData m_kept;
};

TEST(HqDataTest, RandomPushesAndQueriesAnswerAsPlainCodeDoes) {
    for (uint32_t seed = 1; seed <= 8; ++seed) {
        RandomQuotes quotes(seed);
        for (int step = 0; step < 1500; ++step) {
            quotes.Step();
            ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed << " step " << step;
        }
    }
}

}  // namespace
}  // namespace luadui
