// AccountBridge: the account manager among the router, the timer window and the host.
#pragma once

#include <cstdint>
#include <string>

#include "accounts/account_events.h"
#include "accounts/account_manager.h"
#include "platform/export.h"

namespace luadui {

// Owns the account manager of the process and gives it to the router for its life.
//
// Threads: made and destroyed on the UI thread, after StartCommonData().
class AccountBridge final : private AccountEvents {
  public:
    AccountBridge();
    ~AccountBridge();
    AccountBridge(const AccountBridge&) = delete;
    AccountBridge& operator=(const AccountBridge&) = delete;

    CAccountManager& Manager() { return m_manager; }

  private:
    AccountUser User() const override;
    void Subscribe(const std::string& topic, int32_t handle) override;
    bool AnswerPage(const AccountAsker& asker, CQueueRespData& response) override;
    bool Publish(CQueueReqItem& notification) override;
    void HandlePush(const CQueueRespData& push) override;
    bool StartTimer(uint32_t id, uint32_t milliseconds) override;
    bool StopTimer(uint32_t id) override;

    CAccountManager m_manager{*this};
};

}  // namespace luadui
