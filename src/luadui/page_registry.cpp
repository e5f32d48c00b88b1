#include "luadui/page_registry.h"

#include "base/counters.h"
#include "base/text.h"
#include "luadui/host_folder.h"
#include "luadui/module_log.h"
#include "luadui/window_number.h"

namespace luadui {
namespace {

void FitToParent(CPageLibrary& library, const PageOrder& order) {
    RECT area{};
    if (!order.parent1 || !GetClientRect(order.parent1, &area)) return;
    if (area.right > 0 && area.bottom > 0) library.Resize(order.name, area.right, area.bottom);
}

}  // namespace

bool CPageRegistry::Page::IsAlive() const {
    return IsWindow(window) && GetWindowLongPtrW(window, GWLP_USERDATA) == object;
}

std::optional<CPageRegistry::Page> CPageRegistry::Find(const std::string& name) {
    const auto found = m_pages.find(name);
    if (found == m_pages.end()) return std::nullopt;
    if (found->second.IsAlive()) return found->second;
    m_pages.erase(found);
    return std::nullopt;
}

CPageRegistry::Created CPageRegistry::Create(const PageOrder& order) {
    std::erase_if(m_pages, [](const auto& entry) { return !entry.second.IsAlive(); });
    if (const auto living = Find(order.name)) {
        ModuleLog("page " + order.name + " exists already");
        return {living->window, false};
    }
    if (m_ended || !m_underCreation.insert(order.name).second) return {};
    const auto leave = [this](const std::string* name) { m_underCreation.erase(*name); };
    const std::unique_ptr<const std::string, decltype(leave)> creation(&order.name, leave);
    const std::shared_ptr<CPageLibrary> library = _library(order.library);
    return {library ? _createIn(library, order) : nullptr, true};
}

HWND CPageRegistry::_createIn(const std::shared_ptr<CPageLibrary>& library, const PageOrder& order) {
    const PageInit init{
        order.a,    order.b,       order.name.c_str(), order.info.c_str(), order.library.c_str(),
        order.flag, order.parent1, order.parent2};
    const HWND window = WindowOfNumber(library->Create(init));
    if (!IsWindow(window)) {
        CCounters::Add("page_not_created");
        ModuleLog("page " + order.name + " was not created by " + order.library);
        return nullptr;
    }
    m_pages[order.name] = {library, order.info, window, GetWindowLongPtrW(window, GWLP_USERDATA)};
    FitToParent(*library, order);
    return window;
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
        if (page.mapped().IsAlive()) DestroyWindow(page.mapped().window);
    }
    m_libraries.clear();
}

}  // namespace luadui
