// Asks, answers, pushes, sleep and all the rest in random order, against a model of who should receive what.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <random>

#include "base/base_object.h"
#include "base/counters.h"
#include "base/dui_base_wnd.h"
#include "base/text.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"
#include "messaging/handle_text.h"
#include "messaging/request_types.h"
#include "messaging/response_routing.h"
#include "tests/datamgr/interleaving_model.h"
#include "tests/fakes/fake_host.h"

namespace luadui {
namespace {

using interleaving::Asked;
using interleaving::Handle;
using interleaving::ListKind;
using interleaving::ListOf;
using interleaving::Lists;
using interleaving::Model;
using interleaving::Names;
using interleaving::Rows;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSteps = 40'000;
#else
constexpr int kSteps = 120'000;
#endif
constexpr int kSettleEvery = 400;
constexpr unsigned kMaxPages = 6, kMaxWindows = 24;
constexpr int kTrading = 2004, kAccounts = 2011, kNoCommonData = 0, kFailed = -1;
constexpr int kErrorCode = 7;

// Whatever is not delivered is counted as one of these.
constexpr std::array kReasons = {
    "record_without_receiver",   "record_receiver_gone",    "record_page_gone",
    "record_without_subscriber", "record_without_page",     "record_noted_for_query",
    "record_outside_group",      "answer_repeated",         "answer_part_kept",
    "response_ignored",          "view_waits_for_accounts", "push_for_unqueried_account",
    "response_without_receiver",
};

constexpr size_t kGone = 1;
static_assert(std::string_view(kReasons[kGone]) == "record_receiver_gone");

using Hear = std::function<void(Handle, const CUIData&)>;

class Object : public CBaseObject {
  public:
    explicit Object(const Hear& hear) : m_hear(hear) {}
    void OnNotify(void* data) override { m_hear(GetHandle(), *static_cast<CUIData*>(data)); }

  private:
    const Hear& m_hear;
};

class Window : public CDuiBaseWnd {
  public:
    explicit Window(const Hear& hear) : m_hear(hear) {
        EXPECT_NE(Create(HWND_MESSAGE, L"page", 0, 0, 0, 0, 0, 0), nullptr);
    }
    ~Window() override {
        if (GetHWND()) ::DestroyWindow(GetHWND());
    }
    void OnNotify(void* data) override { m_hear(GetHandle(), *static_cast<CUIData*>(data)); }

  protected:
    LPCWSTR GetWindowClassName() const override { return L"InterleavingTest"; }

  private:
    const Hear& m_hear;
};

// The cells that name a row: those before its version, of an account its number and token.
std::string NameOf(const CDataTable& table, int row) {
    if (table.FindColumn("accountkey") >= 0)
        return std::string(table.GetItemText(row, "accountid")) + "," + table.GetItemText(row, "fund_token");
    std::string cells;
    for (int col = 0; col < table.FindColumn("Version"); ++col)
        cells += (col ? "," : "") + table.GetItemText(row, col);
    return cells;
}

Rows RowsOf(const CUIData& record) {
    Rows rows;
    for (const auto [key, value] : record) {
        CDataTable table;
        if (!value.Get(table)) continue;
        for (int row = 0; row < table.GetRowNumber(); ++row)
            rows[NameOf(table, row)] =
                static_cast<int>(ParseLong(table.GetItemText(row, "Version")).value_or(-1));
    }
    return rows;
}

CDataTable TableOf(const Rows& rows, std::initializer_list<const char*> columns) {
    CDataTable table;
    for (const char* name : columns) table.AddColumn(name);
    const int last = static_cast<int>(columns.size()) - 1;
    for (const auto& [cells, version] : rows) {
        const int row = table.AppendRow();
        std::string_view rest = cells;
        for (int col = 0; col < last; ++col) {
            // The last of them may have commas of its own.
            const size_t end = col + 1 < last ? rest.find(',') : rest.size();
            table.SetItemText(row, col, rest.substr(0, end));
            rest.remove_prefix(std::min(rest.size(), end + 1));
        }
        table.SetItemText(row, last, std::to_string(version));
    }
    return table;
}

class World {
  public:
    explicit World(unsigned seed) : m_random(seed), m_prefix("T" + std::to_string(++s_runs) + "_") {
        m_host.onPush = [this](CQueueReqItem& request) { _sent(request); };
        m_hear = [this](Handle window, const CUIData& record) { _heard(window, record); };
        m_router.StartCommonData();
        // Nobody has asked for other forms of the account data lists.
        m_router.CommonData().Lists().MakeCommonLists();
        for (const auto family : {ListStore::kPlain, ListStore::kCredit, ListStore::kGGT})
            m_router.CommonData().Lists().Accounts(family)->SetAccounts(CDataTable());
        m_prefixOfPages = "page" + m_prefix;
    }
    ~World() {
        for (const auto& [handle, page] : m_model.pages) m_pages.erase(handle);
        auto& common = m_router.CommonData();
        for (const auto& [kind, windows] : m_model.common) {
            for (const Handle window : windows) common.UnRegisterNotify(static_cast<unsigned>(window), kind);
        }
    }

