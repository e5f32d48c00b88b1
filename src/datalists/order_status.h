// The statuses of orders, as the column "OrderStatus" has them.
#pragma once

#include <string_view>

namespace luadui {

enum class OrderState {
    kUnknown,  // a name that is not in the table
    kOpen,     // the order may still be dealt
    kFinal,    // nothing happens to it any more
};

struct OrderStatus {
    std::string_view name;  // UTF-8; tables hold Gbk(name)
    OrderState state;
};

inline constexpr OrderStatus kOrderStatuses[] = {
    {"未成交", OrderState::kOpen},    {"部分成交", OrderState::kOpen},  {"全部成交", OrderState::kFinal},
    {"废单", OrderState::kFinal},     {"已撤单", OrderState::kFinal},   {"全部撤单", OrderState::kFinal},
    {"部分撤单", OrderState::kFinal}, {"部成部撤", OrderState::kFinal},
};

// The state behind a status of code page 936. Threads: any.
OrderState OrderStateOf(std::string_view status);

}  // namespace luadui
