// The handlers that the table of push routes names.
#pragma once

#include <string_view>

#include "datamgr/answer.h"
#include "datamgr/kind_table.h"

namespace luadui {

class CUIDataManager;

// What the rows of a push are to the list that keeps them.
enum class PushedRows {
    kWholeTable,  // all that the account has
    kSingle,      // rows of an account that changed
    kOfPage,      // rows for a list that only some pages have; nobody misses it elsewhere
};
struct PushedList {
    std::string_view key;  // of the push
    std::string_view list;
    PushedRows rows;
    std::string_view query = list;  // the kind whose answers fill the list
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
    {"rechase_instruction", "auto_algo_inst", PushedRows::kOfPage, "query_inst_autoalgo"},
};
using PushedListIndex = KindIndex<kPushedLists, &PushedList::key>;

// Publishes the push as it is.
void PublishPush(CUIDataManager& manager, Push& push, std::string_view kind);

// Pushes that kPushedLists names. The list takes the rows, which are the push's "Table" or the first array of
// objects among its fields; published are the rows that were pushed, or, where a push stands for the
// account's whole table, what the list holds then.
void MergePush(CUIDataManager& manager, Push& push, std::string_view kind);

}  // namespace luadui
