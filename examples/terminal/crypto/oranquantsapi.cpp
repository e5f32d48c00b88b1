// The encryption module that the library looks for: passwords leave the terminal only as this makes them.
#include <climits>
#include <cstring>
#include <vector>

#include <openssl/rsa.h>

#include "crypto/openssl_objects.h"
#include "platform/export.h"

namespace {

using namespace terminal;

constexpr int kDone = 1, kFailed = 0;

Key ReadKey(const char* pem) {
    const Bio text(BIO_new_mem_buf(pem, -1));
    return Key(text ? PEM_read_bio_PUBKEY(text.get(), nullptr, nullptr, nullptr) : nullptr);
}

// Empty when the key is none or the text too long for one block of it.
std::vector<unsigned char> Encrypt(EVP_PKEY* key, const char* text) {
    const KeyContext context(key ? EVP_PKEY_CTX_new(key, nullptr) : nullptr);
    if (!context || EVP_PKEY_encrypt_init(context.get()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) <= 0)
        return {};
    const auto* const clear = reinterpret_cast<const unsigned char*>(text);
    const size_t length = std::strlen(text);
    size_t size = 0;
    if (EVP_PKEY_encrypt(context.get(), nullptr, &size, clear, length) <= 0) return {};
    std::vector<unsigned char> block(size);
    if (EVP_PKEY_encrypt(context.get(), block.data(), &size, clear, length) <= 0) return {};
    block.resize(size);
    return block;
}

}  // namespace

// Encrypts the zero-terminated `text` for the holder of the RSA key `publicKeyPem` (PKCS#1 v1.5) and writes the result, as
// base64 without line ends, to `cipher`. `*size` is the room there before the call and the length after it. Answers 1 when
// it succeeded, otherwise 0, with `cipher` and `*size` as they were. Any thread.
LUADUI_PAGE_EXPORT int SetRASencrpytion(const char* publicKeyPem, const char* text, char* cipher, int* size) {
    if (!publicKeyPem || !text || !cipher || !size) return kFailed;
    const ThreadUse use;
    try {
        const auto block = Encrypt(ReadKey(publicKeyPem).get(), text);
        const size_t length = (block.size() + 2) / 3 * 4;
        if (block.empty() || *size < 0 || static_cast<size_t>(*size) < length) return kFailed;
        std::vector<unsigned char> base64(length + 1);  // a zero ends it
        EVP_EncodeBlock(base64.data(), block.data(), static_cast<int>(block.size()));
        std::memcpy(cipher, base64.data(), length);
        *size = static_cast<int>(length);
        return kDone;
    } catch (...) {
        return kFailed;
    }
}
