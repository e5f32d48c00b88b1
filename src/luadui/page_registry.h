// The pages that live now, by name, and the libraries that they come from.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "luadui/page_library.h"

namespace luadui {

// An order for one page, in the words of the page manager's callers.
struct PageOrder {
    int a = 0;
    int b = 0;
    std::string name;
    std::string info;     // init string 3
    std::string library;  // init string 4; a path below the host's folder
    int flag = 0;
    HWND parent1 = nullptr;
    HWND parent2 = nullptr;
};

// A page is registered from its creation until its window is gone. Plug-ins may create, close and look up
// pages inside every call made to them.
//
// Threads: the UI thread.
class CPageRegistry {
  public:
    struct Created {
        HWND window = nullptr;
        bool isNew = false;
    };
    // Creates the page and answers its window; a living page of that name is answered as it is. Null, with a line in
    // the log, when it cannot be created; null also from within the creation of a page of that name and from
    // DestroyAll on.
    Created Create(const PageOrder& order);

    struct Page {
        std::shared_ptr<CPageLibrary> library;
        std::string info;
        HWND window = nullptr;
        LONG_PTR object =
            0;  // what the window belongs to: the system may give a handle to another window later
        bool IsAlive() const;
    };
    // The living page of that name, or nothing.
    std::optional<Page> Find(const std::string& name);
    // Puts the page to sleep or wakes it; nothing when there is none of that name.
    void Sleep(const std::string& name, int asleep);
    // Gives the focus to every page whose init string 3 contains `part`; an empty part means none.
    void Focus(const std::string& part);

    // Destroys all pages' windows and unloads their libraries; no page is created any more.
    void DestroyAll();

  private:
    std::shared_ptr<CPageLibrary> _library(const std::string& name);
    HWND _createIn(const std::shared_ptr<CPageLibrary>& library, const PageOrder& order);

    bool m_ended = false;
    std::set<std::string> m_underCreation;
    std::map<std::string, Page> m_pages;
    std::map<std::string, std::shared_ptr<CPageLibrary>> m_libraries;
};

}  // namespace luadui
