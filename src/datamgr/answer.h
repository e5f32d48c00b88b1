// What a handler gets: an answer or a push, with everything about it looked up once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/data_set.h"
#include "base/data_table.h"
#include "base/ui_data.h"
#include "datamgr/request_ledger.h"
#include "messaging/queue_data.h"

namespace luadui {

// The answer to a request.
struct Answer {
    explicit Answer(const CQueueRespData& from) : response(from) {}

    const CQueueRespData& response;
    CUIData params;         // of the request as it was sent
    int type = 0;           // request type
    std::string kind;       // the data kind that the page asked for
    int32_t handle = -1;    // the asking page's handle; -1: nobody in particular
    std::string fundToken;  // the account
    CDataSet tokens;        // all accounts of the ask that it belongs to; empty when it was for one
    bool isSub = false;     // one of several answers
    Age age = 0;
    bool hasTable = false;
    CDataTable table;  // the rows of all parts
    int code = 0;      // "retcode" of the answer, "ret_code" for the page; 0 is success
    std::string message;
};

// News from the server that nobody asked for.
struct Push {
    const CQueueRespData& response;
    std::string_view key;        // of the topic, with its "|"
    std::string_view fundToken;  // what follows the key in the topic
    Age age = 0;
};

// The record that a page receives for an answer: its type is `kind`; the members of "JsonData" under their own names, then
// the table under the name of the kind, "fund_token", "handle", "ret_code", "ret_message" and, for one who asked on
// waking, "sleep_refresh_request". The latter win over members of the same name.
CUIData MakeAnswerRecord(const Answer& answer, std::string_view kind);

// The record for a push: as above without an asker; "RawData", when it is a JSON object, is read like "JsonData", and each of its
// arrays of objects becomes a table. "InstanceID", "TaskID", "SrcServer" and "session_flag" are there when the push has
// them. False, counted as "push_unreadable", when it holds neither a table nor any field.
bool MakePushRecord(const Push& push, std::string_view kind, CUIData& record);

}  // namespace luadui
