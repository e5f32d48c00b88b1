// The order in which accounts are shown, and the text in which it is remembered.
#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_table.h"

namespace luadui {

// "[" key "=" number ";" key "=" number ";" ... "]". Reading never fails: an entry without "=" (the last one counts, keys
// may have others) or whose number is none counts as "account_order_entry_refused", an end that was cut off as
// "account_order_text_cut"; both are left out, the rest counts. Texts shorter than three characters are empty.
using AccountNumbers = std::map<std::string, int, std::less<>>;  // by account key
AccountNumbers ParseOrderText(std::string_view text);
// The decimal integer that the whole text is.
std::optional<int> ParseOrderNumber(std::string_view text);
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
    // What the service or the settings file says; it does not count as long as a wish of the user waits to be saved. True
    // when it changed something.
    bool Learn(std::string_view key, int number);
    // Gives those keys that have none the numbers after the largest, in the order of `keys`; answers how many.
    size_t Append(const std::vector<std::string_view>& keys);
    bool Remove(std::string_view key);

    // Whether the user changed something since the last SetSaved().
    bool HasUnsaved() const { return m_hasUnsaved; }
    void SetSaved(bool isSaved = true) { m_hasUnsaved = !isSaved; }

    // In the order of display; equal numbers by key. Valid until the next change.
    std::vector<std::string_view> Keys() const;
    // One row per account, in the order of display: "Index" (from 0), "AccountKey", "AccountOrder".
    CDataTable Table() const;

    // Reads what the settings file remembers, once per process: later calls, of other objects too, answer nothing without
    // asking the host.
    static AccountNumbers ReadSavedOnce();
    // Lets the next call read again. For tests.
    static void ReadAgain() { s_wasRead = false; }
    // Writes all numbers into the settings file.
    void Write() const;

  private:
    bool _put(std::string_view key, int number);

    static std::atomic<bool> s_wasRead;
    AccountNumbers m_numbers;
    bool m_hasUnsaved = false;
};

}  // namespace luadui
