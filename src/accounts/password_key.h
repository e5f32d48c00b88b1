// The account password key of the product: 1024-bit RSA, of which only the account service has the private half.
#pragma once

#include <cstddef>
#include <string_view>

namespace luadui {

inline constexpr char kAccountPasswordKey[] =
    "-----BEGIN PUBLIC KEY-----\n"
    "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQCfZqQcVyhebLN8acFdr3T+H1tK\n"
    "HFSM1eFHEENBUFJn6vg2lHsraP/KGnbR2dUy7FC6APvX8/JkiEMUlEyPDYth2pHS\n"
    "DjP07S3IB9dcGAeUUW37TmVSnumYyYpX1dyMxqG1lEJuMiAc703epX/Kj1ZbwNUV\n"
    "pWE+YgWl3ab9kyiAGwIDAQAB\n"
    "-----END PUBLIC KEY-----";
static_assert(std::string_view(kAccountPasswordKey).size() == 271);

// The size of the key: that of one encrypted block, too.
inline constexpr size_t kAccountPasswordKeyBytes = 128;

}  // namespace luadui
