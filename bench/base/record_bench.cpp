// Records against the containers that a C++ program would take for the same: a request of 15 fields is built,
// copied and read back.
#include <benchmark/benchmark.h>
#include <json/json.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "bench/report.h"

namespace luadui::bench {
namespace {

using Variant = std::variant<int64_t, double, bool, std::string>;
using Map = std::unordered_map<std::string, Variant>;

// Keys and texts come from outside: nothing about them is known when this is compiled.
struct Texts {
    std::string reqType = "REQTYPE", createTime = "CreateTime", checkTimeout = "CheckTimeout",
                refresh = "Refresh", passThrough = "PassThrough", processed = "Processed",
                dataType = "DATATYPE", uuid = "UUID", fundToken = "FundToken", from = "From",
                routeType = "RouteType", destServer = "DestServer", topic = "Topic", to = "To",
                price = "Price";
    std::string uuidValue = "3f2504e0-4f89-11d3-9a0c-0305e82c3301", fundTokenValue = "F0100000388221",
                handleValue = "1730", routeTypeValue = "trade", destServerValue = "counter-02",
                topicValue = "Position|F0100000388221";
};

const Texts& OutsideTexts() {
    static const Texts texts;
    Keep(&texts);
    return texts;
}

// The same request for every kind of record; `set(key, value)` stores a field.
template <class Set>
void Build(Set&& set) {
    const Texts& texts = OutsideTexts();
    set(texts.reqType, int64_t{1051});
    set(texts.createTime, int64_t{4021337});
    set(texts.checkTimeout, true);
    set(texts.refresh, false);
    set(texts.passThrough, false);
    set(texts.processed, false);
    set(texts.dataType, int64_t{2001});
    set(texts.uuid, texts.uuidValue);
    set(texts.fundToken, texts.fundTokenValue);
    set(texts.from, texts.handleValue);
    set(texts.routeType, texts.routeTypeValue);
    set(texts.destServer, texts.destServerValue);
    set(texts.topic, texts.topicValue);
    set(texts.to, texts.handleValue);
    set(texts.price, 12.34);
}

// A sum over all values, so that every one is really read. Texts are read where they lie.
template <class Record>
uint64_t ReadBack(const Record& record) {
    const Texts& texts = OutsideTexts();
    int64_t sum = 0;
    for (const auto* key : {&texts.reqType, &texts.createTime, &texts.dataType}) sum += record.Long(*key);
    for (const auto* key : {&texts.checkTimeout, &texts.refresh, &texts.passThrough, &texts.processed}) {
        sum += record.Bool(*key) ? 1 : 0;
    }
    for (const auto* key : {&texts.uuid, &texts.fundToken, &texts.from, &texts.routeType, &texts.destServer,
                            &texts.topic, &texts.to}) {
        const std::string_view text = record.Text(*key);
        sum += static_cast<int64_t>(text.size()) + text.front();
    }
    return static_cast<uint64_t>(sum + static_cast<int64_t>(record.Double(texts.price)));
}

struct OurReader {
    const CUIData& record;
    int64_t Long(const std::string& key) const { return record.GetDataLong(key); }
    bool Bool(const std::string& key) const { return record.GetDataBool(key); }
    double Double(const std::string& key) const { return record.GetDataDouble(key); }
    std::string_view Text(const std::string& key) const { return record.GetDataText(key); }
};

struct MapReader {
    const Map& record;
    int64_t Long(const std::string& key) const { return std::get<int64_t>(record.find(key)->second); }
    bool Bool(const std::string& key) const { return std::get<bool>(record.find(key)->second); }
    double Double(const std::string& key) const { return std::get<double>(record.find(key)->second); }
    std::string_view Text(const std::string& key) const {
        return std::get<std::string>(record.find(key)->second);
    }
};

struct JsonReader {
    const Json::Value& record;
    int64_t Long(const std::string& key) const { return record[key].asInt64(); }
    bool Bool(const std::string& key) const { return record[key].asBool(); }
    double Double(const std::string& key) const { return record[key].asDouble(); }
    std::string_view Text(const std::string& key) const {
        const char *begin = nullptr, *end = nullptr;
        record[key].getString(&begin, &end);
        return {begin, static_cast<size_t>(end - begin)};
    }
};

CUIData Request() {
    CUIData record;
    Build([&](const std::string& key, const auto& value) { record.SetData(key, value); });
    return record;
}

uint64_t Ours() {
    const CUIData record = Request();
    const CUIData copy = record;
    return ReadBack(OurReader{copy});
}

uint64_t WithMap() {
    Map record;
    Build([&](const std::string& key, const auto& value) { record[key] = value; });
    const Map copy = record;
    return ReadBack(MapReader{copy});
}

uint64_t WithJson() {
    Json::Value record;
    Build([&](const std::string& key, const auto& value) { record[key] = Json::Value(value); });
    const Json::Value copy = record;
    return ReadBack(JsonReader{copy});
}

CUIData ManyKeys(int keys) {
    CUIData record;
    for (int i = 0; i < keys; ++i) record.SetData("key" + std::to_string(i), i);
    return record;
}

CUIData Nested() {
    CUIData record = Request();
    CDataTable table;
    for (int column = 0; column < 40; ++column) table.AddColumn("column" + std::to_string(column));
    for (int row = 0; row < 1000; ++row) table.SetItemText(table.AppendRow(), 0, "600000");
    record.SetData("Table", table);
    record.SetDataShared("SharedTable", table);
    for (int depth = 0; depth < 10; ++depth) {
        CUIData outer = Request();
        outer.SetData("inner", record);
        record = outer;
    }
    return record;
}

double CopyNanoseconds(const CUIData& record) {
    return Measure([&] { Keep(CUIData(record)); }) * 1e9;
}

}  // namespace

LUADUI_REPORT(Record) {
    AtLeast("record_vs_unordered_map", Compare([] { Keep(Ours()); }, [] { Keep(WithMap()); }).Speedup(), 4);
    AtLeast("record_vs_jsoncpp", Compare([] { Keep(Ours()); }, [] { Keep(WithJson()); }).Speedup(), 10);
    AtMost("record_copy_15_fields_ns", CopyNanoseconds(Request()), 20);
    AtMost("record_copy_100000_keys_ns", CopyNanoseconds(ManyKeys(100000)), 20);
    AtMost("record_copy_nested_tables_ns", CopyNanoseconds(Nested()), 20);
}

template <uint64_t (*kRun)()>
void BM_Request15(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(kRun());
}
BENCHMARK(BM_Request15<Ours>)->Name("Request15/Record");
BENCHMARK(BM_Request15<WithMap>)->Name("Request15/UnorderedMap");
BENCHMARK(BM_Request15<WithJson>)->Name("Request15/Jsoncpp");

void BM_SetManyKeys(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(ManyKeys(static_cast<int>(state.range(0))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SetManyKeys)->Name("SetManyKeys")->Arg(16)->Arg(17)->Arg(1000)->Arg(100000);

}  // namespace luadui::bench
