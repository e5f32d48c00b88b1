#include "tests/datamgr/interleaving_model.h"

#include <algorithm>

namespace luadui::interleaving {
namespace {

// Kinds of which the common manager tells the pages.
bool IsCommon(const std::string& kind) {
    static const Names kinds = {"fund",
                                "position",
                                "positionmulti",
                                "entrust",
                                "entrustmulti",
                                "entrustpush",
                                "deal",
                                "dealmulti",
                                "dealpush",
                                "account",
                                "accountgroup",
                                "accountgroupcredit",
                                "accountdatalist",
                                "accountdatalistcredit",
                                "accountdatalist_ggt",
                                "accountdatalist_push",
                                "accountdatalist_ggt_push"};
    return kinds.contains(kind);
}

// What a page asks again when it missed a record of the kind.
std::string QueryOf(const std::string& kind) {
    static const Names kinds = {"fund", "position", "entrust", "deal", "accountdatalist"};
    return kinds.contains(kind) ? kind : "";
}

std::string TokenOf(const std::string& row) { return row.substr(row.find(',') + 1); }

void TakeNewer(Rows& rows, const Rows& others) {
    for (const auto& [row, version] : others) {
        int& held = rows[row];
        held = std::max(held, version);
    }
}

Rows RowsOf(const Rows& rows, const Names& tokens) {
    Rows some = rows;
    std::erase_if(some, [&](const auto& row) { return !tokens.contains(TokenOf(row.first)); });
    return some;
}

// How many of "delete", "add" and "update" tell what became of the accounts, whose first cell is their id.
int CountNews(const Rows& before, const Rows& after) {
    const auto ids = [](const Rows& rows) {
        Names names;
        for (const auto& [row, version] : rows) names.insert(row.substr(0, row.find(',')));
        return names;
    };
    const Names old = ids(before), now = ids(after);
    const auto hasOthers = [](const Names& a, const Names& b) { return !std::ranges::includes(b, a); };
    const bool isUpdated = std::ranges::any_of(after, [&](const auto& row) {
        const auto held = before.find(row.first);
        return old.contains(row.first.substr(0, row.first.find(','))) &&
               (held == before.end() || held->second != row.second);
    });
    return hasOthers(old, now) + hasOthers(now, old) + isUpdated;
}

}  // namespace

const std::vector<ListKind>& Lists() {
    static const std::vector<ListKind> lists = {
        {"fund", "", "Currency", "Fund|", 1201, false, {"fund"}, {"fund"}},
        {"position",
         "positionmulti",
         "ID",
         "Position|",
         1202,
         false,
         {"position", "positionmulti", "positionsum"},
         {"position", "positionmulti", "positionsum"}},
        {"entrust",
         "entrustmulti",
         "OrderID",
         "Entrust|",
         1204,
         true,
         {"entrustpush", "entrustmulti", "entrust"},
         {"entrust", "entrustmulti"}},
        {"deal",
         "dealmulti",
         "ExecID",
         "Trade|",
         1203,
         true,
         {"deal", "dealmulti", "dealpush"},
         {"deal", "dealmulti"}},
    };
    return lists;
}

const ListKind* ListOf(const std::string& kind) {
    const auto has = [&](const auto& kinds) { return std::ranges::find(kinds, kind) != kinds.end(); };
    const auto list = std::ranges::find_if(
        Lists(), [&](const ListKind& each) { return has(each.pushed) || has(each.asked); });
    return list == Lists().end() ? nullptr : &*list;
}

std::string TextOf(const Rows& rows, int code) {
    std::string text = code == 0 ? "" : "!" + std::to_string(code);
    for (const auto& [row, version] : rows) text += ' ' + row + '=' + std::to_string(version);
    return text;
}

// Who is there.

Handle Model::PageOf(Handle window) const {
    const auto owner = owners.find(window);
    const auto page = std::ranges::find_if(
        pages, [&](const auto& each) { return owner != owners.end() && each.second.name == owner->second; });
    return page == pages.end() ? 0 : page->first;
}

void Model::RemovePage(Handle page) {
    for (const auto& [window, reasons] : pages.at(page).wants["positionsum"])
        common["positionsum"].erase(window);
    const auto isOfPage = [this, name = pages.at(page).name](Handle window) {
        return owners.contains(window) && owners.at(window) == name;
    };
    pages.erase(page);
    for (Frame& frame : frames) {
        frame.isCutShort = true;
        // A page that goes asks no more, and nobody hears of the answers.
        std::erase_if(frame.due, [&](const auto& due) {
            return isOfPage(due.window) || (due.owner == 0 && frame.asksAgain == page);
        });
    }
    for (const auto& [window, owner] : owners) {
        if (isOfPage(window)) required.erase(window);
    }
}

void Model::CloseWindow(Handle window) {
    windows.erase(window);
    required.erase(window);
    for (Frame& frame : frames) {
        for (const auto& due : frame.due) {
            // It is found to have gone when its turn comes.
            if (due.window != window || due.isDirect) continue;
            if (due.owner == 0) {
                common[due.kind].erase(window);
            } else if (pages.contains(due.owner)) {
                pages.at(due.owner).wants[due.kind].erase(window);
            }
        }
        std::erase_if(frame.due, [&](const auto& due) { return due.window == window; });
    }
}

void Model::Want(Handle pageHandle, Handle window, const std::string& kind, Reason reason, bool wants) {
    auto& listeners = pages.at(pageHandle).wants[kind];
    const bool isNew = !listeners.contains(window);
    int reasons = isNew ? 0 : listeners[window];
    reasons = wants ? reasons | reason : reasons & ~reason;
    if (reasons != 0) {
        listeners[window] = reasons;
        if (kind == "positionsum") common[kind].insert(window);
        for (Frame& frame : frames) {
            if (isNew) frame.possible.emplace(window, kind);
        }
        return;
    }
    listeners.erase(window);
    if (kind == "positionsum") common[kind].erase(window);
    required[window].erase(kind);
    for (Frame& frame : frames) {
        frame.possible.erase({window, kind});
        std::erase_if(frame.due, [&](const auto& due) {
            return due.window == window && due.kind == kind && !due.isDirect;
        });
    }
}

void Model::Subscribe(Handle pageHandle, Handle window, const std::string& kind, const std::string& topic,
                      bool wants) {
    auto& topics = pages.at(pageHandle).topics;
    const auto isOfWindow = [&](const auto& entry) { return entry.second == std::pair(kind, window); };
    const bool had = std::ranges::any_of(topics, isOfWindow);
    if (wants) {
        topics.emplace(topic, std::pair(kind, window));
    } else {
        topics.erase({topic, {kind, window}});
    }
    const bool has = std::ranges::any_of(topics, isOfWindow);
    if (has != had) Want(pageHandle, window, kind, kSubscribed, has);
}

// What is held.

bool Model::_isHeld(const std::string& list, const Names& tokens) const {
    return std::ranges::all_of(tokens, [&](const std::string& token) {
        const auto account = accounts.find({list, token});
        return account != accounts.end() && account->second.isHeld;
    });
}

Rows Model::_held(const std::string& list, const Names& tokens) const {
    Rows rows;
    for (const std::string& token : tokens) TakeNewer(rows, accounts.at({list, token}).rows);
    return rows;
}

bool Model::_isUnderWay(int type, const std::string& token) const {
    return std::ranges::any_of(asked, [&](const Asked& request) {
        return request.type == type && request.token == token && !request.isEnded;
    });
}

void Model::_queryEnded(const ListKind& list, const std::string& token) {
    if (_isUnderWay(list.type, token)) return;
    Account& account = accounts[{list.name, token}];
    if (!account.isHeld) _count("push_for_unqueried_account", account.keptPushes);
    account.kept.clear();
    account.keptPushes = 0;
}

Names Model::_groupTokens(const Page& page) const {
    Names tokens;
    const std::string name = page.group.value_or("");
    if (name.empty()) {
        for (const auto& [row, version] : accountRows) tokens.insert(TokenOf(row));
    } else if (groups.contains(name)) {
        tokens = groups.at(name);
    }
    return tokens;
}

// Asking.

void Model::Ask(Handle page, Handle asker, const std::string& kind, const Names& tokens, bool refresh,
                bool others, bool isWaking, bool isSingleText) {
    const ListKind* const list = ListOf(kind);
    const bool isOfPage = kind == "fund_detail";
    Notice notice{.kind = kind, .tokens = tokens, .isWaking = isWaking};
    if (kind == "account" && !refresh) {
        notice.rows = accountRows;
        return _publish(notice, asker, others);
    }
    if (!refresh && !isOfPage && list && _isHeld(list->name, tokens)) {
        notice.rows = _held(list->name, tokens);
        return _publish(notice, asker, others);
    }
    const auto open = isSingleText ? nullptr : std::make_shared<size_t>(tokens.size());
    for (const std::string& token : tokens) {
        Asked request{.type = kind == "account" ? 1034
                              : isOfPage        ? 1250
                                                : list->type,
                      .kind = kind,
                      .token = token,
                      .tokens = isSingleText ? Names() : tokens,
                      .open = open,
                      .asker = asker,
                      .page = isOfPage ? page : 0,
                      .isWaking = isWaking};
        frames.back().requests.push_back(request);
    }
}

void Model::AskGroup(Handle pageHandle, Handle asker, const std::string& group, bool others) {
    Page& page = pages.at(pageHandle);
    page.group = group;
    const Rows rows = RowsOf(accountRows, _groupTokens(page));
    _publish({.kind = "accountdatalist", .rows = rows}, asker, others);
}

void Model::Wake(Handle pageHandle) {
    Page& page = pages.at(pageHandle);
    page.isAsleep = page.convertsPushes = false;
    if (page.group) {
        page.noted.erase("accountdatalist");
        const Names tokens = _groupTokens(page);
        _publish({.kind = "accountdatalist",
                  .rows = RowsOf(accountRows, tokens),
                  .tokens = tokens,
                  .isWaking = true,
                  .isOfAll = true},
                 pageHandle, true);
    }
    SendNoted(pageHandle);
}

void Model::SendNoted(Handle pageHandle) {
    frames.back().isSingle = false;
    frames.back().asksAgain = pageHandle;
    const auto noted = std::exchange(pages.at(pageHandle).noted, {});
    for (const auto& [kind, tokens] : noted) {
        if (kind == "accountdatalist") {
            _publish({.kind = kind, .rows = accountRows, .tokens = tokens, .isWaking = true, .isOfAll = true},
                     pageHandle, true);
        } else {
            Ask(pageHandle, pageHandle, kind, tokens, false, true, true);
        }
    }
}

// Answers and pushes.

void Model::_answerTo(const Asked& request, const Notice& notice) {
    if (request.page == 0) return _publish(notice, request.asker, true);
    _tell(request.page, notice, request.asker, true);
}

void Model::_fail(const Asked& request, int code) {
    frames.back().isSingle = false;
    if (code != 0) _answerTo(request, {.kind = "error_msg"});
}

void Model::Answer(Asked& request, const Rows& rows, bool hasTable, int code) {
    const ListKind* const list = request.page == 0 ? ListOf(request.kind) : nullptr;
    if (code != 0) _fail(request, code);
    request.isEnded = true;
    const bool isLast = !request.open || --*request.open == 0;
    const Names all = request.tokens.empty() ? Names{request.token} : request.tokens;
    Notice notice{.kind = request.kind,
                  .rows = hasTable ? rows : Rows(),
                  .code = code,
                  .tokens = {request.token},
                  .isWaking = request.isWaking};
    if (!list) return _answerTo(request, notice);
    if (!hasTable || code != 0) {
        _queryEnded(*list, request.token);
        if (request.isWaking) {
            for (auto& [window, kinds] : required) kinds.erase(request.kind);
        }
        _publish(notice, request.asker, true);
        const bool hasView = request.asker != -1 && request.kind != list->name && all.size() > 1;
        return hasView ? _publishView(request, *list, all, isLast, code) : void();
    }
    Account& account = accounts[{list->name, request.token}];
    account.isHeld = true;
    TakeNewer(account.rows, rows);
    TakeNewer(account.rows, account.kept);
    _queryEnded(*list, request.token);
    notice.rows = account.rows;
    notice.isUpdate = true;
    if (request.asker == -1) {
        frames.back().isSingle = false;
        for (const std::string& kind : list->asked) {
            notice.kind = kind;
            _publish(notice, -1, true);
        }
    } else if (request.kind != list->name) {
        return _publishView(request, *list, all, isLast, 0);
    } else {
        _publish(notice, request.asker, true);
    }
    _showMoney(*list, request.token, account.rows);
}

void Model::_publishView(const Asked& request, const ListKind& list, const Names& tokens, bool isLast,
                         int code) {
    frames.back().isSingle = frames.back().isSingle && code == 0;
    if (!isLast) return _count("view_waits_for_accounts");
    if (!_isHeld(list.name, tokens)) return _count("view_lacks_accounts");
    const Notice view{.kind = request.kind,
                      .rows = _held(list.name, tokens),
                      .code = code,
                      .tokens = tokens,
                      .isWaking = request.isWaking};
    _publish(view, request.asker, true);
}

void Model::FailUnrouted(Asked& request, int code) {
    _publish({.kind = "messagecenter"}, -1, true);
    if (request.page != 0 && !pages.contains(request.page)) return _count("response_without_receiver");
    Answer(request, {}, false, code);
}

void Model::Push(const ListKind& list, const std::string& token, const Rows& rows) {
    Account& account = accounts[{list.name, token}];
    Notice notice{.kind = {}, .rows = rows, .tokens = {token}, .isUpdate = true};
    frames.back().isSingle = list.pushed.size() == 1;
    frames.back().isChain =
        list.isOfRows;  // who began to listen meanwhile may have to ask for the later kinds
    if (account.isHeld) {
        TakeNewer(account.rows, rows);
        if (!list.isOfRows) notice.rows = account.rows;
    } else if (_isUnderWay(list.type, token)) {
        TakeNewer(account.kept, rows);
        const bool replacesOthers = std::string_view(list.name) == "position";
        account.keptPushes = replacesOthers ? 1 : account.keptPushes + 1;
    } else {
        return _count("push_for_unqueried_account");
    }
    for (const std::string& kind : list.pushed) {
        notice.kind = kind;
        const bool isTable = list.isOfRows && kind == list.name;
        if (isTable && !account.isHeld) continue;
        if (isTable) notice.rows = account.rows;
        _publish(notice, -1, true);
        notice.rows = list.isOfRows ? rows : notice.rows;
    }
    _showMoney(list, token, notice.rows);
}

// Positions are published anew when the funds of their account change.
void Model::_weighPositions(const Notice& funds) {
    if (funds.kind != "fund" || !funds.isUpdate || funds.tokens.size() != 1 || funds.rows.empty()) return;
    const std::string& token = *funds.tokens.begin();
    const auto isHeld = [&](const char* list) {
        const auto account = accounts.find({list, token});
        return account != accounts.end() && account->second.isHeld && !account->second.rows.empty();
    };
    if (!isHeld("fund") || !isHeld("position")) return;
    frames.back().isSingle = false;
    frames.back().isChain = true;
    _publish({.kind = "position", .rows = _held("position", {token}), .tokens = {token}}, -1, true);
}

// Of all that funds say here, the account data lists show the currency.
void Model::_showMoney(const ListKind& list, const std::string& token, const Rows& rows) {
    if (std::string_view(list.name) != "fund" || rows.empty() || !moneyShown.insert(token).second) return;
    const bool isKnown = std::ranges::any_of(
        accountRows, [&](const auto& account) { return TokenOf(account.first) == token; });
    if (!isKnown) return;
    frames.back().isSingle = false;
    _publish({.kind = "accountdatalist_push"}, -1, true);
}

void Model::PagePush(const std::string& topic, const std::string& kind, const Rows& rows) {
    size_t receivers = 0;
    for (const auto& [handle, page] : pages) {
        const auto first = page.topics.lower_bound({topic, {"", 0}});
        if (first == page.topics.end() || first->first != topic) continue;
        ++receivers;
        _tell(handle, {.kind = kind, .rows = rows}, -1, true);
    }
    if (receivers == 0) _count("response_without_receiver");
}

void Model::_publishFamilies(const std::vector<std::string>& kinds) {
    for (const std::string& kind : kinds) {
        const bool isEmpty = kind == "accountdatalistcredit";
        Notice notice{.kind = kind, .rows = isEmpty ? Rows() : accountRows, .isOfAll = true};
        for (const auto& [row, version] : notice.rows) notice.tokens.insert(TokenOf(row));
        _publish(notice, -1, true);
    }
}

void Model::TakeAccounts(Asked& request) {
    frames.back().isSingle = false;
    frames.back().isChain = true;
    request.isEnded = true;
    const bool isNewest = accountRows.empty() || accountRows.begin()->second <= request.rows.begin()->second;
    const Rows before = accountRows;
    if (isNewest) accountRows = request.rows;
    _publish({.kind = "account", .rows = accountRows, .isWaking = request.isWaking}, request.asker, true);
    if (!isNewest) return;
    _publishFamilies({"accountdatalist", "accountdatalist_ggt"});
    for (const char* kind : {"accountdatalist_push", "accountdatalist_ggt_push"}) {
        for (int news = CountNews(before, request.rows); news > 0; --news) _publish({.kind = kind}, -1, true);
    }
}

void Model::TakeGroups(Asked& request, const std::map<std::string, Names>& newGroups, bool isNewest) {
    frames.back().isSingle = false;
    frames.back().isChain = true;
    request.isEnded = true;
    if (isNewest) {
        groups = newGroups;
        groupRows = request.rows;
    }
    _publish({.kind = "accountgroup", .rows = groupRows}, request.asker, true);
    if (!isNewest) return;
    _publishFamilies({"accountdatalist", "accountdatalist_ggt"});
    _publish({.kind = "accountgroupcredit", .rows = groupRows}, -1, true);
    _publishFamilies({"accountdatalistcredit"});
}

// From manager to window.

void Model::_publish(const Notice& notice, Handle asker, bool others) {
    size_t told = 0;
    if (others) {
        _weighPositions(notice);
        auto& listeners = common[notice.kind];
        for (const Handle window : std::set<Handle>(listeners)) {
            // Pages' windows hear of what they asked for at their page.
            if (asker > 0 && owners.contains(window)) continue;
            if (windows.contains(window)) {
                _expect(0, window, notice, false);
                ++told;
            } else {
                _count("record_receiver_gone");
                listeners.erase(window);
            }
        }
    }
    if (asker <= 0 && !IsCommon(notice.kind)) {
        if (told == 0) _count("record_without_receiver");
    } else if (owners.contains(asker)) {
        if (const Handle page = PageOf(asker)) {
            _visit(page, notice, asker, others || notice.isWaking);
        } else {
            _count("record_page_gone");
        }
    } else if (others && !notice.isWaking) {
        if (asker <= 0) _require(notice);
        size_t subscribed = 0;
        for (auto& [handle, page] : pages) {
            if (page.wants[notice.kind].empty()) continue;
            ++subscribed;
            _visit(handle, notice, -1, true);
        }
        if (subscribed == 0) _count("record_without_subscriber");
    } else {
        _count("record_without_page");
    }
}

void Model::_require(const Notice& notice) {
    if (!ListOf(notice.kind)) return;
    for (auto& [handle, page] : pages) {
        for (const auto& [window, reasons] : page.wants[notice.kind]) {
            if (windows.contains(window)) TakeNewer(required[window][notice.kind], notice.rows);
        }
    }
}

void Model::_visit(Handle handle, const Notice& notice, Handle asker, bool others) {
    Page& page = pages.at(handle);
    const bool isAsked = asker > 0 || notice.isWaking;
    const std::string query = QueryOf(notice.kind);
    if (IsCommon(notice.kind) && page.convertsPushes && !isAsked && !query.empty()) {
        page.noted[query].insert(notice.tokens.begin(), notice.tokens.end());
        return _count("record_noted_for_query");
    }
    if (!notice.isOfAll) return _tell(handle, notice, asker, others);
    const Names group = notice.kind == "accountdatalistcredit" ? Names() : _groupTokens(page);
    Notice own = notice;
    std::erase_if(own.tokens, [&](const std::string& token) { return !group.contains(token); });
    own.rows = RowsOf(notice.rows, group);
    _tell(handle, own, asker, others);  // a whole list also says that a group has no account any more
}

void Model::_tell(Handle handle, const Notice& notice, Handle asker, bool others) {
    size_t told = 0;
    if (asker > 0 && asker != handle) {
        if (windows.contains(asker)) {
            _expect(handle, asker, notice, true);
            ++told;
        } else {
            _count("record_receiver_gone");
        }
    }
    auto& listeners = pages.at(handle).wants[notice.kind];
    for (const auto& [window, reasons] : others ? std::map(listeners) : std::map<Handle, int>()) {
        if (window == asker) continue;
        if (windows.contains(window)) {
            _expect(handle, window, notice, false);
            ++told;
        } else {
            _count("record_receiver_gone");
            listeners.erase(window);
        }
    }
    if (told == 0) _count("record_without_receiver");
}

void Model::_expect(Handle owner, Handle window, const Notice& notice, bool isDirect) {
    frames.back().due.push_back({owner, window, notice.kind, TextOf(notice.rows, notice.code), isDirect});
}

// What really happens.

std::string Model::Deliver(Handle window, const std::string& kind, const Rows& rows, int code) {
    const std::string text = TextOf(rows, code);
    const std::string what = "window " + std::to_string(window) + ": " + kind + text;
    Frame& frame = frames.back();
    const auto due = std::ranges::find_if(frame.due, [&](const auto& each) {
        return each.window == window && each.kind == kind && each.text == text;
    });
    if (due != frame.due.end()) {
        frame.due.erase(due);
    } else if (frame.possible.erase({window, kind}) == 0) {
        return what + " was delivered to one who did not want it, or twice, or with other content";
    }
    ++frame.delivered;
    const ListKind* const list = ListOf(kind);
    if (!list) return {};
    Rows& known = seen[window][list->name];
    for (const auto& [row, version] : rows) {
        if (known[row] > version) return what + " is older than what the window has";
        known[row] = version;
    }
    return {};
}

std::string Model::Send(const Asked& request) {
    auto& requests = frames.back().requests;
    const auto due = std::ranges::find_if(requests, [&](const Asked& each) {
        return each.type == request.type && each.token == request.token && each.asker == request.asker;
    });
    if (due == requests.end())
        return "request " + std::to_string(request.type) + " for " + request.token + " was not asked for";
    Asked sent = *due;
    requests.erase(due);
    sent.rows = request.rows;
    sent.uuid = request.uuid;
    sent.isSub = request.isSub;
    asked.push_back(sent);
    return {};
}

std::string Model::Missing() const {
    const Frame& frame = frames.back();
    if (!frame.due.empty()) {
        const auto& due = frame.due.front();
        return "window " + std::to_string(due.window) + " never got " + due.kind + due.text;
    }
    if (!frame.requests.empty() && !frame.isCutShort)
        return "request " + std::to_string(frame.requests.front().type) + " was not sent";
    return {};
}

std::string Model::Stale() const {
    for (const auto& [window, kinds] : required) {
        for (const auto& [kind, rows] : kinds) {
            const auto known = seen.find(window);
            for (const auto& [row, version] : rows) {
                int has = 0;
                if (known != seen.end() && known->second.contains(ListOf(kind)->name)) {
                    const Rows& held = known->second.at(ListOf(kind)->name);
                    if (held.contains(row)) has = held.at(row);
                }
                if (has < version)
                    return "window " + std::to_string(window) + " has " + row + " in version " +
                           std::to_string(has) + ", " + kind + " told " + std::to_string(version);
            }
        }
    }
    return {};
}

}  // namespace luadui::interleaving
