#include "datamgr/ui_registry.h"

#include <algorithm>

#include "datamgr/kind_table.h"
#include "datamgr/type_code_table.h"
#include "datamgr/ui_registry_tables.h"

namespace luadui {
namespace {

using namespace registry;  // NOLINT(google-build-using-namespace)

// A row that was lost or added by mistake does not compile.
static_assert(std::size(kTypeCodes) == 227 && std::size(kPushKeys) == 65 && std::size(kCommonKinds) == 52);
static_assert(std::size(kPushQueries) == 20 && std::size(kNeverConverted) == 15);

using TypeCodeIndex = KindIndex<kTypeCodes, &KindType::kind>;
using PushKeyIndex = KindIndex<kPushKeys, &KindPushKey::kind>;
using CommonIndex = KindIndex<kCommonKinds>;
using PushQueryIndex = KindIndex<kPushQueries, &PushQuery::kind>;
using NeverConvertedIndex = KindIndex<kNeverConverted>;

template <class Row, class Value>
CUIData* RecordOf(std::span<const Row> rows, Value value) {
    auto* const record = new CUIData;
    for (const Row& row : rows) record->SetData(row.kind, row.*value);
    return record;
}

}  // namespace

std::span<const KindType> TypeCodes() { return kTypeCodes; }
std::span<const KindPushKey> PushKeys() { return kPushKeys; }
std::span<const std::string_view> CommonKinds() { return kCommonKinds; }
std::span<const PushQuery> PushQueries() { return kPushQueries; }

int RequestTypeOfKind(std::string_view kind) {
    const KindType* const row = TypeCodeIndex::Find(kind);
    return row ? row->type : 0;
}

std::string_view PushKeyOfKind(std::string_view kind) {
    const KindPushKey* const row = PushKeyIndex::Find(kind);
    return row ? row->key : std::string_view();
}

bool IsCommonKind(std::string_view kind) { return CommonIndex::Contains(kind); }

bool IsCommonResponse(int dataType, std::string_view topic) {
    return NumberIndex<kCommonDataTypes>::Contains(dataType) ||
           std::ranges::find(kCommonTopics, topic) != std::end(kCommonTopics);
}

std::string_view QueryKindOfPush(std::string_view kind) {
    const PushQuery* const row = PushQueryIndex::Find(kind);
    return row ? row->query : std::string_view();
}

bool IsNeverConverted(std::string_view kind) { return NeverConvertedIndex::Contains(kind); }

const CUIData& TypeCodeRecord() {
    static const CUIData* const record = RecordOf(TypeCodes(), &KindType::type);
    return *record;
}

const CUIData& PushKeyRecord() {
    static const CUIData* const record = RecordOf(PushKeys(), &KindPushKey::key);
    return *record;
}

}  // namespace luadui
