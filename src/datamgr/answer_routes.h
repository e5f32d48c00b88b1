// Which handler serves the answers of which request type.
#pragma once

#include <span>
#include <string_view>

#include "datamgr/answer.h"

namespace luadui {

class CUIDataManager;

// Merges an answer into its list, if it has one, and delivers it to the page that asked.
using AnswerHandler = void (*)(CUIDataManager& manager, Answer& answer);

struct AnswerRoute {
    int type;
    std::string_view kind;  // of the record, unless the asker named another kind of the same type
    AnswerHandler first;
    AnswerHandler second = nullptr;  // runs after the first
};

// In ascending order of type, each type once.
std::span<const AnswerRoute> AnswerRoutes();
// The route of a request type; null when its answers are of no use here.
const AnswerRoute* FindAnswerRoute(int type);

}  // namespace luadui