    // Empty when all went well.
    std::string Run(int steps) {
        _createPage();
        _askAccounts(true);
        _settle();
        _askGroups();
        _settle();
        for (m_step = 0; m_step < steps && m_error.empty(); ++m_step) {
            _doSomething();
            if (m_step % kSettleEvery == kSettleEvery - 1) _settle();
        }
        return m_error.empty() ? "" : "step " + std::to_string(m_step) + ": " + m_error;
    }
    int delivered = 0, counted = 0, nested = 0;

  private:
    // Chance.
    unsigned _number(unsigned below) { return static_cast<unsigned>(m_random() % below); }
    bool _chance(unsigned percent) { return _number(100) < percent; }
    template <class Container>
    auto _one(const Container& container) {
        return *std::next(container.begin(), _number(static_cast<unsigned>(container.size())));
    }
    std::string _token() { return m_prefix + std::to_string(_number(5)); }
    Names _tokens() {
        Names tokens{_token()};
        while (_chance(40)) tokens.insert(_token());
        return tokens;
    }
    std::string _tradingKind() {
        static const Names kinds = {"fund",         "position", "positionmulti", "entrust",
                                    "entrustmulti", "deal",     "dealmulti"};
        return _one(kinds);
    }
    // A window of the page, or 0.
    Handle _windowOf(Handle page) {
        std::vector<Handle> own;
        for (const Handle window : m_model.windows) {
            if (m_model.PageOf(window) == page) own.push_back(window);
        }
        return own.empty() ? 0 : _one(own);
    }

    void _fail(const std::string& text) {
        if (m_error.empty() && !text.empty()) m_error = text;
    }

    // One event: the model says what must happen, then it happens.
    void _event(const std::function<void()>& predict, const std::function<void()>& act) {
        if (!m_error.empty()) return;
        for (auto& frame : m_model.frames) frame.isDisturbed = true;
        m_model.frames.emplace_back();
        predict();
        const auto before = _counts();
        act();
        _fail(m_model.Missing());
        const Model::Frame frame = m_model.frames.back();
        m_model.frames.pop_back();
        delivered += static_cast<int>(frame.delivered);
        const auto after = _counts();
        for (size_t i = 0; i < kReasons.size(); ++i) {
            const int counts = static_cast<int>(after[i] - before[i]);
            counted += counts;
            const auto expected = frame.counts.find(kReasons[i]);
            const int should = expected == frame.counts.end() ? 0 : expected->second;
            // A window that has gone is found by whichever event comes first.
            const bool mayDiffer = frame.isDisturbed || (!m_model.frames.empty() && i == kGone);
            if (!mayDiffer && counts != should)
                _fail(std::string(kReasons[i]) + " is " + std::to_string(counts) + " instead of " +
                      std::to_string(should));
        }
    }
    static std::array<uint64_t, kReasons.size()> _counts() {
        std::array<uint64_t, kReasons.size()> counts;
        std::ranges::transform(kReasons, counts.begin(),
                               [](const char* name) { return CCounters::Get(name); });
        return counts;
    }

