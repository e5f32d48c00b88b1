// A library that makes no pages.
#include "platform/export.h"

LUADUI_PAGE_EXPORT int no_create_page() { return 0; }
