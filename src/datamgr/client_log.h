// The client's log: lines that pages and data managers ask for, in dated files of the folder "log" of the
// client.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "base/text_log.h"

namespace luadui {

// Line "20240105 09:05:07:45    message", a line feed and a blank, so that every line but a file's first
// begins with a blank; other programs read the files, and the milliseconds have no leading zeros. A name
// makes a file a day, "20240105_<name>.log"; the empty name stands for "datamanager". Files are opened and
// closed for every line.
//
// Names come from pages and are names, never paths: see IsLogName. In a message, line ends and zero bytes are
// written as \n, \r and \0, so that an event is always one line; everything else is written as it is. One
// longer than kMaxMessage is cut between two characters ("client_log_line_cut").
//
// Threads: any; lines that two threads write at once both arrive whole. Nothing throws. A line that is not
//          written counts as "client_log_name_refused", "client_log_full" (the file has reached kMaxFile) or
//          "client_log_failed".
class CClientLog {
  public:
    static constexpr size_t kMaxMessage = 64u << 10;
    static constexpr uintmax_t kMaxFile = 256u << 20;
    static constexpr size_t kMaxName = 128, kMaxPath = 259;

    // The folder "log" is made below `clientFolder` when it is missing, `clientFolder` itself is not.
    explicit CClientLog(std::filesystem::path clientFolder, CTextLog::Clock clock = CTextLog::SystemTime,
                        uintmax_t maxFile = kMaxFile);

    // False when the line was dropped. `message` and `name` are code page 936.
    bool Write(std::string_view message, std::string_view name) const noexcept;

  private:
    bool _write(std::string_view message, std::string_view name) const;
    bool _append(const std::filesystem::path& path, std::string_view line) const;
    std::filesystem::path _path(const LogTime& now, std::string_view name) const;

    const std::filesystem::path m_folder;
    const CTextLog::Clock m_clock;
    const uintmax_t m_maxFile;
};

// True for what can be part of a file's name on every system: at most CClientLog::kMaxName bytes of whole
// characters, none of them a control character or one of \ / : * ? " < > |, no "..", no dot or blank at the
// end, and no name of a device ("NUL", "com1.txt"). The empty name is one.
bool IsLogName(std::string_view name);

// The process's log. Lines that come before the folder is known are dropped and count as
// "client_log_without_folder".
void SetClientFolder(std::filesystem::path folder);
// The folder "log" of the client; empty while the client's folder is not known.
std::filesystem::path ClientLogFolder();
bool WriteClientLog(std::string_view message, std::string_view name) noexcept;

}  // namespace luadui
