// RecordForm: records that all have the same fields, read from other records.
#pragma once

#include <initializer_list>
#include <vector>

#include "base/ui_data.h"

namespace luadui {

// What is the same for all such records is prepared once, so that each of them costs one look into the other record for
// every field, and a copy of bytes. Make it a constant of the process.
//
// Threads: any, once made.
class TESSEL_API RecordForm {
  public:
    struct Field {
        HashedKey key;
        DataKind kind;  // kDataInteger, kDataBoolean, kDataDouble or kDataString
    };

    // The records hold what `defaults` holds, and the fields, which have no defaults.
    RecordForm(const CUIData& defaults, std::initializer_list<Field> fields);

    // A record in which each field holds what `from` answers for it (GetDataLong and its like): the empty value of the
    // field's kind where that is absent or of another kind.
    CUIData Read(const CUIData& from) const;

  private:
    friend class RecordBody;
    struct Place {
        Field field;
        uint32_t entry;  // its position in the blank
    };

    CUIData m_blank;
    std::vector<Place> m_places;
};

}  // namespace luadui
