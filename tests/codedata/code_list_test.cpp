#include "codedata/code_list.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "base/counters.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

std::string Text(const CodeList& list) {
    std::string text;
    for (const CodeRecord& row : list) {
        for (const std::string_view field : {row.code, row.name, row.market, row.phonetic})
            text.append(field).append("/");
        text.back() = '\n';
    }
    return text;
}

struct ReplyCase {
    const char *reply, *rows;  // UTF-8
    uint64_t refused;
};

const ReplyCase kReplies[] = {
    {"", "", 0},
    {"\n\r\n , ;{}\t\n", "", 0},
    {"\"600000\",\"浦发银行\",\"17\",\"PFYH\"\n\"000002\",\"万科A\",\"33\",\"WKA\"",
     "600000/浦发银行/17/PFYH\n000002/万科A/33/WKA\n", 0},
    // Forms of fields.
    {"[[1]],[[a\"b,]c]],\"17\",[[A]]\n", "1/a\"b,]c/17/A\n", 0},
    {"\"1\",\"a]]b[[{},c\",\"17\",\"\"\n", "1/a]]b[[{},c/17/\n", 0},
    {"\"1\",\"万&#032;&#032;科&#034;&#038;#032;\",\"17\",\"W&#032;K\"\n", "1/万  科\"&#032;/17/W K\n", 0},
    {"\"1\",\"&#31;&#031;&#128;&#032&&#x20;\",\"17\",\"&#\"\n", "1/&#31;&#031;&#128;&#032&&#x20;/17/&#\n", 0},
    {"\"1&#032;\",\" a \",\" 17\",\" A\"\n", "1/ a /17/ A\n", 0},
    // Forms of rows.
    {"return {\n{\"1\",\"a\",\"17\",\"A\"},{\"2\";\"b\";\"33\";\"B\"},\n}", "1/a/17/A\n2/b/33/B\n", 1},
    {"\"1\" \"a\" \"17\" \"A\"\r\"2\"\t\"b\",\"33\",,\"B\",\r\n", "1/a/17/A\n2/b/33/B\n", 0},
    // A broken row takes no other line along, and no other braces where it is seen to be broken.
    {"\"1\",\"a\",\"17\",\"A\"\n\"2\",\"b\",\"17\",\"B", "1/a/17/A\n", 1},
    {"\"1\",\"a\",\"17\",\"A\"\n\"2\",\"b\",\"17\"", "1/a/17/A\n", 1},
    {"\"1,\"a\",\"17\",\"A\"\n\"2\",\"b\",\"17\",\"B\"\n", "2/b/17/B\n", 1},
    {"\"1\",[[a]\",\"17\",\"A\"\n\"2\",\"b\",\"17\",\"B\"\n", "2/b/17/B\n", 1},
    {"{\"1,\"a\",\"17\",\"A\"},{\"2\",\"b\",\"17\",\"B\"}", "2/b/17/B\n", 1},
    {"\"1\",\"a\",\"17\"\n\"1\",\"a\",\"17\",\"A\",\"x\"\n1,a,17,A\n\"1\",\"a\",x,\"17\",\"A\"\n", "", 4},
    {"\"1,\"a皚\",\"17\",\"A\"\n", "", 1},  // its second byte looks like a brace
    // Codes and markets.
    {"\"\",\"a\",\"17\",\"A\"\n\"1 "
     "2\",\"a\",\"17\",\"A\"\n\"1:2\",\"a\",\"17\",\"A\"\n\"浦\",\"a\",\"17\",\"A\"\n",
     "", 4},
    {"\"1\",\"a\",\"\",\"A\"\n\"1\",\"a\",\"SH\",\"A\"\n\"1\",\"a\",\"-17\",\"A\"\n\"1\",\"a\",\"123456\","
     "\"A\"\n",
     "", 4},
    {"\"12345678901234567890123456789012\",\"a\",\"17\",\"A\"\n\"IF2609.CFE_-*\",\"\",\"129\",\"\"\n",
     "IF2609.CFE_-*//129/\n", 1},
    {"\"1\",\"a\",\"17\",\"A\"\n\"1\",\"b\",\"17\",\"B\"\n", "1/a/17/A\n1/b/17/B\n",
     0},  // doubled codes stay
};

TEST(CodeList, ReadsWhatIsSoundAndCountsTheRest) {
    for (const ReplyCase& c : kReplies) {
        const uint64_t before = CCounters::Get("code_list_row_refused");
        EXPECT_EQ(GbkToUtf8(Text(CodeList::Parse(Gbk(c.reply)))), c.rows) << c.reply;
        EXPECT_EQ(CCounters::Get("code_list_row_refused") - before, c.refused) << c.reply;
    }
}

