// A table drawn with characters, aligned by display width.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace terminal {

// Text is code page 936, where a character of two bytes is two columns wide: the length in bytes is the width. Cells are
// cleaned first (see CleanText), so that broken text can neither move what follows it nor reach the screen's controls.
class TextTable {
  public:
    enum class Align { kLeft, kRight };
    void AddColumn(std::string_view heading, Align align) { m_columns.push_back({Clean(heading), align}); }
    // Missing cells are empty, further ones are dropped.
    void AddRow(const std::vector<std::string>& cells);

    // The heading, a rule and the rows, one line each. Longer cells than `maxCell` and longer lines than `maxLine`
    // columns (0: any) are cut between characters.
    std::string ToText(size_t maxLine = 0, size_t maxCell = 40) const;

    // Text of one line that takes as many columns as it has bytes: control characters become blanks, what is no
    // character becomes '?'.
    static std::string Clean(std::string_view text);
    // "-1234567.80" as "-1,234,567.80"; what is no number stays as it is.
    static std::string Grouped(std::string_view number);

  private:
    struct Column {
        std::string heading;
        Align align;
    };
    std::string _line(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                      size_t maxLine) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace terminal
