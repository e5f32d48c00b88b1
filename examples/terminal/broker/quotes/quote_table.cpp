#include "broker/quotes/quote_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace terminal {

struct QuoteField {
    std::string_view id;
    std::string (*text)(const Quote& quote, size_t level);
    size_t level = 0;

    std::string TextOf(const Quote& quote) const { return text(quote, level); }
    bool IsOfSecurity() const;
};

namespace {

constexpr std::string_view kNothing = "-";
constexpr std::string_view kCode = "4", kMarket = "3";

template <auto kMember>
std::string Price(const Quote& quote, size_t) {
    return MillsText(quote.*kMember);
}
template <auto kMember>
std::string Count(const Quote& quote, size_t) {
    return std::to_string(quote.*kMember);
}
template <auto kMember>
std::string Text(const Quote& quote, size_t) {
    return quote.security.*kMember;
}
template <auto kSide>
std::string LevelPrice(const Quote& quote, size_t level) {
    return MillsText((quote.*kSide)[level].price);
}
template <auto kSide>
std::string LevelVolume(const Quote& quote, size_t level) {
    return std::to_string((quote.*kSide)[level].volume);
}

std::string Turnover(const Quote& quote, size_t) { return CentsText(quote.turnover); }

std::string Time(const Quote& quote, size_t) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d%02d%02d", quote.seconds / 3600 % 24, quote.seconds / 60 % 60,
                  quote.seconds % 60);
    return text;
}

// The server computes the change of every other security and leaves the rest to the client.
std::string Change(const Quote& quote, size_t) {
    if (quote.security.code.back() % 2 != 0) return std::string(kNothing);
    char text[32];
    std::snprintf(text, sizeof text, "%.6f",
                  static_cast<double>(quote.last - quote.previousClose) * 100 /
                      static_cast<double>(quote.previousClose));
    return text;
}

// The exchanges have words of their own.
std::string Status(const Quote& quote, size_t) {
    constexpr int kShanghai = 0x10;
    const bool isShanghai = (std::atoi(quote.security.market.c_str()) & kShanghai) != 0;
    if (quote.isSuspended) return isShanghai ? "P0" : "H0";
    return isShanghai ? "T111" : "T0";
}

constexpr QuoteField kFields[] = {
    {"1", Time},
    {kMarket, Text<&ListedSecurity::market>},
    {kCode, Text<&ListedSecurity::code>},
    {"55", Text<&ListedSecurity::name>},
    {"6", Price<&Quote::previousClose>},
    {"7", Price<&Quote::open>},
    {"8", Price<&Quote::high>},
    {"9", Price<&Quote::low>},
    {"10", Price<&Quote::last>},
    {"13", Count<&Quote::volume>},
    {"14", Count<&Quote::atAsk>},
    {"19", Turnover},
    {"49", Count<&Quote::lastTrade>},
    {"69", Price<&Quote::limitUp>},
    {"70", Price<&Quote::limitDown>},
    {"127", Status},
    {"199112", Change},
    {"24", LevelPrice<&Quote::buy>, 0},
    {"26", LevelPrice<&Quote::buy>, 1},
    {"28", LevelPrice<&Quote::buy>, 2},
    {"150", LevelPrice<&Quote::buy>, 3},
    {"154", LevelPrice<&Quote::buy>, 4},
    {"25", LevelVolume<&Quote::buy>, 0},
    {"27", LevelVolume<&Quote::buy>, 1},
    {"29", LevelVolume<&Quote::buy>, 2},
    {"151", LevelVolume<&Quote::buy>, 3},
    {"155", LevelVolume<&Quote::buy>, 4},
    {"30", LevelPrice<&Quote::sell>, 0},
    {"32", LevelPrice<&Quote::sell>, 1},
    {"34", LevelPrice<&Quote::sell>, 2},
    {"152", LevelPrice<&Quote::sell>, 3},
    {"156", LevelPrice<&Quote::sell>, 4},
    {"31", LevelVolume<&Quote::sell>, 0},
    {"33", LevelVolume<&Quote::sell>, 1},
    {"35", LevelVolume<&Quote::sell>, 2},
    {"153", LevelVolume<&Quote::sell>, 3},
    {"157", LevelVolume<&Quote::sell>, 4},
};

}  // namespace

bool QuoteField::IsOfSecurity() const { return id == kCode || id == kMarket; }

QuoteTable::QuoteTable() {
    for (const QuoteField& field : kFields) _addColumn(std::string(field.id), &field);
}

QuoteTable::QuoteTable(const std::vector<std::string>& fields) {
    for (const std::string& name : fields) {
        const auto* const found = std::ranges::find(kFields, name, &QuoteField::id);
        _addColumn(name, found == std::end(kFields) ? nullptr : found);
    }
}

void QuoteTable::_addColumn(const std::string& name, const QuoteField* field) {
    m_table.AddColumn(name);
    m_fields.push_back(field);
}

void QuoteTable::Append(const Quote& quote) {
    const int row = m_table.AppendRow();
    int col = 0;
    for (const QuoteField* const field : m_fields)
        m_table.SetItemText(row, col++, field ? field->TextOf(quote) : std::string(kNothing));
}

void QuoteTable::AppendChange(const Quote& before, const Quote& quote, uint64_t variant) {
    const int row = m_table.AppendRow();
    int col = 0;
    for (const QuoteField* const field : m_fields) {
        const std::string text = field ? field->TextOf(quote) : std::string();
        const bool isTold = field && (field->IsOfSecurity() || text != field->TextOf(before));
        const bool isDash = (variant >> (col % 64) & 1) != 0;
        const std::string_view untold = isDash ? kNothing : std::string_view();
        m_table.SetItemText(row, col++, isTold ? std::string_view(text) : untold);
    }
}

}  // namespace terminal
