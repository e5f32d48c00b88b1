#include "codedata/elk_queue.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

#include "base/data_table.h"
#include "base/guard.h"
#include "base/json_text.h"
#include "base/secret_fields.h"
#include "codedata/elk_item.h"

namespace luadui {
namespace {

constexpr const char* kItemColumns[] = {"TraceID", "LogSource", "Module", "ClientUser", "Stage"};

std::string TimeText(const LogTime& time) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second, time.millisecond);
    return buffer;
}

// An item may have been filled by other means than SetField: secrets are looked for once more where texts
// leave.
std::string FieldsText(const CUIData& item) {
    CUIData fields;
    item.GetData("Fields", fields);
    JsonText json;
    json.BeginObject();
    for (auto [name, value] : fields) {
        json.Member(name, IsSecretField(name) ? kSecretMask : std::string_view(value.AsText()));
    }
    json.EndObject();
    return json.Take();
}

}  // namespace

ElkQueue::ElkQueue(Limits limits, CTextLog::Clock clock) : m_limits(limits), m_clock(std::move(clock)) {}

ElkQueue::Line ElkQueue::_line(const CQueueLogElkItem& item) const {
    Line line{{}, sizeof(Line)};
    line.cells.reserve(std::size(kItemColumns) + 3);
    line.cells.push_back(TimeText(m_clock()));
    line.cells.push_back(std::to_string(item.Tag()));
    for (const char* column : kItemColumns) line.cells.push_back(item.GetDataString(column));
    line.cells.push_back(FieldsText(item));
    for (const std::string& cell : line.cells) line.bytes += sizeof cell + cell.size();
    return line;
}

void ElkQueue::Push(const CQueueLogElkItem& item) noexcept {
    Guarded("elk_dropped", [&] {
        Line line = _line(item);
        if (line.bytes > std::min(kMaxItemBytes, m_limits.bytes)) {
            CCounters::Add("elk_item_too_large");
            return;
        }
        Lines dropped;  // freed after the lock is
        const std::lock_guard lock(m_mutex);
        m_bytes += line.bytes;
        m_lines.push_back(std::move(line));
        _dropOldest(dropped);
    });
}

void ElkQueue::_dropOldest(Lines& dropped) {
    while (m_lines.size() > m_limits.items || m_bytes > m_limits.bytes) {
        m_bytes -= m_lines.front().bytes;
        dropped.push_back(std::move(m_lines.front()));
        m_lines.pop_front();
    }
    if (!dropped.empty()) CCounters::Add("elk_dropped", dropped.size());
}

ElkQueue::Lines ElkQueue::_take() {
    const std::lock_guard lock(m_mutex);
    const auto end =
        std::next(m_lines.begin(), static_cast<std::ptrdiff_t>(std::min(kBatchItems, m_lines.size())));
    Lines lines;
    lines.splice(lines.begin(), m_lines, m_lines.begin(), end);
    for (const Line& line : lines) m_bytes -= line.bytes;
    return lines;
}

void ElkQueue::_giveBack(Lines lines) {
    Lines dropped;
    const std::lock_guard lock(m_mutex);
    for (const Line& line : lines) m_bytes += line.bytes;
    m_lines.splice(m_lines.begin(), lines);
    _dropOldest(dropped);
}

CUIData ElkQueue::_batch(const Lines& lines) {
    CDataTable table;
    for (const char* column : {"Time", "ItemType"}) table.AddColumn(column);
    for (const char* column : kItemColumns) table.AddColumn(column);
    table.AddColumn("Fields");
    for (const Line& line : lines) {
        const int row = table.AppendRow();
        for (size_t i = 0; i < line.cells.size(); ++i) {
            table.SetItemText(row, static_cast<int>(i), line.cells[i]);
        }
    }
    CUIData batch;
    batch.SetData("Table", table);
    return batch;
}

size_t ElkQueue::Ship(ElkSink& sink) {
    if (m_isShipping) return 0;
    Lines lines = _take();
    if (lines.empty()) return 0;
    const size_t count = lines.size();
    bool taken = false;
    m_isShipping = true;
    Guarded("elk_sink_failed", [&] { taken = sink.ShipLogs(_batch(lines)); });
    m_isShipping = false;
    if (taken) return count;
    CCounters::Add("elk_batch_refused");
    _giveBack(std::move(lines));
    return 0;
}

size_t ElkQueue::Items() const {
    const std::lock_guard lock(m_mutex);
    return m_lines.size();
}

size_t ElkQueue::Bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

}  // namespace luadui
