// The quote server of the sample broker, and the probe that measures the UI thread.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "broker/answers.h"
#include "broker/quotes/quote_feed.h"
#include "host/ui_probe.h"
#include "messaging/queue_data.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CQueueReqItem;
using luadui::CUIData;
using testing::ElementsAre;

std::vector<ListedSecurity> Securities(int count) {
    std::vector<ListedSecurity> list = {
        {"600000", "17", "a"}, {"000001", "33", "b"}, {"000001", "17", "c"}, {"113001", "19", "d"}};
    const char* const markets[] = {"17", "33", "20", "145", "34", "153", "35"};
    for (int i = static_cast<int>(list.size()); i < count; ++i)
        list.push_back({std::to_string(200000 + i), markets[i % 7], "s"});
    return list;
}

CQueueReqItem Question(int type, std::string_view codes, std::string_view items = "",
                       const char* flag = "isOther") {
    CQueueReqItem request;
    CUIData params;
    params.SetData(type == 1602 ? "code" : "codeID", codes);
    params.SetData("DataItems", items);
    params.SetData(flag, "true");
    request.SetData("REQTYPE", type);
    request.SetData("Params", params);
    return request;
}

using Fields = std::map<std::string, std::string>;
using Mirror = std::map<std::string, Fields>;  // by "code:market"

// What a client knows that keeps the last value of what a row leaves out.
void Take(const CUIData& record, Mirror& mirror) {
    CDataTable table;
    ASSERT_TRUE(record.GetData("Table", table));
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        Fields& fields =
            mirror[std::string(table.GetItemText(row, "4")) + ":" + std::string(table.GetItemText(row, "3"))];
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            const std::string text(table.GetItemText(row, col));
            if (!text.empty() && text != "-")
                fields[std::string(table.GetColumnProperty(col, "name"))] = text;
        }
    }
}

class QuoteFeedTest : public testing::Test {
  protected:
    CUIData Ask(const CUIData& request) {
        CUIData answer;
        EXPECT_TRUE(m_feed.Take(request, answer));
        return answer;
    }
    Exchange m_exchange;
    QuoteFeed m_feed{m_exchange};
};