// Every pair of bytes at the end of a name: characters come through, whatever their second byte looks like,
// and broken ones swallow no quote.
TEST(CodeList, ReadsEveryCharacterAndSurvivesEveryOtherPair) {
    const std::string other = "2/b/17/B\n";
    for (int pair = 0; pair < 0x10000; ++pair) {
        const std::string bytes{static_cast<char>(pair >> 8), static_cast<char>(pair)};
        if (bytes.find_first_of("\"\r\n") != bytes.npos) continue;
        const std::string rest = ",\"17\",\"A\"\n\"2\",\"b\",\"17\",\"B\"\n";
        const std::string quoted = Text(CodeList::Parse("\"1\",\"x" + bytes + '"' + rest));
        const std::string longText = Text(CodeList::Parse("\"1\",[[x" + bytes + "]]" + rest));
        if (code_page::CharLength(bytes, 0) == 2) {
            ASSERT_EQ(quoted, "1/x" + bytes + "/17/A\n" + other) << pair;
            ASSERT_EQ(longText, quoted) << pair;
        } else {
            ASSERT_TRUE(quoted.starts_with("1/x") && quoted.ends_with("/17/A\n" + other)) << pair;
            ASSERT_TRUE(longText.ends_with(other)) << pair;
        }
    }
}

TEST(CodeList, ReplacesBrokenTextAndCutsLongText) {
    const uint64_t replaced = CCounters::Get("code_list_text_replaced"),
                   cut = CCounters::Get("code_list_text_cut");
    const std::string row = "\"1\",\"\x81\",\"17\",\"\x01\xFE\"\n";
    EXPECT_EQ(Text(CodeList::Parse(row)), "1/?/17/??\n");
    std::string name;
    while (name.size() < 200) name += Gbk("浦");
    const CodeList list =
        CodeList::Parse("\"1\",\"" + name + "\",\"17\",\"" + std::string(300, 'P') + "\"\n");
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list.begin()->name, name.substr(0, 126));  // whole characters of at most 127 bytes
    EXPECT_EQ(list.begin()->phonetic, std::string(255, 'P'));
    EXPECT_EQ(CCounters::Get("code_list_text_replaced") - replaced, 1U);
    EXPECT_EQ(CCounters::Get("code_list_text_cut") - cut, 2U);
}

// Generated rows with every writing of a field; a reply cut anywhere gives the rows before the cut.
TEST(CodeList, ReadsGeneratedRepliesCutAnywhere) {
    std::mt19937 random(6);
    const std::string parts[] = {Gbk("浦"), "\x81\x5D", "\x81\x5B", "\x81\x7C", "\x81\x7D", "]",
                                 "{",       "A",        " ",        "*",        ";"};
    std::string reply, rows;
    std::vector<size_t> ends;  // of the rows in the reply
    for (int i = 0; i < 40; ++i) {
        std::string name;
        for (size_t k = random() % 6; k > 0; --k) name += parts[random() % std::size(parts)];
        const bool isLong = random() % 2 == 0 && !name.ends_with(']') && name.find("]]") == name.npos;
        const std::string code = std::to_string(600000 + i);
        reply += '"' + code + "\"," +
                 (isLong ? "[[" + name + "]]" : '"' + ReplaceText(name, " ", "&#032;") + '"') +
                 ",\"17\",\"A\"";
        ends.push_back(reply.size());
        rows += code + '/' + name + "/17/A\n";
        reply += random() % 2 == 0 ? "\n" : "\r\n";
    }
    EXPECT_EQ(Text(CodeList::Parse(reply)), rows);
    for (size_t size = 0; size < reply.size(); ++size) {
        const std::string seen = Text(CodeList::Parse(reply.substr(0, size)));
        const auto whole = std::count_if(ends.begin(), ends.end(), [&](size_t end) { return end <= size; });
        ASSERT_TRUE(rows.starts_with(seen) && std::count(seen.begin(), seen.end(), '\n') == whole) << size;
    }
}

TEST(CodeList, HoldsNoMoreThanItsLimits) {
    const uint64_t before = CCounters::Get("code_list_cut");
    const std::string row = "\"1\",\"\",\"1\",\"\"\n";
    std::string reply;
    constexpr size_t kRows = 10'000'000;
    reply.reserve(kRows * row.size());
    for (size_t i = 0; i < kRows; ++i) reply += row;
    EXPECT_EQ(CodeList::Parse(reply).size(), 1'000'000U);
    EXPECT_EQ(CodeList::Parse(reply, {.bytes = 10 * row.size() + 12}).size(), 10U);
    EXPECT_EQ(CCounters::Get("code_list_cut") - before, 2U);
    EXPECT_EQ(CodeList::Parse(std::string_view(reply).substr(0, 3 * row.size()), {.records = 3}).size(), 3U);
    EXPECT_EQ(CCounters::Get("code_list_cut") - before, 2U);

    const char unfinished[] = "\"1\",\"a\",\"17\",\"A\",\"x\"\n";  // cut to what would be a row
    EXPECT_TRUE(CodeList::Parse(unfinished, {.bytes = 16}).empty());

    // One field without end, the longest line there can be.
    std::fill(reply.begin() + 1, reply.end(), 'x');
    EXPECT_TRUE(CodeList::Parse(reply).empty());
}

}  // namespace
}  // namespace luadui
