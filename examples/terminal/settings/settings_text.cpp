#include "settings/settings_text.h"

namespace terminal {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view Trim(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0) {
            out.push_back(text[i]);
            continue;
        }
        out.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return out;
}

// True when `text[i]` would not come back as it is.
bool NeedsEscape(std::string_view text, size_t i, bool isKey) {
    const char c = text[i];
    const bool atEnd = i == 0 || i + 1 == text.size();
    if (c == '\n' || c == '\r' || c == '\0') return true;
    if (atEnd && kBlanks.find(c) != std::string_view::npos) return true;
    if (c == '%') return i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 && HexDigit(text[i + 2]) >= 0;
    // A byte order mark in front of the first key would be taken for the file's.
    return isKey && (c == '=' || (i == 0 && (c == ';' || c == '#' || c == kByteOrderMark[0])));
}

std::string Escape(std::string_view text, bool isKey) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (!NeedsEscape(text, i, isKey)) {
            out.push_back(text[i]);
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[i]);
        out += {'%', kDigits[byte / 16], kDigits[byte % 16]};
    }
    return out;
}

}  // namespace

SettingsText::Line SettingsText::_parseLine(std::string_view text) {
    Line line;
    line.text = text;
    const std::string_view content = Trim(text);
    const size_t equals = content.find('=');
    if (equals == std::string_view::npos || content[0] == ';' || content[0] == '#') return line;
    line.key = Unescape(Trim(content.substr(0, equals)));
    line.value = Unescape(Trim(content.substr(equals + 1)));
    line.isSetting = !line.key.empty();
    return line;
}

SettingsText SettingsText::Parse(std::string_view text) {
    SettingsText settings;
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        settings.m_lines.push_back(_parseLine(line));
        if (settings.m_lines.back().isSetting)
            settings.m_index[settings.m_lines.back().key] = settings.m_lines.size() - 1;
    }
    return settings;
}

std::string SettingsText::ToText() const {
    std::string text;
    for (const Line& line : m_lines) {
        text += line.isSetting ? Escape(line.key, true) + '=' + Escape(line.value, false) : line.text;
        text += '\n';
    }
    return text;
}

std::optional<std::string> SettingsText::Get(const std::string& key) const {
    const auto found = m_index.find(key);
    if (found == m_index.end()) return std::nullopt;
    return m_lines[found->second].value;
}

void SettingsText::Set(const std::string& key, const std::string& value) {
    const auto [place, isNew] = m_index.try_emplace(key, m_lines.size());
    if (isNew) m_lines.push_back({.text = {}, .isSetting = true, .key = key, .value = {}});
    m_lines[place->second].value = value;
}

bool SettingsText::Erase(const std::string& key) {
    if (m_index.count(key) == 0) return false;
    std::erase_if(m_lines, [&](const Line& line) { return line.isSetting && line.key == key; });
    m_index.clear();
    for (size_t i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].isSetting) m_index[m_lines[i].key] = i;
    return true;
}

std::vector<std::pair<std::string, std::string>> SettingsText::All() const {
    std::vector<std::pair<std::string, std::string>> all;
    for (size_t i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].isSetting && m_index.at(m_lines[i].key) == i)
            all.emplace_back(m_lines[i].key, m_lines[i].value);
    return all;
}

}  // namespace terminal
