// The sample terminal. See README.md beside this folder for what it shows and how to make a host of one's own from it.
#include <cstdio>
#include <exception>

#include "host/options.h"
#include "host/terminal.h"

int main(int argc, char** argv) {
    try {
        std::string error;
        const auto options = terminal::ParseOptions(argc, argv, error);
        if (!options) {
            std::fprintf(stderr, "terminal: %s\n%s", error.c_str(), terminal::kUsage);
            return 2;
        }
        if (options->help) {
            std::fputs(terminal::kUsage, stdout);
            return 0;
        }
        return terminal::Terminal(*options).Run();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "terminal: %s\n", exception.what());
        return 2;
    }
}
