// The terminal's settings: every settings file below the data folder.
#pragma once

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "settings/safe_file.h"
#include "settings/settings_text.h"

namespace terminal {

// Threads: any; one operation at a time. Files are read anew each time, so that changes by hand count at once, and
//          written whole (see safe_file.h).
// Texts:   code page 936; names of files as in data_path.h.
// Failure: each operation answers false, changes nothing and counts why: "settings_name_refused",
//          "settings_read_failed", "settings_write_failed", "settings_too_large".
class SettingsStore {
  public:
    explicit SettingsStore(std::filesystem::path folder, FileSteps* steps = nullptr);

    // A missing file or key reads as the empty text.
    bool Read(const std::string& file, const std::string& key, std::string& value);
    bool ReadAll(const std::string& file, std::vector<std::pair<std::string, std::string>>& settings);
    bool Write(const std::string& file, const std::string& key, const std::string& value);
    // Also true when there was no such key.
    bool Erase(const std::string& file, const std::string& key);

  private:
    bool _load(const std::string& file, std::filesystem::path& path, SettingsText& settings) const;
    bool _save(const std::filesystem::path& path, const SettingsText& settings);

    const std::filesystem::path m_folder;
    FileSteps m_disk;
    FileSteps& m_steps;
    std::mutex m_mutex;  // held for a whole operation: a write reads first
};

}  // namespace terminal
