// A module for the tests to load.
#include "platform/export.h"

LUADUI_PAGE_EXPORT int answer() { return 42; }
