// The code list as the host's market database answers it: text, taken apart into records.
//
// One row a security, four fields a row: code, name, market id and phonetic initials. A field stands in
// double quotes or between "[[" and "]]"; "&#032;" in it is a blank, and "&#" with three other digits and ";"
// the ASCII character of that number. Rows end at a line break, a brace or the end; what stands between
// fields and rows may be commas, semicolons and blanks, so that the text of a Lua table reads as well. Text
// is code page 936 and read by character: a second byte is no quote, bracket or brace.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace luadui {

// One security. The texts lie in the list and live as long as it does.
struct CodeRecord {
    std::string_view code;      // printable ASCII without blanks, ',', ':' and '|'; not empty
    std::string_view name;      // whole characters of code page 936; may be empty
    std::string_view market;    // an id, one to five digits
    std::string_view phonetic;  // initials, as they came; may be empty, may hold several readings
};

// A list holds no more than this, whatever comes: behind it the reply is not read.
struct CodeListLimits {
    size_t bytes = 128u << 20;
    size_t records = 1'000'000;
};

// The rows of one reply, in its order; doubled ones stay. Threads: one at a time; const calls any.
class CodeList {
  public:
    // How long fields may be, in bytes. Rows with a longer code are dropped, longer names and phonetics are
    // cut at a character.
    static constexpr size_t kMaxCode = 31, kMaxMarket = 5, kMaxName = 127, kMaxPhonetic = 255;

    // Whether a record may have such a code and such a market.
    static bool IsCode(std::string_view text) noexcept;
    static bool IsMarket(std::string_view text) noexcept;

    CodeList() = default;
    CodeList(CodeList&&) = default;  // records stay valid
    CodeList& operator=(CodeList&&) = default;

    // Reads a reply, which may go afterwards, in time and memory in proportion to its size, up to the limits.
    // Rows that are no security (not four fields, text between fields, a quote that is not closed, a bad code
    // or market) are dropped and counted as "code_list_row_refused"; the rows of other lines stay. What else
    // counts: "code_list_cut" once when a limit was met, "code_list_text_cut" a name or phonetic that was too
    // long, "code_list_text_replaced" a row with bytes that are no character (each becomes '?').
    static CodeList Parse(std::string_view reply, const CodeListLimits& limits = {});

    const std::vector<CodeRecord>& Records() const { return m_records; }
    bool empty() const { return m_records.empty(); }
    size_t size() const { return m_records.size(); }
    auto begin() const { return m_records.begin(); }
    auto end() const { return m_records.end(); }

  private:
    class Reader;

    std::unique_ptr<char[]> m_text;  // of the records
    std::vector<CodeRecord> m_records;
};

}  // namespace luadui
