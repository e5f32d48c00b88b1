// What the account service answers about many accounts.
#pragma once

#include <string>

#include "accounts/account_list.h"
#include "base/text.h"

namespace luadui::bench {

constexpr int kAccounts = 5000;

inline constexpr const char* kColumns[] = {"account_id",   "account_code", "account_name",   "alias",
                                           "account_mark", "product_id",   "product_name",   "institution_id",
                                           "user_id",      "broker_id",    "broker_name",    "yyb_id",
                                           "yyb_name",     "trade_type",   "user_key",       "issimulate",
                                           "bind_status",  "src_server",   "permission_code"};

// Names are Chinese.
inline std::string Cell(const char* column, int account) {
    static const std::string s_name = Gbk("招商证券股份有限公司");
    const std::string number = std::to_string(100'000 + account);
    return std::string_view(column).ends_with("_name") ? s_name + number : column + number;
}

inline std::string PortfoliosOf(int account) {
    const std::string number = std::to_string(account);
    return R"([{"portfolio_id":"p)" + number +
           R"(","portfolio_name":"unit","portfolio_code":"c","remarks":"",)" + R"("fund_token":"T)" + number +
           R"(","is_default":"1"}])";
}

inline CQueueRespData AnswerWith(int accounts) {
    CDataTable table;
    for (const char* const column : kColumns) table.AddColumn(column);
    const int portfolios = table.AddColumn("portfolios");
    for (int account = 0; account < accounts; ++account) {
        const int row = table.AppendRow();
        for (int col = 0; col < portfolios; ++col) table.SetItemText(row, col, Cell(kColumns[col], account));
        table.SetItemText(row, portfolios, PortfoliosOf(account));
    }
    CQueueRespData answer;
    answer.SetData("REQTYPE", kQueryAccounts.type);
    answer.SetData("UUID", "one");
    answer.SetData("Table", table);
    return answer;
}

}  // namespace luadui::bench
