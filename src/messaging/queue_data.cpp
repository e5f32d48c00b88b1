#include "messaging/queue_data.h"

#include "base/data_table.h"
#include "base/json_object.h"
#include "messaging/request_types.h"
#include "platform/win32.h"

namespace luadui {
namespace {

constexpr std::string_view kCopiedTexts[] = {"UUID",  "RawData",   "FundToken", "To",
                                             "Topic", "SrcServer", "TraceID"};
constexpr std::string_view kCopiedRecords[] = {"Request", "MapData", "TableIndex"};

// Filling a record key by key costs more than copying one: fresh records start as copies of these.
CUIData FreshRequest() {
    CUIData record;
    record.SetData("REQTYPE", 0);
    record.SetData("CreateTime", 0);
    record.SetData("CheckTimeout", true);
    record.SetData("Refresh", false);
    record.SetData("PassThrough", false);
    record.SetData("Processed", false);
    record.SetData("Params", CUIData());
    return record;
}

CUIData FreshResponse() {
    CUIData record;
    record.SetData("DATATYPE", 2001);
    record.SetData("REQTYPE", 1);
    record.SetData("IsLast", true);
    record.SetData("MapData", CUIData());
    record.SetData("TableIndex", CUIData());
    return record;
}

// Never destroyed: records are made until the last thread ends.
const CUIData& RequestPrototype() {
    static const CUIData* const prototype = new CUIData(FreshRequest());
    return *prototype;
}

const CUIData& ResponsePrototype() {
    static const CUIData* const prototype = new CUIData(FreshResponse());
    return *prototype;
}

void CopyInteger(const CUIData& from, CUIData& to, std::string_view key) {
    to.SetData(key, from.GetDataLong(key));
}
void CopyText(const CUIData& from, CUIData& to, std::string_view key) {
    to.SetData(key, from.GetDataText(key));
}

// The receiver's entry is a shared one. An entry that the host holds by value is taken as it is now, so that
// the host may go on changing its own.
template <class Value>
void CopyAttached(const CUIData& from, CUIData& to, std::string_view key) {
    Value value;
    if (from.GetDataShared(key, value) || from.GetData(key, value)) to.SetDataShared(key, value);
}

void CopyRecord(const CUIData& from, CUIData& to, std::string_view key) {
    CUIData value;
    if (from.GetData(key, value)) to.SetData(key, value);
}

}  // namespace

const char* CQueueTaskItem::ClassName() const { return "CQueueTaskItem"; }

CQueueReqItem::CQueueReqItem() : CQueueTaskItem(RequestPrototype()) { SetData("CreateTime", GetTickCount()); }

const char* CQueueReqItem::ClassName() const { return "CQueueReqItem"; }

CQueueRespData::CQueueRespData() : CQueueTaskItem(ResponsePrototype()) {}

const char* CQueueRespData::ClassName() const { return "CQueueRespData"; }

void CQueueRespData::CopyFrom(const CUIData& host) {
    CopyInteger(host, *this, "DATATYPE");
    CopyInteger(host, *this, "REQTYPE");
    SetData("IsLast", host.GetDataBool("IsLast"));
    for (const std::string_view key : kCopiedTexts) CopyText(host, *this, key);
    CopyAttached<CJsonObject>(host, *this, "JsonData");
    CopyAttached<CDataTable>(host, *this, "Table");
    for (const std::string_view key : kCopiedRecords) CopyRecord(host, *this, key);
}

bool CQueueRespData::IsChangeNotice(const CUIData& record) {
    return record.GetDataLong("DATATYPE") == kDataChangeNotice &&
           record.GetDataType("Request") != kDataRecord;
}

void CQueueRespData::CopyNoticeFrom(const CUIData& host) {
    CopyInteger(host, *this, "DATATYPE");
    CopyInteger(host, *this, "REQTYPE");
    CopyText(host, *this, "FundToken");
    CopyText(host, *this, "To");
}

}  // namespace luadui
