// Encryption of passwords on their way to the account service, by a module that the terminal brings along.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "accounts/account_request.h"

namespace luadui {

// The function "SetRASencrpytion" of "oranquantsapi.dll":
//
//     int SetRASencrpytion(const char* publicKeyPem, const char* text, char* cipher, int* size)
//
// encrypts the zero-terminated `text` for the holder of the key (RSA, PKCS#1 v1.5) and writes the result, as base64 without
// line ends, to `cipher`. `*size` is the room there before the call and the length after it. Answers 1 when it succeeded.
//
// Threads: any; the module must say the same of its function.
class PasswordEncryption {
  public:
    // Looks the function up in `module`, which stays loaded for the process.
    explicit PasswordEncryption(const wchar_t* module = L"oranquantsapi.dll");

    bool IsPresent() const { return m_function != nullptr; }
    // The text encrypted with the account password key of the product. Nothing when the function is missing ("password_
    // cipher_missing") or fails ("password_encryption_failed"), as it does for texts over 117 bytes or with a zero byte.
    std::optional<std::string> Encrypt(std::string_view text) const;
    // Encrypt() as the accounts ask for it; empty when there is no function.
    PasswordCipher Cipher() const;

  private:
    using Function = int (*)(const char* publicKeyPem, const char* text, char* cipher, int* size);

    Function m_function;
};

// Whether the text has the form of what Encrypt() answers: base64 of one block of the key. No password that a person types
// looks like that.
bool IsCipherText(std::string_view text);

}  // namespace luadui