    void _doSomething() {
        const unsigned dice = _number(100);
        const Handle page = m_model.pages.empty() ? 0 : _one(m_model.pages).first;
        const Handle window = page ? _windowOf(page) : 0;
        if (dice < 2) return _createPage();
        if (!page) return;
        if (dice < 3) return _closePage(page);
        if (dice < 6) return _createWindow(page);
        if (dice < 30) return _answer();
        if (dice < 48) return _push();
        if (dice < 49) return _pushToPages();
        if (dice < 54) return _sleep(page, m_model.pages.at(page).isAsleep ? false : true);
        if (dice < 57) return _tick(page);
        if (dice < 58) return _convertPushes(page, _chance(50));
        if (dice < 60) return _notice();
        if (!window) return;
        if (dice < 62) return _closeWindow(window);
        if (dice < 70) return _register(page, window, _chance(70));
        if (dice < 77) return _subscribe(page, window, _chance(60));
        if (dice < 78) return _askAccounts(_chance(60));
        if (dice < 79) return _askGroups();
        if (dice < 82) return _askGroup(page, window);
        if (dice < 83) return _registerAtCommon();
        _ask(page, window);
    }

    // What a receiver does while it is told.
    void _actInside(Handle window) {
        const auto& frames = m_model.frames;
        if (frames.size() > 3 || !_chance(6) || !m_error.empty()) return;
        const Handle page = m_model.PageOf(window);
        if (!page) return;
        for (auto& frame : m_model.frames) frame.isDisturbed = true;
        ++nested;
        const bool isSingle = std::ranges::all_of(frames, &Model::Frame::isSingle);
        const bool isChain = std::ranges::any_of(frames, &Model::Frame::isChain);
        const Handle own = _windowOf(page);
        switch (_number(12)) {
            case 0:
                return _closeWindow(window);
            case 1:
                return _closeWindow(_one(m_model.windows));
            case 2:
                return _chance(30) ? _closePage(page) : void();
            case 3:
                return _chance(30) ? _closePage(_one(m_model.pages).first) : void();
            case 4:
            case 5:
                return isChain || !own ? void() : _register(page, own, _chance(30));
            case 6:
                return isChain || !own ? void() : _subscribe(page, own, false);
            case 7:
                return isSingle ? _sleep(page, _chance(50)) : void();
            case 8:
                return isSingle ? _askGroup(page, window) : void();
            default:
                return _ask(page, window);
        }
    }

