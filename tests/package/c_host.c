/* A host in C: the header compiles as C99 and the functions that need no C++ type can be called. */
#include <stdio.h>

#include "luadui/luadui.h"

static int g_failed = 0;

static void Expect(int condition, const char* what) {
    if (condition) return;
    printf("failed: %s\n", what);
    g_failed = 1;
}

int main(void) {
    char buffer[8] = "unused";
    Expect(get_securityname("000001", buffer, "1", 0) == 2, "an unknown code answers \":1\"");
    Expect(buffer[0] == 'u', "a buffer that is too small stays as it is");
    Expect(
        get_securityname("000001", buffer, "1", sizeof buffer) == 2 && buffer[0] == ':' && buffer[2] == 'u',
        "the answer is copied without a terminating zero");
    Expect(get_securityname(NULL, NULL, NULL, 0) == 1, "null strings read as empty");
    Expect(get_marketbycodeandzqmc("000001", buffer, "?", sizeof buffer) == 0,
           "no market for an unknown code");
    return g_failed;
}
