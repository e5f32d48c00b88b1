// The columns of a table, and how the columns of one table answer those of another.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ref_ptr.h"
#include "base/text_view.h"

namespace luadui {

// Columns with their properties and an index by name. Tables share one header until a column is changed.
class TableHeader : public RefCounted {
  public:
    static constexpr std::string_view kName = "name";

    TableHeader() noexcept = default;
    TableHeader(const TableHeader& other);

    uint32_t Columns() const noexcept { return static_cast<uint32_t>(m_columns.size()); }
    uint32_t Add(std::string_view name);
    // The first column of that name; -1 when there is none.
    int Find(std::string_view name) const noexcept;
    // `column` must exist.
    void SetProperty(uint32_t column, std::string_view property, std::string_view value);
    TextView Property(uint32_t column, std::string_view property) const noexcept;
    const std::string& Name(uint32_t column) const noexcept { return m_columns[column].name; }

    // True when the columns of `other` have the names of our first columns, in the same order: cells then
    // need no map. One comparison of bytes.
    bool StartsWith(const TableHeader& other) const noexcept {
        return this == &other || m_names.compare(0, other.m_names.size(), other.m_names) == 0;
    }

    static void Destroy(TableHeader* header) noexcept { delete header; }

  private:
    struct Column {
        std::string name;
        std::vector<std::pair<std::string, std::string>> properties;  // without the name
    };

    TableHeader& operator=(const TableHeader&) = delete;
    void _index(uint32_t column) noexcept;
    void _rename(uint32_t column, std::string_view name);
    void _rebuildIndex(size_t slots);

    std::vector<Column> m_columns;
    std::string m_names;           // all names, each behind its size
    std::vector<int32_t> m_slots;  // hash table of column numbers, -1 where free; at most half full
};

using HeaderPtr = RefPtr<TableHeader>;

// Tells for each column of a table where rows written for other columns have its cell. Never changes.
class ColumnMap : public RefCounted {
  public:
    static constexpr uint32_t kNowhere = UINT32_MAX;

    explicit ColumnMap(std::vector<uint32_t> from) noexcept : m_from(std::move(from)) {}

    size_t Size() const noexcept { return m_from.size(); }
    uint32_t From(size_t column) const noexcept { return column < m_from.size() ? m_from[column] : kNowhere; }

    // The map for reading rows of `source` under `target`. The second column of a name answers the second one
    // of that name, and so on. `dropped` receives the number of source columns that `target` lacks. Null when
    // no map is needed.
    static RefPtr<const ColumnMap> Between(const TableHeader& target, const TableHeader& source,
                                           size_t& dropped);
    // First through `outer`, then through `inner`; null stands for the map that changes nothing.
    static RefPtr<const ColumnMap> Chain(const RefPtr<const ColumnMap>& outer,
                                         const RefPtr<const ColumnMap>& inner);

    static void Destroy(const ColumnMap* map) noexcept { delete map; }

  private:
    std::vector<uint32_t> m_from;
};

using MapPtr = RefPtr<const ColumnMap>;

}  // namespace luadui
