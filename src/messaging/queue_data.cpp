#include "messaging/queue_data.h"

#include <utility>

#include "base/data_table.h"
#include "base/json_object.h"
#include "base/record_form.h"
#include "messaging/request_types.h"
#include "platform/win32.h"

namespace luadui {
namespace {

const HashedKey kDataTypeKey("DATATYPE"), kReqTypeKey("REQTYPE"), kIsLastKey("IsLast"),
    kRequestKey("Request"), kMapDataKey("MapData"), kTableIndexKey("TableIndex"), kJsonDataKey("JsonData"),
    kTableKey("Table"), kFundTokenKey("FundToken"), kToKey("To"), kCreateTimeKey("CreateTime");

// Filling a record key by key costs more than copying one: fresh records start as copies of these.
CUIData FreshRequest() {
    CUIData record;
    record.SetData(kReqTypeKey, 0);
    record.SetData(kCreateTimeKey, 0);
    record.SetData("CheckTimeout", true);
    record.SetData("Refresh", false);
    record.SetData("PassThrough", false);
    record.SetData("Processed", false);
    record.SetData("Params", CUIData());
    return record;
}

CUIData FreshResponse() {
    CUIData record;
    record.SetData(kDataTypeKey, 2001);
    record.SetData(kReqTypeKey, 1);
    record.SetData(kIsLastKey, true);
    record.SetData(kMapDataKey, CUIData());
    record.SetData(kTableIndexKey, CUIData());
    return record;
}

// These are never destroyed: records are made until the last thread ends.

const CUIData& RequestPrototype() {
    static const CUIData* const prototype = new CUIData(FreshRequest());
    return *prototype;
}

const CUIData& ResponsePrototype() {
    static const CUIData* const prototype = new CUIData(FreshResponse());
    return *prototype;
}

const RecordForm& ResponseForm() {
    static const auto* const form =
        new RecordForm(ResponsePrototype(), {{kDataTypeKey, kDataInteger},
                                             {kReqTypeKey, kDataInteger},
                                             {kIsLastKey, kDataBoolean},
                                             {HashedKey("UUID"), kDataString},
                                             {HashedKey("RawData"), kDataString},
                                             {kFundTokenKey, kDataString},
                                             {kToKey, kDataString},
                                             {HashedKey("Topic"), kDataString},
                                             {HashedKey("SrcServer"), kDataString},
                                             {HashedKey("TraceID"), kDataString}});
    return *form;
}

const RecordForm& NoticeForm() {
    static const auto* const form = new RecordForm(ResponsePrototype(), {{kDataTypeKey, kDataInteger},
                                                                         {kReqTypeKey, kDataInteger},
                                                                         {kFundTokenKey, kDataString},
                                                                         {kToKey, kDataString}});
    return *form;
}

// The receiver's entry is a shared one. An entry that the host holds by value is taken as it is now, so that
// the host may go on changing its own.
template <class Value>
void CopyAttached(const CUIData& from, CUIData& to, const HashedKey& key) {
    if (!from.GetDataView(key)) return;
    Value value;
    if (from.GetDataShared(key, value) || from.GetData(key, value)) to.SetDataShared(key, value);
}

void CopyRecord(const CUIData& from, CUIData& to, const HashedKey& key) {
    if (!from.GetDataView(key)) return;
    CUIData value;
    if (from.GetData(key, value)) to.SetData(key, value);
}

}  // namespace

const char* CQueueTaskItem::ClassName() const { return "CQueueTaskItem"; }

CQueueReqItem::CQueueReqItem() : CQueueTaskItem(RequestPrototype()) {
    SetData(kCreateTimeKey, GetTickCount());
}

const char* CQueueReqItem::ClassName() const { return "CQueueReqItem"; }

CQueueRespData::CQueueRespData() : CQueueTaskItem(ResponsePrototype()) {}

const char* CQueueRespData::ClassName() const { return "CQueueRespData"; }

void CQueueRespData::CopyFrom(const CUIData& host) {
    CUIData copy = ResponseForm().Read(host);
    CopyAttached<CJsonObject>(host, copy, kJsonDataKey);
    CopyAttached<CDataTable>(host, copy, kTableKey);
    for (const HashedKey* key : {&kRequestKey, &kMapDataKey, &kTableIndexKey}) CopyRecord(host, copy, *key);
    CUIData::operator=(std::move(copy));
    bool isLast = false;
    m_saysWhetherLast = host.GetDataView(kIsLastKey).Get(isLast);
}

bool CQueueRespData::IsChangeNotice(const CUIData& record) {
    return record.GetDataLong(kDataTypeKey) == kDataChangeNotice &&
           record.GetDataView(kRequestKey).Kind() != kDataRecord;
}

void CQueueRespData::CopyNoticeFrom(const CUIData& host) { CUIData::operator=(NoticeForm().Read(host)); }

}  // namespace luadui
