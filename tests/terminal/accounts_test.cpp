// The account service of the sample broker, the encryption between it and the terminal, the passwords that the host
// remembers, and the way of news through the host.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "accounts/password_key.h"
#include "base/json_object.h"
#include "broker/account_desk.h"
#include "crypto/secrets.h"
#include "host/news.h"
#include "host/password_store.h"
#include "platform/win32.h"
#include "settings/safe_file.h"

namespace terminal {
namespace {

using luadui::CUIData;
using testing::ElementsAre;

std::string PrivateKey() {
    std::string pem;
    ReadFile(std::filesystem::path(TERMINAL_SOURCE) / "broker" / "account_password_key.pem", 1 << 16, pem);
    return pem;
}

#ifndef _WIN32

using Encryption = int (*)(const char*, const char*, char*, int*);

Encryption FindEncryption() {
    const HMODULE module = LoadLibraryW(L"oranquantsapi.dll");
    return module ? reinterpret_cast<Encryption>(
                        reinterpret_cast<void*>(GetProcAddress(module, "SetRASencrpytion")))
                  : nullptr;
}

TEST(EncryptionModuleTest, WhatItEncryptsTheBrokerReads) {
    const Encryption encrypt = FindEncryption();
    ASSERT_TRUE(encrypt);
    const char* const key = luadui::kAccountPasswordKey;
    for (const std::string& text :
         {std::string(), std::string("a"), std::string("\xC3\xDC\xC2\xEB|\\]"), std::string(117, 'x')}) {
        std::string first(400, '\0'), second(400, '\0');
        int size = 400, other = 400;
        ASSERT_EQ(encrypt(key, text.c_str(), first.data(), &size), 1);
        ASSERT_EQ(encrypt(key, text.c_str(), second.data(), &other), 1);
        EXPECT_EQ(size, 172);
        first.resize(172);
        EXPECT_NE(first, second.substr(0, 172)) << "the same password looks the same twice";
        EXPECT_EQ(DecryptPassword(PrivateKey(), first), text);
        first[20] = first[20] == 'A' ? 'B' : 'A';
        EXPECT_NE(DecryptPassword(PrivateKey(), first), text);
    }
    for (const char* bad : {"", "AAAA", "no base64", "====", "A=AA"})
        EXPECT_FALSE(DecryptPassword(PrivateKey(), bad)) << bad;
    EXPECT_FALSE(DecryptPassword("no key", std::string(172, 'A')));
}

TEST(EncryptionModuleTest, RefusesWhatItCannotEncrypt) {
    const Encryption encrypt = FindEncryption();
    ASSERT_TRUE(encrypt);
    const char* const key = luadui::kAccountPasswordKey;
    const std::string tooLong(118, 'x');
    struct {
        const char* key;
        const char* text;
        int room;
    } const kCases[] = {{nullptr, "a", 400},  {key, nullptr, 400},         {"", "a", 400},
                        {"no key", "a", 400}, {key, tooLong.c_str(), 400}, {key, "a", 171},
                        {key, "a", -1}};
    for (const auto& bad : kCases) {
        std::string cipher(400, '.');
        int size = bad.room;
        EXPECT_EQ(encrypt(bad.key, bad.text, cipher.data(), &size), 0);
        EXPECT_EQ(size, bad.room);
        EXPECT_EQ(cipher, std::string(400, '.'));
    }
    char cipher[400];
    EXPECT_EQ(encrypt(key, "a", cipher, nullptr), 0);
}

class PasswordStoreTest : public testing::Test {
  protected:
    PasswordStoreTest() { std::filesystem::remove_all(m_folder); }
    ~PasswordStoreTest() override { std::filesystem::remove_all(m_folder); }

    std::string Get(const std::string& user) {
        return PasswordStore(m_folder).Get(R"({"UserName":")" + user + "\"}");
    }
    void Save(const std::string& user, const std::string& accounts) {
        PasswordStore(m_folder).Save(R"({"useraccount":")" + user + R"(","accountList":)" + accounts + "}");
    }
    std::string File(const char* name) const {
        std::string text;
        ReadFile(m_folder / name, 1 << 20, text);
        return text;
    }
    void Replace(const char* name, const std::string& text) const {
        FileSteps steps;
        std::filesystem::permissions(m_folder / name, std::filesystem::perms::owner_all);
        ASSERT_TRUE(WriteFileSafely(m_folder / name, text, steps));
    }

