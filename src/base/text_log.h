// CTextLog: a dated text log, one line an event.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/export.h"

namespace luadui {

// Local time, as a clock on the wall shows it.
struct LogTime {
    int year, month, day, hour, minute, second, millisecond;
};

// Writes lines "2026-11-21 09:03:47.123 text" to a file a day: "trade.log" becomes "trade-20261121.log". Text is code
// page 936 and is written as it is, but for control characters and broken bytes, which are escaped (\n, \r, \t, \x1b):
// an event is always one line.
//
// The file and its predecessor of the same day ("trade-20261121.old.log", to which it is renamed when it is full) stay
// below the size limit together: the latest events are always there. What goes with a predecessor that is replaced
// counts as "log_file_replaced", a line that was too long (it is cut) as "log_line_cut".
//
// Threads: any. Failure: a line that cannot be written is dropped and counted as "log_write_failed"; the next one
// tries again. Nothing throws.
class TESSEL_API CTextLog {
  public:
    using Clock = std::function<LogTime()>;
    static constexpr uint64_t kDefaultMaxBytes = 64u << 20;
    static constexpr size_t kMaxLine = 16u << 10;

    // The folder is made when it is missing. Nothing is opened before the first line.
    CTextLog(std::filesystem::path folder, std::string fileName, uint64_t maxBytes = kDefaultMaxBytes,
             Clock clock = SystemTime);
    CTextLog(const CTextLog&) = delete;
    CTextLog& operator=(const CTextLog&) = delete;

    // False when the line was dropped.
    bool Write(std::string_view text) noexcept;
    // The file that the last line went to; empty before the first.
    std::filesystem::path File() const;

    static LogTime SystemTime();

  private:
    bool _write(std::string_view text);
    bool _open(const LogTime& now);
    bool _makeRoom(const LogTime& now, uint64_t bytes);
    std::filesystem::path _path(const LogTime& now, std::string_view suffix) const;

    const std::filesystem::path m_folder;
    const std::string m_fileName;
    const uint64_t m_maxBytes;
    const Clock m_clock;

    mutable std::mutex m_mutex;  // guards what follows
    std::filesystem::path m_path;
    std::ofstream m_file;
    uint64_t m_size = 0;
};

}  // namespace luadui
