#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "accounts/secret.h"

namespace {

constexpr std::string_view kCanary = "planted-secret-0123456789";
int g_freed = 0, g_freedWithCanary = 0;

struct alignas(16) BlockSize {
    size_t bytes;
};

}  // namespace

// Every array that is freed in this program is searched for the canary.
void* operator new[](size_t bytes) {
    auto* const block = static_cast<BlockSize*>(std::malloc(sizeof(BlockSize) + bytes));
    if (!block) throw std::bad_alloc();
    block->bytes = bytes;
    return block + 1;
}

void operator delete[](void* memory) noexcept {
    if (!memory) return;
    BlockSize* const block = static_cast<BlockSize*>(memory) - 1;
    const std::string_view text(static_cast<const char*>(memory), block->bytes);
    g_freed += block->bytes == kCanary.size();
    g_freedWithCanary += text.find(kCanary.substr(4, 12)) != std::string_view::npos;
    std::free(block);
}

void operator delete[](void* memory, size_t) noexcept { operator delete[](memory); }

namespace luadui {
namespace {

TEST(Secret, LeavesNothingBehind) {
    const std::pair<const char*, std::function<void(Secret)>> cases[] = {
        {"destroyed", [](Secret secret) { EXPECT_EQ(secret.View(), kCanary); }},
        {"wiped",
         [](Secret secret) {
             secret.Wipe();
             EXPECT_TRUE(secret.IsEmpty());
         }},
        {"set",
         [](Secret secret) {
             secret.Set("x");
             EXPECT_EQ(secret.View(), "x");
         }},
        {"set to a part of itself", [](Secret secret) { secret.Set(secret.View().substr(3)); }},
        {"assigned",
         [](Secret secret) {
             Secret other("x");
             other = secret;
             secret = Secret("y");
         }},
        {"assigned to itself",
         [](Secret secret) {
             Secret& same = secret;
             secret = same;
             EXPECT_EQ(secret.View(), kCanary);
         }},
        {"moved",
         [](Secret secret) {
             const Secret other(std::move(secret));
             EXPECT_EQ(other.View(), kCanary);
         }},
        {"in a growing vector",
         [](Secret secret) {
             std::vector<Secret> all;
             for (int i = 0; i < 9; ++i) all.push_back(secret);
         }},
    };
    for (const auto& [name, use] : cases) {
        g_freed = g_freedWithCanary = 0;
        use(Secret(kCanary));
        EXPECT_GT(g_freed, 0) << name;
        EXPECT_EQ(g_freedWithCanary, 0) << name;
    }
    char* const plain = new char[kCanary.size()];
    std::memcpy(plain, kCanary.data(), kCanary.size());
    asm volatile("" : : "r"(plain) : "memory");
    delete[] plain;
    EXPECT_EQ(g_freedWithCanary, 1) << "the search finds what was not wiped";
}

}  // namespace
}  // namespace luadui
