// The account service and the account manager, as accounts and groups see them: requests are kept, answers are given by
// hand, events and log lines are written down.
#pragma once

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "accounts/result_event.h"
#include "base/text.h"
#include "codedata/data_manager.h"
#include "messaging/handle_text.h"
#include "messaging/request_types.h"
#include "messaging/response_routing.h"
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
    // The events since the last call: "name module key code message" in UTF-8, without empty parts, modules without their
    // "MODULE_".
    std::vector<std::string> Events() {
        std::vector<std::string> texts;
        for (const ResultEvent& event : std::exchange(events, {})) {
            std::string text = std::string(event.name) + ' ' + std::string(event.module.substr(7));
            for (const std::string* const part : {&event.accountKey, &event.code, &event.message}) {
                if (!part->empty()) (text += ' ') += *part;
            }
            texts.push_back(GbkToUtf8(text));
        }
        return texts;
    }

    // The last request: "1040 useraccount=u groupid=g", without what every request gets.
    std::string LastRequest() const {
        CUIData params = FakeHost::Params(host.pushed.back());
        for (const char* added : {"log_source", "routeType", "destServer"}) params.Remove(added);
        return std::to_string(host.pushed.back().GetDataLong("REQTYPE")) + ' ' + Describe(params);
    }

    // The last request of the type.
    CQueueReqItem Sent(int type) const {
        const auto found = std::find_if(host.pushed.rbegin(), host.pushed.rend(),
                                        [&](const auto& each) { return RequestTypeOf(each) == type; });
        return found == host.pushed.rend() ? throw std::runtime_error("no request of that type") : *found;
    }
    auto CountSent(int type) const { return std::ranges::count(host.pushed, type, RequestTypeOf); }
    static CDataTable RowsOf(const CQueueReqItem& request) {
        CDataTable table;
        FakeHost::Params(request).GetData("Table", table);
        return table;
    }

    // Answers go to whoever sent the request, when he is still there.
    static void Deliver(const CQueueReqItem& request, const CQueueRespData& answer) {
        DeliverResponse(HandleFromText(request.GetDataText("From")), answer);
    }
    static void Answer(const CQueueReqItem& request, const CDataTable& table = CDataTable(),
                       bool isGood = true) {
        Deliver(request, WithTable(AnswerTo(request, isGood), table));
    }
    void Answer(int type, const CDataTable& table = CDataTable()) const { Answer(Sent(type), table); }
    void AnswerJson(int type, const std::string& text, bool isGood = true) const {
        CQueueRespData answer = AnswerTo(Sent(type), isGood);
        if (CJsonObject json; json.Parse(Gbk(text))) answer.SetData("JsonData", json);
        Deliver(Sent(type), answer);
    }
    // A record of texts, from UTF-8.
    static CUIData Values(const std::vector<std::pair<std::string, std::string>>& texts) {
        CUIData values;
        for (const auto& [name, text] : texts) values.SetData(name, Gbk(text));
        return values;
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
