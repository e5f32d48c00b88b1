// Lines that a person types, or that come from a file or pipe.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace terminal {

class LineEditor;

// In front of a person: editing, history, completion of command names on tab (where the line editor was built in).
// Otherwise plain lines, without a prompt.
//
// Threads: one.
class LineInput {
  public:
    LineInput();
    ~LineInput();

    bool IsInteractive() const;

    // The next line without its end; nothing at the end of the input. `words`, separated by blanks, complete the first
    // word of the line. `idle` is called some twenty times a second while the person thinks; it must not throw.
    std::optional<std::string> Read(const std::string& prompt, const std::string& words,
                                    const std::function<void()>& idle);

  private:
    std::optional<std::string> _readPlain(const std::function<void()>& idle);

    std::unique_ptr<LineEditor> m_editor;  // made for the first line; null without one
    std::string m_buffer;                  // read and not yet handed out
    bool m_ended = false;
};

}  // namespace terminal
