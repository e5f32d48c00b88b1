#include "broker/fault_plan.h"

#include <utility>

namespace terminal {

std::optional<Fault> FaultByName(std::string_view name) {
    static constexpr std::pair<std::string_view, Fault> kNames[] = {
        {"none", Fault::kNone},       {"delay", Fault::kDelay},     {"error", Fault::kError},
        {"failure", Fault::kFailure}, {"garbage", Fault::kGarbage}, {"silence", Fault::kSilence}};
    for (const auto& [known, fault] : kNames)
        if (known == name) return fault;
    return std::nullopt;
}

void FaultPlan::Add(Fault fault, int count, std::chrono::milliseconds delay) {
    if (fault == Fault::kNone) {
        m_planned.clear();
    } else if (count > 0) {
        m_planned.push_back({{fault, delay}, count});
    }
}

FaultPlan::Step FaultPlan::Take() {
    if (m_planned.empty()) return {};
    const Step step = m_planned.front().step;
    if (--m_planned.front().left == 0) m_planned.pop_front();
    return step;
}

}  // namespace terminal
