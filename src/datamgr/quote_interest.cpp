#include "datamgr/quote_interest.h"

#include <algorithm>

#include "base/base_object.h"
#include "base/counters.h"
#include "datamgr/quote_names.h"

namespace luadui {

template <class Change>
void QuoteInterest::_change(uint32_t window, Change&& change) {
    if (m_windows.size() >= m_allowed) {
        _dropGone();
        m_allowed = std::max(kKept, 2 * m_windows.size());
    }
    Window& entry = m_windows[window];
    if (entry.IsTakingAll()) --m_takingAll;
    change(entry);
    if (entry.IsTakingAll()) ++m_takingAll;
}

void QuoteInterest::_count(const std::string& prefix, bool isMore) {
    if (isMore) {
        ++m_shown[prefix];
    } else if (const auto shown = m_shown.find(prefix); --shown->second == 0) {
        m_shown.erase(shown);
    }
}

void QuoteInterest::Name(uint32_t window, const std::vector<std::string>& securities) {
    _change(window, [&](Window& entry) {
        entry.hasNamed = true;
        for (const std::string& security : securities) {
            const std::string prefix = QuotePrefixOf(security);
            if (entry.prefixes.contains(prefix)) continue;
            if (entry.prefixes.size() >= kMaxNames) {
                entry.takesAll = true;
                return CCounters::Add("quote_interest_full");
            }
            entry.prefixes.insert(prefix);
            if (entry.listens) _count(prefix, true);
        }
    });
}

void QuoteInterest::Unname(uint32_t window, const std::vector<std::string>& securities) {
    const auto found = m_windows.find(window);
    if (found == m_windows.end()) return;
    for (const std::string& security : securities) {
        const std::string prefix = QuotePrefixOf(security);
        if (found->second.prefixes.erase(prefix) != 0 && found->second.listens) _count(prefix, false);
    }
}

void QuoteInterest::SetTakesAll(uint32_t window, bool takesAll) {
    if (takesAll || m_windows.contains(window))
        _change(window, [&](Window& entry) { entry.takesAll = takesAll; });
}

void QuoteInterest::SetListening(uint32_t window, bool listens) {
    const auto found = m_windows.find(window);
    if ((found != m_windows.end() && found->second.listens) == listens) return;
    if (!listens) {
        _forget(found->second);
        m_windows.erase(found);
        return;
    }
    _change(window, [&](Window& entry) {
        entry.listens = true;
        for (const std::string& prefix : entry.prefixes) _count(prefix, true);
    });
}

void QuoteInterest::_forget(const Window& window) {
    if (!window.listens) return;
    if (window.IsTakingAll()) --m_takingAll;
    for (const std::string& prefix : window.prefixes) _count(prefix, false);
}

void QuoteInterest::_dropGone() {
    std::erase_if(m_windows, [this](auto& entry) {
        if (CBaseObject::Find(entry.first)) return false;
        _forget(entry.second);
        return true;
    });
}

template <class Visit>
bool QuoteInterest::_visit(const CDataSet& keys, Visit&& visit) const {
    if (m_shown.size() < keys.Size()) {
        return std::ranges::any_of(m_shown, [&](const auto& shown) {
            return FindPrefix(keys, shown.first) != keys.end() && visit(shown.first);
        });
    }
    return std::ranges::any_of(keys, [&](const std::string& key) {
        const std::string_view ofAnyMarket = std::string_view(key).substr(0, key.find(':') + 1);
        return (m_shown.contains(key) && visit(key)) || (m_shown.contains(ofAnyMarket) && visit(ofAnyMarket));
    });
}

bool QuoteInterest::Meets(const CDataSet& keys) {
    _dropGone();
    return m_takingAll != 0 || _visit(keys, [](std::string_view) { return true; });
}

std::vector<std::string> QuoteInterest::Taken(std::vector<std::string> securities) {
    _dropGone();
    std::erase_if(securities, [&](std::string_view security) {
        return m_takingAll == 0 && !m_shown.contains(QuotePrefixOf(security)) &&
               !m_shown.contains(security.substr(0, security.find(':') + 1));
    });
    return securities;
}

CDataSet QuoteInterest::Met(const CDataSet& keys) {
    _dropGone();
    if (m_takingAll != 0) return keys;
    CDataSet met;
    _visit(keys, [&](std::string_view prefix) {
        met.Insert(prefix.substr(0, prefix.size() - (prefix.ends_with(':') ? 1 : 0)));
        return false;
    });
    return met;
}

std::vector<uint32_t> QuoteInterest::Windows() const {
    std::vector<uint32_t> windows;
    windows.reserve(m_windows.size());
    for (const auto& [window, entry] : m_windows) windows.push_back(window);
    return windows;
}

}  // namespace luadui
