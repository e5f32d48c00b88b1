// CUIStockDataManager: the one router between pages, data managers and the host.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "codedata/elk_queue.h"
#include "datamgr/ui_common_data.h"
#include "messaging/host_types.h"
#include "messaging/request_object.h"
#include "platform/export.h"
#include "platform/win32.h"

namespace luadui {

class AccountCommands;
class CUIPageData;

// Who is logged in.
struct UserInfo {
    std::string username;
    std::string userid;
    std::string token;
    std::string institutionid;
    std::string roleid;
    std::string version;
    std::string userfolder;
    std::string runMode;
    std::string isbroker;
    std::string qsid;
};

// Created on the UI thread before any page, never destroyed.
//
// Threads: the UI thread.
class LUADUI_API CUIStockDataManager : public CRequestObject, private ElkSink {
  public:
    // What the operations on pages return.
    enum Result : int { kDone = 1, kRefused = 0, kBadArgument = -3 };

    static CUIStockDataManager& get_mutable_instance();
    // Sets up the common data manager; once, after the router exists. Further calls do nothing.
    void StartCommonData();

    // Reads who is logged in from the login information (JSON text) and the host's settings. kBadArgument
    // when the text is no JSON object; the window is the host's and may be null.
    int Init(const std::string& loginInfo, HWND const& hostWnd);
    const UserInfo& GetUserInfo() const { return m_userInfo; }
    HWND HostWindow() const { return m_hostWnd; }

    // The manager of a page, not owned. kRefused when the name is taken: the first one stays.
    int RegisterPage(const std::string& pageName, CUIPageData* page);
    int UnRegisterPage(const std::string& pageName);
    // Sends news of a kind to a page, or no longer.
    void RegisterSubscribe(const std::string& pageName, const std::string& kind);
    void UnRegisterSubscribe(const std::string& pageName, const std::string& kind);

    // Deliveries: kBadArgument without a record or a name, otherwise kDone, also when nobody was there to get it
    // (counted). The record stays the caller's.
    //
    // To all of one page.
    int NotifyPage(const CUIData* record, const std::string& pageName);
    // To the page of the window `handle` if there is one, otherwise, with `broadcast`, to the pages
    // that subscribed to the record's kind.
    int NotifyPage(const CUIData* record, int handle, bool broadcast);

    // Requests for common data: answered from the common cache where `mode` and the record's "refresh" allow
    // it.
    void SetData(CUIData* record, SET_DATA mode);
    // The GetData of the same arguments of the page with that name, or of the common data manager
    // ("CommonData"). Empty, or false, for an unknown name.
    CUIData GetUIData(const std::string& kind, const std::string& pageName);
    bool GetUIData(CUIData& request, bool cacheOnly, bool flag, const std::string& pageName);
    // `shared`: attached to the list itself instead of a copy.
    bool GetUIData(const std::string& kind, CUIData& out, const std::string& pageName, bool shared);
    // Remembers the page of the window that the record names in "handle".
    void SaveHandle2Page(const CUIData& record);
    // The registered page of a window; null when there is none.
    CUIPageData* PageOf(uint32_t handle) const;

    // Completes subscriptions here (false: they are not sent as such); everything else leaves with this
    // object as its sender, so that answers come back here and go on to whoever asked or subscribed.
    bool Request(CQueueReqItem& request) override;
    using CRequestObject::RequestSync;
    // A synchronous question to the host; its answer replaces `*result` (may be null) and `fields`.
    bool RequestSync(unsigned int type, StringMap& fields, std::string* result);
    // Hands a response to the common data manager, or to its receivers; those that have gone are skipped.
    void OnResponse(const CQueueRespData* response) override;

    static bool IsCommonData(const CQueueRespData* response);
    static bool IsCommonData(const CUIData* record);

    // The account manager takes the work on account orders and portfolios (null: nobody does). Not owned.
    void SetAccountCommands(AccountCommands* commands) { m_accountCommands = commands; }
    AccountCommands* GetAccountCommands() const { return m_accountCommands; }
    CUICommonData& CommonData() { return m_commonData; }

  private:
    CUIStockDataManager() = default;
    ~CUIStockDataManager() override = default;

    bool DispatchRequest(CQueueReqItem& request);
    void NotifyUIEvent(const CQueueReqItem& request);
    void SaveOnlineAccount2Cache(const CQueueRespData& response);
    bool ShipLogs(const CUIData& batch) override;
    CUIPageData* _page(std::string_view name) const;
    void _broadcast(const CUIData& record);
    void _deliver(const CUIData& record, std::string_view pageName, int handle, bool flag);
    void _noteFailure(const CQueueRespData& response, const std::vector<int32_t>& receivers);
    void _dropDeadHandles();

    CUICommonData m_commonData;
    std::map<std::string, CUIPageData*, std::less<>> m_pages;
    std::map<std::string, std::set<std::string>, std::less<>> m_subscriptions;  // data kind -> page names
    std::map<uint32_t, std::string> m_handlePages;                              // window -> page name
    static constexpr size_t kHandlesKept = 1 << 16;
    size_t m_handlesAllowed = kHandlesKept;
    std::string m_loginInfo;
    UserInfo m_userInfo;
    HWND m_hostWnd = nullptr;
    AccountCommands* m_accountCommands = nullptr;
    bool m_isStarted = false;
};

}  // namespace luadui
