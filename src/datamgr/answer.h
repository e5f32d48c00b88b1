// What a handler gets: an answer or a push, with everything about it looked up once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/data_list.h"
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
    CUIData params;           // of the request as it was sent
    int type = 0;             // request type
    std::string kind;         // the data kind that the page asked for
    int32_t handle = -1;      // the asking page's handle; -1: nobody in particular
    std::string fundToken;    // the account
    CDataSet tokens;          // all accounts of the ask that it belongs to; empty when it was for one
    bool isLastOfAsk = true;  // none of the other accounts' answers is still to come
    bool isSub = false;       // one of several answers
    Age age = 0;
    bool hasTable = false;
    CDataTable table;   // the rows of all parts
    CUIData fields;     // of an answer in parts: what all but the last one said in JSON
    CDataList rawData;  // of an answer in parts: the texts "RawData" of all that have one
    int code = 0;       // "retcode" of the answer, "ret_code" for the page; 0 is success
    std::string message;
};

// News from the server that nobody asked for.
struct Push {
    const CQueueRespData& response;
    std::string_view key;        // of the topic, with its "|"
    std::string_view fundToken;  // what follows the key in the topic
    Age age = 0;

    // What it says: see ReadPush.
    CUIData fields = CUIData();
    bool hasTable = false;
    CDataTable table = CDataTable();
    int code = 0;
    std::string message = std::string();
};

// What the server says became of the request (see trade/server_result.h): 0 is success.
void ReadResult(const CUIData& response, int& code, std::string& message);

// Adds the members of "JsonData" to the record under their own names, those that are arrays of objects as tables,
// whose rows are put behind those that the record has under that name. Others take the place of earlier ones.
void AddJsonFields(const CUIData& response, CUIData& record);

// The record that a page receives for an answer: its type is `kind`; the members of "JsonData", see
// AddJsonFields, of all parts; then the table under the name of the kind,
// "fund_token", "handle", "ret_code", "ret_message" and, for one who asked on waking,
// "sleep_refresh_request". Members with one of these names are left out.
CUIData MakeAnswerRecord(const Answer& answer, std::string_view kind);

// Takes a push apart. Its fields are those of "MapData", "JsonData" and "RawData", in this order, later
// ones in the place of earlier ones; "RawData" is the text of a JSON object, or of an array of objects, which
// are its rows when it has no "Table". "SrcServer" is a field, too. False, and the push useless, when it
// holds neither rows nor fields: counted as "push_unreadable".
bool ReadPush(Push& push);

// The record for a push that was read: as above without an asker. The account is that of the topic, else that
// of the response or, failing these, of the fields.
CUIData MakePushRecord(const Push& push, std::string_view kind);

}  // namespace luadui
