#include "datamgr/request_route.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <string>

#include "base/counters.h"
#include "tests/fakes/fake_settings.h"

namespace luadui {
namespace {

constexpr char kFile[] = "\\log\\TradeLog\\basketIsntRecord.log";
constexpr int64_t kMidnight = 1'700'000'000;

TEST(RequestRoute, InstructionKeys) {
    std::map<std::string_view, int> count;
    for (int type = -1; type < 300'000; ++type) ++count[InstIDKeyOf(type)];
    EXPECT_EQ(count["instructionid"], 37);
    EXPECT_EQ(count["InstanceID"], 7);
    EXPECT_EQ(count["order_no"], 5);
    const std::pair<int, std::string_view> kCases[] = {{1161, "instructionid"},
                                                       {1166, "InstanceID"},
                                                       {1169, ""},
                                                       {1170, "instructionid"},
                                                       {1171, "order_no"},
                                                       {1219, ""},
                                                       {1220, "InstanceID"},
                                                       {1256, ""},
                                                       {1259, "instructionid"},
                                                       {1267, "InstanceID"},
                                                       {1288, "instructionid"},
                                                       {1289, "order_no"},
                                                       {INT_MIN, ""},
                                                       {INT_MAX, ""}};
    for (const auto& [type, key] : kCases) EXPECT_EQ(InstIDKeyOf(type), key) << type;
}

TEST(RequestRoute, Routes) {
    const std::pair<int, std::string_view> kBorders[] = {
        {INT_MIN, "Main"}, {1101, "Specific"}, {1211, "All"},  {1220, "Specific"},
        {1230, "All"},     {1240, "Specific"}, {1460, "Main"}, {INT_MAX, "Main"}};
    for (size_t i = 0; i + 1 < std::size(kBorders); ++i) {
        for (const int type : {kBorders[i].first, kBorders[i + 1].first - 1}) {
            EXPECT_EQ(RouteTypeOf(type, false), std::string(kBorders[i].second) + "-Tunnel") << type;
            EXPECT_EQ(RouteTypeOf(type, true), "Specific-Tunnel") << type;
        }
    }
}

TEST(InstructionServersTest, TheFirstServerStaysTheOldestEntryGoes) {
    InstructionServers servers(3);
    const uint64_t before = CCounters::Get("instruction_server_forgotten");
    for (const char* instruction : {"1", "2", "3"}) EXPECT_TRUE(servers.Remember(instruction, "A"));
    EXPECT_FALSE(servers.Remember("1", "B"));
    EXPECT_EQ(servers.ServerOf("1"), "A");
    EXPECT_TRUE(servers.Remember("4", "B"));
    EXPECT_EQ(servers.ServerOf("1"), "");
    EXPECT_EQ(servers.ServerOf("2"), "A");
    EXPECT_TRUE(servers.Remember("1", "C"));
    EXPECT_EQ(servers.ServerOf("1"), "C");
    EXPECT_EQ(servers.Size(), 3);
    EXPECT_EQ(CCounters::Get("instruction_server_forgotten"), before + 2);
    const std::string longName(kLongestInstructionName + 1, 'x');
    EXPECT_FALSE(servers.Remember("", "A") || servers.Remember("9", "") || servers.Remember(longName, "A") ||
                 servers.Remember("9", longName));
}

TEST(InstructionRecordTest, StampsStrictlyIncreaseAndAreWritten) {
    FakeSettings host;
    InstructionRecord record(100);
    const std::pair<int64_t, int64_t> kCases[] = {// now, stamp
                                                  {kMidnight + 5, kMidnight + 5},
                                                  {kMidnight + 5, kMidnight + 6},
                                                  {kMidnight + 1, kMidnight + 7},
                                                  {kMidnight + 7, kMidnight + 8},
                                                  {kMidnight + 20, kMidnight + 20}};
    for (const auto& [now, stamp] : kCases) {
        const std::string name = "I" + std::to_string(stamp);
        EXPECT_EQ(record.Remember(name, now), stamp);
        EXPECT_EQ(record.StampOf(name), stamp);
        EXPECT_EQ(host.files[kFile][name], std::to_string(stamp));
    }
    EXPECT_EQ(record.Remember("", kMidnight), 0);
    EXPECT_EQ(record.Remember(std::string(kLongestInstructionName + 1, 'x'), kMidnight), 0);
    EXPECT_EQ(host.files[kFile].size(), std::size(kCases));
    // Also when the host has lost the file since.
    host.files.clear();
    record.Load(kMidnight);
    EXPECT_EQ(record.Size(), 0);
    EXPECT_EQ(record.Remember("again", kMidnight + 20), kMidnight + 21);
}

TEST(InstructionRecordTest, LoadKeepsTodayAndErasesTheRest) {
    FakeSettings host;
    const uint64_t before = CCounters::Get("instruction_stamp_refused");
    const struct {
        const char* stamp;
        bool kept, inFile;
    } kCases[] = {
        {"1700000001", true, true},
        {"1700003600", true, true},
        {"1700000000", false, false},
        {"1699999999", false, false},
        {"0", false, false},
        {"-5", false, false},
        {"", false, false},
        {"1700000001x", false, false},
        {"yesterday", false, false},
        {"99999999999999999999", false, false},
        {"9223372036854775807", false, true},  // ahead: never stale, and of no use
        {"1700999999", false, true},
    };
    for (const auto& row : kCases) host.files[kFile]["I" + std::string(row.stamp)] = row.stamp;
    InstructionRecord record;
    record.Remember("before", kMidnight - 100);
    record.Load(kMidnight);
    for (const auto& [stamp, kept, inFile] : kCases) {
        const std::string name = "I" + std::string(stamp);
        EXPECT_EQ(record.StampOf(name), kept ? std::stoll(stamp) : 0) << name;
        EXPECT_EQ(host.files[kFile].count(name), inFile) << name;
    }
    EXPECT_EQ(record.Size(), 2);
    EXPECT_EQ(CCounters::Get("instruction_stamp_refused"), before + 2);
    EXPECT_EQ(record.Remember("next", kMidnight + 10), kMidnight + 3601);
}

TEST(InstructionRecordTest, BeyondTheLimitTheOldestAreForgotten) {
    FakeSettings host;
    for (int i = 1; i <= 50; ++i) host.files[kFile]["I" + std::to_string(i)] = std::to_string(kMidnight + i);
    InstructionRecord record(10);
    record.Load(kMidnight);
    record.Remember("new", kMidnight);
    EXPECT_EQ(record.Size(), 10);
    EXPECT_EQ(record.StampOf("I41"), 0);
    EXPECT_EQ(record.StampOf("I42"), kMidnight + 42);
    EXPECT_EQ(record.StampOf("new"), kMidnight + 51);
    EXPECT_EQ(host.files[kFile].size(), 51);
}

}  // namespace
}  // namespace luadui