    // Pages and windows.
    void _createPage() {
        if (m_model.pages.size() >= kMaxPages) return;
        const std::string name = m_prefixOfPages + std::to_string(_number(2 * kMaxPages));
        auto page = std::make_unique<CUIPageData>(name);
        const bool isTaken =
            std::ranges::any_of(m_model.pages, [&](const auto& each) { return each.second.name == name; });
        if (page->Init() == isTaken) _fail("Init of " + name);
        if (isTaken) return;
        const Handle handle = page->GetHandle();
        m_model.pages[handle].name = name;
        m_model.owners[handle] = name;
        m_pages[handle] = std::move(page);
        _createWindow(handle);
    }
    void _closePage(Handle page) {
        m_model.RemovePage(page);
        const auto gone = std::move(m_pages.at(page));
        m_pages.erase(page);
    }
    void _createWindow(Handle page) {
        if (m_model.windows.size() >= kMaxWindows) return _closeWindow(_one(m_model.windows));
        std::unique_ptr<CBaseObject> window;
        if (_chance(10)) {
            window = std::make_unique<Window>(m_hear);
        } else {
            window = std::make_unique<Object>(m_hear);
        }
        const Handle handle = window->GetHandle();
        m_model.windows.insert(handle);
        m_model.owners[handle] = m_model.pages.at(page).name;
        m_windows[handle] = std::move(window);
        _register(page, handle, true);
    }
    void _closeWindow(Handle window) {
        m_model.CloseWindow(window);
        const auto gone = std::move(m_windows.at(window));
        m_windows.erase(window);
    }
    void _register(Handle page, Handle window, bool wants) {
        static const Names kinds = {"fund",
                                    "position",
                                    "positionmulti",
                                    "positionsum",
                                    "entrust",
                                    "deal",
                                    "entrustpush",
                                    "entrustmulti",
                                    "dealpush",
                                    "dealmulti",
                                    "error_msg",
                                    "account",
                                    "accountdatalist",
                                    "fund_detail",
                                    "instruction",
                                    "accountgroupcredit"};
        const std::string kind = _one(kinds);
        m_model.Want(page, window, kind, Model::kRegistered, wants);
        const auto handle = static_cast<unsigned>(window);
        wants ? m_pages.at(page)->RegisterNotify(handle, kind)
              : m_pages.at(page)->UnRegisterNotify(handle, kind);
    }
    void _registerAtCommon() {
        if (m_commonWindows.size() < 2) {
            auto window = std::make_unique<Object>(m_hear);
            m_commonWindows.insert(window->GetHandle());
            m_model.windows.insert(window->GetHandle());
            m_windows[window->GetHandle()] = std::move(window);
        }
        const Handle window = _one(m_commonWindows);
        if (!m_model.windows.contains(window)) {
            m_commonWindows.erase(window);
            return;
        }
        const std::string kind = _tradingKind();
        if (m_model.common[kind].insert(window).second) {
            m_router.CommonData().RegisterNotify(static_cast<unsigned>(window), kind);
        } else {
            m_model.common[kind].erase(window);
            m_router.CommonData().UnRegisterNotify(static_cast<unsigned>(window), kind);
        }
    }
    void _subscribe(Handle page, Handle window, bool wants) {
        static const std::vector<std::pair<std::string, std::string>> kinds = {
            {"fund", "Fund|"},
            {"position", "Position|"},
            {"positionmulti", "Position|"},
            {"entrustpush", "Entrust|"},
            {"deal", "Trade|"},
            {"entrustmulti", "Entrust|"},
            {"instruction", "basket_instruction"}};
        const auto [kind, key] = _one(kinds);
        CUIData record(kind);
        record.SetData("handle", window);
        Names topics{key};
        if (key.ends_with('|')) {
            const Names tokens = _tokens();
            topics.clear();
            for (const std::string& token : tokens) topics.insert(key + token);
            _setTokens(record, tokens, _chance(50));
        }
        for (const std::string& topic : topics) m_model.Subscribe(page, window, kind, topic, wants);
        m_pages.at(page)->SetData(&record, wants ? kSetSubscribe : kSetUnsubscribe);
    }
    // One account may be named by itself. False when it was not.
    static bool _setTokens(CUIData& record, const Names& tokens, bool maySingle) {
        if (maySingle && tokens.size() == 1) {
            record.SetData("fund_token", *tokens.begin());
            return true;
        }
        CDataSet set;
        for (const std::string& token : tokens) set.Insert(token);
        record.SetData("fund_token", set);
        return false;
    }
    void _sleep(Handle page, bool asleep) {
        CUIPageData& manager = *m_pages.at(page);
        auto& state = m_model.pages.at(page);
        if (asleep) {
            state.isAsleep = state.convertsPushes = true;
            manager.Sleep(true);
        } else if (state.isAsleep) {
            _event([&] { m_model.Wake(page); }, [&] { manager.Sleep(false); });
        } else {
            manager.Sleep(false);
        }
    }
    void _convertPushes(Handle page, bool on) {
        m_model.pages.at(page).convertsPushes = on;
        m_pages.at(page)->SetPushToQuery(on);
    }
    void _tick(Handle page) {
        CUIPageData& manager = *m_pages.at(page);
        CUIData tick("update_push_hq");
        if (m_model.pages.at(page).isAsleep) {
            manager.GetData(tick, false, false);
        } else {
            _event([&] { m_model.SendNoted(page); }, [&] { manager.GetData(tick, false, false); });
        }
    }

