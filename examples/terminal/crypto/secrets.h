// What broker and host do with secrets. Built without OpenSSL, nothing can be read or kept: every function answers nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace terminal {

// What the encryption module made (base64 of RSA, PKCS#1 v1.5), read with the private key. Nothing when it was made for
// another key or is no such text.
std::optional<std::string> DecryptPassword(const std::string& privateKeyPem, std::string_view cipher);

// A key of kSealKeySize random bytes.
constexpr size_t kSealKeySize = 32;
std::optional<std::string> NewSealKey();
// The text under a seal: nobody reads it without the key, and changes show. Nothing when the key is no such key.
std::optional<std::string> Seal(std::string_view key, std::string_view text);
std::optional<std::string> Unseal(std::string_view key, std::string_view sealed);

// Overwrites the text, so that it does not stay in freed memory.
void Wipe(std::string& text);

}  // namespace terminal
