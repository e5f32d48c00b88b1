#include "settings/data_path.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/text.h"

namespace terminal {
namespace {

constexpr size_t kMaxName = 1000;
constexpr size_t kMaxPart = 200;

bool IsDevice(std::string_view part) {
    static constexpr std::array<std::string_view, 22> kDevices = {
        "CON",  "PRN",  "AUX",  "NUL",  "COM1", "COM2", "COM3", "COM4", "COM5", "COM6", "COM7",
        "COM8", "COM9", "LPT1", "LPT2", "LPT3", "LPT4", "LPT5", "LPT6", "LPT7", "LPT8", "LPT9"};
    const std::string stem = luadui::ToUpperText(part.substr(0, part.find('.')));
    return std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end();
}

bool IsSafePart(std::string_view part) {
    constexpr std::string_view kRefused = ":*?\"<>|";
    if (part.size() > kMaxPart || part == "." || part == ".." || part.back() == '.' || part.back() == ' ')
        return false;
    return !IsDevice(part) && std::none_of(part.begin(), part.end(), [&](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
               kRefused.find(c) != std::string_view::npos;
    });
}

}  // namespace

std::filesystem::path PathFromUtf8(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string PathToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::optional<std::filesystem::path> DataPath(const std::filesystem::path& folder, std::string_view name) {
    // Separators are looked for in UTF-8: the second half of a two-byte character may be a '\'.
    if (name.size() > kMaxName) return std::nullopt;
    std::string text = luadui::GbkToUtf8(name);
    if (luadui::Utf8ToGbk(text) != name) return std::nullopt;
    std::replace(text.begin(), text.end(), '\\', '/');
    std::filesystem::path path = folder;
    bool hasPart = false;
    for (const std::string_view part : luadui::SplitText(text, '/')) {
        if (part.empty()) continue;
        if (!IsSafePart(part)) return std::nullopt;
        path /= PathFromUtf8(part);
        hasPart = true;
    }
    if (!hasPart || text.back() == '/') return std::nullopt;
    return path;
}

}  // namespace terminal