    // Asking.
    void _ask(Handle page, Handle window) {
        CUIPageData& manager = *m_pages.at(page);
        const std::string kind = _chance(8) ? "fund_detail" : _chance(3) ? "account" : _tradingKind();
        const bool refresh = kind != "account" && _chance(20), others = _chance(60);
        const Names tokens = kind == "account" ? Names{""} : _tokens();
        CUIData request(kind);
        request.SetData("handle", window);
        bool isSingleText = false;
        if (kind != "account") isSingleText = _setTokens(request, tokens, _chance(50));
        if (refresh) request.SetData("refresh", 1);
        _event([&] { m_model.Ask(page, window, kind, tokens, refresh, others, false, isSingleText); },
               [&] { manager.GetData(request, false, others); });
    }
    void _askGroup(Handle page, Handle window) {
        CUIPageData& manager = *m_pages.at(page);
        const std::string group = _chance(10) ? "" : "g" + std::to_string(_number(4));
        const bool others = _chance(60);
        CUIData request("accountdatalist");
        request.SetData("handle", window);
        request.SetData("groupname", group);
        _event([&] { m_model.AskGroup(page, window, group, others); },
               [&] { manager.GetData(request, false, others); });
    }
    void _askAccounts(bool refresh) { _askAll("account", refresh); }
    void _askGroups() { _askAll("accountgroup", true); }
    void _askAll(const std::string& kind, bool refresh) {
        const Handle page = _one(m_model.pages).first;
        const Handle window = _windowOf(page);
        if (!window) return;
        CUIPageData& manager = *m_pages.at(page);
        CUIData request(kind);
        request.SetData("handle", window);
        if (refresh) request.SetData("refresh", 1);
        if (kind == "account") {
            _event([&] { m_model.Ask(page, window, kind, {""}, refresh, false); },
                   [&] { manager.GetData(request, false, false); });
        } else {
            _event(
                [&] {
                    m_model.frames.back().requests.push_back({.type = 1035, .kind = kind, .asker = window});
                },
                [&] { manager.SetData(&request, kSetRequest); });
        }
    }
    // The server says that something changed: it is asked again on nobody's behalf.
    void _notice() {
        const ListKind& list = Lists()[_number(static_cast<unsigned>(Lists().size()))];
        CQueueRespData notice;
        const std::string token = _token();
        notice.SetData("DATATYPE", 2010);
        notice.SetData("REQTYPE", list.type);
        notice.SetData("FundToken", token);
        _event(
            [&] {
                m_model.frames.back().requests.push_back(
                    {.type = list.type, .kind = list.name, .token = token});
            },
            [&] { DeliverResponse(m_router.GetHandle(), notice); });
    }

    // The broker.
    Rows& _content(const std::string& list, const std::string& token) {
        Rows& rows = m_broker[{list, token}];
        if (rows.empty()) rows["r0," + token] = ++m_version;
        return rows;
    }
    Rows _contentFor(int type, const std::string& token, const std::string& uuid) {
        if (type == 1034 || type == 1035) ++m_version;
        Rows rows;
        if (type == 1034) {
            for (unsigned i = 0; i < 5; ++i)
                rows["A" + std::to_string(i) + ',' + m_prefix + std::to_string(i)] = m_version;
        } else if (type == 1035) {
            auto& groups = m_groups[uuid];
            for (unsigned group = 0; group < 3; ++group) {
                const std::string name = "g" + std::to_string(group);
                std::string members;
                groups[name];
                for (unsigned i = 0; i < 5; ++i) {
                    if (!_chance(40)) continue;
                    members += (members.empty() ? "\"A" : ",\"A") + std::to_string(i) + '"';
                    groups[name].insert(m_prefix + std::to_string(i));
                }
                rows[std::to_string(group) + ',' + name + ",[" + members + ']'] = m_version;
            }
        } else if (const auto list = std::ranges::find(Lists(), type, &ListKind::type);
                   list != Lists().end()) {
            rows = _content(list->name, token);
        } else {
            rows["d," + token] = ++m_version;
        }
        return rows;
    }
    void _sent(CQueueReqItem& item) {
        const CUIData params = FakeHost::Params(item);
        Asked request;
        request.type = RequestTypeOf(item);
        request.token = item.GetDataString("FundToken");
        request.asker = params.Has("handle") ? HandleFromText(params.GetDataText("handle")) : -1;
        request.isSub = params.Has("isSub");
        request.uuid = item.GetDataString("UUID");
        request.rows = _contentFor(request.type, request.token, request.uuid);
        m_items[request.uuid] = item;
        if (m_model.frames.empty()) return _fail("a request that nobody asked for");
        _fail(m_model.Send(request));
    }
    CQueueRespData _response(const Asked& request, int dataType) {
        const CQueueReqItem& item = m_items.at(request.uuid);
        CQueueRespData response;
        for (const char* key : {"REQTYPE", "UUID", "FundToken"}) response.SetData(key, item.GetDataView(key));
        response.SetData("DATATYPE", dataType);
        if (_chance(90)) response.SetData("Request", static_cast<const CUIData&>(item));
        return response;
    }
    static CDataTable _table(const Asked& request, const Rows& rows) {
        if (request.type == 1034) return TableOf(rows, {"account_id", "fund_token", "Version"});
        if (request.type == 1035) return TableOf(rows, {"groupid", "groupname", "account", "Version"});
        const ListKind* const list = ListOf(request.kind);
        return TableOf(rows, {list ? list->key : "ID", "fund_token", "Version"});
    }
    // The host hands over a response.
    void _hand(const CQueueRespData& response) { m_router.OnResponse(&response); }

