// Catches what is printed to standard output meanwhile.
#pragma once

#include <cstdio>
#include <string>

namespace terminal {

// The library prints some answers itself, in code page 936. The terminal's screen is UTF-8, so it catches such output
// and prints it converted. When it cannot be caught it goes where it always went.
//
// Threads: one; what others print meanwhile is caught too.
class OutputCapture {
  public:
    OutputCapture() = default;
    ~OutputCapture() { End(); }
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    void Begin();
    // What was printed since Begin, as it is; empty without Begin.
    std::string End();

  private:
    std::FILE* m_file = nullptr;
    int m_output = -1;  // the real standard output
};

}  // namespace terminal
