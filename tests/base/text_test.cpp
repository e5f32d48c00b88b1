#include "base/text.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "base/counters.h"
#include "base/text_log.h"

namespace luadui {
namespace {

using ::testing::ElementsAre;

TEST(TextTest, StepsByCharacter) {
    const std::string s = "\x81\x5C";  // ends like '\'
    const std::string p = "\x95\x7C";  // ends like '|'
    const std::string l = "\x81\x61";  // ends like 'a'
    EXPECT_THAT(SplitText(p + "|" + s + "\\|", '|'), ElementsAre(p, s + "\\", ""));
    EXPECT_THAT(SplitText("\x95|x", '|'), ElementsAre("\x95|x")) << "a whole character";
    EXPECT_THAT(SplitText("", '|'), ElementsAre(""));
    EXPECT_EQ(ToUpperText("ab" + l + "z"), "AB" + l + "Z");
    EXPECT_EQ(ToLowerText("AB\x81\x41Z"), "ab\x81\x41z");
    EXPECT_EQ(ReplaceText("a" + l + "aa", "a", "bb"), "bb" + l + "bbbb");
    EXPECT_EQ(ReplaceText("UserToken\x81UserToken", "UserToken", "t"), "t\x81UserToken");
    EXPECT_EQ(ReplaceText("abc", "", "x"), "abc");
    EXPECT_EQ(TrimText(" \t" + s + "\r\n "), s);
    EXPECT_EQ(TrimText(" \t "), "");
}

TEST(TextTest, CutsBetweenCharacters) {
    const std::string text = Gbk("万科Ａ1");
    for (size_t limit = 0; limit <= text.size() + 1; ++limit) {
        const std::string_view cut = CutAtCharacter(text, limit);
        EXPECT_LE(cut.size(), limit);
        EXPECT_FALSE(EndsInsideCharacter(cut)) << limit;
        EXPECT_EQ(EndsInsideCharacter(std::string_view(text).substr(0, limit)), limit % 2 == 1 && limit < 6);
    }
    EXPECT_FALSE(EndsInsideCharacter(""));
    EXPECT_TRUE(EndsInsideCharacter("a\xFE\xFE\xFE"));
    EXPECT_FALSE(EndsInsideCharacter("\x80"));
}

TEST(TextTest, ConvertsAndCountsWhatIsReplaced) {
    EXPECT_EQ(GbkToUtf8("\xB9\xC9\xC6\xB1\x80"), "股票€");
    EXPECT_EQ(GbkToWide("\xB9\xC9"), L"股");
    EXPECT_EQ(WideToGbk(L"股a"),
              "\xB9\xC9"
              "a");
    const uint64_t before = CCounters::Get("text_replaced");
    EXPECT_EQ(Utf8ToGbk("a😀b"), "a?b");
    EXPECT_EQ(GbkToUtf8("a\x81"), "a\xEF\xBF\xBD");
    EXPECT_EQ(CCounters::Get("text_replaced"), before + 2);
    EXPECT_EQ(PathFromText("\\qsclient\\users/\xB9\xC9.cfg"),
              std::filesystem::path(u8"/qsclient/users/股.cfg"));
}

TEST(TextTest, NumbersWriteAndReadTheSame) {
    for (const double value : {0.1, -2.5e-300, 1e22, 3.0}) EXPECT_EQ(ParseDouble(DoubleText(value)), value);
    EXPECT_EQ(LongText(std::numeric_limits<int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(ParseLong("-9223372036854775808"), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(ParseLong("9223372036854775808"), std::nullopt);
    EXPECT_EQ(ParseDouble("1e5x"), std::nullopt);
}

class TextLogTest : public ::testing::Test {
  protected:
    TextLogTest() { std::filesystem::remove_all(m_folder); }
    ~TextLogTest() override { std::filesystem::remove_all(m_folder); }

    CTextLog Log(uint64_t maxBytes = CTextLog::kDefaultMaxBytes) {
        return CTextLog(m_folder / PathFromText(Gbk("日志")), "trade.log", maxBytes,
                        [this] { return m_now; });
    }
    static std::string Read(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() / "luadui_text_log_test";
    LogTime m_now{2026, 11, 21, 9, 3, 47, 5};
};

TEST_F(TextLogTest, OneLineAnEvent) {
    CTextLog log = Log();
    const std::string name = Gbk("贵州");
    for (const std::string& text :
         {std::string("%n%s a\r\nb\tc"), name + "\x81\n\x81", std::string("\0\x1b\x7f\xff", 4)}) {
        EXPECT_TRUE(log.Write(text));
    }
    EXPECT_EQ(Read(log.File()), "2026-11-21 09:03:47.005 %n%s a\\r\\nb\\tc\n2026-11-21 09:03:47.005 " + name +
                                    "\\x81\\n\\x81\n2026-11-21 09:03:47.005 \\x00\\x1b\\x7f\xff\n");
    EXPECT_EQ(log.File().filename(), "trade-20261121.log");
    m_now.day = 22;
    EXPECT_TRUE(log.Write("next day"));
    EXPECT_EQ(log.File().filename(), "trade-20261122.log");
    EXPECT_TRUE(Log().Write("a second terminal goes on"));
    EXPECT_EQ(SplitText(Read(log.File()), '\n').size(), 3u);
}

TEST_F(TextLogTest, StaysBelowItsLimitAndKeepsTheLatest) {
    CTextLog log = Log(20000);
    const uint64_t replaced = CCounters::Get("log_file_replaced"), cut = CCounters::Get("log_line_cut");
    for (int i = 0; i < 2000; ++i) ASSERT_TRUE(log.Write("event " + LongText(i)));
    uint64_t size = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder)) {
        if (entry.is_regular_file()) size += entry.file_size();
    }
    EXPECT_LE(size, 20000u);
    EXPECT_GE(size, 10000u);
    EXPECT_TRUE(Read(log.File()).ends_with("event 1999\n"));
    EXPECT_GT(CCounters::Get("log_file_replaced"), replaced);
    EXPECT_TRUE(log.Write(std::string(1000000, 'x')));
    EXPECT_EQ(CCounters::Get("log_line_cut"), cut + 1);
}

TEST_F(TextLogTest, AFolderThatCannotBeIsCountedUntilItCan) {
    std::filesystem::create_directories(m_folder);
    std::ofstream(m_folder / PathFromText(Gbk("日志"))) << "a file is in the way";
    CTextLog log = Log();
    const uint64_t failed = CCounters::Get("log_write_failed");
    EXPECT_FALSE(log.Write("lost"));
    EXPECT_EQ(CCounters::Get("log_write_failed"), failed + 1);
    std::filesystem::remove(m_folder / PathFromText(Gbk("日志")));
    EXPECT_TRUE(log.Write("written"));
}

}  // namespace
}  // namespace luadui
