#include "host/line_input.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#if defined(_WIN32)
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#if defined(TERMINAL_LINE_EDITOR)
#include <editline/readline.h>
#endif

namespace terminal {
namespace {

#if defined(TERMINAL_LINE_EDITOR)
// The line editor knows only global functions; there is one prompt in the program.
const std::string* g_words = nullptr;
const std::function<void()>* g_idle = nullptr;

int OnIdle() {
    (*g_idle)();
    return 0;
}

// The `index`-th word that begins with `text`, allocated as the editor wants it; null after the last.
char* NthWord(const char* text, int index) {
    const size_t length = std::strlen(text);
    size_t begin = 0;
    while (begin < g_words->size()) {
        const size_t end = std::min(g_words->find(' ', begin), g_words->size());
        if (g_words->compare(begin, length, text) == 0 && end - begin >= length && index-- == 0)
            return strdup(g_words->substr(begin, end - begin).c_str());
        begin = end + 1;
    }
    return nullptr;
}

char* NextWord(const char* text, int state) {
    static int index = 0;
    index = state == 0 ? 0 : index + 1;
    return NthWord(text, index);
}

char** Complete(const char* text, int start, int) {
    rl_attempted_completion_over = 1;  // no names of files
    return start == 0 ? rl_completion_matches(text, NextWord) : nullptr;
}

std::optional<std::string> ReadEdited(const std::string& prompt) {
    rl_readline_name = const_cast<char*>("terminal");
    rl_attempted_completion_function = Complete;
    rl_event_hook = OnIdle;
    char* line = readline(prompt.c_str());
    if (!line) return std::nullopt;
    std::string text(line);
    std::free(line);
    if (!text.empty()) add_history(text.c_str());
    return text;
}
#endif

}  // namespace

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
        g_words = &words;
        g_idle = &idle;
        return ReadEdited(prompt);
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
