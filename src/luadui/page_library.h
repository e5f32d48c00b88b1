// One page plug-in library: found below the host's folder, loaded once, its functions called under guard.
#pragma once

#include <memory>
#include <string>

#include "luadui/page_plugin.h"
#include "platform/win32.h"

namespace luadui {

// Threads: the UI thread. Stays loaded until Unload(), which is called when all its pages are gone.
class CPageLibrary {
  public:
    // Loads the library `name` (code page 936) below `folder`. Null when the name would leave that folder,
    // the file is missing or is no page library; a line in the log says which file was looked for and why it
    // failed.
    static std::shared_ptr<CPageLibrary> Load(const std::wstring& folder, const std::string& name);

    ~CPageLibrary();
    CPageLibrary(const CPageLibrary&) = delete;
    CPageLibrary& operator=(const CPageLibrary&) = delete;

    // The page's window handle; 0 when the page could not be created.
    unsigned int Create(const PageInit& init);
    // These do nothing when the library does not export them.
    void Sleep(int asleep, const std::string& pageName);
    void Resize(const std::string& pageName, int width, int height);
    void Focus(const std::string& info);

  private:
    CPageLibrary(HMODULE module);

    const HMODULE m_module;
    decltype(&create_page) m_create;
    decltype(&page_sleep) m_sleep;
    decltype(&resizepage) m_resize;
    decltype(&handlepage_focus) m_focus;
};

// True when `name`, appended to a folder, stays below it: no drive, no "..".
bool StaysBelowFolder(const std::string& name);

}  // namespace luadui
