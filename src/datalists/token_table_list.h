// CTokenTableList: the tables of one kind, one for every account; base of the lists of orders, deals, positions,
//                  funds and the like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/text_map.h"
#include "base/ui_data.h"
#include "datalists/row_index.h"

namespace luadui {

// What became of a push.
enum class PushResult {
    kTaken,      // the list changed
    kUnchanged,  // it says what the list holds already
    kKept,       // it waits for the answer to the account's first query
    kOlder,      // what the list holds is newer; counted as "older_push_ignored"
    kUnknown,    // of an account that was never queried; counted as "push_for_unqueried_account"
    kRefused,    // it cannot be used; counted under the reason
};

// A record: the table of an account under the account's token, and the set of all tokens held.
//
// Content comes as answers and pushes, in any order. Every one of them has an age: the larger is the newer
// (see TakeAnswer); 0 is older than all others. Older content never replaces newer. A push either stands for
// the account's whole table or changes the one that is held: in lists with a row key it brings single rows,
// which are updated or appended; what else it may change is up to derived lists.
//
// Tables are handed out and taken in as copies that share their rows: nothing but what a push names is copied
// or walked over. The first push after an answer reads the table once to find its rows by key.
//
// Bad input: missing and doubled columns, empty tables and hostile tokens are never an error; what cannot be
//            used is counted. A token that is a control entry's name ("fund_token", "update_user") or empty
//            is refused, counted as "list_token_refused".
// Threads:   the UI thread.
class CTokenTableList : public CUIData {
  public:
    // `kind` is the type of the list and of what it publishes, `mergedKind` that of its view of several
    // accounts (empty: there is none). `rowKey` is the column that identifies a row (empty: a push carries
    // the whole table). `keySet` is the entry with the tokens held; records that the list publishes name
    // their token under it, too.
    explicit CTokenTableList(std::string_view kind, std::string_view mergedKind = {},
                             std::string_view rowKey = {}, std::string_view keySet = "fund_token");
    ~CTokenTableList() override;
    CTokenTableList(const CTokenTableList&) = delete;
    CTokenTableList& operator=(const CTokenTableList&) = delete;
    const char* ClassName() const override;

    // Whether the list has a table of the account, be it an empty one.
    bool Holds(std::string_view token) const noexcept { return GetDataType(token) == kDataTable; }
    // The same for all of them; false for no token at all.
    bool Holds(const CDataSet& tokens) const;
    // The account's table. False, and `out` unchanged, when there is none.
    bool GetTable(std::string_view token, CDataTable& out) const { return GetData(token, out); }

    // The age of content that counts as newer than all that the account has.
    static constexpr uint64_t kNewest = UINT64_MAX;

    // Takes an account's whole table from the answer to a request, whose age is that of the moment when it
    // left. Pushes that are newer are applied on top. In lists whose rows last, one that a push brought less than
    // kSettling ago stays when the answer lacks it, counted as "answer_lacks_pushed_row": the part of a server that
    // answers queries learns later of a deal than the one that announces it. True when the account's content may
    // have changed; in any case what the asker gets is what the list holds then (MakeRecord). False, counted as
    // "older_answer_ignored", when what is held is newer.
    bool TakeAnswer(std::string_view token, const CDataTable& table, uint64_t age);

    // An answer came that names the account and has no table. Most lists learn nothing from it.
    virtual void TakeEmptyAnswer(std::string_view /*token*/) {}

    // Takes a push, whose age is that of its arrival. `queryUnderWay`: a query for this account has not been
    // answered yet, so the push is also kept until QueryEnded, to be applied on top of the answer. Kept
    // pushes are limited to kMaxKeptRows in all: beyond that an account's oldest go, counted as
    // "kept_push_dropped".
    //
    // Without row key: `table` replaces the account's table. With row key: rows are found by their key, and
    // take over all cells of the push; others are appended; columns that the list's table lacks are added.
    // Rows without key are counted as "push_row_without_key".
    PushResult TakePush(std::string_view token, const CDataTable& table, uint64_t age, bool queryUnderWay);

    // Puts what the list holds now of a push's rows in their place: all columns of the held table, rows in the
    // order of the push, those without key or that are not held left out. Kept pushes make up the table of an
    // account that has none yet. `rows` stays as it is in lists without row key and for other accounts.
    void GetRowsOf(std::string_view token, CDataTable& rows);

    // No query for the account is under way any longer, whether answered or not; after TakeAnswer. Kept
    // pushes go: into the account's table where the answer brought none, but made the account known; those of an
    // account that nobody knows are counted as "push_for_unqueried_account".
    void QueryEnded(std::string_view token);

    // The accounts with kept pushes. Walks over all that had any.
    std::vector<std::string> Waiting() const;

    // The view of several accounts: reads the set "fund_token" of `request`, stores the joined tables under
    // the merged kind and makes that the request's type. Accounts come in the order of the set; the columns
    // are those of the first table with rows. False, and `request` unchanged, when it has no set or the list
    // has no merged kind, or lacks one account's table: its token is then in `missing`. A table costs the
    // same however many rows it has.
    bool MergeMultiAccount(CUIData& request, std::string* missing = nullptr) const;

