#include "luadui/component_adapter.h"

#include <memory>

#include "luadui/text_argument.h"

namespace luadui {
namespace {

std::atomic<const CComponentAdapter*> g_adapter{nullptr};

}  // namespace

bool CComponentAdapter::Init(const char* folder, const char* info) {
    if (Existing()) return false;
    auto made = std::make_unique<const CComponentAdapter>(TextOf(folder), TextOf(info));
    const CComponentAdapter* none = nullptr;
    if (!g_adapter.compare_exchange_strong(none, made.get())) return false;
    static_cast<void>(made.release());  // lives as long as the process
    return true;
}

const CComponentAdapter* CComponentAdapter::Existing() { return g_adapter.load(); }

PageOrder CComponentAdapter::Describe(const char* library, const char* name, const char* info,
                                      int flag) const {
    PageOrder order;
    order.name = TextOf(name);
    order.info = info ? info : m_info;
    order.library = m_folder.empty() ? TextOf(library) : m_folder + "/" + TextOf(library);
    order.flag = flag;
    return order;
}

}  // namespace luadui
