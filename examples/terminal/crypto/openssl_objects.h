// OpenSSL's objects, owned.
#pragma once

#include <memory>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

namespace terminal {

template <auto kFree>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        kFree(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freed<EVP_PKEY_CTX_free>>;
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, Freed<EVP_CIPHER_CTX_free>>;
using Bio = std::unique_ptr<BIO, Freed<BIO_free_all>>;

// Gives back what OpenSSL keeps for the calling thread, its random numbers and errors, at the end of a scope: the
// threads are others', and one may still be ending when the process does.
struct ThreadUse {
    ThreadUse() = default;
    ThreadUse(const ThreadUse&) = delete;
    ThreadUse& operator=(const ThreadUse&) = delete;
    ~ThreadUse() { OPENSSL_thread_stop(); }
};

}  // namespace terminal
