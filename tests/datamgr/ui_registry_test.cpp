#include "datamgr/ui_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <set>
#include <string>
#include <vector>

#include "datamgr/kind_table.h"

namespace luadui {
namespace {

struct Row {
    std::string_view name;
    int number;
};

// Lengths on both sides of every border of the hash, texts that share beginning and end, bytes above 127, nothing.
constexpr Row kRows[] = {
    {"", -7},
    {"a", -1},
    {"b", 0},
    {"abc", 1},
    {"abcd", 3},
    {"abcdefg", 4},
    {"abcdefgh", 5},
    {"abcdefgi", 6},
    {"abcdefghi", 7},
    {"abcdefgh-abcdefgh", 8},
    {"abcdefgh_abcdefgh", 9},
    {"abcdefgh-abcdefg", 10},
    {"\xd6\xf7\xb4\xb0\xbf\xda", 131072},
    {std::string_view("\0", 1), INT_MAX},
};
using Names = KindIndex<kRows, &Row::name>;
using Numbers = NumberIndex<kRows, &Row::number>;
static_assert(Names::Find("abcd")->number == 3 && Numbers::Find(3)->name == "abcd");

constexpr Row kDoubled[] = {{"a", 1}, {"b", 2}, {"a", 2}};
constexpr Row kReversed[] = {{"b", 2}, {"a", 1}};
static_assert(!IsDistinct(kDoubled, &Row::name) && !IsSortedUnique(kDoubled, &Row::number));
static_assert(IsDistinct(kReversed, &Row::name) && !IsSortedUnique(kReversed, &Row::number));

// Names that differ a little from `name`.
std::vector<std::string> Neighbours(std::string_view name) {
    std::vector<std::string> all{std::string(name) + '_', std::string(name) + '\0', '_' + std::string(name)};
    for (size_t i = 0; i < name.size(); ++i) {
        all.emplace_back(name).erase(i, 1);
        all.emplace_back(name)[i] ^= 0x20;
    }
    return all;
}

TEST(KindTable, FindsEveryRowAndNothingElse) {
    for (const Row& row : kRows) {
        EXPECT_EQ(Names::Find(std::string(row.name)), &row) << row.name;
        for (const std::string& other : Neighbours(row.name)) {
            const auto* const expected = std::ranges::find(kRows, other, &Row::name);
            EXPECT_EQ(Names::Find(other), expected == std::end(kRows) ? nullptr : expected) << other;
        }
        for (const int64_t number : {row.number - int64_t{1}, int64_t{row.number}, row.number + int64_t{1}}) {
            if (number > INT_MAX) continue;
            const auto* const expected = std::ranges::find(kRows, number, &Row::number);
            EXPECT_EQ(Numbers::Find(static_cast<int>(number)),
                      expected == std::end(kRows) ? nullptr : expected)
                << number;
        }
    }
    EXPECT_EQ(Numbers::Find(INT_MIN), nullptr);
}

TEST(UiRegistry, EveryTableIsFoundByName) {
    std::set<std::string> names{"", "no_such_kind"};
    for (const KindType& row : TypeCodes()) names.emplace(row.kind);
    for (const KindPushKey& row : PushKeys()) names.emplace(row.kind);
    for (const std::string_view kind : CommonKinds()) names.emplace(kind);
    for (const PushQuery& row : PushQueries()) names.emplace(row.kind);
    const auto valueOf = [](auto rows, auto kind, auto value, const std::string& name) {
        const auto row = std::ranges::find(rows, name, kind);
        return row == rows.end() ? std::remove_cvref_t<decltype((*row).*value)>() : (*row).*value;
    };
    for (const std::string& name : std::set(names)) {
        for (std::string& other : Neighbours(name)) names.insert(std::move(other));
    }
    for (const std::string& name : names) {
        EXPECT_EQ(RequestTypeOfKind(name), valueOf(TypeCodes(), &KindType::kind, &KindType::type, name));
        EXPECT_EQ(PushKeyOfKind(name), valueOf(PushKeys(), &KindPushKey::kind, &KindPushKey::key, name));
        EXPECT_EQ(QueryKindOfPush(name), valueOf(PushQueries(), &PushQuery::kind, &PushQuery::query, name));
        EXPECT_EQ(IsCommonKind(name), std::ranges::count(CommonKinds(), name) == 1) << name;
    }
}

// What pages and servers rely on beyond the single row.
TEST(UiRegistry, TablesFitTogether) {
    for (const std::vector<const char*>& same : std::vector<std::vector<const char*>>{
             {"position", "positionmulti", "positionsum"},
             {"multi_buy", "multi_sell", "basket_entrust"},
             {"pause_mutiorder", "pause_algo_inst"},
             {"grade_cond_inst", "query_grade_cond_inst"},
             {"basketmemberlist", "basketmemberalloclist", "basketmemberalloclistcredit"}}) {
        for (const char* kind : same) EXPECT_EQ(RequestTypeOfKind(kind), RequestTypeOfKind(same[0])) << kind;
    }
    for (const KindType& row : TypeCodes()) EXPECT_GT(row.type, 0) << row.kind;
    for (const KindPushKey& row : PushKeys()) {
        EXPECT_FALSE(row.key.empty()) << row.kind;
        EXPECT_EQ(row.key.substr(0, row.key.find('|') + 1),
                  row.key.find('|') < row.key.size() ? row.key : "");
    }
    // Pages that slept ask what all pages share, and asking again must not itself be a push.
    for (const PushQuery& row : PushQueries()) {
        EXPECT_TRUE(IsCommonKind(row.kind) && IsCommonKind(row.query)) << row.kind;
        EXPECT_EQ(QueryKindOfPush(row.query), row.query);
        EXPECT_FALSE(IsNeverConverted(row.query)) << row.query;
    }
    EXPECT_TRUE(IsNeverConverted("entrustpush") && !QueryKindOfPush("entrustpush").empty());
}

TEST(UiRegistry, RecordsHoldTheTables) {
    ASSERT_EQ(TypeCodeRecord().Size(), TypeCodes().size());
    ASSERT_EQ(PushKeyRecord().Size(), PushKeys().size());
    size_t row = 0;
    for (const auto& [kind, type] : TypeCodeRecord()) {
        EXPECT_EQ(kind, TypeCodes()[row].kind);
        EXPECT_EQ(type.AsLong(), TypeCodes()[row++].type);
    }
    for (const KindPushKey& each : PushKeys()) EXPECT_EQ(PushKeyRecord().GetDataText(each.kind), each.key);
}

TEST(UiRegistry, ResponsesOfTheCommonManager) {
    const std::set<int> types{2019, 2031, 2033, 2034, 2036,   2045,  2082,
                              2102, 2308, 2407, 2500, 274435, 274437};
    for (int type = -10; type < 300'000; ++type) {
        const bool expected = (type >= 2002 && type <= 2015) || types.count(type);
        ASSERT_EQ(IsCommonResponse(type, "Fund|F01"), expected) << type;
    }
    EXPECT_TRUE(IsCommonResponse(2001, "entrustret") && IsCommonResponse(2001, "traderet"));
    EXPECT_FALSE(IsCommonResponse(2001, "entrustret|") || IsCommonResponse(INT_MIN, ""));
}

}  // namespace
}  // namespace luadui