    // Makes `out` the record that pages get for one account: the list's kind as type, the token (as
    // "fund_token", or what the list's key set is called) and the table under the kind. False, and `out`
    // unchanged, when there is none.
    bool MakeRecord(std::string_view token, CUIData& out) const;

    // Forgets the account.
    void Remove(std::string_view token);

    // Of kept pushes, in all accounts; each push counts as one row more.
    static constexpr size_t kMaxKeptRows = 1u << 20;
    // Pushes widen no table beyond that.
    static constexpr int kMaxColumns = 4096;
    static constexpr uint32_t kSettling = 10'000;  // ms
    // Of rows that pushed ones are kept for that time, in each account.
    static constexpr size_t kMaxFreshRows = 100'000;

  protected:
    // A list without row key whose pushes change the held table in the way that _merge says.
    struct MergesPushes {};
    CTokenTableList(std::string_view kind, MergesPushes);

    enum class Origin { kAnswer, kPush };
    // A row of a push on its way into the row of the same key.
    struct RowChange {
        const CDataTable& held;
        const int row;
        const CDataTable& push;
        const int pushed;
        int keeps = -1;  // a column of `held` whose cell stays
    };

    // Before a whole table is stored: the place for derived columns. A push that is stored in the place of
    // the older answer to an account's first query comes as kAnswer. Must not use the list.
    virtual void _prepare(std::string_view /*token*/, CDataTable& /*table*/, Origin /*origin*/) {}
    // Whether the row may be changed; in lists with a row key.
    virtual bool _acceptsRow(RowChange& /*change*/) const { return true; }
    // Whether _acceptsRow holds for answers, too: a row of theirs that it refuses keeps the cells that are held.
    virtual bool _guardsAnswers() const { return false; }
    // Whether a row that a server has told of stays for the day; in lists with a row key.
    virtual bool _rowsLast() const { return false; }
    // Whether an answer's row is about something else than the one of the same key, and so takes its place.
    virtual bool _isOther(const RowChange& /*change*/) const { return false; }
    // Changes the held table, which has rows, as the push says; in lists of MergesPushes. False when nothing
    // changed. Must not use the list.
    virtual bool _merge(std::string_view /*token*/, CDataTable& /*held*/, const CDataTable& /*push*/) {
        return false;
    }
    // After a table was set, changed, or confirmed by a push.
    virtual void _updated(std::string_view /*token*/) {}
    // Makes the account known, as if it had been queried, but without a table.
    void _register(std::string_view token);
    // The time in milliseconds, which wraps around.
    virtual uint32_t _now() const;

  private:
    enum class PushForm { kTable, kRows, kChanges };
    struct Kept {
        uint64_t age;
        CDataTable table;
    };
    // A row that a push appended.
    struct FreshRow {
        uint32_t since;
        std::string key;
    };
    struct Account {
        uint64_t answerAge = 0;  // of the answer that the table is from
        uint64_t pushAge = 0;    // of the newest push in the table that could not be applied again
        RowIndex index;
        std::list<Kept> kept;  // oldest first
        size_t keptCost = 0;
        CDataTable waiting;          // the rows of kept pushes while there is no table
        std::deque<FreshRow> fresh;  // oldest first
    };
    // Where the cells of a push go: for each of its columns the first one of that name in the table; -1 for
    // those that nobody could read by name: without one, or not the first of theirs.
    struct Mapping {
        CDataTable push, held;  // columns only
        std::vector<int> columns;
        size_t dropped = 0;  // how many have none
    };

    bool _isToken(std::string_view token) const;
    bool _isKnown(std::string_view token) const;
    static uint64_t _ageOf(const Account& account, uint64_t age);
    Account& _account(std::string_view token);
    bool _isOlder(const Account& account, bool held, uint64_t age) const;
    void _store(std::string_view token, Account& account, CDataTable table, Origin origin);
    void _storeNewest(std::string_view token, Account& account, const CDataTable& answer);
    const std::vector<int>& _mapColumns(const CDataTable& push, CDataTable& held);
    static int _targetOf(const CDataTable& push, int col, CDataTable& held);
    bool _apply(std::string_view token, Account& account, const CDataTable& push);
    static RowIndex& _indexOf(Account& account, const CDataTable& held, int keyColumn);
    bool _applyRows(Account& account, CDataTable& held, const CDataTable& push);
    void _guardRows(Account& account, const CDataTable& held, CDataTable& answer) const;
    void _noteFresh(Account& account, std::string_view key) const;
    void _keepFresh(Account& account, const CDataTable& held, CDataTable& answer) const;

    bool _keep(Account& account, const CDataTable& table, uint64_t age);
    void _dropOldest(Account& account);
    void _wait(Account& account, const CDataTable& push);
    static size_t _cost(const Kept& push);

    const std::string m_kind;
    const std::string m_mergedKind;
    const std::string m_rowKey;
    const std::string m_keySet;
    const PushForm m_form;
    TextMap<Account> m_accounts;
    Mapping m_mapping;  // of the last push of rows
    size_t m_keptRows = 0;
};

}  // namespace luadui
