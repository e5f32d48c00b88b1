// The command line of the terminal.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace terminal {

struct Options {
    std::filesystem::path home;   // the folder of the program; scripts/ and data/ lie in it
    std::filesystem::path data;   // settings, market database, logs; made when missing
    std::string securities = {};  // a CSV file that the market database is made of; empty: the list in data/
    int securitiesCount = 0;      // at least that many securities; what is missing is made up (0: see kUsage)
    std::string scenario = {};    // a script to run; empty: the prompt
    bool help = false;
};

constexpr char kUsage[] =
    "Usage: terminal [option...]\n"
    "  --data DIR             data folder: settings, market database (default: terminal-data)\n"
    "  --securities FILE      make the market database of this CSV (code,name,market,pinyin; UTF-8)\n"
    "  --securities-count N   add made-up securities, the same ones every time, until there are N\n"
    "                         (default: 3000, or none for a list of --securities)\n"
    "  --scenario FILE        run a scenario and end; without it there is a prompt\n"
    "  --help                 this text\n";

// Nothing when the command line is wrong; `error` then says why. `argv` as main() got it.
std::optional<Options> ParseOptions(int argc, char** argv, std::string& error);

}  // namespace terminal
