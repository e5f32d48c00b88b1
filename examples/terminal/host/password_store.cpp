#include "host/password_store.h"

#include "base/counters.h"
#include "base/json_object.h"
#include "crypto/secrets.h"
#include "settings/safe_file.h"

namespace terminal {
namespace {

using luadui::CJsonObject;

constexpr size_t kMaxFile = 1 << 24;

void Failed() { luadui::CCounters::Add("password_store_failed"); }

bool IsForgotten(const CJsonObject& entry) {
    for (const char* name : {"Password", "TxPassword", "DynamicPassword"})
        if (!entry.GetText(name).empty()) return false;
    return true;
}

}  // namespace

// Empty when there is none.
std::string PasswordStore::_key(bool mayMake) {
    std::string key;
    const FileRead read = ReadFile(m_keyFile, kSealKeySize + 1, key);
    if (read == FileRead::kDone && key.size() == kSealKeySize) return key;
    if (read != FileRead::kAbsent || !mayMake) return {};
    FileSteps steps;
    const auto made = NewSealKey();
    if (!made || !WriteFileSafely(m_keyFile, *made, steps)) return {};
    std::error_code error;
    std::filesystem::permissions(m_keyFile, std::filesystem::perms::owner_read, error);
    return *made;
}

std::string PasswordStore::_read() {
    std::string sealed;
    const FileRead read = ReadFile(m_file, kMaxFile, sealed);
    if (read == FileRead::kAbsent) return "{}";
    std::string key = _key(false);
    const auto text = read == FileRead::kDone ? Unseal(key, sealed) : std::nullopt;
    Wipe(key);
    return text.value_or("");
}

bool PasswordStore::_write(const std::string& text) {
    std::string key = _key(true);
    const auto sealed = Seal(key, text);
    Wipe(key);
    FileSteps steps;
    return sealed && WriteFileSafely(m_file, *sealed, steps);
}

std::string PasswordStore::Get(const std::string& params) {
    std::lock_guard lock(m_mutex);
    CJsonObject asked, all;
    std::string text = _read();
    const bool isRead = all.Parse(text);
    Wipe(text);
    if (!isRead || !asked.Parse(params)) {
        Failed();
        return "{}";
    }
    return all.GetSub(asked.GetText("UserName")).ToText();
}

void PasswordStore::Save(const std::string& params) {
    std::lock_guard lock(m_mutex);
    CJsonObject given, all, kept;
    std::string text = _read();
    // What cannot be read is not written over.
    const bool isRead = all.Parse(text) && given.Parse(params);
    Wipe(text);
    if (!isRead) return Failed();
    for (const auto [key, value] : given.GetSub("accountList")) {
        CJsonObject entry;
        if (value.Get(entry) && !IsForgotten(entry)) kept.Set(key, entry);
    }
    all.Set(given.GetText("useraccount"), kept);
    text = all.ToText();
    if (!_write(text)) Failed();
    Wipe(text);
}

}  // namespace terminal
