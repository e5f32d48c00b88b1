// Requests that are not sent to the server but served in the terminal: work on accounts, and events of the
// user interface.
#pragma once

#include "messaging/queue_data.h"

namespace luadui {

class AccountCommands;

// True for the request types that the account manager serves.
bool IsAccountRequest(int type);

// Hands such a request to the account manager as one of its commands. False when it refused; without an
// account manager (null) counted as "account_manager_missing". UI thread.
bool DisPatchReq2AccountManager(AccountCommands* commands, const CQueueReqItem& request);

// The event that a page sends to the others: a push on the topic "subkey_dui_uievent" with "MapData" and
// "Table" of the request. Its own "Topic" is the name of the event, "Topic" in "MapData".
CQueueRespData MakeUIEvent(const CQueueReqItem& request);

}  // namespace luadui
