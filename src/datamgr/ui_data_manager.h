// CUIDataManager: where pages ask for data by name and hear of news.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/ui_data.h"
#include "codedata/elk_item.h"
#include "datalists/list_owner.h"
#include "datalists/timer_client.h"
#include "datamgr/answer.h"
#include "datamgr/list_store.h"
#include "datamgr/notify_table.h"
#include "datamgr/subscription_book.h"
#include "messaging/host_types.h"
#include "messaging/request_base.h"
#include "platform/export.h"

namespace luadui {

class CDataTimerWnd;
class InstructionServers;
struct AnswerRoute;

// What SetData does with a record.
enum SET_DATA : int {
    kSetRequest = 0,         // send a request
    kSetFactoryRequest = 1,  // let a local factory serve it
    kSetSubscribe = 2,
    kSetUnsubscribe = 3,
    kSetSave = 4,  // save data or settings
    kSetLua = 5,   // send to the host's Lua side
};

// A page asks for a data kind with a record of that type: "handle" is the CBaseObject handle of the window
// (or object) that gets the answer, "fund_token" the account (text) or accounts (a set), further entries are
// the parameters of the kind. It is answered from the lists and shared data, by a local factory, or by a
// request to the server. What comes back is merged into its list and delivered: an answer to the window that
// asked, and to the others of its page that registered for the kind; a push to all that registered.
//
// Delivery is a synchronous call: a window gets message 3024 (see CDuiBaseWnd), another object its OnNotify.
// The record is valid during the call only; what a receiver changes in it, nobody else sees. A receiver may
// do anything meanwhile: ask, register, close windows and pages.
//
// The published record of a kind K: type K, "fund_token" when it is about one account, K -> the table, the
// fields of the answer each under its own name, "ret_code" (0: success), "ret_message", "handle".
//
// Threads:  the UI thread only.
// Failure:  nothing throws. What is not sent or not delivered is counted under its reason.
class LUADUI_API CUIDataManager : public CRequestBase, public ListOwner, public TimerClient {
  public:
    static constexpr char kTypeCommonData[] = "TypeCommonData";
    static constexpr char kTypePageData[] = "TypePageData";

    CUIDataManager();
    ~CUIDataManager() override;

    // "TypeCommonData" or "TypePageData"; before Init.
    void InitRunType(std::string runType) { m_runType = std::move(runType); }
    std::string getRunType() const { return m_runType; }
    // Makes the lists of the page with that name, restores the record of multi-server instructions and starts
    // the timer window. Once.
    void Init(const std::string& pageName);

    // What follows stands in the order of the table of virtual functions, which page libraries are compiled
    // against.

    void OnResponse(const CQueueRespData* response) override;
    // Completes and sends a request: "UUID", "From" and, in "Params", "id", "log_source", "bNeedRefresh",
    // "routeType", "destServer". False when it was not sent.
    bool Request(CQueueReqItem& request) override;
    bool RequestSync(unsigned int type, const std::string& key, std::string& value,
                     const std::string& file) override;

    // Delivers news of a kind to the window or object with that CBaseObject handle from now on, or no longer.
    void RegisterNotify(unsigned int handle, std::string kind) override;
    virtual void UnRegisterNotify(unsigned int handle, std::string kind);
    // Delivers `record` to the window `handle` and, with `notifyOthers`, to all others that registered for
    // its kind.
    void ResponseNotify(CUIData* record, int handle, bool notifyOthers) override;

    // Does with the record what `mode` says. Null and other modes do nothing.
    virtual void SetData(CUIData* record, SET_DATA mode);

