// What the names mean by which pages ask for data: the request type of each kind, the key under which the
// server pushes it, which kinds all pages share, and what a page asks again when it was told of a change.
//
// Threads: any. Lookups are exact (case counts) and allocate nothing.
#pragma once

#include <span>
#include <string_view>

#include "base/ui_data.h"

namespace luadui {

struct KindType {
    std::string_view kind;
    int type;
};

struct KindPushKey {
    std::string_view kind;
    std::string_view key;
};

struct PushQuery {
    std::string_view kind;   // as received
    std::string_view query;  // the kind to ask again
};

// The tables themselves, in the order in which a manager lists them; every kind once. Constants of the
// module: texts stay valid as long as it is loaded.
std::span<const KindType> TypeCodes();
std::span<const KindPushKey> PushKeys();
std::span<const std::string_view> CommonKinds();
std::span<const PushQuery> PushQueries();

// The request type of a kind; 0 when it is not registered. Several kinds may have the same type.
int RequestTypeOfKind(std::string_view kind);

// The key of the pushes that update a kind; empty when there is none. A key that ends in '|' is what pushed
// topics begin with, the others are whole topics; several kinds may have the same key.
std::string_view PushKeyOfKind(std::string_view kind);

// True for the kinds that the common data manager holds for all pages.
bool IsCommonKind(std::string_view kind);

// True for responses that belong to the common data manager, by their "DATATYPE" and "Topic".
bool IsCommonResponse(int dataType, std::string_view topic);

// The kind that a sleeping page asks again when it missed a record of `kind`; empty when there is none.
std::string_view QueryKindOfPush(std::string_view kind);

// True for the kinds that never turn into a query, whatever QueryKindOfPush says.
bool IsNeverConverted(std::string_view kind);

// TypeCodes() and PushKeys() as records, kind -> number and kind -> key. Made at first use, never destroyed;
// a copy shares their storage.
const CUIData& TypeCodeRecord();
const CUIData& PushKeyRecord();

}  // namespace luadui
