// The faults that the simulated broker shows on demand.
#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string_view>

namespace terminal {

enum class Fault {
    kNone,
    kDelay,    // the answer comes later
    kError,    // the answer is an error
    kFailure,  // the answer is an error that does not say of what kind of data
    kGarbage,  // the answer is not what was agreed
    kSilence,  // no answer comes
};

// The fault of that name ("delay", "error", "failure", "garbage", "silence", "none"); nothing for another.
std::optional<Fault> FaultByName(std::string_view name);

// Which fault the next answers have. Threads: one at a time.
class FaultPlan {
  public:
    struct Step {
        Fault fault = Fault::kNone;
        std::chrono::milliseconds delay{0};
    };
    // The next `count` answers have this fault, after those planned before. Fault::kNone forgets what is planned.
    void Add(Fault fault, int count, std::chrono::milliseconds delay);
    // The fault of the next answer.
    Step Take();

  private:
    struct Planned {
        Step step;
        int left;
    };
    std::deque<Planned> m_planned;
};

}  // namespace terminal
