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
    //   "REQTYPE"  the type of the request that the answer belongs to, "UUID" its identifier
    //   "From"     its sender, "handle" the window that gets the answer
    //   "Table"    rows
    //
    // Whoever asks gets one answer, perhaps already inside the call: arguments that are not usable are answered with a
    // failure. False when there is no such command; nothing happened then.
    virtual bool Execute(const std::string& command, const CUIData& arguments) = 0;

    // Somebody signed in. Does nothing here.
    virtual void OnUser() {}

  protected:
    ~AccountCommands() = default;
};

}  // namespace luadui
