// A report puts our figure beside a named baseline of the same run, so that it means the same on any machine.
//
// Every program of bench/ runs its Google Benchmarks; with --report it runs its reports instead, each of
// which prints lines
//     RATIO <name> <value> <limit> <ok|MISS>
// that scripts/bench.sh gathers. A report is registered at file scope:
//
//     LUADUI_REPORT(CopyRecord) {
//         const auto time = Compare([&] { Keep(CUIData(record)); }, [&] { Keep(Map(map)); });
//         AtLeast("record_copy_vs_map", time.Speedup(), 4);
//     }
//
// The measured bodies are called in a plain inlined loop; all figures are medians.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace luadui::bench {

// Seconds that one call took.
struct Timing {
    double ours;
    double baseline;

    double Speedup() const { return baseline / ours; }    // 4: we take a quarter of the baseline's time
    double CostRatio() const { return ours / baseline; }  // 1.2: we take a fifth longer
};

struct Rounds {
    int count = 9;
    double turnSeconds = 0.02;  // a turn makes as many calls as fill this time, at least one
};

// The median of figures, for those who measure in their own way. 0 for none.
double Median(std::vector<double> figures);

// Print one line; the program's exit code tells whether any was missed. Values and limits may be ratios or
// plain figures: then the unit belongs into the name ("start_ms").
void AtLeast(std::string_view name, double value, double limit);
void AtMost(std::string_view name, double value, double limit);

// Keeps the compiler from dropping the computation of `value`.
template <class T>
void Keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

// Seconds that `calls` calls of `body` take in all.
template <class Body>
double SecondsOf(Body& body, size_t calls) {
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < calls; ++i) body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// How many calls of `body` fill a turn. The search warms the caches, too.
template <class Body>
size_t CallsPerTurn(Body& body, double turnSeconds) {
    for (size_t calls = 1;; calls *= 2) {
        const double seconds = SecondsOf(body, calls);
        if (seconds >= turnSeconds) return calls;
        if (seconds > turnSeconds / 16) {
            return static_cast<size_t>(static_cast<double>(calls) * turnSeconds / seconds) + 1;
        }
    }
}

// Calls both in turns, so that frequency changes and other load hit both alike.
template <class Ours, class Baseline>
Timing Compare(Ours&& ours, Baseline&& baseline, Rounds rounds = {}) {
    const size_t ourCalls = CallsPerTurn(ours, rounds.turnSeconds);
    const size_t baselineCalls = CallsPerTurn(baseline, rounds.turnSeconds);
    std::vector<double> ourTimes, baselineTimes;
    for (int round = 0; round < rounds.count; ++round) {
        ourTimes.push_back(SecondsOf(ours, ourCalls) / static_cast<double>(ourCalls));
        baselineTimes.push_back(SecondsOf(baseline, baselineCalls) / static_cast<double>(baselineCalls));
    }
    return {Median(std::move(ourTimes)), Median(std::move(baselineTimes))};
}

// Seconds that one call of `body` takes.
template <class Body>
double Measure(Body&& body, Rounds rounds = {}) {
    const size_t calls = CallsPerTurn(body, rounds.turnSeconds);
    std::vector<double> times;
    for (int round = 0; round < rounds.count; ++round) {
        times.push_back(SecondsOf(body, calls) / static_cast<double>(calls));
    }
    return Median(std::move(times));
}

// Used by LUADUI_REPORT.
struct Registration {
    Registration(std::string_view name, void (*report)());
};

}  // namespace luadui::bench

#define LUADUI_REPORT(name)                                                              \
    static void Report##name();                                                          \
    static const ::luadui::bench::Registration registration##name(#name, &Report##name); \
    static void Report##name()
