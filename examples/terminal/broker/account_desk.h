// The broker's account service: whose accounts they are, how they are grouped, and who is logged in.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"
#include "base/ui_data.h"

namespace terminal {

struct DeskPortfolio {
    std::string id, name, code, remarks;
    std::string isDefault;  // "1" or "0"
    std::string fundToken;
};

// Texts are code page 936. An account is its code, broker and trade type: a credit account may have the code of the
// ordinary one of the same holder.
struct DeskAccount {
    std::string recordId, code, broker, tradeType, name;
    std::string password, txPassword;  // what the holder told the broker
    std::string alias = {}, mark = {};
    std::string order = {};  // as the user wishes it; empty: none
    std::vector<DeskPortfolio> portfolios = {};
    bool isBound = false;
    bool isOnline = false;
};

struct DeskGroup {
    std::string id, name, type, isSimulated;
    std::vector<std::string> members;  // account codes
};

// A user of the terminal: the accounts that he has there, and those that he could add.
struct DeskUser {
    std::string id;
    std::vector<DeskAccount> accounts, others;
    std::vector<DeskGroup> groups;
};

// Opens with two users: "demo" has two accounts and may add a third, "desk" trades for others and has two credit accounts,
// one without the ordinary account of its holder.
//
// Threads: one at a time.
class AccountDesk {
  public:
    // `privateKey`: PEM text of the key that passwords are encrypted for; without it nobody can log in.
    explicit AccountDesk(std::string privateKey);

    // Whether a request is about accounts: the terminal's account manager sent it.
    static bool IsAsked(const luadui::CUIData& request);
    // The answer to such a request; an error ("DATATYPE" -1) when it is refused or unknown.
    luadui::CUIData Answer(const luadui::CUIData& request);

    // The holder got another password, at a branch for instance. False when there is no such account ("1001|8|1").
    bool ChangePassword(std::string_view user, std::string_view key, std::string password);

    // Null when there is no such user.
    const DeskUser* Find(std::string_view user) const;

  private:
    struct Call {
        DeskUser& user;
        const luadui::CUIData& params;
        const luadui::CDataTable& rows;  // of the request; may be empty
        luadui::CUIData& answer;
        std::string& error;  // UTF-8, when the service answers false
    };
    struct Service;
    static const Service kServices[];

    bool _query(Call& call);
    bool _bind(Call& call);
    bool _unbind(Call& call);
    bool _edit(Call& call);
    bool _editPassword(Call& call);
    bool _logout(Call& call);
    bool _queryGroups(Call& call);
    bool _addGroup(Call& call);
    bool _deleteGroup(Call& call);
    bool _addMember(Call& call);
    bool _removeMember(Call& call);
    bool _addAccount(Call& call);
    bool _deleteAccount(Call& call);
    bool _addPortfolio(Call& call);
    bool _upload(Call& call);
    bool _saveOrder(Call& call);

    DeskUser* _userOf(const luadui::CUIData& params, const luadui::CDataTable& rows);
    // Why the row of a login is refused (UTF-8); empty when the passwords in it are those of the account.
    std::string _refusalOf(const DeskUser& user, const DeskAccount& account, const luadui::CDataTable& rows,
                           int row) const;
    bool _matches(const std::string& password, std::string_view cipher) const;

    const std::string m_privateKey;
    std::map<std::string, DeskUser, std::less<>> m_users;
};

}  // namespace terminal
