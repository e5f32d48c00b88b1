// What a page library exports: thin shells over its pages. Linked into each library, which brings CreatePage.
#include "page/page_exports.h"
#include "luadui/page_plugin.h"
#include "page/page_view.h"

using terminal::TextPage;

unsigned int create_page(const luadui::PageInit* init) {
    TextPage* const page = terminal::CreatePage(*init);
    return page ? static_cast<unsigned int>(terminal::HandleNumber(page->GetHWND())) : 0;
}

void page_sleep(int asleep, const char* name) {
    if (TextPage* const page = TextPage::Find(name)) page->Sleep(asleep != 0);
}

void resizepage(const char* name, int width, int height) {
    if (TextPage* const page = TextPage::Find(name)) page->Resize(width, height);
}

void handlepage_focus(int, const char* info) { TextPage::Focus(info); }