    // The whole list or shared record of a kind, empty when there is none.
    virtual CUIData GetData(const std::string& kind);
    bool GetData(const std::string& kind, CUIData& out) override;
    // Asks for `kind` of several accounts, or of one, for the window `handle`. True when local data answered:
    // they are in `out` (nothing is delivered then); otherwise the request is on its way.
    virtual bool GetData(unsigned int handle, std::string kind, CDataSet& tokens, CUIData& out);
    virtual bool GetData(unsigned int handle, std::string kind, std::string fundToken, CUIData& out);
    // The table of one account as it is held; never asks (`handle` is not used).
    virtual bool GetData(unsigned int handle, std::string kind, std::string fundToken, CDataTable& out);
    // The main way to ask: answers from local data at once (through ResponseNotify with `flag`, unless
    // `cacheOnly`), or else, unless `cacheOnly`, sends what is needed. True when local data answered; they
    // are in `request`. A record with "refresh" always asks the server.
    //
    // Kinds that are computed here (see datamgr/trade_factories.h) are never sent. Where one cannot be computed the
    // answer is false and `request` says why, in "ret_code" (-1) and "ret_message"; unless `cacheOnly`, the asker
    // gets that record.
    bool GetData(CUIData& request, bool cacheOnly, bool flag) override;
    // As GetData(kind, out), but attached: later changes of the list show in `out`.
    virtual bool GetDataShared(const std::string& kind, CUIData& out);

    // What registering and subscribing have in common: from now on the window hears of the kind for that
    // reason, or no longer.
    virtual void Listen(uint32_t window, const std::string& kind, NotifyTable::Reason reason, bool wants);

    static bool IsCommonData(const std::string& kind);
    // Adds a trace record to the queue of the log server.
    void RecordTraceLog(const std::string& traceId, const std::string& source, const std::string& module,
                        const std::string& user, const std::string& stage, const StringMap& fields);
    void RecordELK(CQueueLogElkItem& item);
    // Where the name of the user interface's skin is read and set (any of the two may be null); the module
    // provides them.
    struct SkinAccess {
        std::string (*get)() = nullptr;
        void (*set)(const std::string& skin) = nullptr;
    };
    static void SetSkinAccess(SkinAccess access);

    // Tells the window `handle` (-1: all that registered) that what it wanted of a kind failed: a record of that kind
    // with "ret_code" and "ret_message" only. For those who serve requests without a server.
    void ResponseError(const std::string& kind, int handle, int code, const std::string& message);
    // Puts a failed answer into the message center, where the manager has one.
    void NoteFailure(const CQueueRespData& response);
    // Which server holds which instruction; the same for all managers.
    static InstructionServers& Servers();

    // What handlers and factories work on.
    ListStore& Lists() { return m_lists; }
    const ListStore& Lists() const { return m_lists; }
    // Stores a record that pages read by name.
    void ShareData(const std::string& name, CUIData& record) { m_lists.Shared().SetDataShared(name, record); }

    // Timer ticks: see TimerClient.
    void RunAccountCommand(const char* command) override;
    // Start and stop a timer of this manager's timer window (see CDataTimerWnd). False without a window too.
    bool StartTimer(uint32_t id, uint32_t milliseconds);
    bool StopTimer(uint32_t id);

  protected:
    // The first listener of a kind came, the last one went.
    virtual void _kindWanted(const std::string& /*kind*/) {}
    virtual void _kindUnwanted(const std::string& /*kind*/) {}
    // Whether another manager tells the listener of the record, which `asker` (-1: nobody, it is news) asked for.
    virtual bool _isToldElsewhere(uint32_t /*listener*/, const CUIData& /*record*/, int64_t /*asker*/) const {
        return false;
    }
    // At each tick of the timer, every 500 ms.
    virtual void _onTick() {}
    // Answers a request for quotes from those that are current.
    virtual bool _findQuotes(CUIData& /*request*/) const { return false; }

    // Delivers to one window or object. False when it has gone.
    bool _deliver(const CUIData& record, int64_t handle);
    // Delivers to all that want the record's kind, but for `except`. How many took it.
    size_t _notify(CUIData record, int64_t except, int64_t asker);
    bool _handleRequest(CUIData& record);
    NotifyTable m_notify;

