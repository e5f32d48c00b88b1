// The order in which accounts are shown, and the text in which it is remembered.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/data_table.h"

namespace luadui {

// "[" key "=" number ";" key "=" number ";" ... "]". Reading never fails: an entry without "=" (the last one counts, keys
// may have others) or whose number is none counts as "account_order_entry_refused", an end that was cut off as
// "account_order_text_cut"; both are left out, the rest counts. Texts shorter than three characters are empty.
using AccountNumbers = std::map<std::string, int, std::less<>>;  // by account key
AccountNumbers ParseOrderText(std::string_view text);
std::string OrderText(const AccountNumbers& numbers);

// Numbers of accounts by account key; smaller ones are shown first.
//
// Threads: the UI thread.
class AccountOrder {
  public:
    static constexpr std::string_view kFile = "\\qsclient\\users\\order.cfg";
    static constexpr std::string_view kKey = "PortfolioOrder";

    const AccountNumbers& Numbers() const { return m_numbers; }
    std::optional<int> Find(std::string_view key) const;

    // The user's wish. True when it changed something; it then waits to be saved (HasUnsaved).
    bool Set(std::string_view key, int number);
    // The server's word, which does not count as long as a wish of the user waits to be saved. True when it changed
    // something.
    bool TakeFromServer(std::string_view key, int number);
    // Gives the key the next number after the largest, if it has none. True when it had none.
    bool Append(std::string_view key);
    bool Remove(std::string_view key);

    // Whether the user changed something since the last SetSaved().
    bool HasUnsaved() const { return m_hasUnsaved; }
    void SetSaved() { m_hasUnsaved = false; }

    // One row per account, in the order of display: "Index" (from 0), "AccountKey", "AccountOrder".
    CDataTable Table() const;

    // Reads what the settings file remembers, once per process: later calls, of other objects too, answer nothing without
    // asking the host.
    static AccountNumbers ReadSavedOnce();
    // Writes all numbers into the settings file.
    void Write() const;

  private:
    bool _put(std::string_view key, int number);

    AccountNumbers m_numbers;
    bool m_hasUnsaved = false;
};

}  // namespace luadui
