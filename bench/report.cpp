#include "bench/report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>

namespace luadui::bench {
namespace {

struct Report {
    std::string_view name;
    void (*run)();
};

std::vector<Report>& Reports() {
    static std::vector<Report> reports;
    return reports;
}

int g_missed = 0;

void Print(std::string_view name, double value, const char* relation, double limit, bool ok) {
    std::printf("RATIO %.*s %.4g %s%.4g %s\n", static_cast<int>(name.size()), name.data(), value, relation,
                limit, ok ? "ok" : "MISS");
    std::fflush(stdout);
    g_missed += ok ? 0 : 1;
}

int RunReports(std::string_view filter) {
    for (const auto& report : Reports()) {
        if (report.name.find(filter) != std::string_view::npos) report.run();
    }
    return g_missed == 0 ? 0 : 1;
}

}  // namespace

double Median(std::vector<double> figures) {
    if (figures.empty()) return 0;
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    return *middle;
}

void AtLeast(std::string_view name, double value, double limit) {
    Print(name, value, ">=", limit, value >= limit);
}

void AtMost(std::string_view name, double value, double limit) {
    Print(name, value, "<=", limit, value <= limit);
}

Registration::Registration(std::string_view name, void (*report)()) { Reports().push_back({name, report}); }

}  // namespace luadui::bench

// --report runs all reports, --report=TEXT those whose name contains TEXT.
int main(int argc, char** argv) {
    constexpr std::string_view kReport = "--report";
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == kReport) return luadui::bench::RunReports("");
        if (option.starts_with("--report="))
            return luadui::bench::RunReports(option.substr(kReport.size() + 1));
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
