// CAccount: one securities account that the user has registered.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>

#include "accounts/account_fields.h"
#include "accounts/account_requester.h"
#include "accounts/portfolio.h"
#include "accounts/secret.h"

namespace luadui {

// Holds the account's fields, passwords and portfolios, sends the requests that concern this account alone, and follows
// their answers. What becomes of a request is an event to the sink that the account was made with; success events carry
// ToJson(), and all carry the account's key.
//
// Operations take a record `values`: what the asker brings, by parameter name ("useraccount", "account_mark", "password",
//            ...). What it does not bring the account fills in from its own fields. "UUID", when given, becomes the
//            request's identifier, under which the event comes back; otherwise a fresh one. They answer true when an event
//            tells the outcome: later, or already inside the call when the request could not be sent. False when the
//            account's state refuses the request: that is logged, nothing is sent and no event follows.
// Threads:   the UI thread.
// Lifetime:  host callbacks and the sink may destroy the account inside an operation or OnResponse.
class CAccount final : public CAccountRequester {
  public:
    explicit CAccount(ResultEventSink& sink);

    // Fields, passwords too. Texts are valid until the field changes.
    std::string_view Get(AccountField field) const;
    void Set(AccountField field, std::string_view text);
    // A field for which AccountFieldInfo says isSecret.
    Secret& Password(AccountField field);
    const Secret& Password(AccountField field) const;
    void WipePasswords();

    const Portfolios& GetPortfolios() const { return m_portfolios; }
    // These keep the field kFundToken at the token of the default portfolio, else of the first, as long as there is one.
    void SetPortfolios(Portfolios portfolios);
    void PutPortfolio(Portfolio portfolio);
    std::string FundToken() const { return std::string(Get(AccountField::kFundToken)); }

    bool IsBound() const { return Get(AccountField::kBindStatus) == "1"; }
    bool CanUse() const { return Get(AccountField::kCanUse) == "1"; }
    // Usable, with the message "正常".
    void SetUsable();
    // Not usable, with that message (code page 936).
    void SetUnusable(std::string_view message);
    // Sets the nickname to account name + "_" + broker name.
    void RebuildNickname();
    // Sets the account key from account code, broker id and trade type, and answers it.
    std::string RebuildKey();

    // Follows a row about a login: "account_name", "permission_code" (as far as the table has them), "error_code" ("0":
    // usable) and "msg".
    void ApplyLoginRow(const CDataTable& table, int row);

    // All serialised fields in order, "accountkey" first, "portfolios" last. With the passwords.
    CJsonObject ToJson() const;

    bool Bind(const CUIData& values);
    bool Unbind(const CUIData& values);
    bool Edit(const CUIData& values);
    // `values` brings the passwords in clear text; only cipher text leaves. Without a cipher the request fails. When the
    // server accepts them, they become the account's passwords.
    bool EditPassword(const CUIData& values, const PasswordCipher& cipher);
    // Logs out; the passwords are wiped once the server has confirmed it.
    bool Logout(const CUIData& values);

  private:
    struct NewPasswords {
        Secret password, txPassword;
    };

    void _onAnswer(const Answer& answer) override;
    bool _refuse(const AccountOperation& operation);
    bool _request(const AccountOperation& operation, const CUIData& values);
    CUIData _complete(const AccountOperation& operation, const CUIData& values) const;
    void _applyEdit(const Answer& answer);
    bool _applyLogin(const Answer& answer);
    void _accept(NewPasswords passwords);
    std::string _key() const { return std::string(Get(AccountField::kAccountKey)); }
    std::string _subject() const;
    void _log(std::string_view end) const;

    std::array<std::string, kAccountFields> m_texts;  // those of secret fields stay empty
    std::array<Secret, kAccountFields> m_secrets;
    Portfolios m_portfolios;
    std::map<std::string, NewPasswords, std::less<>> m_newPasswords;  // by UUID, while an answer is due
};

// The key of an account: account code, broker id and trade type joined by "|".
std::string MakeAccountKey(std::string_view accountCode, std::string_view brokerId,
                           std::string_view tradeType);

}  // namespace luadui
