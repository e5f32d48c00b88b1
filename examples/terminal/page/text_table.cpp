#include "page/text_table.h"

#include <algorithm>

#include "base/text.h"

namespace terminal {
namespace {

constexpr std::string_view kGap = "  ";
constexpr size_t kMaxClean = 1000;

}  // namespace

std::string TextTable::Clean(std::string_view text) {
    std::string cut(text.size() > kMaxClean ? luadui::CutAtCharacter(text, kMaxClean) : text);
    // There and back: what is no character comes back as '?'.
    if (!luadui::IsAscii(cut)) cut = luadui::Utf8ToGbk(luadui::GbkToUtf8(cut));
    // No second byte of a character is below 0x40 or is 0x7F.
    for (char& c : cut)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    return cut;
}

std::string TextTable::Grouped(std::string_view number) {
    const size_t sign = !number.empty() && number[0] == '-' ? 1 : 0;
    const size_t end = std::min(number.find('.'), number.size());
    const bool isNumber =
        end > sign && std::all_of(number.begin() + static_cast<std::ptrdiff_t>(sign), number.end(),
                                  [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    std::string text(number);
    if (isNumber)
        for (size_t place = end; place > sign + 3; place -= 3) text.insert(place - 3, 1, ',');
    return text;
}

void TextTable::AddRow(const std::vector<std::string>& cells) {
    std::vector<std::string> row(m_columns.size());
    for (size_t i = 0; i < row.size() && i < cells.size(); ++i) row[i] = Clean(cells[i]);
    m_rows.push_back(std::move(row));
}

std::string TextTable::_line(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                             size_t maxLine) const {
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
        const std::string_view cell = luadui::CutAtCharacter(cells[i], widths[i]);
        const std::string fill(widths[i] - cell.size(), ' ');
        if (i > 0) line += kGap;
        if (m_columns[i].align == Align::kRight) line += fill;
        line += cell;
        if (m_columns[i].align == Align::kLeft) line += fill;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    if (maxLine > 0) line = luadui::CutAtCharacter(line, maxLine);
    return line + "\n";
}

std::string TextTable::ToText(size_t maxLine, size_t maxCell) const {
    std::vector<std::string> headings;
    std::vector<size_t> widths;
    for (const Column& column : m_columns) {
        headings.push_back(column.heading);
        widths.push_back(std::min(column.heading.size(), maxCell));
    }
    for (const auto& row : m_rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], std::min(row[i].size(), maxCell));

    std::vector<std::string> rules;
    for (const size_t width : widths) rules.emplace_back(width, '-');
    std::string text = _line(headings, widths, maxLine) + _line(rules, widths, maxLine);
    for (const auto& row : m_rows) text += _line(row, widths, maxLine);
    return text;
}

}  // namespace terminal
