// One form of an account data list: its rows with their money, kept current, whole and by group.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/text_map.h"
#include "base/ui_data.h"
#include "datalists/account_money.h"
#include "datalists/account_units.h"

namespace luadui {

// The money of one account costs the same however many accounts there are: the rows of all are changed in place
// where a row is an account, and views by group, like those by currency, catch up when they are asked for.
//
// News: records of the push kind, one for each of "update", "add" and "delete" that happened, with the rows under
//       their kind, the tokens in them as "fund_token" and "all_update_account", "operate", and "PB_MODE" ("true")
//       where rows are portfolios. Deleted rows are shown as they were. No change of a cell, no news.
class AccountSheet {
  public:
    struct Form {
        std::string kind, pushKind;
        bool byPortfolio = false;
        bool byCurrency = false;  // a row for each currency; else the account's first one
    };

    explicit AccountSheet(Form form) : m_form(std::move(form)) {}

    const Form& GetForm() const { return m_form; }
    // Replaces all accounts. What changed is appended to `news`.
    void SetAccounts(const FamilyAccounts& accounts, const AccountMoneyBook& book,
                     std::vector<CUIData>& news);
    // Shows the money of a token. False, and no news, when nothing shows it or nothing changed.
    bool SetMoney(std::string_view token, const AccountMoney& money, std::vector<CUIData>& news);

    // Appends an "update" of all rows, whose tokens are these.
    void TellAll(const CDataSet& tokens, std::vector<CUIData>& news);

    // The rows of all accounts, in the order in which the server sent them.
    const CDataTable& All();
    // Those of the accounts with these ids, which are what `group` holds now.
    const CDataTable& OfGroup(const std::string& group, const CDataSet& ids);
    // The groups changed.
    void DropGroups() { m_groups.clear(); }

  private:
    struct Unit : AccountUnit {
        std::vector<MoneyCells> lines;
        uint64_t changed = 0;   // when, by m_time
        uint64_t reshaped = 0;  // when it got lines, or lost some
    };
    struct View {
        CDataTable rows;
        std::vector<int> units;
        uint64_t time = 0;
    };
    class News;

    std::vector<MoneyCells> _lines(const AccountMoney* money) const;
    // What became of the lines of a row that was here before; `was` and `is` may be the same table.
    void _tellLines(const CDataTable& was, int wasRow, const std::vector<MoneyCells>& old,
                    const CDataTable& is, int isRow, const std::vector<MoneyCells>& lines, News& news) const;
    void _catchUp(View& view) const;
    void _rebuild(View& view) const;

    const Form m_form;
    CDataTable m_rows;  // of the units, without money
    std::vector<Unit> m_units;
    TextMap<std::vector<int>> m_byToken, m_byId;  // -> units
    uint64_t m_time = 0;
    View m_all;
    std::map<std::string, View> m_groups;  // those that were asked for
};

}  // namespace luadui
