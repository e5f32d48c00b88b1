// The last step of a response's way: from the record to the request object that it names.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "messaging/queue_data.h"

namespace luadui {

// Hands `response` to the request object with this handle: its PreHandleResponse first, its OnResponse if that does not
// take it. False, counted as "response_without_receiver", when there is none (any more). An exception out of the object
// is counted as "response_handler_threw". UI thread only.
bool DeliverResponse(int32_t handle, const CQueueRespData& response);

// From now on responses whose "To" is this name go to the request object with that handle. UI thread only.
void NameReceiver(const std::string& name, int32_t handle);

// Delivers `response` to the object whose handle, or name, stands in "To" and frees it. 1, or 0 when there is no such
// object (it has gone, "To" is no handle of a request object, `response` is null). UI thread only.
int RouteResponse(std::unique_ptr<const CQueueRespData> response);

}  // namespace luadui
