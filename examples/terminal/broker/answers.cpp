#include "broker/answers.h"

#include "base/json_object.h"
#include "base/text.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CUIData;

constexpr char kOrderService[] = "topic.oms.order";  // where orders of a single account come from
constexpr char kClient[] = "CLIENT_CACHE";           // what the client keeps, as a receiver

CDataTable BrokenTable() {
    CDataTable table;
    for (const char* name : {"Currency", "Currency", "", "SecurityID\xB0"}) table.AddColumn(name);
    for (int row = 0; row < 3; ++row) {
        table.AppendRow();
        table.SetItemText(row, 0, "\xB0");
        table.SetItemText(row, 1, "line\nbreak\x1B[2J");
        table.SetItemText(row, 3, std::string(5000, '\xFF'));
    }
    return table;
}

CUIData MakeNews(int dataType, const std::string& topic, const std::string& fundToken,
                 const CDataTable& rows) {
    CUIData news;
    news.SetData("DATATYPE", dataType);
    news.SetData("Topic", topic);
    news.SetData("FundToken", fundToken);
    news.SetData("To", kClient);
    news.SetData("Table", rows);
    return news;
}

}  // namespace

CUIData MakeAnswer(const CUIData& request, int dataType) {
    CUIData answer;
    answer.SetData("DATATYPE", dataType);
    answer.SetData("REQTYPE", request.GetDataLong("REQTYPE"));
    answer.SetData("IsLast", true);
    answer.SetData("UUID", request.GetDataText("UUID"));
    answer.SetData("FundToken", request.GetDataText("FundToken"));
    answer.SetData("To", request.GetDataText("From"));
    answer.SetData("TraceID", request.GetDataText("TraceID"));
    answer.SetData("SrcServer", "sample_broker");
    answer.SetData("Request", request);
    return answer;
}

CUIData MakeError(const CUIData& request, int dataType, int code, std::string_view message) {
    CJsonObject error;
    error.Set("retcode", code);
    error.Set("message", luadui::Utf8ToGbk(message));
    CUIData answer = MakeAnswer(request, dataType);
    answer.SetData("JsonData", error);
    return answer;
}

CUIData MakeChangeNotice(int type, const std::string& fundToken, const std::string& to) {
    CUIData notice;
    notice.SetData("DATATYPE", kDataChangeNotice);
    notice.SetData("REQTYPE", type);
    notice.SetData("FundToken", fundToken);
    notice.SetData("To", to);
    return notice;
}

CUIData MakePush(std::string_view topic, const std::string& fundToken, const CDataTable& rows) {
    return MakeNews(kDataPush, std::string(topic) + fundToken, fundToken, rows);
}

CUIData MakeReport(const Report& report, const CDataTable& row) {
    CJsonObject order;
    order.Set("LocalID", report.localId);
    CJsonObject fields;
    fields.Set("from", kOrderService);
    fields.Set("action", "order_report");
    fields.Set("fund_token", report.fundToken);
    fields.Set("account", report.account);
    fields.Set("LocalID", report.localId);
    fields.Set("InstanceID", report.instance);
    fields.Set("TaskID", report.task);
    fields.Set("msg", report.message);
    fields.Set("data", order);
    CUIData push = MakeNews(kDataPush, report.topic, report.fundToken, row);
    push.SetData("RawData", fields.ToText());
    return push;
}

CUIData MakeRiskPush(const std::string& fundToken, const CDataTable& row) {
    return MakeNews(kDataPush, "risk_push", fundToken, row);
}

CUIData MakeOnlineNotice(const std::string& fundToken, const CDataTable& account) {
    return MakeNews(kDataOnline, "AccountOnline", fundToken, account);
}

CUIData MakeGarbage(const CUIData& request, int dataType, unsigned variant) {
    CUIData answer = MakeAnswer(request, dataType);
    switch (variant % 4) {
        case 0:
            answer.SetData("Table", BrokenTable());
            break;
        case 1:
            answer.SetData("Table", "600000|\xC6\xD6");
            break;
        case 2:
            answer.SetData("JsonData", CDataTable());
            answer.SetData("DATATYPE", "2001x");
            answer.SetData("Table", 17);
            break;
        default:
            answer.SetData("Table", CDataTable());
            break;
    }
    return answer;
}

}  // namespace terminal
