#include "settings/safe_file.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <system_error>

#if defined(_WIN32)
#include <io.h>
#include <process.h>
#else
#include <unistd.h>
#endif

namespace terminal {
namespace {

// The few calls that standard C++ has no words for.
#if defined(_WIN32)
std::FILE* OpenNew(const std::filesystem::path& path) { return _wfopen(path.c_str(), L"wb"); }
int SyncFile(std::FILE* file) { return _commit(_fileno(file)); }
int ProcessId() { return _getpid(); }
#else
std::FILE* OpenNew(const std::filesystem::path& path) { return std::fopen(path.c_str(), "wbe"); }
int SyncFile(std::FILE* file) { return fsync(fileno(file)); }
int ProcessId() { return getpid(); }
#endif

class DiskFile : public FileSteps::File {
  public:
    explicit DiskFile(std::FILE* file) : m_file(file) {}
    ~DiskFile() override { std::fclose(m_file); }
    bool Write(std::string_view text) override {
        return std::fwrite(text.data(), 1, text.size(), m_file) == text.size();
    }
    bool Flush() override { return std::fflush(m_file) == 0 && SyncFile(m_file) == 0; }

  private:
    std::FILE* const m_file;
};

// A name beside `path` that neither another thread nor another terminal on the same data folder uses.
std::filesystem::path TemporaryName(const std::filesystem::path& path) {
    static std::atomic<unsigned> counter{0};
    const std::string process = std::to_string(ProcessId());
    std::filesystem::path name = path;
    name += std::string(".")
                .append(process)
                .append("-")
                .append(std::to_string(counter.fetch_add(1)))
                .append(".tmp");
    return name;
}

}  // namespace

std::unique_ptr<FileSteps::File> FileSteps::Create(const std::filesystem::path& path) {
    std::FILE* file = OpenNew(path);
    return file ? std::make_unique<DiskFile>(file) : nullptr;
}

bool FileSteps::Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    return !error;
}

void FileSteps::Remove(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
}

FileRead ReadFile(const std::filesystem::path& path, size_t limit, std::string& text) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) return FileRead::kAbsent;
    if (!std::filesystem::is_regular_file(status)) return FileRead::kFailed;
    std::ifstream file(path, std::ios::binary);
    std::string content;
    char block[16384];
    while (file.read(block, sizeof block) || file.gcount() > 0) {
        content.append(block, static_cast<size_t>(file.gcount()));
        if (content.size() > limit) return FileRead::kFailed;
    }
    if (!file.eof()) return FileRead::kFailed;
    text = std::move(content);
    return FileRead::kDone;
}

bool WriteFileSafely(const std::filesystem::path& path, std::string_view text, FileSteps& steps) {
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    const std::filesystem::path temporary = TemporaryName(path);
    auto file = steps.Create(temporary);
    if (!file) return false;
    const bool written = file->Write(text) && file->Flush();
    file.reset();
    if (written && steps.Rename(temporary, path)) return true;
    steps.Remove(temporary);
    return false;
}

}  // namespace terminal
