#include "datamgr/client_log.h"

#include <gtest/gtest.h>
#include <fstream>
#include <thread>

#include "base/counters.h"
#include "base/text.h"
#include "datamgr/request_log.h"
#include "messaging/guid.h"

namespace luadui {
namespace {

namespace fs = std::filesystem;

class ClientLogTest : public ::testing::Test {
  protected:
    ClientLogTest() {
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
    }
    ~ClientLogTest() override {
        SetClientFolder({});
        WriteRequestLog({});  // lets go of its file
        fs::remove_all(m_folder);
    }

    CClientLog Log(uintmax_t maxFile = CClientLog::kMaxFile) {
        return CClientLog(
            m_folder, [this] { return m_now; }, maxFile);
    }
    std::string Read(const std::string& file) const {
        std::ifstream stream(m_folder / "log" / PathFromText(file), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    size_t Files() const {
        std::error_code none;
        return static_cast<size_t>(std::distance(fs::recursive_directory_iterator(m_folder, none),
                                                 fs::recursive_directory_iterator()));
    }

    const fs::path m_folder =
        fs::temp_directory_path() / PathFromText(Gbk("luadui_client_log_日志_") + NewGuid());
    LogTime m_now{2024, 1, 5, 9, 5, 7, 45};
};

TEST_F(ClientLogTest, WritesTheFormatToTheByte) {
    const std::string text = Gbk("买入\\%s\t") + "\x81";
    EXPECT_TRUE(Log().Write(text, ""));
    m_now.millisecond = 7;
    EXPECT_TRUE(Log().Write(std::string("a\r\nb\0c", 6), ""));
    EXPECT_EQ(Read("20240105_datamanager.log"),
              "20240105 09:05:07:45    " + text + "\n 20240105 09:05:07:7    a\\r\\nb\\0c\n ");
    m_now = {2026, 12, 31, 23, 59, 59, 999};
    const std::string name = Gbk("交易乗");  // its last byte looks like a backslash
    ASSERT_EQ(name.back(), '\\');
    EXPECT_TRUE(Log().Write("", name));
    EXPECT_EQ(Read("20261231_" + name + ".log"), "20261231 23:59:59:999    \n ");
}

TEST_F(ClientLogTest, NamesAreNeverPaths) {
    const std::string longest(CClientLog::kMaxName, 'n');
    for (const std::string& name : {std::string("trade"), std::string("a.b c"), std::string("common"),
                                    std::string("nullable"), std::string("com10"), longest}) {
        EXPECT_TRUE(Log().Write("x", name)) << name;
    }
    const size_t files = Files();
    const uint64_t refused = CCounters::Get("client_log_name_refused");
    const std::string names[] = {"..",
                                 "../up",
                                 "a..b",
                                 "a/b",
                                 "a\\b",
                                 "/etc/x",
                                 "c:x",
                                 "x:stream",
                                 "a*",
                                 "a?",
                                 "a\"",
                                 "<a",
                                 "a>",
                                 "a|b",
                                 "x.",
                                 "x ",
                                 ".",
                                 " ",
                                 "con",
                                 "NUL",
                                 "Nul.txt",
                                 "com1.a.b",
                                 "LPT9 .x",
                                 "aux",
                                 "conout$",
                                 "a\nb",
                                 "a\x7f",
                                 "\x1b[m",
                                 "x\x81",
                                 "\x81/x",
                                 longest + "n",
                                 std::string("a\0b", 3),
                                 std::string(1 << 20, 'x')};
    for (const std::string& name : names) EXPECT_FALSE(Log().Write("x", name)) << name;
    EXPECT_EQ(CCounters::Get("client_log_name_refused") - refused, std::size(names));
    EXPECT_EQ(Files(), files);
}

TEST_F(ClientLogTest, WhatCannotBeWrittenIsCounted) {
    const uint64_t failed = CCounters::Get("client_log_failed"), full = CCounters::Get("client_log_full"),
                   cut = CCounters::Get("client_log_line_cut"),
                   refused = CCounters::Get("client_log_name_refused");
    EXPECT_TRUE(Log(60).Write("the first line", ""));
    EXPECT_TRUE(Log(60).Write("the line that reaches the limit", ""));
    EXPECT_FALSE(Log(60).Write("lost", ""));
    EXPECT_TRUE(Log(60).Write("in another file", "other"));
    EXPECT_EQ(CCounters::Get("client_log_full"), full + 1);

    EXPECT_TRUE(Log().Write(std::string(CClientLog::kMaxMessage - 1, 'x') + Gbk("买"), "long"));
    EXPECT_EQ(CCounters::Get("client_log_line_cut"), cut + 1);
    EXPECT_TRUE(Read("20240105_long.log").ends_with("x\n "));

    EXPECT_FALSE(CClientLog(m_folder / "missing", CTextLog::SystemTime).Write("lost", ""));
    EXPECT_FALSE(fs::exists(m_folder / "missing"));
    EXPECT_EQ(CCounters::Get("client_log_failed"), failed + 1);
    EXPECT_FALSE(CClientLog(m_folder / std::string(240, 'f'), CTextLog::SystemTime).Write("lost", ""));
    EXPECT_EQ(CCounters::Get("client_log_name_refused"), refused + 1);
}

TEST_F(ClientLogTest, LinesOfTwoThreadsArriveWhole) {
    constexpr int kLines = 100;
    const std::string message(3000, 'x');
    std::thread other([&] {
        for (int i = 0; i < kLines; ++i) Log().Write(message, "");
    });
    for (int i = 0; i < kLines; ++i) Log().Write(message, "");
    other.join();
    std::string all;
    for (int i = 0; i < 2 * kLines; ++i) all += "20240105 09:05:07:45    " + message + "\n ";
    EXPECT_EQ(Read("20240105_datamanager.log"), all);
}

TEST_F(ClientLogTest, TheProcessWritesOnceItKnowsItsFolder) {
    const uint64_t lines = CCounters::Get("client_log_without_folder"),
                   records = CCounters::Get("request_log_without_folder");
    EXPECT_FALSE(WriteClientLog("lost", ""));
    EXPECT_FALSE(WriteRequestLog({}));
    EXPECT_EQ(CCounters::Get("client_log_without_folder"), lines + 1);
    EXPECT_EQ(CCounters::Get("request_log_without_folder"), records + 1);
    EXPECT_TRUE(ClientLogFolder().empty());
    SetClientFolder(m_folder);
    EXPECT_TRUE(WriteClientLog("a line", "trade"));
    EXPECT_TRUE(WriteRequestLog({1201, "position", "1000000089", 35, 0, "done"}));
    EXPECT_EQ(Files(), 3u);  // with the folder
    std::string found;
    for (const auto& entry : fs::directory_iterator(ClientLogFolder())) {
        found += Read(WideToGbk(entry.path().filename().wstring()));
    }
    EXPECT_NE(found.find("    a line\n "), std::string::npos);
    EXPECT_NE(found.find(" type=1201 kind=position account=10***89 ms=35 code=0 message=4\n"),
              std::string::npos);
}

TEST(RequestLog, TellsNoSecrets) {
    struct Case {
        RequestLogLine line;
        std::string text;
    };
    const std::string account = Gbk("账户账户账户");
    const Case cases[] = {
        {{}, "type=0 kind=- account=- ms=- code=0 message=0"},
        {{1206, "deal", "12345678", 0, -3, "canary"},
         "type=1206 kind=deal account=12***78 ms=0 code=-3 message=6"},
        {{-1, "a code=0\n", "1234567", -5, 1, ""},
         "type=-1 kind=a_code=0_ account=*** ms=- code=1 message=0"},
        {{1, "k", " =23456\n ", 1, 0, ""}, "type=1 kind=k account=_=***__ ms=1 code=0 message=0"},
        {{1, "k", account, 1, 0, ""}, "type=1 kind=k account=*** ms=1 code=0 message=0"},
        {{1, std::string_view(account).substr(0, 3), "", INT64_MAX, 0, ""},
         "type=1 kind=" + account.substr(0, 2) + " account=- ms=9223372036854775807 code=0 message=0"}};
    for (const Case& test : cases) EXPECT_EQ(RequestLogText(test.line), test.text);
}

}  // namespace
}  // namespace luadui
