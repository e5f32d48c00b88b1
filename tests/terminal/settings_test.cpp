// Settings files: what a person or a crash may leave in them, and what a page may ask for.
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <thread>

#include "base/counters.h"
#include "base/text.h"
#include "settings/data_path.h"
#include "settings/settings_store.h"

namespace terminal {
namespace {

namespace fs = std::filesystem;
using luadui::Gbk;

TEST(SettingsText, ReadsWhatAPersonWrites) {
    struct Case {
        std::string_view text;
        std::string_view value;  // of "skin"; "-" when there is none
        size_t count;
    };
    using namespace std::string_view_literals;
    const Case cases[] = {
        {"skin=blue\n", "blue", 1},
        {"\xEF\xBB\xBFskin = blue \r\n", "blue", 1},
        {"; skin=red\n# skin=red\n[skin]\nskin=blue", "blue", 1},
        {"skin=red\nskin=blue\n", "blue", 1},
        {"skin=a=b", "a=b", 1},
        {"skin=50%\n", "50%", 1},
        {"skin=%41%0a%zz%4", "A\n%zz%4", 1},
        {"skin=", "", 1},
        {"skin", "-", 0},
        {"sk", "-", 0},
        {"=blue\n\n \n", "-", 0},
        {"\0\0\0\0"sv, "-", 0},
        {"other=1\nskin=bl", "bl", 2},
        {"\xB0\nskin=\xB0", "\xB0", 1},
    };
    for (const Case& test : cases) {
        const SettingsText settings = SettingsText::Parse(test.text);
        EXPECT_EQ(settings.Get("skin").value_or("-"), test.value) << test.text;
        EXPECT_EQ(settings.All().size(), test.count) << test.text;
    }
}

TEST(SettingsText, AnyBytesComeBackAndOtherLinesStay) {
    const std::string all = [] {
        std::string bytes;
        for (int first = 0; first < 256; ++first)
            for (int second : {0, 0x0A, 0x20, 0x25, 0x3D, 0x41, 0x5C, 0x7C, 0xFE})
                bytes += {static_cast<char>(first), static_cast<char>(second)};
        return bytes;
    }();
    const std::string before = "; mine\n[part]\n\nbroken line\n";
    SettingsText settings = SettingsText::Parse(before);
    std::vector<std::pair<std::string, std::string>> expected;
    for (int c = 1; c < 256; ++c) {
        const std::string key = {static_cast<char>(c), 'k', static_cast<char>(c)};
        expected.emplace_back(key, std::string(1, static_cast<char>(c)) + all + static_cast<char>(c));
        settings.Set(key, expected.back().second);
    }
    const std::string text = settings.ToText();
    EXPECT_EQ(text.substr(0, before.size()), before);
    EXPECT_EQ(SettingsText::Parse(text).All(), expected);
}

TEST(DataPath, StaysBelowTheFolder) {
    struct Case {
        std::string name;
        std::string path;  // below the folder, UTF-8; empty: refused
    };
    const Case cases[] = {
        {"\\qsclient\\users\\user.cfg", "qsclient/users/user.cfg"},
        {"/a//b\\c.cfg", "a/b/c.cfg"},
        {Gbk("\\用户\\淺.cfg"), "用户/淺.cfg"},  // the second byte of that character is a '\'
        {"..\\up.cfg", ""},
        {"\\a\\..\\..\\up.cfg", ""},
        {"a/./b", ""},
        {"C:\\windows\\win.ini", ""},
        {"\\\\server\\share\\..", ""},
        {"\\a\\", ""},
        {"", ""},
        {"\\", ""},
        {"nul", ""},
        {"a\\com1.cfg", ""},
        {"a.cfg.", ""},
        {"a \\b", ""},
        {"a\nb", ""},
        {std::string("user.cfg\0.txt", 13), ""},
        {"a\xB0", ""},
        {std::string(201, 'a'), ""},
        {std::string(2000, '/') + "a", ""},
    };
    for (const Case& test : cases) {
        const auto path = DataPath("data", test.name);
        EXPECT_EQ(path ? PathToUtf8(path->generic_u8string()) : "",
                  test.path.empty() ? "" : "data/" + test.path)
            << test.name;
    }
}

class SettingsStoreTest : public testing::Test {
  protected:
    ~SettingsStoreTest() override { fs::remove_all(m_root); }
    std::string Value(const std::string& key) {
        std::string value = "unread";
        EXPECT_TRUE(SettingsStore(m_folder).Read(kFile, key, value));
        return value;
    }
    const std::string kFile = "\\users\\user.cfg";
    // A folder that nobody else writes beside: what leaves the store's own would be seen.
    const fs::path m_root =
        fs::path(testing::TempDir()) / ("terminal_settings_" + std::to_string(std::random_device()()));
    const fs::path m_folder = m_root / "data";
    const fs::path m_path = m_folder / "users" / "user.cfg";
};

// The k-th step fails; so does every later one when `forGood`.
class FailingSteps : public FileSteps {
  public:
    FailingSteps(int step, bool forGood) : m_step(step), m_forGood(forGood) {}
    class Half : public File {
      public:
        Half(std::unique_ptr<File> file, FailingSteps& steps) : m_file(std::move(file)), m_steps(steps) {}
        bool Write(std::string_view text) override {
            if (!m_steps.Fails()) return m_file->Write(text);
            m_file->Write(text.substr(0, text.size() / 2));
            return false;
        }
        bool Flush() override { return !m_steps.Fails() && m_file->Flush(); }

