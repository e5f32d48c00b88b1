#include "datamgr/ui_stock_data_manager.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "accounts/account_commands.h"
#include "base/guard.h"
#include "base/json_object.h"
#include "codedata/data_manager.h"
#include "datamgr/account_requests.h"
#include "datamgr/request_ledger.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_registry.h"
#include "messaging/guid.h"
#include "messaging/handle_text.h"
#include "messaging/host_link.h"
#include "messaging/request_types.h"
#include "messaging/response_routing.h"
#include "messaging/subscription_dispatcher.h"

namespace luadui {
namespace {

constexpr char kCommonData[] = "CommonData";
constexpr char kClientCache[] = "CLIENT_CACHE";  // the host's name for what is kept here
constexpr int kDataFailed = -1;
constexpr int kDataOnline = 2011;
constexpr int kReqOnlineAccounts = 1903;
constexpr int kReqUIEvent = 1605;
constexpr char kSystemSettings[] = "\\qsclient\\system\\systemset.cfg";

}  // namespace

CUIStockDataManager& CUIStockDataManager::get_mutable_instance() {
    static auto* const manager = new CUIStockDataManager;
    return *manager;
}

void CUIStockDataManager::StartCommonData() {
    if (m_isStarted) return;
    m_isStarted = true;
    m_commonData.Init(kCommonData);
    CDataManager::Instance().SetElkSink(this);
    NameReceiver(kClientCache, GetHandle());
}

int CUIStockDataManager::Init(const std::string& loginInfo, HWND const& hostWnd) {
    CJsonObject login;
    if (!login.Parse(loginInfo)) return kBadArgument;
    m_loginInfo = loginInfo;
    m_hostWnd = hostWnd;
    const CJsonObject user = login.GetSub("g_user");
    UserInfo info;
    info.username = user.GetString("username");
    info.userid = user.GetString("userid");
    info.token = user.GetString("token");
    info.institutionid = user.GetString("institutionid");
    info.roleid = user.GetString("roleid");
    info.version = user.GetString("version");
    info.userfolder = login.Has("userfolder") ? login.GetString("userfolder") : user.GetString("userfolder");
    const std::string userSettings = info.userfolder + "/user.cfg";
    info.runMode = ReadConfig(kSystemSettings, "RunMode");
    info.isbroker = ReadConfig(userSettings, "isbroker");
    info.qsid = ReadConfig(userSettings, "qsid");
    m_userInfo = std::move(info);
    if (m_accountCommands) m_accountCommands->OnUser();
    return kDone;
}

// Pages.

int CUIStockDataManager::RegisterPage(const std::string& pageName, CUIPageData* page) {
    if (pageName.empty() || !page) return kBadArgument;
    return m_pages.emplace(pageName, page).second ? kDone : kRefused;
}

int CUIStockDataManager::UnRegisterPage(const std::string& pageName) {
    if (pageName.empty()) return kBadArgument;
    return m_pages.erase(pageName) ? kDone : kRefused;
}

void CUIStockDataManager::RegisterSubscribe(const std::string& pageName, const std::string& kind) {
    m_subscriptions[kind].insert(pageName);
}

void CUIStockDataManager::UnRegisterSubscribe(const std::string& pageName, const std::string& kind) {
    const auto pages = m_subscriptions.find(kind);
    if (pages == m_subscriptions.end()) return;
    pages->second.erase(pageName);
    if (pages->second.empty()) m_subscriptions.erase(pages);
}

CUIPageData* CUIStockDataManager::_page(std::string_view name) const {
    const auto page = m_pages.find(name);
    return page == m_pages.end() ? nullptr : page->second;
}

void CUIStockDataManager::SaveHandle2Page(const CUIData& record) {
    int32_t handle = 0;
    if (!record.GetData("handle", handle) || handle <= 0) return;
    m_handlePages.insert_or_assign(static_cast<uint32_t>(handle), record.GetDataString("pageName"));
    if (m_handlePages.size() > m_handlesAllowed) _dropDeadHandles();
}

CUIPageData* CUIStockDataManager::PageOf(uint32_t handle) const {
    const auto owner = m_handlePages.find(handle);
    return owner == m_handlePages.end() ? nullptr : _page(owner->second);
}

// Handles of closed windows stay, so that late answers for them reach nobody else; those of long ago, which
// are the lower half of them, need not.
void CUIStockDataManager::_dropDeadHandles() {
    const auto middle = std::next(m_handlePages.begin(), static_cast<ptrdiff_t>(m_handlePages.size() / 2));
    for (auto entry = m_handlePages.begin(); entry != middle;) {
        entry = CBaseObject::Find(entry->first) ? std::next(entry) : m_handlePages.erase(entry);
    }
    m_handlesAllowed = std::max<size_t>(kHandlesKept, 2 * m_handlePages.size());
}

// Delivery.

int CUIStockDataManager::NotifyPage(const CUIData* record, const std::string& pageName) {
    if (!record || pageName.empty()) return kBadArgument;
    if (CUIPageData* const page = _page(pageName)) {
        CUIData own = *record;
        page->ResponseNotify(&own, kNoHandle, true);
    } else {
        CCounters::Add("record_page_gone");
    }
    return kDone;
}

int CUIStockDataManager::NotifyPage(const CUIData* record, int handle, bool broadcast) {
    if (!record) return kBadArgument;
    const CUIData content = *record;  // stays what it is, whatever the pages do
    const bool isWaking = content.GetDataText("sleep_refresh_request") == "true";
    const auto owner = m_handlePages.find(static_cast<uint32_t>(handle));
    const bool isOwned = owner != m_handlePages.end() && !owner->second.empty();
    if (isOwned) {
        const std::string pageName = owner->second;
        _deliver(content, pageName, handle, isWaking || broadcast);
    } else if (broadcast && !isWaking) {
        _broadcast(content);
    } else {
        CCounters::Add("record_without_page");
    }
    return kDone;
}

void CUIStockDataManager::_broadcast(const CUIData& record) {
    const auto subscribed = m_subscriptions.find(record.GetTypeText());
    if (subscribed == m_subscriptions.end()) return CCounters::Add("record_without_subscriber");
    const std::string kind = record.GetType();
    const std::vector<std::string> pages(subscribed->second.begin(), subscribed->second.end());
    CUIData newest = record;
    for (const std::string& page : pages) {
        // One told before may have ended this one's subscription, and let in newer content.
        const auto current = m_subscriptions.find(kind);
        if (current == m_subscriptions.end() || !current->second.contains(page)) continue;
        m_commonData.Lists().KeepNewest(newest);
        _deliver(newest, page, kNoHandle, true);
    }
}

void CUIStockDataManager::_deliver(const CUIData& record, std::string_view pageName, int handle, bool flag) {
    CUIPageData* const page = _page(pageName);
    if (!page) return CCounters::Add("record_page_gone");
    if (page->PreHandleNotify(&record, handle, flag)) return;
    CUIData own = record;
    page->ResponseNotify(&own, handle, flag);
}

// Asking.

void CUIStockDataManager::SetData(CUIData* record, SET_DATA mode) {
    if (!record) return;
    SaveHandle2Page(*record);
    const bool mayAnswer = mode == kSetRequest || mode == kSetFactoryRequest;
    if (IsCommonData(record) && mayAnswer && record->GetDataLong("refresh") == 0) {
        m_commonData.GetData(*record, false, false);
    } else {
        m_commonData.SetData(record, mode);
    }
}

CUIData CUIStockDataManager::GetUIData(const std::string& kind, const std::string& pageName) {
    if (pageName == kCommonData) return m_commonData.GetData(kind);
    CUIPageData* const page = _page(pageName);
    return page ? page->GetData(kind) : CUIData();
}

bool CUIStockDataManager::GetUIData(CUIData& request, bool cacheOnly, bool flag,
                                    const std::string& pageName) {
    SaveHandle2Page(request);
    if (pageName == kCommonData) return m_commonData.GetData(request, cacheOnly, flag);
    CUIPageData* const page = _page(pageName);
    return page && page->GetData(request, cacheOnly, flag);
}

bool CUIStockDataManager::GetUIData(const std::string& kind, CUIData& out, const std::string& pageName,
                                    bool shared) {
    CUIDataManager* manager = _page(pageName);
    if (pageName == kCommonData) manager = &m_commonData;
    if (!manager) return false;
    return shared ? manager->GetDataShared(kind, out) : manager->GetData(kind, out);
}

// Sending.

bool CUIStockDataManager::Request(CQueueReqItem& request) {
    // The router's own questions, after a change notice, are about the common data.
    if (request.GetDataText("From").empty())
        request.SetData("From", std::to_string(m_commonData.GetHandle()));
    if (CSubscriptionDispatcher::Instance().Offer(request)) return false;
    return DispatchRequest(request);
}

bool CUIStockDataManager::DispatchRequest(CQueueReqItem& request) {
    const int type = RequestTypeOf(request);
    if (type == kReqPageEventSubscribe) return true;
    if (type == kReqUIEvent) {
        NotifyUIEvent(request);
        return true;
    }
    if (IsAccountRequest(type)) return DisPatchReq2AccountManager(m_accountCommands, request);
    // A page registration names the page itself: host messages go to it directly.
    if (!IsPageRegistration(type)) {
        request.SetData("From", std::to_string(GetHandle()));
        RequestLedger::Instance().Sent(request);
    }
    return CHostLink::Instance().Send(request);
}

void CUIStockDataManager::NotifyUIEvent(const CQueueReqItem& request) {
    const CQueueRespData event = MakeUIEvent(request);
    OnResponse(&event);
}

bool CUIStockDataManager::RequestSync(unsigned int type, StringMap& fields, std::string* result) {
    return CHostLink::Instance().RequestSync(type, fields, result);
}

bool CUIStockDataManager::ShipLogs(const CUIData& batch) {
    CDataTable table;
    batch.GetData("Table", table);
    CQueueReqItem request;
    request.SetData("REQTYPE", RequestTypeOfKind("log_operation"));
    request.SetData("Table", table);
    return Request(request);
}

// Receiving.

void CUIStockDataManager::OnResponse(const CQueueRespData* response) {
    if (!response) return;
    SaveOnlineAccount2Cache(*response);
    if (IsCommonData(response)) {
        Guarded("response_handler_threw", [&] { m_commonData.OnResponse(response); });
        return;
    }
    const auto receivers = CSubscriptionDispatcher::Instance().Receivers(*response);
    _noteFailure(*response, receivers);
    if (receivers.empty()) CCounters::Add("response_without_receiver");
    for (const int32_t receiver : receivers) {
        if (receiver != GetHandle()) DeliverResponse(receiver, *response);
    }
}

// Failed requests show in the message center, whoever asked; managers with one of their own do it themselves.
void CUIStockDataManager::_noteFailure(const CQueueRespData& response,
                                       const std::vector<int32_t>& receivers) {
    int type = 0;
    if (!response.GetData("DATATYPE", type) || type != kDataFailed) return;
    const auto hasMessages = [](int32_t receiver) {
        const auto* const manager = dynamic_cast<CUIDataManager*>(CBaseObject::Find(receiver));
        return manager && manager->Lists().MessageCenter();
    };
    if (std::ranges::none_of(receivers, hasMessages))
        Guarded("response_handler_threw", [&] { m_commonData.NoteFailure(response); });
}

void CUIStockDataManager::SaveOnlineAccount2Cache(const CQueueRespData& response) {
    CDataTable table;
    int type = 0;
    if (response.GetDataText("To") != kClientCache || !response.GetData("Table", table)) return;
    if (!response.GetData("DATATYPE", type) || type != kDataOnline ||
        response.GetDataText("Topic") != "AccountOnline")
        return;
    CQueueReqItem request;
    request.SetData("REQTYPE", kReqOnlineAccounts);
    request.SetData("UUID", NewGuid());
    request.SetData("Table", table);
    request.SetData("Refresh", 1);
    Request(request);
}

bool CUIStockDataManager::IsCommonData(const CQueueRespData* response) {
    int type = 0;
    return response &&
           IsCommonResponse(response->GetData("DATATYPE", type) ? type : 0, response->GetDataText("Topic"));
}

bool CUIStockDataManager::IsCommonData(const CUIData* record) {
    return record && IsCommonKind(record->GetTypeText());
}

}  // namespace luadui
