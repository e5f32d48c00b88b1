// The editor of the prompt's lines: a thin layer over libedit. Built where that is installed.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace terminal {

// For a terminal on standard input and output. Threads: one.
class LineEditor {
  public:
    LineEditor();
    ~LineEditor();

    // As LineInput::Read.
    std::optional<std::string> Read(const std::string& prompt, const std::string& words,
                                    const std::function<void()>& idle);

  private:
    struct State;
    const std::unique_ptr<State> m_state;
};

}  // namespace terminal
