#include "host/line_input.h"

#include <cstdio>
#include <iostream>

#if defined(_WIN32)
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#if defined(TERMINAL_LINE_EDITOR)
#include "host/line_editor.h"
#else
class terminal::LineEditor {};
#endif

namespace terminal {

LineInput::LineInput() = default;
LineInput::~LineInput() = default;

#if defined(_WIN32)

bool LineInput::IsInteractive() const { return _isatty(_fileno(stdin)) != 0; }

// A console cannot be waited for together with messages here: what arrives meanwhile is served after the line.
std::optional<std::string> LineInput::_readPlain(const std::function<void()>& idle) {
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    idle();
    return line;
}

#else

bool LineInput::IsInteractive() const { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

std::optional<std::string> LineInput::_readPlain(const std::function<void()>& idle) {
    for (;;) {
        const size_t end = m_buffer.find('\n');
        if (end != std::string::npos || (m_ended && !m_buffer.empty())) {
            const std::string line = m_buffer.substr(0, end);
            m_buffer.erase(0, end == std::string::npos ? end : end + 1);
            return line;
        }
        if (m_ended) return std::nullopt;
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, 50) == 0) {
            idle();
            continue;
        }
        char block[4096];
        const ssize_t size = read(STDIN_FILENO, block, sizeof block);
        if (size <= 0) m_ended = true;
        if (size > 0) m_buffer.append(block, static_cast<size_t>(size));
    }
}

#endif

std::optional<std::string> LineInput::Read(const std::string& prompt, const std::string& words,
                                           const std::function<void()>& idle) {
    std::fflush(stdout);
#if defined(TERMINAL_LINE_EDITOR)
    if (IsInteractive()) {
        if (!m_editor) m_editor = std::make_unique<LineEditor>();
        return m_editor->Read(prompt, words, idle);
    }
#endif
    (void)words;
    if (IsInteractive()) {
        std::fputs(prompt.c_str(), stdout);
        std::fflush(stdout);
    }
    return _readPlain(idle);
}

}  // namespace terminal
