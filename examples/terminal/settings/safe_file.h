// Files that are either the old one or the new one, never half of it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace terminal {

// The steps of writing a file, each of which can fail; tests let them.
class FileSteps {
  public:
    virtual ~FileSteps() = default;

    class File {
      public:
        virtual ~File() = default;                      // closes
        virtual bool Write(std::string_view text) = 0;  // all of it
        virtual bool Flush() = 0;                       // down to the disk
    };
    virtual std::unique_ptr<File> Create(const std::filesystem::path& path);  // null when it cannot
    virtual bool Rename(const std::filesystem::path& from, const std::filesystem::path& to);
    virtual void Remove(const std::filesystem::path& path);
};

enum class FileRead { kDone, kAbsent, kFailed };

// Reads a whole file of at most `limit` bytes; `text` is set only when done.
FileRead ReadFile(const std::filesystem::path& path, size_t limit, std::string& text);

// Writes `text` beside `path` and puts it in the place of `path` once it is on the disk; makes missing folders. False
// when a step failed: the old file is then untouched.
bool WriteFileSafely(const std::filesystem::path& path, std::string_view text, FileSteps& steps);

}  // namespace terminal
