// ListOwner: what a list asks of the data manager that owns it.
#pragma once

#include <string>

namespace luadui {

class CDataTable;
class CUIData;

// Threads: the UI thread. An owner outlives its lists.
class ListOwner {
  public:
    // Notifies the object with that CBaseObject handle of records of a kind from now on. An object that is
    // gone is skipped, so nobody has to take his registration back.
    virtual void RegisterNotify(unsigned int handle, std::string kind) = 0;
    // The whole list or shared record of a kind. False, and `out` unchanged, when there is none.
    virtual bool GetData(const std::string& kind, CUIData& out) = 0;
    // The table of an account in the list of a kind, at the same cost however many accounts the list has. False, and `out`
    // unchanged, when there is none. `handle` is not used.
    virtual bool GetData(unsigned int /*handle*/, std::string /*kind*/, std::string /*fundToken*/,
                         CDataTable& /*out*/) {
        return false;
    }
    // Delivers `record` to the window `handle` (-1: none) and, with `notifyOthers`, to all that registered
    // for its kind. The record stays the caller's. Receivers may close the page: the caller may be gone when
    // this returns.
    virtual void ResponseNotify(CUIData* record, int handle, bool notifyOthers) = 0;

  protected:
    ~ListOwner() = default;
};

}  // namespace luadui
