#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <string>
#include <thread>

#include "base/counters.h"
#include "base/data_set.h"
#include "base/json_object.h"
#include "base/text.h"
#include "base/ui_data.h"

namespace luadui {
namespace {

std::string Nested(int levels, const char* open, const char* close) {
    std::string text;
    for (int i = 0; i < levels; ++i) text += open;
    for (int i = 0; i < levels; ++i) text += close;
    return text;
}

// Text in, and what is written back.
struct RoundTrip {
    std::string in, out;
};

TEST(JsonTest, WritesBackWhatItRead) {
    const RoundTrip cases[] = {
        {"{}", "{}"},
        {" { \"z\" : 1 , \"a\" : [ ] , \"m\" : { } } ", R"({"z":1,"a":[],"m":{}})"},
        {R"({"t":true,"f":false,"n":null})", R"({"t":true,"f":false,"n":null})"},
        {R"({"a":[1,"x",[2,{"b":null}],-0.5]})", R"({"a":[1,"x",[2,{"b":null}],-0.5]})"},
        {R"({"min":-9223372036854775808,"max":9223372036854775807,"u":18446744073709551615})",
         R"({"min":-9223372036854775808,"max":9223372036854775807,"u":18446744073709551615})"},
        {R"({"id":9007199254740993})", R"({"id":9007199254740993})"},
        {R"({"big":18446744073709551616})", R"({"big":18446744073709551616.0})"},
        {R"({"d":1.0,"e":1e3,"f":0.1,"g":-2.5E-3,"h":1e300})",
         R"({"d":1.0,"e":1000.0,"f":0.1,"g":-0.0025,"h":1e+300})"},
        {R"({"same":1,"b":2,"same":{"x":3}})", R"({"b":2,"same":{"x":3}})"},
        {R"({"q\"\\\/\b\n\u0041":"\u0000\u001f\t\""})", R"({"q\"\\/\b\nA":"\u0000\u001f\t\""})"},
        {R"({"u":"\u80a1\u7968"})", Gbk(R"({"u":"股票"})")},
        {R"({"euro":"\u20ac","emoji":"\ud83d\ude00"})", "{\"euro\":\"\x80\",\"emoji\":\"?\"}"},
        {"{\"a\":1,/* { \" */\"b\":2,// }\n\"c\":3,}", R"({"a":1,"b":2,"c":3})"},
        {Gbk(R"({"名称":"贵州茅台","列":["沪","深"]})"), Gbk(R"({"名称":"贵州茅台","列":["沪","深"]})")},
    };
    for (const RoundTrip& c : cases) {
        SCOPED_TRACE(c.in);
        CJsonObject object;
        std::string error;
        ASSERT_TRUE(object.Parse(c.in, &error)) << error;
        EXPECT_EQ(object.ToText(), c.out);
        CJsonObject again;
        ASSERT_TRUE(again.Parse(c.out, &error)) << error;
        EXPECT_EQ(again.ToText(), c.out);
    }
}

TEST(JsonTest, BadTextLeavesAnEmptyObject) {
    const std::string bad[] = {
        "",
        " ",
        "nul",
        "[]",
        "1",
        "\"text\"",
        "{",
        "}",
        "{\"a\"",
        "{\"a\":",
        "{\"a\":1",
        "{\"a\":\"x",
        "{\"a\":\"x\\",
        "{\"a\":\"\\u12",
        "{\"a\":\"\\ud800\"}",
        "{\"a\":1}}",
        "{\"a\":1} x",
        "{\"a\" 1}",
        "{a:1}",
        "{'a':1}",
        "{\"a\":1e999}",
        "{\"a\":-1e999}",
        "{\"a\":1.2.3}",
        "{\"a\":NaN}",
        "{\"a\":Infinity}",
        "{\"a\":[1,2}",
        "{\"a\":/*",
        "{\"a\":\"\xB9\xC9\xC6",  // ends inside a character
        "{\"a\":\"\xB9\xC9\"}\x81",
        "{\"a\":1}\xFE\xFE\xFE",
        std::string("{\0}", 3),
        "{\"a\":" + Nested(256, "[", "]") + "}",
        Nested(257, "{\"a\":", "}"),
        Nested(100000, "[", ""),
        Nested(100000, "{\"a\":", ""),
        "{\"a\":" + Nested(100000, "[", "]") + "}",
    };
    for (const std::string& text : bad) {
        SCOPED_TRACE(text.substr(0, 40));
        CJsonObject object;
        object.Set("before", 1);
        std::string error;
        const uint64_t refused = CCounters::Get("json_text_refused");
        EXPECT_FALSE(object.Parse(text, &error));
        EXPECT_EQ(CCounters::Get("json_text_refused"), refused + 1);
        EXPECT_TRUE(object.IsEmpty());
        EXPECT_NE(error, "");
        EXPECT_EQ(error.find("x999"), std::string::npos);
    }
}

// Every prefix of a text is refused, whatever it cuts through.
TEST(JsonTest, TruncatedTextIsRefusedEverywhere) {
    const std::string text = Gbk(R"({"名":["值\"",1.5e3,{"a":null}],"b":true})");
    for (size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(CJsonObject().Parse(std::string_view(text).substr(0, size))) << size;
    }
    EXPECT_TRUE(CJsonObject().Parse(text));
}

