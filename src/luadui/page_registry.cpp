#include "luadui/page_registry.h"

#include "base/counters.h"
#include "base/text.h"
#include "luadui/module_log.h"

namespace luadui {
namespace {

// Window handles have 32 significant bits and are widened with their sign.
HWND ToWindow(unsigned int handle) {
    return reinterpret_cast<HWND>(static_cast<intptr_t>(static_cast<int32_t>(handle)));
}
unsigned int ToNumber(HWND window) { return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(window)); }

void FitToParent(CPageLibrary& library, const PageOrder& order) {
    RECT area{};
    if (!order.parent1 || !GetClientRect(order.parent1, &area)) return;
    if (area.right > 0 && area.bottom > 0) library.Resize(order.name, area.right, area.bottom);
}

}  // namespace

std::optional<CPageRegistry::Page> CPageRegistry::Find(const std::string& name) {
    const auto found = m_pages.find(name);
    if (found == m_pages.end()) return std::nullopt;
    if (IsWindow(found->second.window)) return found->second;
    m_pages.erase(found);
    return std::nullopt;
}

unsigned int CPageRegistry::Create(const PageOrder& order) {
    if (const auto living = Find(order.name)) {
        ModuleLog("page " + order.name + " exists already");
        return ToNumber(living->window);
    }
    if (m_ended || !m_underCreation.insert(order.name).second) return 0;
    const std::shared_ptr<CPageLibrary> library = _library(order.library);
    const unsigned int result = library ? _createIn(library, order) : 0;
    m_underCreation.erase(order.name);
    return result;
}

unsigned int CPageRegistry::_createIn(const std::shared_ptr<CPageLibrary>& library, const PageOrder& order) {
    const PageInit init{
        order.a,    order.b,       order.name.c_str(), order.info.c_str(), order.library.c_str(),
        order.flag, order.parent1, order.parent2};
    const HWND window = ToWindow(library->Create(init));
    if (!IsWindow(window)) {
        CCounters::Add("page_not_created");
        ModuleLog("page " + order.name + " was not created by " + order.library);
        return 0;
    }
    m_pages[order.name] = {library, order.info, window};
    FitToParent(*library, order);
    return ToNumber(window);
}

std::shared_ptr<CPageLibrary> CPageRegistry::_library(const std::string& name) {
    if (const auto known = m_libraries.find(name); known != m_libraries.end()) return known->second;
    auto library = CPageLibrary::Load(HostFolder(), name);
    if (library) m_libraries[name] = library;
    return library;
}

void CPageRegistry::Sleep(const std::string& name, int asleep) {
    if (const auto page = Find(name)) page->library->Sleep(asleep, name);
}

void CPageRegistry::Focus(const std::string& part) {
    if (part.empty()) return;
    std::vector<std::string> names;
    for (const auto& [name, page] : m_pages) {
        if (page.info.find(part) != std::string::npos) names.push_back(name);
    }
    for (const std::string& name : names) {
        if (const auto page = Find(name)) page->library->Focus(page->info);
    }
}

void CPageRegistry::DestroyAll() {
    m_ended = true;
    while (!m_pages.empty()) {
        const auto page = m_pages.extract(m_pages.begin());
        DestroyWindow(page.mapped().window);
    }
    m_libraries.clear();
}

}  // namespace luadui
