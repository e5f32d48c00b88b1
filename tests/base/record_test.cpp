#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "base/record_form.h"
#include "base/ui_data.h"

namespace luadui {
namespace {

using ::testing::ElementsAre;

std::string Name(std::string prefix, int64_t number) { return prefix.append(std::to_string(number)); }

std::vector<std::string> Keys(const CUIData& record) {
    std::vector<std::string> keys;
    for (const auto [key, value] : record) keys.emplace_back(key);
    return keys;
}

// How a value reads as a number; nothing where it does not.
struct ReadingCase {
    DataValue value;
    std::optional<int64_t> asLong;
    std::optional<double> asDouble;
    std::optional<bool> asBool;
};

constexpr auto kNone = std::nullopt;

const ReadingCase kReadings[] = {
    {0, 0, 0.0, false},
    {-7, -7, -7.0, true},
    {9007199254740993, 9007199254740993, 9007199254740992.0, true},
    {UINT64_MAX, -1, 18446744073709551615.0, true},
    {true, 1, 1.0, true},
    {2.9, 2, 2.9, kNone},
    {-2.9, -2, -2.9, kNone},
    {-9223372036854775808.0, INT64_MIN, -9223372036854775808.0, kNone},
    {9223372036854775808.0, INT64_MIN, 9223372036854775808.0, kNone},  // as the same 64 bits
    {18446744073709551616.0, kNone, 18446744073709551616.0, kNone},
    {std::numeric_limits<double>::infinity(), kNone, std::numeric_limits<double>::infinity(), kNone},
    {"42", 42, 42.0, kNone},
    {" \t42 ", 42, 42.0, kNone},
    {"+42", 42, 42.0, kNone},
    {"-0", 0, -0.0, kNone},
    {"007", 7, 7.0, kNone},
    {"12.99", 12, 12.99, kNone},
    {"-12.99", -12, -12.99, kNone},
    {"9007199254740993.5", 9007199254740993, 9007199254740993.5, kNone},
    {"18446744073709551615", -1, 18446744073709551615.0, kNone},
    {"1e3", 1000, 1000.0, kNone},
    {".5", 0, 0.5, kNone},
    {"5.", 5, 5.0, kNone},
    {"99999999999999999999", kNone, 99999999999999999999.0, kNone},
    {"1e999", kNone, kNone, kNone},
    {"-1e-999", 0, -0.0, kNone},
    {"0.001e-99999999999999999999", 0, 0.0, kNone},
    {"1000e99999999999999999999", kNone, kNone, kNone},
    {"", kNone, kNone, kNone},
    {" ", kNone, kNone, kNone},
    {".", kNone, kNone, kNone},
    {"-", kNone, kNone, kNone},
    {"+-1", kNone, kNone, kNone},
    {"--1", kNone, kNone, kNone},
    {"++1", kNone, kNone, kNone},
    {"+ 1", kNone, kNone, kNone},
    {"1 2", kNone, kNone, kNone},
    {"1,5", kNone, kNone, kNone},
    {"12x", kNone, kNone, kNone},
    {"0x10", kNone, kNone, kNone},
    {"1e", kNone, kNone, kNone},
    {"nan", kNone, kNone, kNone},
    {"inf", kNone, kNone, kNone},
    {"-infinity", kNone, kNone, kNone},
    {"true", kNone, kNone, kNone},
    {std::string_view("1\0", 2), kNone, kNone, kNone},
};

TEST(RecordTest, NumbersReadByOneRule) {
    int row = 0;
    for (const ReadingCase& c : kReadings) {
        SCOPED_TRACE(row++);
        CUIData record;
        record.SetData("k", c.value);
        int64_t asLong = 77;
        EXPECT_EQ(record.GetData("k", asLong), c.asLong.has_value());
        EXPECT_EQ(asLong, c.asLong.value_or(77));
        EXPECT_EQ(record.GetDataLong("k"), c.asLong.value_or(0));
        double asDouble = 77;
        EXPECT_EQ(record.GetData("k", asDouble), c.asDouble.has_value());
        EXPECT_EQ(asDouble, c.asDouble.value_or(77));
        EXPECT_EQ(record.GetDataDouble("k"), c.asDouble.value_or(0));
        bool asBool = false;
        EXPECT_EQ(record.GetData("k", asBool), c.asBool.has_value());
        EXPECT_EQ(record.GetDataBool("k"), c.asBool.value_or(false));
        std::string text = "kept";
        EXPECT_EQ(record.GetData("k", text), c.value.Kind() == kDataString);
        EXPECT_EQ(record.GetDataText("k").empty(), text == "kept" || text.empty());
    }
}

TEST(RecordTest, NarrowIntegersTakeWhatFitsTheirBits) {
    const struct {
        int64_t value;
        bool fits32, fits16;
    } cases[] = {{-32768, true, true},       {65535, true, true},        {65536, true, false},
                 {-32769, true, false},      {4294967295, true, false},  {4294967296, false, false},
                 {-2147483648, true, false}, {-2147483649, false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        CUIData record;
        record.SetData("k", c.value);
        int32_t signed32 = 5;
        uint32_t unsigned32 = 5;
        uint16_t unsigned16 = 5;
        EXPECT_EQ(record.GetData("k", signed32), c.fits32);
        EXPECT_EQ(signed32, c.fits32 ? static_cast<int32_t>(c.value) : 5);
        EXPECT_EQ(record.GetData("k", unsigned32), c.fits32);
        EXPECT_EQ(record.GetData("k", unsigned16), c.fits16);
        EXPECT_EQ(unsigned16, c.fits16 ? static_cast<uint16_t>(c.value) : 5);
    }
}

TEST(RecordTest, FloatsTakeWhatTheirRangeHolds) {
    const double max = std::numeric_limits<float>::max(), infinity = std::numeric_limits<double>::infinity();
    const std::pair<DataValue, bool> cases[] = {{1.5, true},      {max, true},   {-max, true},
                                                {infinity, true}, {1e39, false}, {-1e300, false},
                                                {"1e300", false}, {"1e38", true}};
    for (const auto& [value, fits] : cases) {
        CUIData record;
        record.SetData("k", value);
        float out = 5;
        EXPECT_EQ(record.GetData("k", out), fits) << record.GetDataDouble("k");
        EXPECT_EQ(out, fits ? static_cast<float>(record.GetDataDouble("k")) : 5);
    }
}

TEST(RecordTest, EveryKindReadsAsItselfAndNoOther) {
    CDataSet set;
    set.Insert("s");
    CUIData inner("inner");
    CDataTable table;
    table.AddColumn("c");
    CDataList list;
    list.Append(1);
    CJsonObject json;
    json.Set("j", 1);
    CUIData record;
    record.SetData("set", set);
    record.SetData("record", inner);
    record.SetData("table", table);
    record.SetData("list", list);
    record.SetData("json", json);
    const std::vector<std::pair<const char*, int>> kinds = {{"set", 3},  {"record", 4}, {"table", 5},
                                                            {"list", 6}, {"json", 7},   {"absent", 0}};
    for (const auto& [key, kind] : kinds) {
        SCOPED_TRACE(key);
        EXPECT_EQ(record.GetDataType(key), kind);
        CDataSet outSet;
        CUIData outRecord;
        CDataTable outTable;
        CDataList outList;
        CJsonObject outJson;
        EXPECT_EQ(record.GetData(key, outSet), kind == kDataSet);
        EXPECT_EQ(record.GetData(key, outRecord), kind == kDataRecord);
        EXPECT_EQ(record.GetData(key, outTable), kind == kDataTable);
        EXPECT_EQ(record.GetData(key, outList), kind == kDataList);
        EXPECT_EQ(record.GetData(key, outJson), kind == kDataJson);
        EXPECT_EQ(outSet.Size() + outRecord.GetType().size() / 5 + outList.Size() + outJson.Size() +
                      static_cast<size_t>(outTable.GetColumnNumber()),
                  kind == kDataAbsent ? 0u : 1u);
        EXPECT_EQ(record.GetDataLong(key), 0);
        EXPECT_EQ(record.GetDataString(key), "");
    }
    record.SetData("integer", 1);
    record.SetData("string", static_cast<const char*>(nullptr));
    record.SetData("double", 1.0f);
    record.SetData("boolean", false);
    EXPECT_EQ(record.GetDataType("integer"), 1);
    EXPECT_EQ(record.GetDataType("string"), 2);
    EXPECT_EQ(record.GetDataType("double"), 8);
    EXPECT_EQ(record.GetDataType("boolean"), 9);
    EXPECT_FALSE(record.GetData("integer", inner));
    EXPECT_EQ(inner.GetType(), "inner");
}

TEST(RecordTest, KeysKeepTheirPlaceUntilRemoved) {
    CUIData record("type");
    for (const char* key : {"c", "a", "b", ""}) record.SetData(key, key);
    record.SetData("a", 5);
    EXPECT_THAT(Keys(record), ElementsAre("c", "a", "b", ""));
    EXPECT_TRUE(record.Remove("a"));
    EXPECT_FALSE(record.Remove("a"));
    record.SetData("a", std::string(1000, 'x'));
    EXPECT_THAT(Keys(record), ElementsAre("c", "b", "", "a"));
    EXPECT_EQ(record.GetDataText("a").size(), 1000u);
    EXPECT_EQ(record.Size(), 4u);
    record.Clear();
    EXPECT_TRUE(record.IsEmpty());
    EXPECT_EQ(record.GetType(), "type");
    record.SetType("other");
    EXPECT_EQ(record.GetType(), "other");
}

TEST(RecordTest, ArgumentsMayLieInTheRecordItself) {
    for (const size_t size : {size_t{3}, size_t{250}, size_t{5000}}) {
        SCOPED_TRACE(size);
        CUIData record;
        record.SetData("a", std::string(size, 'a'));
        for (int i = 0; i < 300; ++i) {  // through every growth of the block
            const CUIData copy = record;
            record.SetData(Name("b", i), record.GetDataText("a"));
            record.SetData("a", record.GetDataText("a").substr(0, size));
            for (const auto [key, value] : record) {
                record.SetData(key, value.AsText());
                break;
            }
        }
        EXPECT_EQ(record.Size(), 301u);
        for (const auto [key, value] : record) EXPECT_EQ(value.AsText(), std::string(size, 'a'));
        record.SetType(record.GetDataText("a"));
        EXPECT_EQ(record.GetTypeText(), std::string(size, 'a'));
    }
    CUIData record;
    record.SetData("inner", 1);
    record.SetData("inner", record);
    ASSERT_TRUE(record.GetData("inner", record));
    EXPECT_EQ(record.GetDataLong("inner"), 1);
    record.SetData("inner", record);
    ASSERT_TRUE(record.GetDataShared("inner", record));
    EXPECT_EQ(record.GetDataLong("inner"), 1);
}

// Texts are overwritten by shorter and longer ones, entries removed: the space is used again instead of growing for ever.
TEST(RecordTest, OverwritingDoesNotGrow) {
    CUIData record;
    record.SetData("first", "kept");
    const auto overwrite = [&](int i) {
        record.SetData("k", std::string(static_cast<size_t>(i * 7 % 250), static_cast<char>('a' + i % 26)));
    };
    const auto comeAndGo = [&](int i) {
        record.SetData(Name("gone", i), i);
        ASSERT_TRUE(record.Remove(Name("gone", i)));
    };
    for (const bool remove : {false, true}) {
        for (int i = 0; i < 100000; ++i) remove ? comeAndGo(i) : overwrite(i);
        record.SetData("last", remove);
        EXPECT_EQ(record.GetDataText("k"), std::string(99999 * 7 % 250, static_cast<char>('a' + 99999 % 26)));
        EXPECT_EQ(record.GetDataText("first"), "kept");
        EXPECT_THAT(Keys(record), ElementsAre("first", "k", "last"));
        // Both lie in the record's block: what is between them is at most that block.
        const auto first = reinterpret_cast<intptr_t>((*record.begin()).key.data());
        const auto last = reinterpret_cast<intptr_t>(record.GetDataText("k").data());
        EXPECT_LT(std::abs(first - last), 8192);
    }
}

TEST(RecordTest, HundredThousandKeys) {
    constexpr int kKeys = 100000;
    const auto name = [](int i) { return Name("key", i * 7919LL); };
    CUIData record;
    for (int i = 0; i < kKeys; ++i) record.SetData(name(i), i);
    CUIData copy = record;
    EXPECT_TRUE(copy.SharesWith(record));
    for (int i = 0; i < kKeys; i += 2) ASSERT_TRUE(copy.Remove(name(i)));
    for (int i = 0; i < kKeys; ++i) {
        ASSERT_EQ(record.GetDataLong(name(i)), i);
        ASSERT_EQ(copy.Has(name(i)), i % 2 == 1);
    }
    int expected = 1;
    for (const auto [key, value] : copy) {
        ASSERT_EQ(value.AsLong(), expected);
        expected += 2;
    }
    while (!copy.IsEmpty())
        copy.Remove(std::string((*copy.begin()).key));  // from the front, which is the worst case
    EXPECT_EQ(record.Size(), static_cast<size_t>(kKeys));
}

TEST(RecordTest, LongTextsAreSharedByCopies) {
    const std::string text(64u << 20, 'x');
    CUIData record;
    record.SetData("k", text);
    CUIData copy = record;
    copy.SetData("other", 1);
    EXPECT_EQ(copy.GetDataText("k").data(), record.GetDataText("k").data());
    EXPECT_EQ(copy.GetDataText("k"), text);
    EXPECT_EQ(copy.GetDataText("k").c_str()[text.size()], '\0');
    record.Remove("k");
    EXPECT_EQ(copy.GetDataText("k").size(), text.size());
}

// Both ways of nesting, a thousand times deeper than the stack would allow if freeing recursed.
TEST(RecordTest, DeepNestingIsFreedWithoutRecursion) {
    constexpr int kDepth = 100000;
    CUIData byValue, shared, deepest;
    ASSERT_TRUE(shared.SetDataShared("k", deepest));
    for (int i = 0; i < kDepth; ++i) {
        CUIData outer, child;
        outer.SetData("k", byValue);
        byValue = outer;
        ASSERT_TRUE(deepest.SetDataShared("k", child));
        ASSERT_TRUE(deepest.GetDataShared("k", deepest));
    }
    // Open every level in place, so that a copy has to take a snapshot of all.
    CUIData top = byValue, level = byValue;
    ASSERT_TRUE(top.GetDataShared("k", level));
    for (int i = 1; i < kDepth; ++i) ASSERT_TRUE(level.GetDataShared("k", level));
    level.SetData("bottom", 1);
    CUIData copy = top;
    level.SetData("bottom", 2);
    for (int i = 0; i < kDepth; ++i) ASSERT_TRUE(copy.GetData("k", copy));
    EXPECT_EQ(copy.GetDataLong("bottom"), 1);
    const uint64_t refused = CCounters::Get("shared_ring_refused");
    EXPECT_FALSE(deepest.SetDataShared("ring", shared)) << "found through all levels";
    EXPECT_EQ(CCounters::Get("shared_ring_refused"), refused + 1);
}

TEST(RecordTest, SharedEntriesAreOneObject) {
    CDataTable table;
    table.AddColumn("c");
    CUIData record;
    ASSERT_TRUE(record.SetDataShared("table", table));
    const CUIData copy = record;
    table.AddColumn("d");
    CDataTable seen;
    ASSERT_TRUE(copy.GetDataShared("table", seen)) << "a const record, but a shared entry";
    EXPECT_EQ(seen.GetColumnNumber(), 2);
    seen = CDataTable();
    EXPECT_EQ(table.GetColumnNumber(), 0) << "assignment keeps the identity";
    ASSERT_TRUE(copy.GetData("table", seen));
    seen.AddColumn("x");
    EXPECT_EQ(table.GetColumnNumber(), 0) << "GetData parts";
    EXPECT_TRUE(record.IsShared("table"));
    record.SetData("table", seen);
    EXPECT_FALSE(record.IsShared("table"));
    EXPECT_TRUE(copy.IsShared("table"));
    CDataTable none;
    EXPECT_FALSE(std::as_const(record).GetDataShared("table", none)) << "by value: needs the right to change";
    EXPECT_FALSE(record.GetDataShared("absent", none));
    CUIData wrong;
    EXPECT_FALSE(record.GetDataShared("table", wrong));
}

TEST(RecordTest, OpenEntriesDoNotReachCopies) {
    CUIData params;
    params.SetData("n", 1);
    CUIData record;
    record.SetData("Params", params);
    const CUIData before = record;
    ASSERT_TRUE(record.GetDataShared("Params", params));
    EXPECT_FALSE(record.IsShared("Params"));
    params.SetData("n", 2);
    const CUIData during = record;
    params.SetData("n", 3);
    const auto n = [](const CUIData& r) {
        CUIData inner;
        return r.GetData("Params", inner) ? inner.GetDataLong("n") : -1;
    };
    EXPECT_EQ(n(before), 1);
    EXPECT_EQ(n(during), 2);
    EXPECT_EQ(n(record), 3);
    params = CUIData();  // still attached: empties the entry
    EXPECT_EQ(n(record), 0);
    ASSERT_TRUE(record.GetData("Params", params));
    const CUIData after = record;
    EXPECT_TRUE(after.SharesWith(record)) << "once nobody is attached copies share again";
}

TEST(RecordTest, RingsAreRefused) {
    const uint64_t before = CCounters::Get("shared_ring_refused");
    CUIData a, b, c;
    EXPECT_FALSE(a.SetDataShared("self", a));
    ASSERT_TRUE(a.SetDataShared("b", b));
    ASSERT_TRUE(b.SetDataShared("c", c));
    CUIData outer;
    ASSERT_TRUE(outer.SetDataShared("a", a));
    EXPECT_FALSE(c.SetDataShared("a", a));
    c.SetData("a", a);
    c = a;
    CUIData moved = a;
    c = std::move(moved);
    CDataList list;
    list.Append(a);
    c.SetData("list", list);
    EXPECT_TRUE(c.IsEmpty());
    EXPECT_EQ(moved.Size(), 1u) << "what is refused is not lost";  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(CCounters::Get("shared_ring_refused"), before + 6);
}

TEST(RecordTest, MovesHandOverTheAttachment) {
    CUIData record;
    const auto attached = [&] {
        CDataSet set;
        record.GetDataShared("set", set);
        return set;
    };
    record.SetData("set", CDataSet());
    std::vector<CDataSet> sets;
    sets.push_back(attached());
    sets.push_back(attached());
    sets[0].Insert("x");
    EXPECT_TRUE(sets[1].Contains("x"));
    sets.clear();
    CDataSet out;
    ASSERT_TRUE(record.GetData("set", out));
    EXPECT_THAT(out, ElementsAre("x"));
}

// Only the value classes copy and assign: a handle does not know what another one holds.
static_assert(!std::is_assignable_v<SharedHandle&, const CUIData&>);
static_assert(!std::is_assignable_v<SharedValue<RecordBody>&, const CUIData&>);
static_assert(!std::is_constructible_v<SharedHandle, const CUIData&>);

std::string BytesOf(uint64_t word) { return {reinterpret_cast<const char*>(&word), sizeof word}; }

// Words that, at one place of a key, would make what stands beside them meaningless if a hash multiplied by them without
// a secret: the odd constants that such hashes are made of, also with the size of a key in them.
TEST(RecordTest, ChosenKeysHaveDifferentHashes) {
    constexpr uint64_t kOdd = 0x9e3779b97f4a7c15, kOdd2 = 0xd6e8feb86659fd93;
    for (const uint64_t word :
         {uint64_t{0}, ~uint64_t{0}, uint64_t{0xa0761d6478bd642f}, kOdd, kOdd2, kOdd ^ kOdd2 * 16}) {
        std::unordered_set<uint32_t> hashes[4];
        constexpr size_t kKeys = 10000;
        for (uint64_t i = 0; i < kKeys; ++i) {
            const std::string free = BytesOf(i * kOdd), fixed = BytesOf(word);
            const std::string keys[] = {free + fixed, fixed + free, fixed + free + "tail",
                                        free + fixed + "tail"};
            for (size_t k = 0; k < 4; ++k) hashes[k].insert(HashedKey(keys[k]).hash);
        }
        for (const auto& different : hashes) EXPECT_GT(different.size(), kKeys - 10) << word;
    }
}

TEST(RecordTest, HashedKeysAreKeys) {
    const HashedKey keys[] = {HashedKey("REQTYPE"), HashedKey("a key of more than sixteen bytes"),
                              HashedKey("")};
    for (const HashedKey& key : keys) {
        for (const int others : {0, 100}) {
            CUIData record;
            for (int i = 0; i < others; ++i) record.SetData(Name("key", i), i);
            EXPECT_FALSE(record.GetDataView(key));
            record.SetData(std::string(key.view), 2);
            EXPECT_EQ(record.GetDataLong(key), 2);
            record.SetData(key, "text");
            EXPECT_EQ(record.GetDataText(key), "text");
            EXPECT_EQ(record.Size(), static_cast<size_t>(others) + 1);
        }
    }
}

TEST(RecordTest, FormsReadFieldsAsTheirKind) {
    CUIData defaults, full, wrong;
    defaults.SetData("before", 1);
    defaults.SetData("text", std::string(1000, 'd'));
    const RecordForm form(defaults, {{HashedKey("long"), kDataInteger},
                                     {HashedKey("bool"), kDataBoolean},
                                     {HashedKey("double"), kDataDouble},
                                     {HashedKey("text"), kDataString}});
    full.SetData("long", "42");
    full.SetData("bool", 1);
    full.SetData("double", 2);
    full.SetData("text", "short");
    full.SetData("more", 1);
    wrong.SetData("text", 5);
    wrong.SetData("long", CUIData());
    const CUIData read = form.Read(full);
    EXPECT_THAT(Keys(read), ElementsAre("before", "text", "long", "bool", "double"));
    EXPECT_EQ(read.GetDataLong("before"), 1);
    EXPECT_EQ(read.GetDataLong("long"), 42);
    EXPECT_EQ(read.GetDataType("bool"), kDataBoolean);
    EXPECT_TRUE(read.GetDataBool("bool"));
    EXPECT_EQ(read.GetDataDouble("double"), 2.0);
    EXPECT_EQ(read.GetDataText("text"), "short");
    for (const CUIData& record : {form.Read(wrong), form.Read(CUIData())}) {
        EXPECT_THAT(Keys(record), ElementsAre("before", "text", "long", "bool", "double"));
        EXPECT_EQ(record.GetDataType("text"), kDataString);
        EXPECT_EQ(record.GetDataText("text"), "");
        EXPECT_EQ(record.GetDataLong("long"), 0);
        EXPECT_EQ(record.GetDataType("double"), kDataDouble);
    }
    EXPECT_EQ(RecordForm(CUIData(), {}).Read(full).Size(), 0u);
}

// More than fits a block, in texts that each would.
TEST(RecordTest, FormsReadTextsOfAnyLength) {
    const char* const keys[] = {"a", "b", "c", "d", "e"};
    const RecordForm form(CUIData(), {{HashedKey("a"), kDataString},
                                      {HashedKey("b"), kDataString},
                                      {HashedKey("c"), kDataString},
                                      {HashedKey("d"), kDataString},
                                      {HashedKey("e"), kDataString}});
    for (const size_t size : {0, 1, 31, 33, 200, 256, 257, 100000}) {
        CUIData from;
        for (const char* key : keys) from.SetData(key, key + std::string(size, 'x'));
        CUIData read = form.Read(from);
        for (const char* key : keys) EXPECT_EQ(read.GetDataText(key), from.GetDataText(key));
        const CUIData copy = read;
        for (const char* key : {"e", "a"}) read.SetData(key, "new");
        EXPECT_EQ(copy.GetDataText("e"), from.GetDataText("e"));
        EXPECT_EQ(read.GetDataText("e"), "new");
    }
}

}  // namespace
}  // namespace luadui
