// The log of requests and their answers: one line per answer, in "request_record-<date>.log" of the client's
// log folder. It grows and is cut as base/text_log.h describes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace luadui {

struct RequestLogLine {
    int type = 0;              // of the request
    std::string_view kind;     // data kind
    std::string_view account;  // fund token; written masked
    int64_t durationMs = -1;   // from sending to the answer; negative: not known, written as "-"
    int code = 0;              // result
    std::string_view message;  // of the server; only its length is written
};

// The line as the log has it: "type=1201 kind=position account=10***89 ms=35 code=0 message=12". Nothing in
// it tells a secret: of an account two characters remain at each end (none when it has fewer than 8 or others
// than ASCII), and a server's message may repeat what was sent. Missing texts are "-"; blanks and control
// characters of the kind become '_', so that no text can pass for a field.
std::string RequestLogText(const RequestLogLine& line);

// Writes the line, with the time. False when it was dropped: counted as "request_log_without_folder" while
// the client's folder is not known (datamgr/client_log.h), else as CTextLog counts.
//
// Threads: any. Nothing throws.
bool WriteRequestLog(const RequestLogLine& line) noexcept;

}  // namespace luadui