    void _answer() {
        if (m_model.asked.empty()) return;
        const size_t index = _number(static_cast<unsigned>(m_model.asked.size()));
        const unsigned dice = _number(100);
        Asked& request = m_model.asked[index];
        const int dataType = request.page != 0 ? kNoCommonData : kTrading;
        if (request.type == 1034 || request.type == 1035 || dice < 60) return _answerWell(index);
        if (dice < 70) return _repeat();
        if (request.hasPart) return;
        if (dice < 78) return _sendPart(request, dataType);
        CQueueRespData response = _response(request, dataType);
        if (dice < 83) {
            _event([&] { _predictAnswer(request, {}, false, 0); }, [&] { _hand(response); });
        } else if (dice < 90) {
            _setError(response);
            _event([&] { _predictAnswer(request, {}, false, kErrorCode); }, [&] { _hand(response); });
        } else if (dice < 96) {
            _setError(response);
            response.SetData("DATATYPE", kFailed);
            _event([&] { m_model.FailUnrouted(request, kErrorCode); }, [&] { _hand(response); });
        } else if (request.page == 0) {
            response.SetData("DATATYPE", kNoCommonData);
            _event([&] { m_model.frames.back().counts["response_ignored"] = 1; }, [&] { _hand(response); });
        }
        _dropEnded();
    }
    static void _setError(CQueueRespData& response) {
        CJsonObject json;
        json.Parse(R"({"retcode":7,"message":"no"})");
        response.SetData("JsonData", json);
    }
    // The rows that have not been sent in a part.
    void _answerWell(size_t index) {
        Asked& request = m_model.asked[index];
        Rows rows = request.rows;
        if (request.hasPart) rows.erase(rows.begin());
        const bool isAccounts = request.type == 1034 || request.type == 1035;
        CQueueRespData response = _response(request, isAccounts          ? kAccounts
                                                     : request.page != 0 ? kNoCommonData
                                                                         : kTrading);
        response.SetData("Table", _table(request, rows));
        const auto predict = [&] {
            if (request.type == 1034) return m_model.TakeAccounts(request);
            if (request.type != 1035) return _predictAnswer(request, request.rows, true, 0);
            const int version = request.rows.begin()->second;
            m_model.TakeGroups(request, m_groups.at(request.uuid), version > m_groupVersion);
            m_groupVersion = std::max(m_groupVersion, version);
        };
        _event(predict, [&] { _hand(response); });
        _dropEnded();
    }
    void _predictAnswer(Asked& request, const Rows& rows, bool hasTable, int code) {
        if (request.page == 0 || m_model.pages.contains(request.page))
            return m_model.Answer(request, rows, hasTable, code);
        request.isEnded = true;
        m_model.frames.back().counts["response_without_receiver"] = 1;
    }
    void _sendPart(Asked& request, int dataType) {
        if (request.page != 0) return;
        request.hasPart = true;
        CQueueRespData response = _response(request, dataType);
        response.SetData("IsLast", false);
        response.SetData("Table", _table(request, {*request.rows.begin()}));
        _event([&] { m_model.frames.back().counts["answer_part_kept"] = 1; }, [&] { _hand(response); });
    }
    // An answer that came already. A change notice asked for as many as the server likes to send.
    void _repeat() {
        if (m_answered.empty()) return;
        Asked request = _one(m_answered);
        CQueueRespData response = _response(request, kTrading);
        if (request.isSub) request.rows = _content(request.kind, request.token);
        response.SetData("Table", _table(request, request.rows));
        _event(
            [&] {
                if (request.isSub) return m_model.Answer(request, request.rows, true, 0);
                m_model.frames.back().counts["answer_repeated"] = 1;
            },
            [&] { _hand(response); });
    }
    void _dropEnded() {
        for (const Asked& request : m_model.asked) {
            if (!request.isEnded) continue;
            const bool mayRepeat = request.page == 0 && ListOf(request.kind);
            if (mayRepeat) m_answered.push_back(request);
            if (!mayRepeat) m_items.erase(request.uuid);
        }
        std::erase_if(m_model.asked, [](const Asked& request) { return request.isEnded; });
        while (m_answered.size() > 50) {
            m_items.erase(m_answered.front().uuid);
            m_answered.pop_front();
        }
    }
    void _push() {
        const ListKind& list = Lists()[_number(static_cast<unsigned>(Lists().size()))];
        const std::string token = _token();
        Rows& content = _content(list.name, token);
        const std::string row = "r" + std::to_string(list.isOfRows ? _number(4) : 0) + ',' + token;
        content[row] = ++m_version;
        if (_chance(15)) return;  // the push was lost on the way
        CQueueRespData push;
        const Rows rows{{row, m_version}};
        push.SetData("DATATYPE", kTrading);
        push.SetData("Topic", list.topic + token);
        push.SetData("Table", TableOf(rows, {list.key, "fund_token", "Version"}));
        _event([&] { m_model.Push(list, token, rows); }, [&] { _hand(push); });
    }
    void _pushToPages() {
        CQueueRespData push;
        const Rows rows{{"i,x", ++m_version}};
        push.SetData("Topic", "basket_instruction");
        push.SetData("Table", TableOf(rows, {"ID", "fund_token", "Version"}));
        _event([&] { m_model.PagePush("basket_instruction", "instruction", rows); }, [&] { _hand(push); });
    }

