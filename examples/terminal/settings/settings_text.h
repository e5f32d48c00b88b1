// The text of one settings file, line by line, so that what a person wrote into it survives a change by the program.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace terminal {

// A line is "key=value"; lines without '=' (section names, comments, damage) and lines that start with ';' or '#' are
// kept where they stand and mean nothing. Blanks around key and value are dropped. Of equal keys the last one counts.
//
// Keys and values may be any bytes: what a line cannot hold (line ends, zero bytes, blanks at the ends, '=' in a key)
// is written as %XX. Going through the text byte by byte is safe: no second half of a two-byte character of code page
// 936 looks like '=', '%', ';', '#', a blank or a line end. A '%' that no two hexadecimal digits follow is itself.
class SettingsText {
  public:
    static SettingsText Parse(std::string_view text);
    std::string ToText() const;

    std::optional<std::string> Get(const std::string& key) const;
    void Set(const std::string& key, const std::string& value);
    bool Erase(const std::string& key);  // false when there was none
    // Every key once with its value, in the order of the file.
    std::vector<std::pair<std::string, std::string>> All() const;

  private:
    struct Line {
        std::string text;  // as it stands in the file; used when isSetting is false
        bool isSetting = false;
        std::string key;
        std::string value;
    };
    static Line _parseLine(std::string_view text);

    std::vector<Line> m_lines;
    std::map<std::string, size_t> m_index;  // key -> its last line
};

}  // namespace terminal
