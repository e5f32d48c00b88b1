// The handlers that the table of push routes names.
#pragma once

#include <span>
#include <string_view>

#include "datamgr/answer.h"
#include "datamgr/kind_table.h"

namespace luadui {

class CUIDataManager;

// What the rows of a push are to the list that keeps them.
enum class PushedRows {
    kWholeTable,  // all that the account has, or whole rows of it by currency
    kSingle,      // rows of an account that changed
    kMessage,     // the same in a message that is news by itself
    kOfPage,      // rows for a list that only some pages have
};
struct PushedList {
    std::string_view key;  // of the push
    std::string_view list;
    PushedRows rows;
    std::string_view query = list;  // the kind whose answers fill the list
    // Where the push does not say of which family the account is: the lists of the others.
    std::string_view creditList = {};
    std::string_view connectList = {};
};
inline constexpr PushedList kPushedLists[] = {
    {"Fund|", "fund", PushedRows::kWholeTable},
    {"FundCredit|", "credit_fund", PushedRows::kWholeTable},
    {"FundGGT|", "fund_ggt", PushedRows::kWholeTable},
    {"Position|", "position", PushedRows::kWholeTable},
    {"PositionCredit|", "positioncredit", PushedRows::kWholeTable},
    {"PositionGGT|", "position_ggt", PushedRows::kWholeTable},
    {"Trade|", "deal", PushedRows::kSingle},
    {"TradeCredit|", "dealcredit", PushedRows::kSingle},
    {"TradeGGT|", "deal_ggt", PushedRows::kSingle},
    {"Entrust|", "entrust", PushedRows::kSingle},
    {"EntrustCredit|", "entrustcredit", PushedRows::kSingle},
    {"EntrustGGT|", "entrust_ggt", PushedRows::kSingle},
    {"entrustret", "entrust", PushedRows::kMessage, "entrust", "entrustcredit", "entrust_ggt"},
    {"traderet", "deal", PushedRows::kMessage, "deal", "dealcredit", "deal_ggt"},
    {"rechase_instruction", "auto_algo_inst", PushedRows::kOfPage, "query_inst_autoalgo"},
};
using PushedListIndex = KindIndex<kPushedLists, &PushedList::key>;

// Finds the rows of a push: its "Table" or the first array of objects among its fields.
void FindRows(Push& push);
// Whether the push says that something failed, counted as "push_failed_not_merged": what it carries is no content.
bool HasFailed(const Push& push);

// Publishes the push as it is.
void PublishPush(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);

// Those that kPushedLists names give their rows to a list.
//
// Of one account: what is published under the kind of the list is the account's whole table; under the other kinds
// it is the rows that were pushed, as the list holds them then, or, where a push stands for the whole table, that.
// What the list has no use for (it is of an account that was never queried) is not published. A push that says that
// something failed is published as it is and changes nothing, counted as "push_failed_not_merged".
void MergePush(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);
// Who is logged in: the accounts' shared record and the account data lists follow, and tell those who show accounts. A push
// about one account is published as it is, one about all that are logged in with the rows of all accounts, as
// soon as the server has told of them.
void TakeOnline(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);
// The user's groups (rows with "groupid" and "accountlist" or "account"): published as answers with groups are, which take
// the same way. Other rows are published as they are.
void TakeGroups(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);
// For a list that only some pages have; nobody misses it elsewhere, and the push is published as it is. A failed
// one changes nothing, counted in the same way.
void MergePageList(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);
// Messages, whose rows may be of several accounts (column "fund_token"): published as they are, whether a list has use
// for them or not, and then each table that changed under the kind of its list.
void MergeMessage(CUIDataManager& manager, Push& push, std::span<const std::string_view> kinds);

}  // namespace luadui
