#include "messaging/queue_data.h"

#include <gtest/gtest.h>

#include "base/data_table.h"
#include "base/json_object.h"
#include "platform/win32.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

TEST(QueueData, FreshRecordsHoldTheirDefaultsInOrder) {
    const DWORD before = GetTickCount();
    CQueueReqItem request;
    const auto created = static_cast<DWORD>(request.GetDataLong("CreateTime"));
    EXPECT_LE(created - before, 1000U);
    request.SetData("CreateTime", 7);
    EXPECT_EQ(
        Describe(request),
        "REQTYPE=0 CreateTime=7 CheckTimeout=true Refresh=false PassThrough=false Processed=false Params={}");
    EXPECT_EQ(Describe(CQueueRespData()), "DATATYPE=2001 REQTYPE=1 IsLast=true MapData={} TableIndex={}");
}

TEST(QueueData, FreshRecordsDoNotShareLaterChanges) {
    CQueueReqItem first;
    CUIData params;
    first.GetDataShared("Params", params);
    params.SetData("fund_token", "F01");
    EXPECT_EQ(FakeHost::Params(CQueueReqItem()).Size(), 0U);
}

TEST(QueueData, ClassNamesAndTag) {
    const CQueueTaskItem task;
    const CQueueReqItem request;
    const CQueueRespData response;
    const CUIData* const records[] = {&task, &request, &response};
    const char* const names[] = {"CQueueTaskItem", "CQueueReqItem", "CQueueRespData"};
    for (int i = 0; i < 3; ++i) EXPECT_STREQ(records[i]->ClassName(), names[i]);
    EXPECT_EQ(task.Tag(), 0U);
}

CUIData HostRecord() {
    CUIData host;
    host.SetData("DATATYPE", 2003);
    host.SetData("REQTYPE", "1011");  // text that is a number reads as one
    host.SetData("IsLast", false);
    for (const char* key : {"UUID", "RawData", "FundToken", "To", "Topic", "SrcServer", "TraceID"}) {
        host.SetData(key, std::string(key) + "!");
    }
    host.SetData("Unknown", "stays behind");
    CUIData request;
    request.SetData("REQTYPE", 5);
    host.SetData("Request", request);
    return host;
}

TEST(QueueData, CopyTakesTheKnownKeysAndKeepsDefaultsOfAbsentRecords) {
    CQueueRespData copy;
    copy.CopyFrom(HostRecord());
    EXPECT_EQ(
        Describe(copy),
        "DATATYPE=2003 REQTYPE=1011 IsLast=false MapData={} TableIndex={} UUID=UUID! RawData=RawData! "
        "FundToken=FundToken! To=To! Topic=Topic! SrcServer=SrcServer! TraceID=TraceID! Request={REQTYPE=5}");
}

TEST(QueueData, MissingAndMistypedKeysReadAsEmpty) {
    CUIData host;
    host.SetData("DATATYPE", CUIData());
    host.SetData("UUID", 5);
    host.SetData("Table", "no table");
    host.SetData("MapData", 1);
    CQueueRespData copy;
    copy.CopyFrom(host);
    EXPECT_EQ(Describe(copy),
              "DATATYPE=0 REQTYPE=0 IsLast=false MapData={} TableIndex={} UUID= RawData= FundToken= To= "
              "Topic= SrcServer= TraceID=");
}

TEST(QueueData, MorePartsAreExpectedOnlyWhereTheHostSaysSo) {
    CUIData host = HostRecord();
    CQueueRespData copy;
    EXPECT_FALSE(copy.IsPart());
    copy.CopyFrom(host);
    EXPECT_TRUE(copy.IsPart());
    host.SetData("IsLast", true);
    copy.CopyFrom(host);
    EXPECT_FALSE(copy.IsPart());
    for (const bool isAbsent : {true, false}) {
        host.SetData("IsLast", "no");
        if (isAbsent) host.Remove("IsLast");
        copy.CopyFrom(host);
        EXPECT_FALSE(copy.IsPart());
    }
}

// What the host attached stays one object; what it holds by value is taken as it is.
TEST(QueueData, TablesAreAttachedOrTakenAsTheyAre) {
    for (const bool isShared : {true, false}) {
        CDataTable table;
        table.AddColumn("code");
        table.AppendRow();
        CUIData host;
        if (isShared) {
            host.SetDataShared("Table", table);
        } else {
            host.SetData("Table", table);
        }
        CQueueRespData copy;
        copy.CopyFrom(host);
        CDataTable received;
        ASSERT_TRUE(copy.GetData("Table", received));
        EXPECT_TRUE(received.SharesWith(table)) << "a table must not be copied cell by cell";
        table.SetItemText(0, "code", "600000");
        ASSERT_TRUE(copy.GetData("Table", received));
        EXPECT_EQ(received.GetItemText(0, "code"), isShared ? "600000" : "");
        EXPECT_TRUE(copy.IsShared("Table"));
    }
}

TEST(QueueData, ChangeNoticeIsShortUnlessItHoldsARequest) {
    CUIData host = HostRecord();
    host.SetData("DATATYPE", 2010);
    EXPECT_FALSE(CQueueRespData::IsChangeNotice(host));
    host.SetData("Request", "no record");
    EXPECT_TRUE(CQueueRespData::IsChangeNotice(host));
    CQueueRespData notice;
    notice.CopyNoticeFrom(host);
    EXPECT_EQ(Describe(notice),
              "DATATYPE=2010 REQTYPE=1011 IsLast=true MapData={} TableIndex={} FundToken=FundToken! To=To!");
}

TEST(QueueData, HostileRecordsAreCopiedInTime) {
    CUIData host = HostRecord();
    for (int i = 0; i < 100000; ++i) host.SetData("key" + std::to_string(i), i);
    host.SetData("RawData", std::string(64 << 20, 'x'));
    CQueueRespData copy;
    copy.CopyFrom(host);
    EXPECT_EQ(copy.GetDataText("RawData").size(), size_t{64} << 20);
    EXPECT_EQ(copy.Size(), 13U);
}

}  // namespace
}  // namespace luadui
