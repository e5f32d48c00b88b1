// What came so far of an answer in parts.
#pragma once

#include <cstddef>
#include <string>

#include "base/data_list.h"
#include "base/data_table.h"
#include "base/ui_data.h"

namespace luadui {

struct Answer;

// An answer that never ends does not fill the memory: rows and texts beyond the bounds are left out, each part that
// suffers is counted as "answer_part_refused".
//
// Threads: the UI thread.
class AnswerParts {
  public:
    static constexpr int kMaxRows = 4'000'000;            // of each table
    static constexpr size_t kMaxText = 64 * 1024 * 1024;  // bytes of raw data

    // Takes this part. False while further ones are to come. With the last one `answer` gets the content of all: the
    // rows of "Table", the raw data, and in `fields` what earlier parts said in JSON. It has failed when one of them
    // has, with the code and message of the first that did: rows that others brought are not all there are.
    bool Join(Answer& answer);

  private:
    void _add(const Answer& answer);
    void _addRawData(const CUIData& response);

    bool m_isOpen = false;  // a part came
    CDataTable m_rows;
    CUIData m_fields;
    CDataList m_rawData;
    size_t m_textSize = 0;
    int m_code = 0;  // of the first failed part
    std::string m_message;
};

// Appends the rows, with their columns. False, and nothing appended, when there is no room.
bool AppendRows(const CDataTable& rows, CDataTable& table);

}  // namespace luadui
