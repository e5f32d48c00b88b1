#include "base/text_log.h"

#include <cstdio>
#include <utility>

#include "base/counters.h"
#include "platform/code_page.h"
#include "platform/win32.h"

namespace luadui {
namespace {

void AppendEscaped(std::string& line, char c) {
    switch (c) {
        case '\n':
            line += "\\n";
            return;
        case '\r':
            line += "\\r";
            return;
        case '\t':
            line += "\\t";
            return;
        default:
            break;
    }
    constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    line += "\\x";
    line += kDigits[byte >> 4];
    line += kDigits[byte & 15];
}

bool MayStand(std::string_view text, size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    return byte >= 0x20 && byte != 0x7F && !code_page::IsLeadByte(text[at]);
}

void AppendText(std::string& line, std::string_view text) {
    for (size_t at = 0, length = 0; at < text.size(); at += length) {
        length = code_page::CharLength(text, at);
        if (length == 2) {
            line.append(text, at, 2);
        } else if (MayStand(text, at)) {
            line += text[at];
        } else {
            AppendEscaped(line, text[at]);
        }
    }
}

std::string TimeText(const LogTime& time) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", time.year, time.month,
                  time.day, time.hour, time.minute, time.second, time.millisecond);
    return buffer;
}

}  // namespace

CTextLog::CTextLog(std::filesystem::path folder, std::string fileName, uint64_t maxBytes, Clock clock)
    : m_folder(std::move(folder)),
      m_fileName(std::move(fileName)),
      m_maxBytes(maxBytes),
      m_clock(std::move(clock)) {}

LogTime CTextLog::SystemTime() {
    SYSTEMTIME time{};
    GetLocalTime(&time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds};
}

bool CTextLog::Write(std::string_view text) noexcept {
    bool written = false;
    try {
        written = _write(text);
    } catch (...) {  // no memory, or a path that the system refuses
    }
    if (!written) CCounters::Add("log_write_failed");
    return written;
}

std::filesystem::path CTextLog::File() const {
    const std::lock_guard lock(m_mutex);
    return m_path;
}

bool CTextLog::_write(std::string_view text) {
    const LogTime now = m_clock();
    std::string line = TimeText(now);
    if (text.size() > kMaxLine) {
        text = code_page::Truncate(text, kMaxLine);
        CCounters::Add("log_line_cut");
    }
    AppendText(line, text);
    line += '\n';

    const std::lock_guard lock(m_mutex);
    if (!_open(now) || !_makeRoom(now, line.size())) return false;
    m_file.write(line.data(), static_cast<std::streamsize>(line.size()));
    m_file.flush();
    if (!m_file) {
        m_file.close();
        return false;
    }
    m_size += line.size();
    return true;
}

// Opens the file of the day unless it is the open one.
bool CTextLog::_open(const LogTime& now) {
    std::filesystem::path path = _path(now, "");
    if (m_file.is_open() && path == m_path) return true;
    m_file.close();
    m_file.clear();
    std::error_code ignored;  // that the folder is missing shows when the file is opened
    std::filesystem::create_directories(m_folder, ignored);
    m_file.open(path, std::ios::binary | std::ios::app);
    if (!m_file) return false;
    std::error_code error;
    const uint64_t size = std::filesystem::file_size(path, error);
    m_size = error ? 0 : size;
    m_path = std::move(path);
    return true;
}

// Starts a new file when this one and its predecessor could pass the limit.
bool CTextLog::_makeRoom(const LogTime& now, uint64_t bytes) {
    if (m_size == 0 || m_size + bytes <= m_maxBytes / 2) return true;
    const std::filesystem::path old = _path(now, ".old");
    m_file.close();
    std::error_code error;
    if (std::filesystem::exists(old, error)) CCounters::Add("log_file_replaced");
    std::filesystem::rename(m_path, old, error);
    if (error) std::filesystem::resize_file(m_path, 0, error);  // held open by somebody: start it anew
    return !error && _open(now);
}

std::filesystem::path CTextLog::_path(const LogTime& now, std::string_view suffix) const {
    char day[48];
    std::snprintf(day, sizeof day, "-%04d%02d%02d", now.year, now.month, now.day);
    const std::filesystem::path name(m_fileName);
    std::filesystem::path path = m_folder / name.stem();
    path += day;
    path += suffix;
    path += name.extension();
    return path;
}

}  // namespace luadui
