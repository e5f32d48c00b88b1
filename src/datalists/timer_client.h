// TimerClient: whom a data manager's hidden timer window works for.
#pragma once

namespace luadui {

class CUIData;

// Threads: called on the thread of the timer window. Each call may destroy the window and the client itself.
class TimerClient {
  public:
    // The tick for publishing: `request` is of the type "update_push_hq". The answer is not used.
    virtual bool GetData(CUIData& request, bool cacheOnly, bool flag) = 0;
    // Runs a command of the account manager without arguments. `command` is a literal.
    virtual void RunAccountCommand(const char* command) = 0;

  protected:
    ~TimerClient() = default;
};

}  // namespace luadui
