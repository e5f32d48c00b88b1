#include "datamgr/client_log.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <utility>

#include "base/counters.h"
#include "base/text.h"
#include "platform/code_page.h"

namespace luadui {
namespace {

bool Dropped(const char* reason) {
    CCounters::Add(reason);
    return false;
}

std::string TimeStamp(const LogTime& now) {
    char buffer[100];
    std::snprintf(buffer, sizeof buffer, "%4d%02d%02d %02d:%02d:%02d:%d", now.year, now.month, now.day,
                  now.hour, now.minute, now.second, now.millisecond);
    return buffer;
}

// No byte of a two-byte character looks like one of these.
void AppendOnOneLine(std::string& line, std::string_view message) {
    for (const char c : message) {
        switch (c) {
            case '\n':
                line += "\\n";
                break;
            case '\r':
                line += "\\r";
                break;
            case '\0':
                line += "\\0";
                break;
            default:
                line += c;
        }
    }
}

bool IsNameCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    constexpr std::string_view kRefused = "\\/:*?\"<>|";
    return byte >= 0x20 && byte != 0x7F && !code_page::IsLeadByte(c) &&
           kRefused.find(c) == std::string_view::npos;
}

bool HasNameCharactersOnly(std::string_view name) {
    for (size_t at = 0, length = 0; at < name.size(); at += length) {
        length = code_page::CharLength(name, at);
        if (length == 1 && !IsNameCharacter(name[at])) return false;
    }
    return true;
}

// What the system takes for a device whatever follows the first dot.
bool IsDevice(std::string_view name) {
    std::string stem = ToLowerText(TrimText(name.substr(0, name.find('.'))));
    const bool isNumbered = stem.size() == 4 && stem.back() >= '0' && stem.back() <= '9';
    if (isNumbered) stem.pop_back();
    constexpr std::string_view kNumbered[] = {"com", "lpt"};
    constexpr std::string_view kPlain[] = {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
    return isNumbered ? std::ranges::count(kNumbered, stem) > 0 : std::ranges::count(kPlain, stem) > 0;
}

// Two handles that append at once may write to the same place. Never destroyed, as the folder below.
std::mutex& AppendMutex() {
    static auto* const mutex = new std::mutex;
    return *mutex;
}

// The folder of the process's client; never destroyed, since threads may log until the process ends.
struct ClientFolder {
    std::mutex mutex;  // guards what follows
    std::filesystem::path path;
};

ClientFolder& TheClientFolder() {
    static auto* const folder = new ClientFolder;
    return *folder;
}

std::filesystem::path ClientFolderPath() {
    ClientFolder& folder = TheClientFolder();
    const std::lock_guard lock(folder.mutex);
    return folder.path;
}

constexpr const char* kLogFolder = "log";

}  // namespace

bool IsLogName(std::string_view name) {
    if (name.empty()) return true;
    return name.size() <= CClientLog::kMaxName && HasNameCharactersOnly(name) &&
           name.find("..") == std::string_view::npos && name.back() != '.' && name.back() != ' ' &&
           !IsDevice(name);
}

CClientLog::CClientLog(std::filesystem::path clientFolder, CTextLog::Clock clock, uintmax_t maxFile)
    : m_folder(std::move(clientFolder) / kLogFolder), m_clock(std::move(clock)), m_maxFile(maxFile) {}

bool CClientLog::Write(std::string_view message, std::string_view name) const noexcept {
    try {
        return _write(message, name);
    } catch (...) {  // no memory, or a path that the system refuses
        return Dropped("client_log_failed");
    }
}

bool CClientLog::_write(std::string_view message, std::string_view name) const {
    if (!IsLogName(name)) return Dropped("client_log_name_refused");
    const LogTime now = m_clock();
    const std::filesystem::path path = _path(now, name);
    if (path.u16string().size() > kMaxPath) return Dropped("client_log_name_refused");
    if (message.size() > kMaxMessage) {
        message = code_page::Truncate(message, kMaxMessage);
        CCounters::Add("client_log_line_cut");
    }
    std::string line = TimeStamp(now) + "    ";
    AppendOnOneLine(line, message);
    line += "\n ";

    return _append(path, line);
}

bool CClientLog::_append(const std::filesystem::path& path, std::string_view line) const {
    const std::lock_guard lock(AppendMutex());
    std::error_code error;  // what is missing shows when the file is opened
    std::filesystem::create_directory(m_folder, error);
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size >= m_maxFile) return Dropped("client_log_full");
    std::ofstream file(path, std::ios::binary | std::ios::app);
    file.write(line.data(), static_cast<std::streamsize>(line.size()));
    file.close();
    return file ? true : Dropped("client_log_failed");
}

std::filesystem::path CClientLog::_path(const LogTime& now, std::string_view name) const {
    char day[48];
    std::snprintf(day, sizeof day, "%4d%02d%02d_", now.year, now.month, now.day);
    return m_folder / PathFromText(day + std::string(name.empty() ? "datamanager" : name) + ".log");
}

void SetClientFolder(std::filesystem::path folder) {
    ClientFolder& current = TheClientFolder();
    const std::lock_guard lock(current.mutex);
    current.path.swap(folder);
}

std::filesystem::path ClientLogFolder() {
    std::filesystem::path folder = ClientFolderPath();
    return folder.empty() ? folder : folder / kLogFolder;
}

bool WriteClientLog(std::string_view message, std::string_view name) noexcept {
    try {
        const std::filesystem::path folder = ClientFolderPath();
        if (folder.empty()) return Dropped("client_log_without_folder");
        return CClientLog(folder).Write(message, name);
    } catch (...) {  // no memory
        return Dropped("client_log_failed");
    }
}

}  // namespace luadui
