#include "datalists/order_status.h"

#include <array>
#include <string>

#include "base/text.h"

namespace luadui {
namespace {

struct StoredStatus {
    std::string name;  // code page 936
    OrderState state;
};
using StoredStatuses = std::array<StoredStatus, std::size(kOrderStatuses)>;

const StoredStatuses& Statuses() {
    static const auto* const statuses = [] {
        auto* const stored = new StoredStatuses;
        for (size_t i = 0; i < stored->size(); ++i)
            (*stored)[i] = {Gbk(kOrderStatuses[i].name), kOrderStatuses[i].state};
        return stored;
    }();
    return *statuses;
}

}  // namespace

OrderState OrderStateOf(std::string_view status) {
    for (const StoredStatus& row : Statuses()) {
        if (row.name == status) return row.state;
    }
    return OrderState::kUnknown;
}

}  // namespace luadui
