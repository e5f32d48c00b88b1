// CAccountManager: answers to those who gave commands.
#include "accounts/account_manager.h"
#include "accounts/account_request.h"
#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

constexpr int kDataAnswer = 2001, kDataFailed = -1;
constexpr std::string_view kSucceeded = "0";
constexpr std::string_view kKeylessReturn = "UnKnowKey_Ret";

CJsonObject ReturnOf(std::string_view code, std::string_view message, const CJsonObject& data) {
    CJsonObject result;
    result.Set("code", code);
    result.Set("message", message);
    result.Set("data", data);
    return result;
}

}  // namespace

void CAccountManager::_answer(const AccountAsker& asker, CJsonObject data, CDataTable table) {
    _send(asker, kKeylessReturn, ReturnOf(kSucceeded, "", data), table);
}

void CAccountManager::_done(const AccountAsker& asker) {
    _send(asker, kKeylessReturn, ReturnOf(kSucceeded, Gbk("操作成功！"), CJsonObject()), CDataTable());
}

void CAccountManager::_refuse(const AccountAsker& asker, const Failure& failure) {
    _send(asker, kKeylessReturn, ReturnOf(failure.code, failure.message, CJsonObject()), CDataTable());
}

void CAccountManager::_send(const AccountAsker& asker, std::string_view fallbackKey,
                            const CJsonObject& result, const CDataTable& table) {
    if (!asker.wants) return;
    CJsonObject answer;
    if (asker.type == 0) {
        answer.Set("result", result);
        _publish(asker.key.empty() ? fallbackKey : std::string_view(asker.key), answer.ToText(), asker.uuid);
        return;
    }
    // What pages read of every answer stands beside it.
    const bool hasFailed = result.GetText("code") != kSucceeded;
    answer.Set("retcode", result.GetText("code"));
    answer.Set("message", result.GetText("message"));
    answer.Set("result", result);
    CQueueRespData response;
    response.SetData("DATATYPE", hasFailed ? kDataFailed : kDataAnswer);
    response.SetData("REQTYPE", asker.type);
    response.SetData("UUID", asker.uuid);
    response.SetData("JsonData", answer);
    if (table.GetColumnNumber() > 0) response.SetData("Table", table);
    if (!m_events.AnswerPage(asker, response)) CCounters::Add("account_asker_gone");
}

}  // namespace luadui
