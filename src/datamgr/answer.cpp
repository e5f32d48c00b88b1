#include "datamgr/answer.h"

#include <algorithm>
#include <utility>

#include "base/base_object.h"
#include "base/counters.h"
#include "base/data_list.h"
#include "base/json_object.h"
#include "base/text.h"
#include "datamgr/answer_parts.h"
#include "datamgr/json_table.h"
#include "trade/server_result.h"

namespace luadui {
namespace {

constexpr char kFundToken[] = "fund_token", kServer[] = "SrcServer";

// What decides where a record goes and how it is taken is never left to the fields of a response.
constexpr std::string_view kControlEntries[] = {"handle", "ret_code", "ret_message", "sleep_refresh_request"};

bool IsControlEntry(std::string_view name) {
    return std::ranges::find(kControlEntries, name) != std::end(kControlEntries);
}

enum class Rows { kReplace, kAppend };  // what becomes of those that the record has already

void AddField(std::string_view name, const ValueView& value, CUIData& record, Rows earlier) {
    CDataList array;
    CDataTable table, held;
    if (IsControlEntry(name) || (name == kFundToken && value.Kind() != kDataString)) {
        CCounters::Add("control_member_ignored");
    } else if (value.Kind() == kDataList && value.Get(array) && TableFromArray(array, table)) {
        if (earlier == Rows::kReplace || !record.GetData(name, held)) return record.SetData(name, table);
        if (!AppendRows(table, held)) CCounters::Add("answer_part_refused");
        record.SetData(name, held);
    } else {
        record.SetData(name, value);
    }
}

template <class Fields>
void AddFields(const Fields& fields, CUIData& record, Rows earlier = Rows::kReplace) {
    for (const auto [name, value] : fields) AddField(name, value, record, earlier);
}

// A push has failed where any of its parts says so.
void Take(Push& push, ServerResult result) {
    if (push.code == 0) push.code = result.code;
    if (push.message.empty()) push.message = std::move(result.message);
}

// Only objects can be parsed: an array is read as the member of one.
bool ReadRows(std::string_view array, CDataTable& rows) {
    CJsonObject holder;
    return holder.Parse(std::string(R"({"":)").append(array).append("}")) &&
           TableFromArray(holder.GetArray(""), rows);
}

void ReadRawData(Push& push) {
    const std::string_view text = TrimText(push.response.GetDataText("RawData"));
    CJsonObject fields;
    CDataTable rows;
    if (text.empty()) return;
    if (fields.Parse(text)) {
        AddFields(fields, push.fields);
        Take(push, ResultOf(fields));
    } else if (ReadRows(text, rows)) {
        if (!std::exchange(push.hasTable, true)) push.table = rows;
    } else {
        CCounters::Add("push_raw_data_ignored");
    }
}

void ReadFields(Push& push) {
    CUIData mapData;
    if (push.response.GetData("MapData", mapData)) AddFields(mapData, push.fields);
    if (CJsonObject json; ReadJsonData(push.response, json)) AddFields(json, push.fields);
    Take(push, ReadServerResult(push.response));
    push.hasTable = push.response.GetData("Table", push.table);
    ReadRawData(push);
    // On its own the server's name is news only where nothing else was said, as of a session.
    const TextView server = push.response.GetDataText(kServer);
    const bool isSilent = TrimText(push.response.GetDataText("RawData")).empty();
    if (!server.empty() && (isSilent || push.hasTable || !push.fields.IsEmpty()))
        push.fields.SetData(kServer, server);
}

void Finish(CUIData& record, int32_t handle, int code, std::string_view message) {
    record.SetData("handle", handle);
    record.SetData("ret_code", code);
    record.SetData("ret_message", message);
}

}  // namespace

void ReadResult(const CUIData& response, int& code, std::string& message) {
    ServerResult result = ReadServerResult(response);
    code = result.code;
    message = std::move(result.message);
}

void AddJsonFields(const CUIData& response, CUIData& record) {
    CJsonObject fields;
    if (ReadJsonData(response, fields)) AddFields(fields, record, Rows::kAppend);
}

CUIData MakeAnswerRecord(const Answer& answer, std::string_view kind) {
    CUIData record = answer.fields;
    record.SetType(kind);
    AddJsonFields(answer.response, record);
    if (answer.hasTable) record.SetData(kind, answer.table);
    if (!answer.fundToken.empty()) record.SetData(kFundToken, answer.fundToken);
    Finish(record, answer.handle, answer.code, answer.message);
    const TextView onWaking = answer.params.GetDataText("sleep_refresh_request");
    if (!onWaking.empty()) record.SetData("sleep_refresh_request", onWaking);
    return record;
}

bool ReadPush(Push& push) {
    ReadFields(push);
    const bool saysSomething = push.hasTable || !push.fields.IsEmpty();
    if (!saysSomething) CCounters::Add("push_unreadable");
    return saysSomething;
}

CUIData MakePushRecord(const Push& push, std::string_view kind) {
    CUIData record = push.fields;
    record.SetType(kind);
    if (push.hasTable) record.SetData(kind, push.table);
    std::string_view token = push.fundToken;
    if (token.empty()) token = push.response.GetDataText("FundToken");
    if (!token.empty()) record.SetData(kFundToken, token);
    Finish(record, CBaseObject::kNoHandle, push.code, push.message);
    return record;
}

}  // namespace luadui
