// A report puts our figure beside a named baseline of the same run, so that it means the same on any machine.
//
// Every program of bench/ runs its Google Benchmarks; with --report it runs its reports instead, each of
// which prints lines
//     RATIO <name> <value> <limit> <ok|MISS>
// that scripts/bench.sh gathers. A report is registered at file scope:
//
//     LUADUI_REPORT(CopyRecord) {
//         const auto time = Compare([&] { Keep(record); }, [&] { Keep(map); });
//         AtLeast("record_copy_vs_map", time.Speedup(), 4);
//     }
#pragma once

#include <functional>
#include <string_view>
#include <vector>

namespace luadui::bench {

// Seconds that one call took: medians over all rounds.
struct Timing {
    double ours;
    double baseline;

    double Speedup() const { return baseline / ours; }    // 4: we take a quarter of the baseline's time
    double CostRatio() const { return ours / baseline; }  // 1.2: we take a fifth longer
};

// Calls both alternately for `rounds` rounds; each turn lasts about `turnSeconds` and at least one call, so
// that frequency changes and other load hit both alike.
Timing Compare(const std::function<void()>& ours, const std::function<void()>& baseline, int rounds = 9,
               double turnSeconds = 0.02);

// Seconds that one call of `body` takes: median over the rounds.
double Measure(const std::function<void()>& body, int rounds = 9, double turnSeconds = 0.02);

// The median of figures that the caller measured himself. 0 for none.
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

// Used by LUADUI_REPORT.
struct Registration {
    Registration(std::string_view name, void (*report)());
};

}  // namespace luadui::bench

#define LUADUI_REPORT(name)                                                              \
    static void Report##name();                                                          \
    static const ::luadui::bench::Registration registration##name(#name, &Report##name); \
    static void Report##name()
