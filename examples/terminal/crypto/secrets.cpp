#include "crypto/secrets.h"

#ifdef TERMINAL_OPENSSL
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include "crypto/openssl_objects.h"
#endif

namespace terminal {

#ifdef TERMINAL_OPENSSL

namespace {

constexpr size_t kNonceSize = 12, kTagSize = 16;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::optional<std::string> FromBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0 || text.size() > 4096) return std::nullopt;
    std::string bytes(text.size() / 4 * 3, '\0');
    if (EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size())) < 0) return std::nullopt;
    const size_t padding = text.size() - 1 - text.find_last_not_of('=');
    if (padding > 2) return std::nullopt;
    bytes.resize(bytes.size() - padding);
    return bytes;
}

}  // namespace

std::optional<std::string> DecryptPassword(const std::string& privateKeyPem, std::string_view cipher) {
    const ThreadUse use;
    const auto block = FromBase64(cipher);
    const Bio pem(BIO_new_mem_buf(privateKeyPem.data(), static_cast<int>(privateKeyPem.size())));
    const Key key(pem ? PEM_read_bio_PrivateKey(pem.get(), nullptr, nullptr, nullptr) : nullptr);
    const KeyContext context(key ? EVP_PKEY_CTX_new(key.get(), nullptr) : nullptr);
    if (!block || !context || EVP_PKEY_decrypt_init(context.get()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) <= 0)
        return std::nullopt;
    std::string text(static_cast<size_t>(EVP_PKEY_get_size(key.get())), '\0');
    size_t size = text.size();
    if (EVP_PKEY_decrypt(context.get(), Bytes(text), &size, Bytes(*block), block->size()) <= 0)
        return std::nullopt;
    text.resize(size);
    return text;
}

std::optional<std::string> NewSealKey() {
    const ThreadUse use;
    std::string key(kSealKeySize, '\0');
    if (RAND_bytes(Bytes(key), static_cast<int>(key.size())) != 1) return std::nullopt;
    return key;
}

// Nonce, tag, then what AES-256-GCM made of the text.
std::optional<std::string> Seal(std::string_view key, std::string_view text) {
    const ThreadUse use;
    const Cipher cipher(EVP_CIPHER_CTX_new());
    std::string sealed(kNonceSize + kTagSize + text.size(), '\0');
    unsigned char* const nonce = Bytes(sealed);
    int size = 0;
    const bool isDone =
        key.size() == kSealKeySize && cipher && RAND_bytes(nonce, kNonceSize) == 1 &&
        EVP_EncryptInit_ex(cipher.get(), EVP_aes_256_gcm(), nullptr, Bytes(key), nonce) == 1 &&
        EVP_EncryptUpdate(cipher.get(), nonce + kNonceSize + kTagSize, &size, Bytes(text),
                          static_cast<int>(text.size())) == 1 &&
        EVP_EncryptFinal_ex(cipher.get(), nonce + kNonceSize + kTagSize + size, &size) == 1 &&
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_GET_TAG, kTagSize, nonce + kNonceSize) == 1;
    if (!isDone) return std::nullopt;
    return sealed;
}

std::optional<std::string> Unseal(std::string_view key, std::string_view sealed) {
    if (key.size() != kSealKeySize || sealed.size() < kNonceSize + kTagSize) return std::nullopt;
    const ThreadUse use;
    const Cipher cipher(EVP_CIPHER_CTX_new());
    std::string tag(sealed.substr(kNonceSize, kTagSize));
    const std::string_view body = sealed.substr(kNonceSize + kTagSize);
    std::string text(body.size() + 1, '\0');  // room for an empty one
    int size = 0, rest = 0;
    const bool isDone =
        cipher &&
        EVP_DecryptInit_ex(cipher.get(), EVP_aes_256_gcm(), nullptr, Bytes(key), Bytes(sealed)) == 1 &&
        EVP_DecryptUpdate(cipher.get(), Bytes(text), &size, Bytes(body), static_cast<int>(body.size())) ==
            1 &&
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_TAG, kTagSize, tag.data()) == 1 &&
        EVP_DecryptFinal_ex(cipher.get(), Bytes(text) + size, &rest) == 1;
    if (!isDone) {
        Wipe(text);
        return std::nullopt;
    }
    text.resize(body.size());
    return text;
}

void Wipe(std::string& text) {
    OPENSSL_cleanse(text.data(), text.size());
    text.clear();
}

#else

std::optional<std::string> DecryptPassword(const std::string&, std::string_view) { return std::nullopt; }
std::optional<std::string> NewSealKey() { return std::nullopt; }
std::optional<std::string> Seal(std::string_view, std::string_view) { return std::nullopt; }
std::optional<std::string> Unseal(std::string_view, std::string_view) { return std::nullopt; }
void Wipe(std::string& text) {
    volatile char* const bytes = text.data();
    for (size_t i = 0; i < text.size(); ++i) bytes[i] = 0;
    text.clear();
}

#endif

}  // namespace terminal
