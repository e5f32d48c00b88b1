// Component pages: pages whose libraries lie in a folder of their own and share one init text.
#pragma once

#include <atomic>
#include <string>

#include "luadui/page_registry.h"

namespace luadui {

// Made once per process by `init`; immutable afterwards, so any thread may use it.
class CComponentAdapter {
  public:
    // `folder` is below the host's folder (empty: that folder itself).
    CComponentAdapter(std::string folder, std::string info)
        : m_folder(std::move(folder)), m_info(std::move(info)) {}

    // Makes the adapter; false when there was one already, which stays.
    static bool Init(const char* folder, const char* info);
    // Null before Init.
    static const CComponentAdapter* Existing();

    // The page that `create` and `create_com_page` ask for; null texts read as empty.
    PageOrder Describe(const char* library, const char* name, const char* info, int flag) const;

  private:
    const std::string m_folder;
    const std::string m_info;
};

}  // namespace luadui
