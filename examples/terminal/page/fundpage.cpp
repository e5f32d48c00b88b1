// What the page library exports: thin shells over FundPage.
#include "luadui/page_plugin.h"
#include "page/fund_page.h"
#include "page/page_view.h"

using terminal::FundPage;

unsigned int create_page(const luadui::PageInit* init) {
    FundPage* page = FundPage::Create(*init);
    return page ? static_cast<unsigned int>(terminal::HandleNumber(page->GetHWND())) : 0;
}

void page_sleep(int asleep, const char* name) {
    if (FundPage* page = FundPage::Find(name)) page->Sleep(asleep != 0);
}

void resizepage(const char* name, int width, int height) {
    if (FundPage* page = FundPage::Find(name)) page->Resize(width, height);
}

void handlepage_focus(int, const char* info) { FundPage::Focus(info); }