    void _heard(Handle window, const CUIData& record) {
        if (m_model.frames.empty()) return _fail("a record outside any event");
        _fail(m_model.Deliver(window, record.GetType(), RowsOf(record),
                              static_cast<int>(record.GetDataLong("ret_code"))));
        _actInside(window);
    }

    // Everything is answered and everyone awake: nobody may lack what was told.
    void _settle() {
        for (int round = 0; round < 50 && m_error.empty(); ++round) {
            std::vector<Handle> pages;
            for (const auto& [page, state] : m_model.pages) pages.push_back(page);
            for (const Handle page : pages) {
                if (m_model.pages.contains(page)) _sleep(page, false);
                if (m_model.pages.contains(page)) _tick(page);
                if (m_model.pages.contains(page)) _convertPushes(page, false);
            }
            if (m_model.asked.empty()) break;
            while (!m_model.asked.empty() && m_error.empty())
                _answerWell(_number(static_cast<unsigned>(m_model.asked.size())));
        }
        if (m_error.empty()) _fail(m_model.Stale());
    }

    static inline int s_runs = 0;
    std::mt19937 m_random;
    const std::string m_prefix;  // of accounts, so that runs do not meet
    std::string m_prefixOfPages;
    std::string m_error;
    int m_step = 0;

    FakeHost m_host;
    CUIStockDataManager& m_router = CUIStockDataManager::get_mutable_instance();
    Hear m_hear;
    std::map<Handle, std::unique_ptr<CBaseObject>> m_windows;
    std::map<Handle, std::unique_ptr<CUIPageData>> m_pages;
    std::set<Handle> m_commonWindows;

    int m_version = 0;  // of the broker's content
    int m_groupVersion = 0;
    std::map<std::pair<std::string, std::string>, Rows> m_broker;
    std::map<std::string, std::map<std::string, Names>> m_groups;  // UUID -> what it will be answered
    std::map<std::string, CQueueReqItem> m_items;
    std::deque<Asked> m_answered;

    Model m_model;
};

TEST(InterleavingTest, EveryRecordReachesThoseWhoWantIt) {
    constexpr unsigned kSeeds = 4;
    const char* const chosen = std::getenv("INTERLEAVING_SEED");
    for (unsigned i = 0; i < kSeeds; ++i) {
        const unsigned seed = chosen ? static_cast<unsigned>(std::atoi(chosen)) : 20260 + i;
        World world(seed);
        ASSERT_EQ(world.Run(kSteps / static_cast<int>(kSeeds)), "") << "seed " << seed;
        EXPECT_GT(world.delivered, kSteps / static_cast<int>(kSeeds) / 4);
        EXPECT_GT(world.counted, 0);
        EXPECT_GT(world.nested, 0);
    }
}

}  // namespace
}  // namespace luadui