TEST_F(QuoteFeedTest, QuotesStayWithinTheRulesOfTheMarket) {
    std::string error;
    ASSERT_TRUE(
        m_exchange.Accept("880003", {.code = "600000", .volume = 300, .price = Mills{10'340}}, error));
    ASSERT_TRUE(m_exchange.Accept(
        "880001", {.code = "600000", .volume = 200, .isSale = true, .price = Mills{10'400}}, error));
    QuoteBoard board, again;
    for (QuoteBoard* const each : {&board, &again}) {
        each->List(Securities(300), m_exchange);
        for (size_t i = 0; i < 60'000; ++i) each->Move(i * 7 % 300, m_exchange);
    }
    int suspended = 0;
    for (size_t i = 0; i < 300; ++i) {
        const Quote& quote = board.At(i);
        EXPECT_EQ(quote.last, again.At(i).last);
        EXPECT_EQ(quote.turnover, again.At(i).turnover);
        EXPECT_TRUE(quote.last >= quote.limitDown && quote.last <= quote.limitUp &&
                    quote.last % quote.step == 0 && quote.low <= quote.last && quote.last <= quote.high &&
                    quote.atAsk <= quote.volume)
            << quote.security.code;
        suspended += quote.isSuspended ? 1 : 0;
        EXPECT_EQ(quote.volume == 0, quote.isSuspended);
        for (size_t level = 1; level < Quote::kLevels; ++level) {
            EXPECT_TRUE(quote.buy[level].price == 0 || quote.buy[level].price < quote.buy[level - 1].price);
            EXPECT_TRUE(quote.sell[level].price == 0 ||
                        quote.sell[level].price > quote.sell[level - 1].price);
        }
        EXPECT_TRUE(quote.sell[0].price == 0 || quote.buy[0].price < quote.sell[0].price);
    }
    EXPECT_TRUE(suspended > 0 && suspended < 30);
    EXPECT_EQ(board.At(0).last, 10'360);  // the exchange's
    const auto has = [](const Quote::Side& side, Mills price, Shares least) {
        return std::ranges::any_of(
            side, [&](const QuoteLevel& level) { return level.price == price && level.volume >= least; });
    };
    EXPECT_TRUE(has(board.At(0).buy, 10'340, 300));
    EXPECT_TRUE(has(board.At(0).sell, 10'400, 200));
}

TEST_F(QuoteFeedTest, PushesBringAClientToWhatAnAnswerSays) {
    m_feed.List(Securities(200));
    Mirror mirror;
    std::string codes;
    for (size_t i = 0; i < 100; ++i)
        codes += m_feed.Quotes()[i].security.code + ":" + m_feed.Quotes()[i].security.market + ",";
    Take(Ask(Question(1051, codes, "", "isSub")), mirror);
    ASSERT_EQ(mirror.size(), 100U);
    m_feed.SetRate(10'000);
    std::map<std::string, int> rows;  // by topic
    for (int step = 0; step < 50; ++step)
        for (const CUIData& push : m_feed.Step(std::chrono::milliseconds(20))) {
            CDataTable table;
            push.GetData("Table", table);
            rows[push.GetDataString("Topic")] += table.GetRowNumber();
            EXPECT_EQ(push.GetDataLong("DATATYPE"), kDataPush);
            Take(push, mirror);
        }
    m_exchange.SetPrice("600000", 10'500);
    for (const CUIData& push : m_feed.Follow("600000")) Take(push, mirror);
    EXPECT_TRUE(rows["hq"] > rows["hq_zq"] && rows["hq_zq"] > 0);
    EXPECT_EQ(static_cast<uint64_t>(rows["hq"] + rows["hq_zq"]) + 1, m_feed.RowCount());
    Mirror now;
    Take(Ask(Question(1051, codes)), now);
    EXPECT_EQ(mirror, now);
    EXPECT_EQ(now["600000:17"]["10"], "10.500");

    CUIData answer;
    EXPECT_FALSE(m_feed.Take(Question(1051, codes, "", "unsub"), answer));
    EXPECT_TRUE(m_feed.Step(std::chrono::seconds(1)).empty());
    EXPECT_TRUE(m_feed.Follow("600000").empty());
    EXPECT_FALSE(m_feed.Take(Question(1602, "600000:17"), answer));
    EXPECT_FALSE(m_feed.Step(std::chrono::milliseconds(20)).empty());
}

TEST_F(QuoteFeedTest, AnswersWhatIsAskedFor) {
    m_feed.List(Securities(4));
    struct {
        int type;
        const char* codes;
        const char* items;
        const char* answer;  // cells and rows
    } const kCases[] = {{1051, "600000:17", "4,3,55", "600000|17|a;"},
                        {1058, "113001", "55,4", "d|113001;"},
                        {1055, "000001:33", "4,99,", "000001|-|-;"},
                        {1051, "000001,000001:17,x,600000:18,,:", "3", "33;17;17;"},
                        {1051, "", "4", ""}};
    for (const auto& test : kCases) {
        const CUIData answer = Ask(Question(test.type, test.codes, test.items));
        EXPECT_EQ(answer.GetDataLong("DATATYPE"), kDataQuotes);
        CDataTable table;
        answer.GetData("Table", table);
        std::string text;
        for (int row = 0; row < table.GetRowNumber(); ++row) {
            for (int col = 0; col < table.GetColumnNumber(); ++col)
                text.append(col > 0 ? "|" : "").append(table.GetItemText(row, col));
            text += ";";
        }
        EXPECT_EQ(text, test.answer) << test.codes;
    }
}

LRESULT CALLBACK Doze(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NULL) Sleep(40);
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(UiProbeTest, SeesHowLongTheThreadIsBusy) {
    WNDCLASSW info = {};
    info.lpfnWndProc = &Doze;
    info.hInstance = GetModuleHandleW(nullptr);
    info.lpszClassName = L"DozingWnd";
    RegisterClassW(&info);
    const HWND window = CreateWindowExW(0, info.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                        info.hInstance, nullptr);
    ASSERT_TRUE(window);
    UiProbe probe;
    probe.Start(window);
    const ULONGLONG end = GetTickCount64() + 200;
    for (MSG message; GetTickCount64() < end;) {
        PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        Sleep(1);
    }
    // The thread no longer serves the window: what is on its way is ended with it.
    DestroyWindow(window);
    const UiProbe::Result result = probe.Stop();
    EXPECT_GE(result.probes, 1U);
    EXPECT_GE(result.longest, 39);
    EXPECT_EQ(probe.Stop().probes, 0U);
}

}  // namespace
}  // namespace terminal
