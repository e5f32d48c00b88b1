// The last step of a response's way: from the record to the request object that it names.
#pragma once

#include <memory>

#include "messaging/queue_data.h"

namespace luadui {

// Hands `response` to the request object whose handle stands in "To": its PreHandleResponse first, its
// OnResponse if that does not take it. Returns 1 when there is such an object; 0, counted as
// "response_without_receiver", when not (the object has gone, or "To" is no handle of a request object). The
// record is freed in every case. An exception out of the object is counted as "response_handler_threw". UI
// thread only.
int RouteResponse(std::unique_ptr<const CQueueRespData> response);

}  // namespace luadui
