// What pages should receive, told by nothing but sets: who wants what, who sleeps, what is held, what was asked.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace luadui::interleaving {

using Handle = int32_t;
using Names = std::set<std::string>;
// The cells of a row but the last -> the last one, its version.
using Rows = std::map<std::string, int>;

std::string TextOf(const Rows& rows, int code);

// What is published.
struct Notice {
    std::string kind;
    Rows rows = {};
    int code = 0;
    Names tokens = {};
    bool isWaking = false;  // the answer to what a page asked on waking
    bool isOfAll = false;   // says for which accounts it is, as a set
    bool isUpdate = false;  // of funds, on which weights of positions depend
};

// One request as the broker got it.
struct Asked {
    int type = 0;
    std::string kind = {};
    std::string token = {};
    Names tokens = {};                  // of the ask that it belongs to
    std::shared_ptr<size_t> open = {};  // unanswered requests of that ask
    Handle asker = -1;                  // a window, a page on waking, or nobody
    Handle page = 0;                    // whose manager sent it; 0: the common one
    bool isWaking = false;
    bool isSub = false;
    bool isEnded = false;
    Rows rows = {};  // the broker's content when it was sent
    std::string uuid = {};
    bool hasPart = false;
};

// The lists of trading tables.
struct ListKind {
    const char* name;
    const char* view;
    const char* key;    // column of the rows
    const char* topic;  // of its pushes
    int type;
    bool isOfRows;  // a push carries single rows
    std::vector<std::string> pushed;
    std::vector<std::string> asked;  // the kinds of the same request type
};
const std::vector<ListKind>& Lists();
// The list that a kind comes from; null for other kinds.
const ListKind* ListOf(const std::string& kind);

class Model {
  public:
    struct Page {
        std::string name;
        bool isAsleep = false;
        bool convertsPushes = false;
        std::optional<std::string> group;
        std::map<std::string, std::map<Handle, int>> wants;                       // kind -> window -> reasons
        std::map<std::string, Names> noted;                                       // kind -> accounts
        std::set<std::pair<std::string, std::pair<std::string, Handle>>> topics;  // topic, kind, window
    };
    struct Account {
        bool isHeld = false;
        Rows rows;
        Rows kept;
        int keptPushes = 0;
    };
    // An event under way: what has to happen before it ends.
    struct Frame {
        struct Delivery {
            Handle owner;  // of the table in which the receiver stands; 0: the common manager's
            Handle window;
            std::string kind, text;
            bool isDirect;
        };
        std::vector<Delivery> due;
        std::set<std::pair<Handle, std::string>> possible;  // windows that began to listen meanwhile
        std::map<std::string, int> counts;                  // reason -> how often
        std::vector<Asked> requests;
        bool isSingle = true;      // one publication at most
        bool isChain = false;      // one publication brings another
        bool isDisturbed = false;  // receivers acted
        Handle asksAgain = 0;      // the page that asks what it noted
        bool isCutShort = false;   // a page went
        size_t delivered = 0;
    };
    enum Reason { kRegistered = 1, kSubscribed = 2 };

    // Who is there.
    std::map<Handle, Page> pages;
    // Windows and pages -> name of the page, also when they have gone.
    std::map<Handle, std::string> owners;
    std::set<Handle> windows;                        // alive
    std::map<std::string, std::set<Handle>> common;  // kind -> listeners of the common manager

    // What is held.
    std::map<std::pair<std::string, std::string>, Account> accounts;  // list, account
    Rows accountRows;                                                 // all accounts of the user
    Rows groupRows;
    Names moneyShown;  // accounts whose funds the account data lists have
    std::map<std::string, Names> groups;
    std::vector<Asked> asked;

    // What a window that wants a kind must have seen once everything has settled.
    std::map<Handle, std::map<std::string, Rows>> required, seen;  // window -> kind, or list -> rows

    std::vector<Frame> frames;

    // The living page of a window; 0: none.
    Handle PageOf(Handle window) const;
    void RemovePage(Handle page);
    void CloseWindow(Handle window);
    void Want(Handle page, Handle window, const std::string& kind, Reason reason, bool wants);
    void Subscribe(Handle page, Handle window, const std::string& kind, const std::string& topic, bool wants);

    // Events. Each fills the last frame.
    void Ask(Handle page, Handle asker, const std::string& kind, const Names& tokens, bool refresh,
             bool others, bool isWaking = false, bool isSingleText = false);
    void AskGroup(Handle page, Handle asker, const std::string& group, bool others);
    void Wake(Handle page);
    void SendNoted(Handle page);
    void Answer(Asked& request, const Rows& rows, bool hasTable, int code);
    void FailUnrouted(Asked& request, int code);  // "DATATYPE" -1
    void Push(const ListKind& list, const std::string& token, const Rows& rows);
    void PagePush(const std::string& topic, const std::string& kind, const Rows& rows);
    void TakeAccounts(Asked& request);
    void TakeGroups(Asked& request, const std::map<std::string, Names>& groups, bool isNewest);

    // A record came. Empty, or what is wrong with it.
    std::string Deliver(Handle window, const std::string& kind, const Rows& rows, int code);
    // A request was sent.
    std::string Send(const Asked& request);
    // What is missing when the last frame is over.
    std::string Missing() const;
    // What windows lack although they were told, when all is settled.
    std::string Stale() const;

  private:
    bool _isHeld(const std::string& list, const Names& tokens) const;
    Rows _held(const std::string& list, const Names& tokens) const;
    bool _isUnderWay(int type, const std::string& token) const;
    void _publishView(const Asked& request, const ListKind& list, const Names& tokens, bool isLast, int code);
    void _queryEnded(const ListKind& list, const std::string& token);
    Names _groupTokens(const Page& page) const;
    void _publish(const Notice& notice, Handle asker, bool others);
    void _weighPositions(const Notice& funds);
    void _showMoney(const ListKind& list, const std::string& token, const Rows& rows);
    void _publishFamilies(const std::vector<std::string>& kinds);
    void _visit(Handle page, const Notice& notice, Handle asker, bool others);
    void _tell(Handle page, const Notice& notice, Handle asker, bool others);
    void _fail(const Asked& request, int code);
    void _answerTo(const Asked& request, const Notice& notice);
    void _require(const Notice& notice);
    void _count(const char* reason, int n = 1) { frames.back().counts[reason] += n; }
    void _expect(Handle owner, Handle window, const Notice& notice, bool isDirect);
};

}  // namespace luadui::interleaving
