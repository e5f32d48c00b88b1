// The way of a security from the CSV file through the market database and the Lua interface into the
// library's code list.
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>

#include "base/text.h"
#include "codedata/code_list.h"
#include "codedata/code_list_query.h"
#include "host/lua_interface.h"
#include "platform/code_page.h"
#include "settings/data_path.h"

namespace terminal {
namespace {

using luadui::CodeList;

// Every character of the code page in some name, and what the forms of the reply could stumble over.
std::vector<std::string> HardNames() {
    std::vector<std::string> names = {
        "a\"b",       "\"",    "]]",    "a]",  "a\"]]b", "a\"]", "[[a]]", "[[", "a  b", "a&#032;b",  "&#",
        "&&#034;\"]", "{a},;", "\\\"n", "a\\", "'; --",  "%s%d", "nil",   "-",  "]\"]", "*ST \"A\"",
    };
    std::string name;
    for (int pair = 0x8140; pair <= 0xFEFE; ++pair) {
        const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
        if (!luadui::code_page::IsTrailByte(bytes[1])) continue;
        name.append(bytes, 2);
        if (name.size() == 16) names.push_back(std::exchange(name, {}));
    }
    names.push_back(name);
    return names;
}

std::string CsvField(const std::string& text) { return '"' + luadui::ReplaceText(text, "\"", "\"\"") + '"'; }

class CodeListTest : public testing::Test {
  protected:
    CodeListTest() { std::filesystem::create_directories(m_options.data); }
    ~CodeListTest() override { std::filesystem::remove_all(m_options.data); }

    std::string Path(const char* name) const { return PathToUtf8(m_options.data / name); }
    void Write(const char* name, const std::string& text) const {
        std::ofstream(m_options.data / name, std::ios::binary) << text;
    }
    void MakeDatabase(const std::string& csv) const {
        Write("list.csv", luadui::GbkToUtf8(csv));
        Write("make.lua",
              "local database = require 'market_database'\n"
              "return assert(database.make([[" +
                  Path("market.db") + "]], assert(database.read([[" + Path("list.csv") + "]], 0))))");
        LuaState state(m_options);
        std::string error;
        ASSERT_TRUE(state.RunFile(Path("make.lua"), error)) << error;
    }
    std::string Ask() {
        return LuaInterface(m_options).Call(std::string(luadui::kCodeListFunction),
                                            std::string(luadui::kCodeListQuery));
    }

    Options m_options{.home = TERMINAL_SOURCE,
                      .data = std::filesystem::path(testing::TempDir()) / "terminal_code_list"};
};

TEST_F(CodeListTest, NamesComeThroughTheDatabaseAndTheReply) {
    const std::vector<std::string> names = HardNames();
    std::string csv = "code,name,market,pinyin\n";
    for (size_t i = 0; i < names.size(); ++i)
        csv += std::to_string(600000 + i) + ',' + CsvField(names[i]) + ",17," + CsvField("A B") + '\n';
    csv += "IF2609,x,129,X\n00700,y,76,Y\n";  // a market that is not asked for, and one that is
    MakeDatabase(csv);
    const CodeList list = CodeList::Parse(Ask());
    ASSERT_EQ(list.size(), names.size() + 1);
    size_t connect = 0;
    for (const auto& [code, name, market, phonetic] : list) {
        if (code == "00700" && market == "76" && ++connect) continue;
        EXPECT_EQ(name, names.at(std::stoul(std::string(code)) - 600000));
        EXPECT_EQ(market, "17");
        EXPECT_EQ(phonetic, "A B");
    }
    EXPECT_EQ(connect, 1U);
}

TEST_F(CodeListTest, WithoutDatabaseTheAnswerIsEmpty) { EXPECT_EQ(Ask(), ""); }

}  // namespace
}  // namespace terminal