  private:
    struct Saver;

    // Building (ui_data_manager.cpp)
    void _initUIData(const std::string& pageName);
    void _initMultiServerInstRecord();
    void _createTimerWnd();

    // Asking (ui_data_request.cpp)
    bool _GetData(CUIData& request);
    static bool _findTables(const CTokenTableList& list, CUIData& request);
    static bool _isNeedRequset(std::string_view kind);
    bool _handleComplexRequest(CUIData& request, bool flag);
    bool _handleUserTokenReq(CUIData record);
    // `ask`: all accounts of the ask, held by its unanswered requests; null for one.
    bool _handleSingleReq(const CUIData& record, std::shared_ptr<const CDataSet> ask);
    void _beginTrace(const CQueueReqItem& item, const std::string& kind);
    void _passHostAnswer(const CQueueReqItem& item, const CUIData& record);
    static void _fillItem(CQueueReqItem& item, const CUIData& record, int type);
    static void _getDestServer(CQueueReqItem& item);
    static void _getReqMsgRouteType(CQueueReqItem& item);
    static void _saveMultiServerInstRecord(const CQueueReqItem& item);

    // Subscribing (ui_data_subscribe.cpp)
    void _handleSubRequest(const CUIData& record, bool subscribe);
    template <class Names>
    void _subscribeEach(const CUIData& record, const char* key, const Names& names, bool subscribe);
    void _handleSingeSubReq(const CUIData& record, bool subscribe);
    void _leaveTopicsOfGone();
    void _sendSubscription(int type, const CUIData& params);

    // Local factories (ui_data_factory.cpp)
    //
    // Answers into the record. False when it could not; what is computed here then carries "ret_code" and
    // "ret_message".
    bool _handleFactoryData(CUIData& request);
    void _handleFactoryRequest(CUIData& record);
    // Whether the kind is computed here and never asked of the server.
    static bool _isComputed(std::string_view kind);
    static void _completeAnswer(CUIData& record, int32_t handle);
    static void _setSkin(const std::string& skin);

    // Saving (ui_data_save.cpp)
    void _handleSaveData(CUIData& record);
    void _saveSkin(CUIData& data);
    void _saveInstConfig(CUIData& data);
    void _saveSettingConfig(CUIData& data);
    void _savePageSign(CUIData& data);
    void _shareForPages(CUIData& data);
    void _publish(CUIData& data);
    void _tell(CUIData news);
    void _handleWriteLog(CUIData& data);
    static bool _writeLog(const std::string& message, const std::string& fileName);

    // The host's Lua side (ui_data_lua.cpp)
    void _sendLua(CUIData& record);
    void _callLua(CUIData& record);

    // Answers and pushes (ui_data_response.cpp)
    bool IngnoreData(const CQueueRespData& response) const;
    static bool _isSubReq(const CQueueRespData& response);
    static int _getResHandle(const CQueueRespData& response);
    // Tells the asker that the server failed. False when it did not.
    bool ResponseError(const CQueueRespData& response);
    void _dealNormalResponse(const CQueueRespData& response);
    void _dealSubResposnse(const CQueueRespData& response);
    void _runHandlers(Answer& answer, const AnswerRoute& route);
    void _endTrace(const CQueueRespData& response);
    void _endRefresh(const std::string& uuid, int32_t handle);
    static void HandleRecordReq(const CQueueRespData& response);

    static constexpr char kTraceUser[] = "client_user";  // traces do not tell who it was

    CUIData m_typeCodes;  // data kind -> request type
    CUIData m_pushKeys;   // data kind -> push key
    std::string m_runType;
    ListStore m_lists{this};
    SubscriptionBook m_subscriptions;
    std::string m_userName;  // of the logged-in user, once known
    std::unique_ptr<CDataTimerWnd> m_timer;
};

}  // namespace luadui
