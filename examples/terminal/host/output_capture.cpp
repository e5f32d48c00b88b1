#include "host/output_capture.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace terminal {
namespace {

#if defined(_WIN32)
constexpr auto& Duplicate = _dup;
constexpr auto& DuplicateTo = _dup2;
constexpr auto& CloseFile = _close;
constexpr auto& FileNumber = _fileno;
#else
constexpr auto& Duplicate = dup;
constexpr auto& DuplicateTo = dup2;
constexpr auto& CloseFile = close;
constexpr auto& FileNumber = fileno;
#endif

}  // namespace

void OutputCapture::Begin() {
    End();
    std::fflush(stdout);
    m_file = std::tmpfile();
    m_output = m_file ? Duplicate(FileNumber(stdout)) : -1;
    if (m_output >= 0 && DuplicateTo(FileNumber(m_file), FileNumber(stdout)) >= 0) return;
    if (m_output >= 0) CloseFile(m_output);
    if (m_file) std::fclose(m_file);
    m_file = nullptr;
}

std::string OutputCapture::End() {
    std::string text;
    if (!m_file) return text;
    std::fflush(stdout);
    DuplicateTo(m_output, FileNumber(stdout));
    CloseFile(m_output);
    std::rewind(m_file);
    char block[4096];
    for (size_t size; (size = std::fread(block, 1, sizeof block, m_file)) > 0;) text.append(block, size);
    std::fclose(m_file);
    m_file = nullptr;
    return text;
}

}  // namespace terminal
