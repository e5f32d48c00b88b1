#include "accounts/password_cipher.h"

#include <algorithm>

#include "accounts/password_key.h"
#include "accounts/secret.h"
#include "accounts/terminal_modules.h"
#include "base/counters.h"

namespace luadui {
namespace {

constexpr size_t kBlockText = (kAccountPasswordKeyBytes + 2) / 3 * 4;  // in base64
constexpr size_t kPadding = 3 - kAccountPasswordKeyBytes % 3;

bool IsBase64(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

}  // namespace

PasswordEncryption::PasswordEncryption(const wchar_t* module)
    : m_function(reinterpret_cast<Function>(FindModuleFunction(module, "SetRASencrpytion"))) {}

std::optional<std::string> PasswordEncryption::Encrypt(std::string_view text) const {
    if (!m_function) {
        CCounters::Add("password_cipher_missing");
        return std::nullopt;
    }
    std::string cipher(2 * kBlockText, '\0');
    std::string clear(text);
    int size = static_cast<int>(cipher.size());
    bool isDone = text.find('\0') == std::string_view::npos;
    try {
        isDone = isDone && m_function(kAccountPasswordKey, clear.c_str(), cipher.data(), &size) == 1;
    } catch (...) {
        isDone = false;
    }
    WipeMemory(clear.data(), clear.size());
    if (!isDone || size <= 0 || size > static_cast<int>(cipher.size())) {
        CCounters::Add("password_encryption_failed");
        return std::nullopt;
    }
    cipher.resize(static_cast<size_t>(size));
    return cipher;
}

PasswordCipher PasswordEncryption::Cipher() const {
    if (!m_function) return {};
    return [encryption = *this](std::string_view text) { return encryption.Encrypt(text); };
}

bool IsCipherText(std::string_view text) {
    return text.size() == kBlockText && text.ends_with(std::string(kPadding, '=')) &&
           std::all_of(text.begin(), text.end() - kPadding, IsBase64);
}

}  // namespace luadui
