// What each page library provides for page_exports.cpp.
#pragma once

#include "page/text_page.h"

namespace terminal {

// Creates a page of the library's kind and sends its first queries. Null when its window cannot be created or its init
// string 3 makes no sense.
TextPage* CreatePage(const luadui::PageInit& init);

}  // namespace terminal
