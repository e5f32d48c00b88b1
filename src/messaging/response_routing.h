// The last step of a response's way: from the record to the request object that it names.
#pragma once

#include <cstdint>
#include <memory>

#include "messaging/queue_data.h"

namespace luadui {

// Hands `response` to the request object with this handle: its PreHandleResponse first, its OnResponse if that does not
// take it. False, counted as "response_without_receiver", when there is none (any more). An exception out of the object
// is counted as "response_handler_threw". UI thread only.
bool DeliverResponse(int32_t handle, const CQueueRespData& response);

// Delivers `response` to the object whose handle stands in "To" and frees it. 1, or 0 when there is no such object (the
// object has gone, "To" is no handle of a request object, `response` is null). UI thread only.
int RouteResponse(std::unique_ptr<const CQueueRespData> response);

}  // namespace luadui
