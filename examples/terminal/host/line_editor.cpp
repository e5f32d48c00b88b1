#include "host/line_editor.h"

#include <histedit.h>
#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <vector>

namespace terminal {
namespace {

constexpr int kIdleInterval = 50;  // milliseconds
constexpr int kMaxHistory = 200;

// Names are typed in Chinese too: the editor has to take UTF-8 whatever the environment says.
void UseUtf8() {
    setlocale(LC_CTYPE, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) setlocale(LC_CTYPE, "C.UTF-8");
}

}  // namespace

struct LineEditor::State {
    EditLine* editor = nullptr;
    History* history = nullptr;
    std::string prompt;
    std::string words;
    const std::function<void()>* idle = nullptr;

    static State& Of(EditLine* editor) {
        void* state = nullptr;
        el_get(editor, EL_CLIENTDATA, &state);
        return *static_cast<State*>(state);
    }
    static char* OnPrompt(EditLine* editor) { return Of(editor).prompt.data(); }
    static int OnRead(EditLine* editor, wchar_t* character);
    static unsigned char OnTab(EditLine* editor, int);

    std::vector<std::string> Matches(const std::string& begin) const;
};

// One character of the input: 1, or 0 at its end. Whatever the host has to do is done while none comes.
int LineEditor::State::OnRead(EditLine* editor, wchar_t* character) {
    std::mbstate_t state = {};
    for (;;) {
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, kIdleInterval) == 0) {
            (*Of(editor).idle)();
            continue;
        }
        char byte = 0;
        if (read(STDIN_FILENO, &byte, 1) != 1) return 0;
        const size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used == static_cast<size_t>(-1)) state = {};  // no character: left out
        if (used <= 1) return 1;
    }
}

std::vector<std::string> LineEditor::State::Matches(const std::string& begin) const {
    std::vector<std::string> matches;
    size_t from = 0;
    while (from < words.size()) {
        const size_t to = std::min(words.find(' ', from), words.size());
        if (words.compare(from, begin.size(), begin) == 0 && to - from >= begin.size())
            matches.push_back(words.substr(from, to - from));
        from = to + 1;
    }
    return matches;
}

// Completes the first word as far as it is certain; when it is not, shows what it may be.
unsigned char LineEditor::State::OnTab(EditLine* editor, int) {
    const LineInfo* line = el_line(editor);
    const std::string begin(line->buffer, line->cursor);
    if (begin.find(' ') != std::string::npos) return CC_ERROR;
    const std::vector<std::string> matches = Of(editor).Matches(begin);
    if (matches.empty()) return CC_ERROR;
    std::string common = matches.front();
    for (const std::string& match : matches)
        while (match.compare(0, common.size(), common) != 0) common.pop_back();
    if (matches.size() == 1) common += ' ';
    if (common.size() > begin.size())
        return el_insertstr(editor, common.c_str() + begin.size()) == 0 ? CC_REFRESH : CC_ERROR;
    std::fputc('\n', stdout);
    for (const std::string& match : matches) std::printf("  %s", match.c_str());
    std::fputc('\n', stdout);
    std::fflush(stdout);
    return CC_REDISPLAY;
}

LineEditor::LineEditor() : m_state(new State) {
    UseUtf8();
    m_state->editor = el_init("terminal", stdin, stdout, stderr);
    m_state->history = history_init();
    if (!m_state->editor || !m_state->history) return;
    HistEvent event;
    history(m_state->history, &event, H_SETSIZE, kMaxHistory);
    history(m_state->history, &event, H_SETUNIQUE, 1);
    EditLine* editor = m_state->editor;
    el_set(editor, EL_CLIENTDATA, m_state.get());
    el_set(editor, EL_PROMPT, &State::OnPrompt);
    el_set(editor, EL_EDITOR, "emacs");
    el_set(editor, EL_SIGNAL, 1);  // Ctrl-C leaves the screen as it was
    el_set(editor, EL_HIST, history, m_state->history);
    el_set(editor, EL_GETCFN, &State::OnRead);
    el_set(editor, EL_ADDFN, "complete-command", "Completes the name of a command", &State::OnTab);
    el_set(editor, EL_BIND, "^I", "complete-command", nullptr);
}

LineEditor::~LineEditor() {
    if (m_state->editor) el_end(m_state->editor);
    if (m_state->history) history_end(m_state->history);
}

std::optional<std::string> LineEditor::Read(const std::string& prompt, const std::string& words,
                                            const std::function<void()>& idle) {
    if (!m_state->editor || !m_state->history) return std::nullopt;
    m_state->prompt = prompt;
    m_state->words = words;
    m_state->idle = &idle;
    int count = 0;
    const char* line = el_gets(m_state->editor, &count);
    if (!line || count <= 0) return std::nullopt;
    std::string text(line);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    HistEvent event;
    if (!text.empty()) history(m_state->history, &event, H_ENTER, text.c_str());
    return text;
}

}  // namespace terminal
