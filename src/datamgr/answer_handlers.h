// The handlers that the table of answer routes names. Failed answers, which the manager has reported by then,
// reach the asker as records of their kind, too: with "ret_code" and "ret_message", and without rows that
// were not sent.
#pragma once

#include "datamgr/answer.h"

namespace luadui {

class CUIDataManager;

// Delivers `record` to `handle`, or, when that is -1, to all that want it. False when the manager went
// meanwhile.
bool Tell(CUIDataManager& manager, CUIData& record, int32_t handle);

// Passes the answer to its asker as it is.
void DeliverAnswer(CUIDataManager& manager, Answer& answer);
// The same under the kind of the route, whatever the asker called it.
void DeliverUnderRouteKind(CUIDataManager& manager, Answer& answer);
// Orders, deals, positions, funds and their like: the list of the route's kind takes the account's table, and
// the asker gets what the list holds then. One who asked for a view of several accounts gets it when all of
// them are there. The answer to a question that the manager asked by itself goes to all that want one of the
// kinds made of the table.
void HandleTradingTable(CUIDataManager& manager, Answer& answer);
// The funds of all accounts, which the column "fund_token" names: the asker gets the answer, and those who want
// "fund" hear of each account.
void HandleAllFunds(CUIDataManager& manager, Answer& answer);
// What the server tells about Stock Connect as a whole: the list of the route's kind takes the table.
void HandleReference(CUIDataManager& manager, Answer& answer);
// The orders behind a basket instruction: see COrderList.
void HandleBasketDetail(CUIDataManager& manager, Answer& answer);
// Lists that only some pages have; elsewhere the answer is passed on.
void HandlePageList(CUIDataManager& manager, Answer& answer);
// The same for all and of use later: shared under its kind, where it answers those who ask again.
void HandleShared(CUIDataManager& manager, Answer& answer);
// The days on which the exchanges are closed: shared as "holidays".
void HandleHolidays(CUIDataManager& manager, Answer& answer);

// The user's accounts and groups, all families in one answer: the account data lists take them, the record is
// shared under its kind, and news of the families goes to all that want them. The first handler serves the
// ordinary and Stock Connect families, the second one those on credit.
void HandleAccounts(CUIDataManager& manager, Answer& answer);
void HandleAccountsCredit(CUIDataManager& manager, Answer& answer);
void HandleGroups(CUIDataManager& manager, Answer& answer);
void HandleGroupsCredit(CUIDataManager& manager, Answer& answer);

// Whether what is shared as `name` is older than that; false is counted as "older_answer_ignored".
bool IsNewest(CUIDataManager& manager, const std::string& name, Age age);
// Shares a copy of `record` as `name`, without what concerns its asker alone. What pages have attached shows
// it.
void Share(CUIDataManager& manager, const std::string& name, const CUIData& record, Age age);
// Puts the content that is shared as `name` in the place of the record's own.
void TakeShared(CUIDataManager& manager, const std::string& name, CUIData& record);

}  // namespace luadui
