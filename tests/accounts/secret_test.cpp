#include "accounts/secret.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "accounts/account_request.h"

namespace luadui {
namespace {

constexpr std::string_view kCanary = "planted-secret-0123456789";
int g_wiped = 0, g_left = 0;

TEST(Secret, LeavesNothingBehind) {
    struct Case {
        const char* name;
        std::function<std::string(Secret)> use;  // answers what a secret holds afterwards
        std::string_view left;
    };
    const auto textOf = [](const Secret& secret) { return std::string(secret.View()); };
    const Case cases[] = {
        {"destroyed", textOf, kCanary},
        {"wiped", [&](Secret secret) { return secret.Wipe(), textOf(secret); }, ""},
        {"set", [&](Secret secret) { return secret.Set("x"), textOf(secret); }, "x"},
        {"set to a part", [&](Secret secret) { return secret.Set(secret.View().substr(3)), textOf(secret); },
         kCanary.substr(3)},
        {"assigned", [&](Secret secret) { return textOf(secret = Secret(Secret("x") = secret)); }, kCanary},
        {"assigned to itself", [&](Secret secret) { return textOf(secret = *&secret); }, kCanary},
        {"moved", [&](Secret secret) { return textOf(Secret(std::move(secret))); }, kCanary},
        {"in a growing vector",
         [&](Secret secret) {
             std::vector<Secret> all;
             for (int i = 0; i < 9; ++i) all.push_back(secret);
             return textOf(all[0]);
         },
         kCanary}};
    Secret::SetWitness([](std::string_view memory) {
        ++(memory.find_first_not_of('\0') == std::string_view::npos ? g_wiped : g_left);
    });
    for (const auto& [name, use, left] : cases) {
        g_wiped = g_left = 0;
        EXPECT_EQ(use(Secret(kCanary)), left) << name;
        EXPECT_GT(g_wiped, 0) << name;
        EXPECT_EQ(g_left, 0) << name;
    }
    Secret::SetWitness(nullptr);
}

template <class Values>
void ExpectWiped(Values values, std::string_view text) {
    {
        const WipedAtEnd wiped(values);
        EXPECT_EQ(text, kCanary);
    }
    EXPECT_EQ(text, std::string(kCanary.size(), '*')) << "where it lay";
}

TEST(Secret, RecordsLoseTheirPasswordsInPlace) {
    CUIData record;
    record.SetData("account_code", "1");
    record.SetData("txpassword", kCanary);
    const CUIData shared = record;
    const std::string_view text = record.GetDataText("txpassword");
    WipePasswords(record);
    EXPECT_EQ(text, kCanary) << "somebody else has it";
    EXPECT_EQ(record.GetDataText("account_code"), "1");
    CUIData own;
    own.SetData("password", kCanary);
    CJsonObject json;
    json.Set("Password", kCanary);
    const std::string_view inOwn = own.GetDataText("password"), inJson = json.GetText("Password");
    ExpectWiped(std::move(own), inOwn);
    ExpectWiped(std::move(json), inJson);
}

}  // namespace
}  // namespace luadui
