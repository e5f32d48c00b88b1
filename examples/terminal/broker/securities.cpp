#include "broker/securities.h"

#include "base/text.h"

namespace terminal {
namespace {

constexpr std::string_view kStarMarket = "145";

struct Sample {
    const char* code;
    const char* name;
    const char* market;
    Mills last;
    Mills previousClose;
};

constexpr Sample kSamples[] = {
    {"600000", "浦发银行", "17", 10'360, 10'310},       {"600036", "招商银行", "17", 44'520, 44'100},
    {"600519", "贵州茅台", "17", 1'468'000, 1'452'500}, {"601398", "工商银行", "17", 6'870, 6'900},
    {"688981", "中芯国际", "145", 94'260, 91'800},      {"510300", "沪深300ETF", "20", 3'985, 3'962},
    {"900905", "老凤祥Ｂ", "18", 3'742, 3'742},         {"000001", "平安银行", "33", 11'540, 11'620},
    {"000333", "美的集团", "33", 72'350, 71'900},       {"000858", "五 粮 液", "33", 128'450, 129'300},
    {"300750", "宁德时代", "33", 251'170, 246'050},     {"159915", "创业板ETF", "36", 2'109, 2'095},
    {"200596", "古井贡Ｂ", "34", 118'950, 119'400},
};

}  // namespace

std::vector<Security> SampleSecurities() {
    std::vector<Security> securities;
    for (const Sample& sample : kSamples)
        securities.push_back(
            {sample.code, luadui::Gbk(sample.name), sample.market, sample.last, sample.previousClose});
    return securities;
}

// The B shares of Shanghai trade in dollars, those of Shenzhen in Hong Kong dollars.
std::string_view CurrencyOf(std::string_view market) {
    if (market == "18") return "USD";
    if (market == "34") return "HKD";
    return "CNY";
}

bool IsWholeLots(const Security& security, Shares volume, bool isSale, Shares available) {
    constexpr Shares kLot = 100, kLeastOfStar = 200;
    if (isSale && volume == available) return true;
    return security.market == kStarMarket ? volume >= kLeastOfStar : volume % kLot == 0;
}

std::pair<Mills, Mills> LimitsOf(const Security& security) {
    const bool isWide = security.market == kStarMarket || security.code.starts_with("300");
    const Mills room = security.previousClose * (isWide ? 20 : 10) / 100;
    return {security.previousClose - room, security.previousClose + room};
}

bool IsWithinLimits(const Security& security, Mills price) {
    const auto [lowest, highest] = LimitsOf(security);
    return price >= lowest && price <= highest;
}

}  // namespace terminal
