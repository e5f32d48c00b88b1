#include "broker/answers.h"

#include "base/data_table.h"
#include "base/json_object.h"
#include "base/text.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CUIData;

constexpr int kDataAnswer = 2001;
constexpr int kDataChangeNotice = 2010;

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

}  // namespace

CUIData MakeAnswer(const CUIData& request) {
    CUIData answer;
    answer.SetData("DATATYPE", kDataAnswer);
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

CUIData MakeError(const CUIData& request, int code, std::string_view message) {
    CJsonObject error;
    error.Set("retcode", code);
    error.Set("message", luadui::Utf8ToGbk(message));
    CUIData answer = MakeAnswer(request);
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

CUIData MakeGarbage(const CUIData& request, unsigned variant) {
    CUIData answer = MakeAnswer(request);
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
