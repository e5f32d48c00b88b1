// Any bytes as a reply about the code list: what comes out is sound, within the limits, reads back as itself,
// and does not depend on rows of other lines.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/text.h"
#include "codedata/code_list.h"
#include "platform/code_page.h"

namespace {

using luadui::CodeList;
using luadui::CodeRecord;

bool IsWhole(std::string_view text) {
    for (size_t at = 0; at < text.size(); at += luadui::code_page::CharLength(text, at)) {
        const bool isBroken =
            luadui::code_page::CharLength(text, at) == 1 && luadui::code_page::IsLeadByte(text[at]);
        if (isBroken || (text[at] >= 0 && text[at] < ' ')) return false;
    }
    return true;
}

bool IsSound(const CodeRecord& record) {
    return !record.code.empty() && record.code.size() <= CodeList::kMaxCode && luadui::IsAscii(record.code) &&
           record.code.find_first_of(" ,:|") == record.code.npos && !record.market.empty() &&
           record.market.size() <= CodeList::kMaxMarket &&
           record.market.find_first_not_of("0123456789") == record.market.npos &&
           record.name.size() <= CodeList::kMaxName && IsWhole(record.name) &&
           record.phonetic.size() <= CodeList::kMaxPhonetic && IsWhole(record.phonetic);
}

std::string Field(std::string_view text) {
    std::string quoted = luadui::ReplaceText(text, "&", "&#038;");
    return '"' + luadui::ReplaceText(quoted, "\"", "&#034;") + '"';
}

std::string Row(const CodeRecord& record) {
    return Field(record.code) + ',' + Field(record.name) + ',' + Field(record.market) + ',' +
           Field(record.phonetic) + '\n';
}

std::string Text(const CodeList& list) {
    std::string text;
    for (const CodeRecord& record : list) text += Row(record);
    return text;
}

void Require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string reply(reinterpret_cast<const char*>(data), size);
    const CodeList list = CodeList::Parse(reply);
    for (const CodeRecord& record : list) Require(IsSound(record));
    const std::string text = Text(list);
    Require(Text(CodeList::Parse(text)) == text);

    const std::string row = Row({"600000", "\xC6\xD6", "17", "PF"});
    Require(Text(CodeList::Parse(reply + '\n' + row)) == text + row);
    Require(Text(CodeList::Parse(row + reply)) == row + text);

    const CodeList few = CodeList::Parse(reply, {.records = 2});
    Require(few.size() == (list.size() < 2 ? list.size() : 2) && text.starts_with(Text(few)));
    // Cut in the middle only what is cut off may be missing.
    Require(text.starts_with(Text(CodeList::Parse(reply, {.bytes = size / 2}))));
    return 0;
}