      private:
        std::unique_ptr<File> m_file;
        FailingSteps& m_steps;
    };
    std::unique_ptr<File> Create(const fs::path& path) override {
        return Fails() ? nullptr : std::make_unique<Half>(FileSteps::Create(path), *this);
    }
    bool Rename(const fs::path& from, const fs::path& to) override {
        return !Fails() && FileSteps::Rename(from, to);
    }

  private:
    bool Fails() {
        ++m_done;
        return m_forGood ? m_done >= m_step : m_done == m_step;
    }
    int m_done = 0;
    const int m_step;
    const bool m_forGood;
};

TEST_F(SettingsStoreTest, AFailedWriteLeavesTheOldFile) {
    ASSERT_TRUE(SettingsStore(m_folder).Write(kFile, "skin", "blue"));
    for (int step = 1; step <= 4; ++step)
        for (bool forGood : {false, true}) {
            FailingSteps steps(step, forGood);
            SettingsStore store(m_folder, &steps);
            EXPECT_FALSE(store.Write(kFile, "skin", std::string(100000, 'x'))) << step;
            EXPECT_EQ(Value("skin"), "blue") << step;
            EXPECT_EQ(std::distance(fs::directory_iterator(m_path.parent_path()), {}), 1) << step;
            EXPECT_EQ(store.Write(kFile, "skin", "blue"), true);
        }
}

TEST_F(SettingsStoreTest, WhatCannotBeReadIsNotOverwritten) {
    fs::create_directories(m_path);  // a folder stands where the file should
    SettingsStore store(m_folder);
    std::string value = "kept";
    EXPECT_FALSE(store.Read(kFile, "skin", value));
    EXPECT_FALSE(store.Write(kFile, "skin", "blue"));
    EXPECT_FALSE(store.Erase(kFile, "skin"));
    EXPECT_EQ(value, "kept");
    EXPECT_TRUE(fs::is_directory(m_path));
}

TEST_F(SettingsStoreTest, ReadsWritesAndErases) {
    SettingsStore store(m_folder);
    std::vector<std::pair<std::string, std::string>> all;
    EXPECT_TRUE(store.ReadAll(kFile, all));
    EXPECT_TRUE(all.empty());
    EXPECT_TRUE(store.Erase(kFile, "none"));
    EXPECT_FALSE(fs::exists(m_path));
    EXPECT_TRUE(store.Write(kFile, Gbk("皮肤"), Gbk("蓝\\色")));
    EXPECT_TRUE(store.Write(kFile, "b", " 1 "));
    EXPECT_TRUE(store.ReadAll(kFile, all));
    EXPECT_EQ(all, (decltype(all){{Gbk("皮肤"), Gbk("蓝\\色")}, {"b", " 1 "}}));
    EXPECT_TRUE(store.Erase(kFile, "b"));
    EXPECT_EQ(Value("b"), "");
    EXPECT_FALSE(store.Write(kFile, "", "x"));
    EXPECT_FALSE(store.Write(kFile, "big", std::string(2 << 20, 'x')));
    EXPECT_FALSE(store.Write("..\\x", "a", "x"));
    EXPECT_FALSE(fs::exists(m_folder.parent_path() / "x"));
}

TEST_F(SettingsStoreTest, WritersOnManyThreadsLoseNothing) {
    SettingsStore store(m_folder);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) store.Write(kFile, std::to_string(t) + "." + std::to_string(i), "x");
        });
    for (std::thread& thread : threads) thread.join();
    std::vector<std::pair<std::string, std::string>> all;
    ASSERT_TRUE(store.ReadAll(kFile, all));
    EXPECT_EQ(all.size(), 100U);
}

}  // namespace
}  // namespace terminal
