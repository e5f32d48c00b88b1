// The account service and the account manager, as accounts and groups see them: requests are kept, answers are given by
// hand, events and log lines are written down.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "accounts/result_event.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "tests/fakes/describe.h"
#include "tests/fakes/fake_host.h"
#include "tests/fakes/tables.h"

namespace luadui {

class ServiceProbe : public ResultEventSink, public ElkSink {
  public:
    ServiceProbe() {
        CDataManager::Instance().SetElkSink(this);
        Lines();
    }
    ~ServiceProbe() { CDataManager::Instance().SetElkSink(nullptr); }

    FakeHost host;
    std::vector<ResultEvent> events;
    std::function<void(const ResultEvent&)> onEvent = [](const ResultEvent&) {};

    // What was logged since the last call, in UTF-8: "account:text", "error:text", the detail after "="; lines of another kind
    // with module and fields.
    std::vector<std::string> Lines() {
        m_lines.clear();
        while (CDataManager::Instance().ShipELK() > 0) {
        }
        return m_lines;
    }
    // The events since the last call: "name module key code message" in UTF-8, without empty parts.
    std::vector<std::string> Events() {
        std::vector<std::string> texts;
        for (const ResultEvent& event : events) {
            std::string text(event.name);
            for (const std::string_view part :
                 {event.module, std::string_view(event.accountKey), std::string_view(event.code),
                  std::string_view(event.message)}) {
                if (!part.empty()) (text += ' ') += part;
            }
            texts.push_back(GbkToUtf8(text));
        }
        events.clear();
        return texts;
    }

    // The last request: "1040 useraccount=u groupid=g", without what every request gets.
    std::string LastRequest() const {
        CUIData params = FakeHost::Params(host.pushed.back());
        for (const char* added : {"log_source", "routeType", "destServer"}) params.Remove(added);
        return std::to_string(host.pushed.back().GetDataLong("REQTYPE")) + ' ' + Describe(params);
    }

    // An answer to a request, as the router hands it on; DATATYPE -1 when it failed.
    static CQueueRespData AnswerTo(const CQueueReqItem& request, bool isGood = true) {
        CQueueRespData response;
        response.SetData("DATATYPE", isGood ? 2001 : -1);
        response.SetData("REQTYPE", request.GetDataLong("REQTYPE"));
        response.SetData("UUID", request.GetDataText("UUID"));
        response.SetData("Request", request);
        return response;
    }
    CQueueRespData AnswerToLast(bool isGood = true) const { return AnswerTo(host.pushed.back(), isGood); }
    static CQueueRespData WithTable(CQueueRespData response, const CDataTable& table) {
        response.SetData("Table", table);
        return response;
    }

    void OnResultEvent(const ResultEvent& event) override {
        events.push_back(event);
        onEvent(event);
    }
    bool ShipLogs(const CUIData& batch) override {
        CDataTable table;
        batch.GetData("Table", table);
        for (int row = 0; row < table.GetRowNumber(); ++row) {
            CJsonObject fields;
            fields.Parse(table.GetItemText(row, "Fields"));
            const bool isError = table.GetItemText(row, "LogSource") == "client@_error";
            std::string line = (isError ? "error:" : "account:") + std::string(fields.GetText("message"));
            if (fields.Has("detail")) line += '=' + std::string(fields.GetText("detail"));
            if (!fields.Has("message")) line += table.GetItemText(row, "Module") + fields.ToText();
            m_lines.push_back(GbkToUtf8(line));
        }
        return true;
    }

  private:
    std::vector<std::string> m_lines;
};

}  // namespace luadui
