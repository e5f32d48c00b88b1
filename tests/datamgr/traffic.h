// A data manager of its own, what its windows receive, and answers and pushes written as text.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/base_object.h"
#include "base/text.h"
#include "datamgr/request_ledger.h"
#include "datamgr/ui_data_manager.h"
#include "tests/fakes/describe.h"

namespace luadui {

// Writes down what it receives as "kind entry=value ...", its own handle as H.
class Receiver : public CBaseObject {
  public:
    void OnNotify(void* data) override {
        const auto& record = *static_cast<CUIData*>(data);
        const std::string text = record.GetType() + ' ' + Describe(record);
        m_received += (m_received.empty() ? "" : " / ") +
                      ReplaceText(text, "handle=" + std::to_string(GetHandle()), "handle=H");
    }
    // What came since the last call.
    std::string Take() { return std::exchange(m_received, {}); }

  private:
    std::string m_received;
};

// "column,column;cell,cell;cell,cell"
inline CDataTable TableOf(std::string_view text) {
    CDataTable table;
    const auto lines = SplitText(text, ';');
    for (const auto name : SplitText(lines[0], ',')) table.AddColumn(name);
    for (size_t line = 1; line < lines.size(); ++line) {
        const int row = table.AppendRow();
        int col = 0;
        for (const auto cell : SplitText(lines[line], ',')) table.SetItemText(row, col++, cell);
    }
    return table;
}

// A JSON object, or nothing, and the text of a table, or nothing.
inline CQueueRespData ResponseOf(std::string_view text) {
    CQueueRespData response;
    const size_t end = text.rfind('}');
    const size_t tableAt = end == std::string_view::npos ? 0 : end + 1;
    CJsonObject json;
    if (json.Parse(text.substr(0, tableAt))) response.SetData("JsonData", json);
    if (tableAt < text.size()) response.SetData("Table", TableOf(text.substr(tableAt)));
    return response;
}

// Lists, shared data and listeners like those of the common manager, no router and no timer.
class TestManager : public CUIDataManager {
  public:
    TestManager() {
        InitRunType("Test");
        Lists().MakeCommonLists();
    }
    // Nobody waits for its answers any longer.
    ~TestManager() override {
        for (const std::string& uuid : m_sent) RequestLedger::Instance().Drop(uuid);
    }

    struct Ask {
        int type = 0;
        std::string kind = {};
        std::string fundToken = "F1";
        CDataSet tokens = CDataSet();
        int32_t handle = kNoHandle;
        CUIData params = CUIData();
    };
    // Lets the request leave; what Answer needs of it.
    CQueueReqItem Send(const Ask& ask) {
        CQueueReqItem request;
        CUIData params = ask.params;
        if (ask.handle != kNoHandle) params.SetData("handle", std::to_string(ask.handle));
        request.SetData("REQTYPE", ask.type);
        m_sent.push_back("test" + std::to_string(++s_lastUuid));
        request.SetData("UUID", m_sent.back());
        request.SetData("FundToken", ask.fundToken);
        request.SetData("Params", params);
        RequestLedger::Entry entry;
        entry.kind = ask.kind;
        entry.handle = ask.handle;
        entry.fundToken = ask.fundToken;
        if (!ask.tokens.IsEmpty()) entry.ask = std::make_shared<const CDataSet>(ask.tokens);
        RequestLedger::Instance().Describe(m_sent.back(), entry);
        RequestLedger::Instance().Sent(request);
        return request;
    }
    void Answer(const CQueueReqItem& request, CQueueRespData response) {
        for (const char* key : {"REQTYPE", "UUID", "FundToken"})
            response.SetData(key, request.GetDataView(key));
        response.SetData("Request", static_cast<const CUIData&>(request));
        OnResponse(&response);
    }
    void Answer(const Ask& ask, std::string_view answer) { Answer(Send(ask), ResponseOf(answer)); }
    void Push(std::string_view topic, CQueueRespData push) {
        push.SetData("Topic", topic);
        OnResponse(&push);
    }

  private:
    static inline int s_lastUuid = 0;
    std::vector<std::string> m_sent;
};

}  // namespace luadui