    const std::filesystem::path m_folder = std::filesystem::path(testing::TempDir()) / "password_store";
};

constexpr char kTwo[] = R"({"1|8|1":{"Password":"clear-1","TxPassword":"","DynamicPassword":""},)"
                        R"("2|8|1":{"Password":"clear-2","TxPassword":"t","DynamicPassword":""}})";

TEST_F(PasswordStoreTest, RemembersByUserAndForgetsWithoutAPassword) {
    EXPECT_EQ(Get("u"), "{}");
    Save("u", kTwo);
    Save("v", R"({"1|8|1":{"Password":"clear-3"}})");
    EXPECT_EQ(Get("u"), kTwo);
    EXPECT_EQ(Get("v"), R"({"1|8|1":{"Password":"clear-3"}})");
    EXPECT_EQ(Get("w"), "{}");
    EXPECT_EQ(File("passwords.dat").find("clear"), std::string::npos);
    EXPECT_EQ(std::filesystem::status(m_folder / "passwords.key").permissions(),
              std::filesystem::perms::owner_read);
    Save("u", R"({"1|8|1":{"Password":"","TxPassword":"","DynamicPassword":""}})");
    EXPECT_EQ(Get("u"), "{}");
    EXPECT_EQ(Get("v"), R"({"1|8|1":{"Password":"clear-3"}})");
}

// What cannot be read is neither shown nor written over.
TEST_F(PasswordStoreTest, KeepsWhatItCannotRead) {
    Save("u", kTwo);
    for (const char* params : {"", "[]", "{\"useraccount\":"}) {
        PasswordStore(m_folder).Save(params);
        EXPECT_EQ(PasswordStore(m_folder).Get(params), "{}");
        EXPECT_EQ(Get("u"), kTwo);
    }
    const std::string whole = File("passwords.dat"), key = File("passwords.key");
    std::string changed = whole;
    changed[changed.size() / 2] ^= 1;
    for (const auto& [name, text] : {std::pair<const char*, std::string>{"passwords.dat", changed},
                                     {"passwords.dat", whole.substr(0, whole.size() - 1)},
                                     {"passwords.dat", ""},
                                     {"passwords.key", std::string(32, 'k')},
                                     {"passwords.key", "short"}}) {
        Replace(name, text);
        EXPECT_EQ(Get("u"), "{}");
        Save("u", R"({"1|8|1":{"Password":"clear-9"}})");
        EXPECT_EQ(File(name), text);
        Replace("passwords.dat", whole);
        Replace("passwords.key", key);
        EXPECT_EQ(Get("u"), kTwo);
    }
}

#endif

CUIData Asked(int type, const CUIData& params) {
    CUIData own = params, request;
    own.SetData("log_source", "MODULE_ACCOUNTMANAGER");
    request.SetData("REQTYPE", type);
    request.SetData("Params", own);
    return request;
}

constexpr int kTypes[] = {1032, 1033, 1035, 1036, 1037, 1038, 1039, 1040,
                          1041, 1047, 1048, 1049, 1127, 1804, 1807, 1808};

// A user, but nothing of what the request is about; or not even a user. Clear text is no password.
TEST(AccountDeskTest, RefusesWithoutHarm) {
    AccountDesk desk(PrivateKey());
    luadui::CDataTable row;
    for (const char* column : {"account_code", "broker_id", "trade_type", "fund_token", "password"})
        row.AddColumn(column);
    row.AppendRow();
    int col = 0;
    for (const char* cell : {"1001", "8", "1", "880001", "Plant3d-Li#7"}) row.SetItemText(0, col++, cell);
    CUIData nobody, user, clear;
    user.SetData("useraccount", "demo");
    clear = user;
    clear.SetData("Table", row);
    for (const int type : kTypes) {
        EXPECT_EQ(desk.Answer(Asked(type, nobody)).GetDataLong("DATATYPE"), -1) << type;
        const bool isOfAll = type == 1033 || type == 1035 || type == 1804 || type == 1807;
        EXPECT_EQ(desk.Answer(Asked(type, user)).GetDataLong("DATATYPE"), isOfAll ? 2001 : -1) << type;
    }
    EXPECT_EQ(desk.Answer(Asked(1808, clear)).GetDataLong("DATATYPE"), -1);
    EXPECT_EQ(desk.Find("demo")->accounts.size(), 2U);
    EXPECT_FALSE(desk.Find("demo")->accounts[0].isOnline);
}

TEST(AccountDeskTest, OnlyTheAccountManagersRequestsAreItsOwn) {
    CUIData params, keyed, foreign;
    keyed.SetData("AccountKey", "1001|8|1");
    for (const int type : kTypes) EXPECT_EQ(AccountDesk::IsAsked(Asked(type, params)), type != 1127) << type;
    EXPECT_TRUE(AccountDesk::IsAsked(Asked(1127, keyed)));
    EXPECT_FALSE(AccountDesk::IsAsked(Asked(1034, keyed)));
    foreign.SetData("REQTYPE", 1035);
    EXPECT_FALSE(AccountDesk::IsAsked(foreign));
}

TEST(NewsTest, ComeToTheClientAndToEachSubscriberOnce) {
    std::vector<std::string> told;
    News news([&](CUIData& push) {
        told.push_back(push.GetDataString("To") + " " + push.GetDataString("Topic") + " " +
                       push.GetDataString("RawData"));
    });
    const auto send = [&](int type, std::initializer_list<std::pair<const char*, const char*>> fields,
                          const char* from = "") {
        CUIData params, request;
        for (const auto& [name, value] : fields) params.SetData(name, value);
        request.SetData("REQTYPE", type);
        request.SetData("From", from);
        request.SetData("Params", params);
        return news.Take(request);
    };
    for (const char* page : {"7", "7", "9"}) EXPECT_TRUE(send(1601, {{"key", "K"}}, page));
    EXPECT_TRUE(send(1601, {{"key", "K"}, {"unsub", "true"}}, "9"));
    EXPECT_FALSE(send(1033, {}));
    EXPECT_TRUE(send(65537, {{"_SUBKEY", "K"}, {"_SEND_DATA", "{}"}}));
    EXPECT_TRUE(send(65537, {{"_SUBKEY", "L"}, {"_SEND_DATA", "[]"}}));
    EXPECT_THAT(told, ElementsAre("CLIENT_CACHE K {}", "7 K {}", "CLIENT_CACHE L []"));
}

}  // namespace
}  // namespace terminal
