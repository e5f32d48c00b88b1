// What is computed here for a page that asks, and never by the server.
//
// Each answers into the record that asks and returns nothing, or it returns what is missing or wrong: a literal in
// UTF-8 that the user will read.
//
// Threads: the UI thread.
#pragma once

#include <string_view>

#include "base/ui_data.h"

namespace luadui {

class CUIDataManager;

using Refusal = std::string_view;

// "stock_available": how much of a security the accounts of "fund_token" can buy or sell. It is the list of the
// accounts' funds that answers a buy, and that of their positions a sell (see CalcStockAvailable of each, also
// for the entries that they read). The funds answer a sell, too, where it is paid for: when a repo is sold, money is
// lent, and a credit account with "usertoken_type" 3 sells what it borrows.
//
// Accounts are credit accounts when the credit lists hold one of them; where no list holds any, when there is a
// "trade_type" other than "0" or a "usertoken_type". Those that the answering list does not hold are in the set
// "missing_account": the total lacks them.
Refusal ComputeStockAvailable(CUIDataManager& manager, CUIData& request);

// "price_spread": the step of a Stock Connect price (see CPriceSpreadGGT::GetPriceSpread).
Refusal ComputePriceSpread(CUIDataManager& manager, CUIData& request);

// "limit_price": the prices between which "stock_code" of "stock_marketid" may be ordered ("entrust_type": "sell", else
// a buy), by "previous_close" and "reference_price" (without one: the previous close). Answers texts, empty
// where there is no limit: "limit_up", "limit_down", "declare_high", "declare_low", "price_step".
Refusal ComputeLimitPrice(CUIDataManager& manager, CUIData& request);

// "code_mask": whether "stock_code" fits one of the masks in "masks" (a text of several separated by ';', a set, list or
// table), or else in the answer that is shared as "kcb_code_mask", there under "masks" or the kind. In a mask each
// '?' and '*' stands for a digit, but a single '*' at the end for whatever follows: "688***", "688*". Answers the
// boolean "is_match".
Refusal ComputeCodeMask(CUIDataManager& manager, CUIData& request);

// "price_level": the price of "price_level" in the quote of "stock_code" of "stock_marketid": "0" or "最新价" the last
// price, "B1" or "买一" to "B10" and "S1" or "卖一" to "S10" those in the book, "ZT" or "涨停价" and "DT" or "跌停价"
// the daily limits; "NULL" is none chosen, and has the empty text for price. The quote is the record "quote", or the
// request itself, or, where that has no prices, the one held here if it is current (see QuoteFeed::FindCurrent); it has
// "PriceZxjg", "PriceBuy1", "PriceSell1", "PriceZtjg", "PriceDtjg", "PriceZrsp" and so on.
// "price_offset" moves the price by that many steps (up to 10,000). Answers "price" as text, on a step and within
// the daily limits: those of the quote, else those that its previous close gives.
Refusal ComputePriceLevel(CUIDataManager& manager, CUIData& request);

// "allocate": divides an order among accounts (see AllocateQuantity). Reads
//   "fund_token"       the accounts
//   "alloc_type"       "0" "equal", "1" "available": by what each has for the order, money when it buys, the
//                      security when it sells; "2" "assets": by total assets, "3" "weight": by "weights"
//   "amount"           how much to divide, or "money": what all parts may cost together, or yield when sold
//   "weights"          a record: account -> number; an account without one gets nothing
//   and the entries of "stock_available", "commission_rate" among them; "stock_price" is not needed for selling
//   an amount, "stock_unit" of Stock Connect is the board lot unless given.
// Answers the table "allocate", a row for each account in the order of the set: "fund_token", "Amount", "Money" (what
// the part costs with commission, or yields), "Weight" (the account's share in percent); "multi_account_amount"
// (account -> amount) and "stock_available" (their total, as text). Accounts whose money, securities or assets are
// not known get nothing and are in the set "missing_account".
Refusal ComputeAllocation(CUIDataManager& manager, CUIData& request);

}  // namespace luadui
