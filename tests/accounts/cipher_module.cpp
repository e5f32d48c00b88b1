// An encryption module for the tests: what it answers has the form of cipher text, and tests can read it.
#include <cstring>
#include <string>

#include "platform/export.h"

// "fail" is refused. The text is doubled in front, so that it stands nowhere as it was.
LUADUI_PAGE_EXPORT int SetRASencrpytion(const char* publicKeyPem, const char* text, char* cipher, int* size) {
    const std::string clear = text;
    if (std::strncmp(publicKeyPem, "-----BEGIN PUBLIC KEY-----\n", 27) != 0 || clear == "fail") return 0;
    std::string answer;
    for (const char c : clear) answer.append(2, c);
    answer.resize(171, '/');
    answer += '=';
    if (*size < static_cast<int>(answer.size())) return 0;
    *size = static_cast<int>(answer.size());
    std::memcpy(cipher, answer.data(), answer.size());
    return 1;
}
