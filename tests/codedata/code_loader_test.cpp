// Loading while others look up; hosts that fail; what a load leaves behind.
#include "codedata/code_loader.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <semaphore>
#include <thread>

#include "base/counters.h"
#include "base/data_table.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "messaging/host_link.h"
#include "trade/trade.h"

namespace luadui {
namespace {

using namespace std::chrono_literals;

// The host: answers what `answer` says, on the thread that loads.
std::function<std::string(const std::string& path)> s_answer;
std::atomic<int> s_asked, s_asking, s_mostAsking;

int AnswerRequest(CQueueReqItem* request) {
    ++s_asked;
    s_mostAsking = std::max<int>(s_mostAsking, ++s_asking);
    CUIData params;
    request->GetData("Params", params);
    try {
        request->SetData("result", s_answer(params.GetDataString("path")));
    } catch (...) {
        --s_asking;
        throw;
    }
    --s_asking;
    return 0;
}

std::string Row(const std::string& code, const std::string& name, const std::string& market,
                const std::string& phonetic) {
    return "\"" + code + "\",\"" + name + "\",\"" + market + "\",\"" + phonetic + "\"\n";
}

// 600000 to 600099, whose names tell the version.
std::string Version(int version) {
    std::string reply;
    for (int i = 0; i < 100; ++i) {
        reply += Row(std::to_string(600'000 + i), "V" + std::to_string(version), "17", "PY");
    }
    return reply;
}

std::string NameOf(CurrentBook::Reading book, const std::string& code) {
    const auto entry = book->Find(code, "17");
    return entry ? std::string(book->At(*entry).name) : "";
}

class CodeLoaderTest : public testing::Test {
  protected:
    CodeLoaderTest() {
        CHostLink::Instance().SetRequestSyncCallback(AnswerRequest);
        s_asked = s_mostAsking = 0;
    }
    ~CodeLoaderTest() override { WaitUntilIdle(loader); }
    static void WaitUntilIdle(const CodeLoader& loader) {
        while (!loader.IsIdle()) std::this_thread::sleep_for(1ms);
    }

    CodeLoader loader{60s};
};

TEST_F(CodeLoaderTest, LookupsWaitForALoadButNotForAReload) {
    std::binary_semaphore isAsked{0}, go{0};
    std::atomic<int> version = 1;
    s_answer = [&](const std::string& path) {
        EXPECT_EQ(path, "source");
        const char* const before[] = {"", "V1", "V2"};  // and no waiting for itself
        EXPECT_EQ(NameOf(loader.Read(), "600001"), before[s_asked - 1]);
        isAsked.release();
        go.acquire();
        return Version(version);
    };
    loader.Reload();
    EXPECT_TRUE(loader.IsIdle()) << "nothing to load again";
    ASSERT_TRUE(loader.Load("source"));
    isAsked.acquire();
    EXPECT_EQ(loader.ReadNow()->Size(), 0U);
    std::thread host([&] {
        std::this_thread::sleep_for(20ms);
        go.release();
    });
    EXPECT_EQ(NameOf(loader.Read(), "600001"), "V1");
    host.join();

    version = 2;
    loader.Reload();
    isAsked.acquire();
    EXPECT_EQ(NameOf(loader.Read(), "600001"), "V1");
    for (int i = 0; i < 5; ++i) loader.Reload();  // all of them one more load
    go.release();
    isAsked.acquire();
    go.release();
    WaitUntilIdle(loader);
    EXPECT_EQ(NameOf(loader.Read(), "600001"), "V2");
    EXPECT_EQ(s_asked, 3);
}

TEST_F(CodeLoaderTest, AHostThatHangsIsWaitedForOnce) {
    CodeLoader impatient(50ms);
    std::binary_semaphore go{0};
    s_answer = [&](const std::string&) {
        go.acquire();
        return Version(1);
    };
    const uint64_t ended = CCounters::Get("code_list_wait_ended");
    ASSERT_TRUE(impatient.Load(""));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(impatient.Read()->Size(), 0U);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
    for (int i = 0; i < 1'000; ++i) EXPECT_EQ(impatient.Read()->Size(), 0U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20s) << "every lookup waited anew";
    EXPECT_EQ(CCounters::Get("code_list_wait_ended"), ended + 1'001);
    go.release();
    WaitUntilIdle(impatient);
    EXPECT_EQ(impatient.Read()->Size(), 100U);
}

TEST_F(CodeLoaderTest, AnAnswerWithoutAListKeepsTheOldOne) {
    s_answer = [](const std::string&) { return Version(7); };
    ASSERT_TRUE(loader.Load(""));
    const std::function<std::string()> failures[] = {[] { return ""; }, [] { return "\"600000\",\"cut"; },
                                                     []() -> std::string { throw 1; }};
    for (const auto& failure : failures) {
        EXPECT_EQ(NameOf(loader.Read(), "600099"), "V7");
        const uint64_t empty = CCounters::Get("code_list_empty");
        s_answer = [&](const std::string&) { return failure(); };
        ASSERT_TRUE(loader.Load(""));
        EXPECT_EQ(loader.Read()->Size(), 100U);
        EXPECT_EQ(CCounters::Get("code_list_empty"), empty + 1);
        WaitUntilIdle(loader);
    }
}

TEST_F(CodeLoaderTest, LoadsFollowEachOther) {
    std::atomic<int> version = 0;
    s_answer = [&](const std::string&) {
        std::this_thread::sleep_for(2ms);
        return Version(++version);
    };
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(loader.Load(""));
        loader.Reload();
    }
    EXPECT_GE(loader.Read()->Size(), 100U);
    WaitUntilIdle(loader);
    EXPECT_EQ(s_mostAsking, 1);
    EXPECT_GE(s_asked, 5);
    EXPECT_EQ(NameOf(loader.Read(), "600000"), "V" + std::to_string(version));
}

// Every reading sees one list, whatever is loaded meanwhile.
TEST_F(CodeLoaderTest, ReadersSeeOneListEach) {
    constexpr int kLoads = 60, kReaders = 3;
    std::atomic<int> version = 0;
    s_answer = [&](const std::string&) { return Version(++version); };
    ASSERT_TRUE(loader.Load(""));
    ASSERT_EQ(loader.Read()->Size(), 100U);
    std::atomic<bool> isDone = false;
    std::vector<std::thread> readers;
    for (int i = 0; i < kReaders; ++i) {
        readers.emplace_back([&] {
            while (!isDone) {
                const auto book = loader.Read();
                const std::string_view name = book->At(0).name;
                EXPECT_EQ(book->At(99).name, name);
                const auto found = book->Search(GbkToWide(name));
                ASSERT_TRUE(found);
                EXPECT_EQ(book->WideName(*found), GbkToWide(name));
            }
        });
    }
    for (int i = 0; i < kLoads; ++i) {
        i % 2 ? loader.Reload() : static_cast<void>(loader.Load(""));
        std::this_thread::sleep_for(1ms);
    }
    WaitUntilIdle(loader);
    isDone = true;
    for (auto& reader : readers) reader.join();
}

TEST_F(CodeLoaderTest, AdditionsStayUntilTheListHasThem) {
    s_answer = [](const std::string&) { return Row("510300", "LIST", "20", "HS"); };
    EXPECT_EQ(loader.Add({{"159915", "EARLY", "36", "CY"}}), 1U) << "before there is a list";
    ASSERT_TRUE(loader.Load(""));
    EXPECT_EQ(loader.Read()->Size(), 2U);
    EXPECT_EQ(loader.Add({{"510300", "OTHER", "20", ""}, {"510050", "NEW", "20", "SZ"}}), 1U);
    WaitUntilIdle(loader);
    s_answer = [](const std::string&) {
        return Row("510300", "LIST2", "20", "HS") + Row("159915", "LIST2", "36", "");
    };
    EXPECT_EQ(loader.Read()->Size(), 3U);
    ASSERT_TRUE(loader.Load(""));
    const auto book = loader.Read();
    EXPECT_EQ(book->Size(), 3U);
    const auto name = [&](const char* code) { return std::string(book->At(*book->Find(code)).name); };
    EXPECT_EQ(name("510300") + name("159915") + name("510050"), "LIST2LIST2NEW");
}

// Through the functions that pages and hosts call.
TEST_F(CodeLoaderTest, WizardAnswers) {
    s_answer = [](const std::string&) {
        return Row("000001", Gbk("平安银行"), "33", "PAYH,PAYX") +
               Row("000001", Gbk("上证指数"), "21", "SZZS") + Row("600001", Gbk("*ST邯钢"), "17", "STHG") +
               Row("A1b", "lower", "17", "");
    };
    ASSERT_TRUE(CDataManager::InitKeyFairy("source"));
    EXPECT_GE(CDataManager::Get_KeyFairy_Size(), 4) << "and what other tests added";
    WaitUntilIdle(CodeLoader::Instance());
    EXPECT_TRUE(CTrade::IsRiskWarned("600001", "17"));

    struct Case {
        const wchar_t *query, *market, *name17;
    };
    const std::wstring bank = GbkToWide(Gbk("平安银行")), steel = GbkToWide(Gbk("*ST邯钢"));
    const std::wstring span = L"01" + bank.substr(0, 1), endless(10'000, L'0');
    const Case cases[] = {{L"", L"", L""},
                          {L"000001", L"21", L""},
                          {L"1", L"21", steel.c_str()},
                          {bank.c_str(), L"33", L""},
                          {span.c_str(), L"33", L""},
                          {L"payx", L"33", L""},
                          {L"PAYHPAYX", L"", L""},
                          {L"YH,PA", L"", L""},
                          {L"a1B", L"17", L"lower"},
                          {L"A1bLOW", L"17", L"lower"},
                          {L"st", L"17", steel.c_str()},
                          {L"\xE901", L"", L""},
                          {L"\xFF30", L"", L""},
                          {endless.c_str(), L"", L""}};
    for (const Case& c : cases) {
        EXPECT_EQ(CDataManager::GetMarketFromKeyFairy(c.query), c.market) << WideToGbk(c.query);
        EXPECT_EQ(CDataManager::GetMarketCodeFromKeyFairy(c.query), c.market);
        EXPECT_EQ(CDataManager::isFindCodeFromKeyFairy(c.query), *c.market ? 1 : 0);
        EXPECT_EQ(CDataManager::GetZqmcFromKeyFairy(c.query, L"17"), c.name17) << WideToGbk(c.query);
    }

    CDuiString market(L"kept");
    EXPECT_EQ(CDataManager::GetZqmcFromZqdmFairy(L"a1b", market), L"");
    EXPECT_EQ(market, L"kept");
    EXPECT_EQ(CDataManager::GetZqmcFromZqdmFairy(L"A1b", market), L"lower");
    EXPECT_EQ(market, L"17");
    EXPECT_EQ(CDataManager::GetZqmcFromZqdmFairy(L"000001", market), bank.c_str()) << "33 comes before 21";
    EXPECT_EQ(market, L"33");
    EXPECT_EQ(CDataManager::GetZqmcFromFairy(L"000001", L"21"), GbkToWide(Gbk("上证指数")).c_str());
    EXPECT_EQ(CDataManager::SecurityName("000001", "1"), Gbk("平安银行")) << "an exchange code";
    EXPECT_EQ(CDataManager::SecurityName("000001", ""), "");
    EXPECT_EQ(CDataManager::GetMarketByCodeAndZQMC(L"000001", bank.c_str()), L"33");
    EXPECT_EQ(CDataManager::SecurityMarket("000001", Gbk("上证指数")), "21");
    EXPECT_EQ(CDataManager::SecurityMarket("000001", "?"), "");
}

TEST_F(CodeLoaderTest, FundsOfATableAreFoundButReplaceNothing) {
    s_answer = [](const std::string&) { return Row("510300", "LIST", "20", "HS"); };
    ASSERT_TRUE(CDataManager::InitKeyFairy(""));
    EXPECT_EQ(CDataManager::SecurityName("510300", "20"), "LIST");
    CDataTable funds;
    for (const char* column : {"SecurityID", "SecurityName", "Market"}) funds.AddColumn(column);
    static int s_run = 10;  // codes that no earlier run added
    const std::string run = std::to_string(s_run++), fund = "1599" + run;
    const std::string rows[][3] = {
        {"510300", "OTHER", "2"}, {fund, "CYB" + run, "1"}, {"1588" + run, "HK", "36"}, {"", "x", "20"}};
    for (const auto& row : rows) {
        const int at = funds.AppendRow();
        for (int column = 0; column < 3; ++column) funds.SetItemText(at, column, row[column]);
    }
    EXPECT_EQ(CDataManager::InitETFKeyFairy(funds), 2);
    EXPECT_EQ(CDataManager::InitETFKeyFairy(funds), 0) << "twice";
    WaitUntilIdle(CodeLoader::Instance());
    CDuiString market;
    EXPECT_EQ(CDataManager::GetZqmcFromZqdmFairy(GbkToWide(fund).c_str(), market),
              GbkToWide("CYB" + run).c_str());
    EXPECT_EQ(market, L"36");
    EXPECT_EQ(CDataManager::GetMarketFromKeyFairy(GbkToWide("8" + run + "hk").c_str()), L"36");
    EXPECT_EQ(CDataManager::SecurityName("510300", "20"), "LIST");
    EXPECT_EQ(CDataManager::InitETFKeyFairy(CDataTable()), 0);
}

}  // namespace
}  // namespace luadui