TEST(JsonTest, NestsToTheLimitOnASmallStack) {
    // A quarter of the smallest stack that a thread of ours or of a host is given.
    std::string text = "{\"a\":" + Nested(CJsonObject::kMaxNesting - 1, "[", "]") + "}", written;
    std::thread([&] {
        CJsonObject object;
        ASSERT_TRUE(object.Parse(text));
        written = object.ToText();
    }).join();
    EXPECT_EQ(written, text);

    CJsonObject deep;
    for (int i = 0; i < 100000; ++i) {
        CJsonObject outer;
        outer.Set("a", deep);
        deep = outer;
    }
    const uint64_t dropped = CCounters::Get("json_value_dropped");
    EXPECT_EQ(deep.ToText(), Nested(256, "{\"a\":", "").append("null").append(256, '}'));
    EXPECT_EQ(CCounters::Get("json_value_dropped"), dropped + 1);
}

// The second byte of a character may be a quote's neighbour, a backslash or a bracket; a broken first byte may not
// swallow the quote behind it.
TEST(JsonTest, EveryPairOfBytesKeepsTheStructure) {
    for (int lead = 0x80; lead <= 0xFF; ++lead) {
        CJsonObject object;
        std::string all;
        for (int trail = 0x20; trail <= 0xFF; ++trail) {
            const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
            object.Set(pair, "");  // as a name, too
            all += pair + "|";
        }
        object.Set("all", all);
        object.Set("after", 1);
        CJsonObject read;
        std::string error;
        ASSERT_TRUE(read.Parse(object.ToText(), &error)) << lead << error;
        EXPECT_EQ(read.GetLong("after"), 1);
        EXPECT_EQ(SplitText(read.GetText("all"), '|').size(), SplitText(all, '|').size());
        const std::string raw = "{\"k\":\"" + std::string(1, static_cast<char>(lead)) + "\",\"after\":1}";
        ASSERT_TRUE(read.Parse(raw, &error)) << lead << error;
        EXPECT_EQ(read.GetLong("after"), 1);
    }
}

struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(JsonTest, NumbersIgnoreTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    CJsonObject object;
    const std::string text = R"({"a":1234567.5,"b":1e3,"c":123456789,"d":100000000000000000000})";
    const bool parsed = object.Parse(text);
    const std::string written = object.ToText();
    std::locale::global(before);
    EXPECT_TRUE(parsed);
    EXPECT_EQ(written, R"({"a":1234567.5,"b":1000.0,"c":123456789,"d":1e+20})");
}

TEST(JsonTest, DoublesReadBackTheSame) {
    const double values[] = {0.0,  -0.0, 1.0 / 3,      5e-324, std::numeric_limits<double>::max(),
                             1e15, 1e16, 123456789.125};
    for (const double value : values) {
        CJsonObject object, read;
        object.Set("d", value);
        ASSERT_TRUE(read.Parse(object.ToText())) << object.ToText();
        EXPECT_EQ(read.Kind("d"), kDataDouble);
        EXPECT_EQ(read.GetDouble("d"), value);
    }
    CJsonObject object;
    object.Set("inf", std::numeric_limits<double>::infinity());
    object.Set("nan", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(object.ToText(), R"({"inf":null,"nan":null})");
}

TEST(JsonTest, MembersAreSetInPlaceAndKindsAreChecked) {
    CJsonObject object, sub;
    sub.Set("x", 1);
    object.Set("b", sub);
    sub.Set("x", 2);
    object.SetNull("a");
    EXPECT_TRUE(object.Append("list", 1));
    const CJsonObject copy = object;
    EXPECT_TRUE(object.Append("list", object));
    EXPECT_TRUE(object.Append("list", sub));
    const uint64_t refused = CCounters::Get("json_append_refused");
    EXPECT_FALSE(object.Append("b", 1));
    EXPECT_EQ(CCounters::Get("json_append_refused"), refused + 1);
    EXPECT_FALSE(object.Set("record", CUIData()));
    EXPECT_FALSE(object.Append("list", CDataSet()));
    object.Set("b", "text");
    EXPECT_EQ(copy.ToText(), R"({"b":{"x":1},"a":null,"list":[1]})");
    EXPECT_EQ(object.ToText(),
              R"({"b":"text","a":null,"list":[1,{"b":{"x":1},"a":null,"list":[1]},{"x":2}]})");
    EXPECT_EQ(copy.GetSub("b").GetLong("x"), 1);
    EXPECT_EQ(object.GetArray("list").Size(), 3u);
    EXPECT_TRUE(object.GetSub("list").IsEmpty());
    EXPECT_EQ(object.Kind("a"), kDataNull);
    EXPECT_TRUE(object.Remove("a"));
    EXPECT_FALSE(object.Has("a"));

    CDataList mixed;
    mixed.Append(CUIData());
    object.Clear();
    object.Set("mixed", mixed);
    EXPECT_EQ(object.ToText(), R"({"mixed":[null]})");
}

// A record's JSON entry that is attached on both sides grows through either.
TEST(JsonTest, SharedInRecords) {
    CUIData record;
    CJsonObject json, other;
    ASSERT_TRUE(record.SetDataShared("JsonData", json));
    ASSERT_TRUE(record.GetDataShared("JsonData", other));
    for (int i = 0; i < 100; ++i) EXPECT_TRUE((i % 2 ? json : other).Append("n", i));
    EXPECT_EQ(json.GetArray("n").Size(), 100u);
    ASSERT_TRUE(other.Parse("{\"x\":1}"));
    EXPECT_EQ(json.ToText(), "{\"x\":1}");
}

}  // namespace
}  // namespace luadui
