// A made-up code list, as real ones are: codes in ranges, names of frequent and rare characters, letters of half and full
// width, initials with several readings, codes that markets share.
#pragma once

#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "codedata/code_list.h"

namespace luadui {

class Securities {
  public:
    struct Row {
        std::string code, name, market, phonetic;
    };

    explicit Securities(size_t count, unsigned seed = 1) : m_random(seed) {
        std::set<std::pair<std::string, std::string>> seen;
        while (m_rows.size() < count) {
            const Range& range = kRanges[_below(std::size(kRanges))];
            std::string number = std::to_string(_below(10'000'000));
            number.insert(0, 7 - number.size(), '0');
            Row row{range.prefix, "", range.market, ""};
            row.code += number.substr(0, range.length - row.code.size());
            if (!seen.emplace(row.code, row.market).second) continue;
            _name(row);
            m_rows.push_back(std::move(row));
        }
    }

    const std::vector<Row>& Rows() const { return m_rows; }
    std::vector<CodeRecord> Records() const {  // of texts that live here
        std::vector<CodeRecord> records;
        for (const Row& row : m_rows) records.push_back({row.code, row.name, row.market, row.phonetic});
        return records;
    }
    // As the host answers it.
    std::string Reply() const {
        std::string reply;
        for (const Row& row : m_rows) {
            reply.append("\"").append(row.code).append("\",\"").append(row.name).append("\",\"");
            reply.append(row.market).append("\",\"").append(row.phonetic).append("\"\n");
        }
        return reply;
    }

  private:
    struct Range {
        const char *prefix, *market;
        size_t length;
    };
    static constexpr Range kRanges[] = {{"60", "17", 6}, {"60", "17", 6}, {"68", "145", 6}, {"00", "33", 6},
                                        {"00", "33", 6}, {"30", "33", 6}, {"900", "18", 6}, {"20", "34", 6},
                                        {"11", "19", 6}, {"20", "19", 6}, {"51", "20", 6},  {"12", "35", 6},
                                        {"15", "36", 6}, {"00", "21", 6}, {"39", "37", 6},  {"", "22", 6},
                                        {"", "76", 5},   {"0", "156", 5}};

    size_t _below(size_t limit) { return m_random() % limit; }
    bool _oneIn(size_t n) { return _below(n) == 0; }

    void _name(Row& row) {
        if (_oneIn(20)) _letters(row, _oneIn(2) ? "ST" : "*ST");
        for (size_t i = 3 + _below(3); i > 0; --i) {
            // Of 3,700 characters some are in every tenth name.
            const double share = std::uniform_real_distribution<>()(m_random);
            const auto character = static_cast<size_t>(share * share * share * 3'700);
            row.name += static_cast<char>(0xB0 + character / 94);
            row.name += static_cast<char>(0xA1 + character % 94);
            row.phonetic += static_cast<char>('A' + character % 26);
        }
        if (_oneIn(20)) _letters(row, "ETF");
        if (_oneIn(10)) {
            row.name += "\xA3\xC1";
            row.phonetic += 'A';
        }
        if (_oneIn(15))
            row.phonetic += " ,;"[_below(3)] + std::string(2, static_cast<char>('A' + _below(26)));
        if (_oneIn(30)) row.phonetic.clear();
    }
    static void _letters(Row& row, const std::string& letters) {
        row.name += letters;
        row.phonetic += letters;
    }

    std::mt19937 m_random;
    std::vector<Row> m_rows;
};

}  // namespace luadui
