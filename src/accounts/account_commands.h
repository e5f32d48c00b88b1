// AccountCommands: what the floors above ask of the account manager.
#pragma once

#include <string>

namespace luadui {

class CUIData;

// Threads: the UI thread.
class AccountCommands {
  public:
    // Runs a command of the account manager, such as "modifyAccountOrder". `arguments` is borrowed for the
    // call: the command's own fields (texts, also JSON) by name and, as far as there are any,
    //
    //   "module"   who asks, for the log
    //   "handle"   the window that gets the answer
    //   "From"     the sender of the request, "UUID" the request that the answer belongs to
    //   "Table"    rows
    //
    // False when there is no such command or its arguments are not usable; nothing happened then.
    virtual bool Execute(const std::string& command, const CUIData& arguments) = 0;

  protected:
    ~AccountCommands() = default;
};

}  // namespace luadui
