#include "datamgr/answer_parts.h"

#include <utility>

#include "base/counters.h"
#include "base/json_object.h"
#include "datalists/table_columns.h"
#include "datamgr/answer.h"

namespace luadui {

bool AnswerParts::Join(Answer& answer) {
    const bool isLast = !answer.response.IsPart();
    if (isLast && !m_isOpen) return true;
    m_isOpen = true;
    _add(answer);
    if (!isLast) {
        AddJsonFields(answer.response, m_fields);
        return false;
    }
    AnswerParts all = std::exchange(*this, AnswerParts());
    answer.hasTable = answer.hasTable || all.m_rows.GetColumnNumber() != 0;
    answer.table = std::move(all.m_rows);
    answer.fields = std::move(all.m_fields);
    answer.rawData = std::move(all.m_rawData);
    if (all.m_code != 0) {
        answer.code = all.m_code;
        answer.message = std::move(all.m_message);
    }
    return true;
}

void AnswerParts::_add(const Answer& answer) {
    if (m_code == 0) {
        m_code = answer.code;
        m_message = answer.message;
    }
    _addRawData(answer.response);
    if (answer.hasTable && !AppendRows(answer.table, m_rows)) CCounters::Add("answer_part_refused");
}

void AnswerParts::_addRawData(const CUIData& response) {
    CJsonObject json;  // where the host took the text apart
    const std::string text =
        response.GetData("RawData", json) ? json.ToText() : response.GetDataString("RawData");
    if (text.empty()) return;
    if (text.size() > kMaxText - m_textSize) return CCounters::Add("answer_part_refused");
    m_textSize += text.size();
    m_rawData.Append(text);
}

bool AppendRows(const CDataTable& rows, CDataTable& table) {
    constexpr int kMaxColumns = 4096;
    if (table.GetRowNumber() >= AnswerParts::kMaxRows) return false;
    AddColumnsOf(rows, table, kMaxColumns);
    return table.InsertTable(rows);
}

}  // namespace luadui
