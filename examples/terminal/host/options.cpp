#include "host/options.h"

#include <charconv>
#include <cstring>

#include "platform/win32.h"

namespace terminal {
namespace {

constexpr int kMaxSecurities = 100'000;

std::filesystem::path ProgramFolder() {
    wchar_t path[4096] = {};
    GetModuleFileNameW(nullptr, path, 4096);
    return std::filesystem::path(path).parent_path();
}

bool ParseCount(const char* text, int& count) {
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, count);
    return error == std::errc() && stop == end && count > 0 && count <= kMaxSecurities;
}

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv, std::string& error) {
    Options options;
    options.home = ProgramFolder();
    options.data = "terminal-data";
    const auto fail = [&](const std::string& text) {
        error = text;
        return std::nullopt;
    };
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--help") {
            options.help = true;
            continue;
        }
        const bool isKnown = name == "--data" || name == "--securities" || name == "--securities-count" ||
                             name == "--scenario";
        if (!isKnown) return fail("unknown option " + name);
        if (++i == argc) return fail(name + " needs a value");
        if (name == "--data") options.data = argv[i];
        if (name == "--securities") options.securities = argv[i];
        if (name == "--scenario") options.scenario = argv[i];
        if (name == "--securities-count" && !ParseCount(argv[i], options.securitiesCount))
            return fail("--securities-count takes a number from 1 to " + std::to_string(kMaxSecurities));
    }
    options.data = std::filesystem::absolute(options.data);
    return options;
}

}  // namespace terminal
