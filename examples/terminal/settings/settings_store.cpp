#include "settings/settings_store.h"

#include "base/counters.h"
#include "settings/data_path.h"

namespace terminal {
namespace {

constexpr size_t kMaxFile = size_t{16} << 20;
constexpr size_t kMaxText = size_t{1} << 20;  // of one key or value

bool Fail(const char* counter) {
    luadui::CCounters::Add(counter);
    return false;
}

}  // namespace

SettingsStore::SettingsStore(std::filesystem::path folder, FileSteps* steps)
    : m_folder(std::move(folder)), m_steps(steps ? *steps : m_disk) {}

bool SettingsStore::_load(const std::string& file, std::filesystem::path& path,
                          SettingsText& settings) const {
    const auto place = DataPath(m_folder, file);
    if (!place) return Fail("settings_name_refused");
    std::string text;
    // A file that is there but cannot be read must not be taken for an empty one: a write would lose its content.
    if (ReadFile(*place, kMaxFile, text) == FileRead::kFailed) return Fail("settings_read_failed");
    path = *place;
    settings = SettingsText::Parse(text);
    return true;
}

bool SettingsStore::_save(const std::filesystem::path& path, const SettingsText& settings) {
    const std::string text = settings.ToText();
    if (text.size() > kMaxFile) return Fail("settings_too_large");
    return WriteFileSafely(path, text, m_steps) || Fail("settings_write_failed");
}

bool SettingsStore::Read(const std::string& file, const std::string& key, std::string& value) {
    std::lock_guard lock(m_mutex);
    std::filesystem::path path;
    SettingsText settings;
    if (!_load(file, path, settings)) return false;
    value = settings.Get(key).value_or(std::string());
    return true;
}

bool SettingsStore::ReadAll(const std::string& file, std::vector<std::pair<std::string, std::string>>& all) {
    std::lock_guard lock(m_mutex);
    std::filesystem::path path;
    SettingsText settings;
    if (!_load(file, path, settings)) return false;
    all = settings.All();
    return true;
}

bool SettingsStore::Write(const std::string& file, const std::string& key, const std::string& value) {
    if (key.empty()) return Fail("settings_name_refused");
    if (key.size() > kMaxText || value.size() > kMaxText) return Fail("settings_too_large");
    std::lock_guard lock(m_mutex);
    std::filesystem::path path;
    SettingsText settings;
    if (!_load(file, path, settings)) return false;
    if (settings.Get(key) == value) return true;
    settings.Set(key, value);
    return _save(path, settings);
}

bool SettingsStore::Erase(const std::string& file, const std::string& key) {
    std::lock_guard lock(m_mutex);
    std::filesystem::path path;
    SettingsText settings;
    if (!_load(file, path, settings)) return false;
    return !settings.Erase(key) || _save(path, settings);
}

}  // namespace terminal
