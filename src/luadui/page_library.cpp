#include "luadui/page_library.h"

#include "base/guard.h"
#include "base/text.h"
#include "luadui/module_log.h"

namespace luadui {
namespace {

constexpr char kPluginThrew[] = "page_library_threw";

template <class Function>
void Resolve(HMODULE module, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

void LogNotLoaded(const std::string& path, const std::string& why) {
    CCounters::Add("page_library_not_loaded");
    ModuleLog("page library not loaded: looked for " + path + ": " + why);
}

}  // namespace

bool StaysBelowFolder(const std::string& name) {
    if (name.find('\0') != std::string::npos) return false;
    for (const std::string_view part : SplitText(name, '\\')) {
        for (const std::string_view step : SplitText(part, '/')) {
            if (step == ".." || SplitText(step, ':').size() > 1) return false;
        }
    }
    return true;
}

std::shared_ptr<CPageLibrary> CPageLibrary::Load(const std::wstring& folder, const std::string& name) {
    const bool isSeparated = name.starts_with('/') || name.starts_with('\\');
    const std::wstring path = folder + (isSeparated ? L"" : L"\\") + GbkToWide(name);
    const std::string shownPath = WideToGbk(path);
    if (name.empty() || !StaysBelowFolder(name)) {
        LogNotLoaded(shownPath, "not a file below the host's folder");
        return nullptr;
    }
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module) {
        LogNotLoaded(shownPath, "error " + std::to_string(GetLastError()));
        return nullptr;
    }
    std::shared_ptr<CPageLibrary> library(new CPageLibrary(module));
    if (library->m_create) return library;
    LogNotLoaded(shownPath, "it does not export create_page");
    return nullptr;
}

CPageLibrary::CPageLibrary(HMODULE module) : m_module(module) {
    Resolve(module, "create_page", m_create);
    Resolve(module, "sleep", m_sleep);
    Resolve(module, "resizepage", m_resize);
    Resolve(module, "handlepage_focus", m_focus);
}

CPageLibrary::~CPageLibrary() { FreeLibrary(m_module); }

unsigned int CPageLibrary::Create(const PageInit& init) {
    unsigned int result = 0;
    Guarded(kPluginThrew, [&] { result = m_create(&init); });
    return result;
}

void CPageLibrary::Sleep(int asleep, const std::string& pageName) {
    if (m_sleep) Guarded(kPluginThrew, [&] { m_sleep(asleep, pageName.c_str()); });
}

void CPageLibrary::Resize(const std::string& pageName, int width, int height) {
    if (m_resize) Guarded(kPluginThrew, [&] { m_resize(pageName.c_str(), width, height); });
}

void CPageLibrary::Focus(const std::string& info) {
    if (m_focus) Guarded(kPluginThrew, [&] { m_focus(0, info.c_str()); });
}

}  // namespace luadui
