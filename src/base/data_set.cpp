#include "base/data_set.h"

#include <utility>

namespace luadui {

class DataSetBody final : public SharedBody {
  public:
    static DataSetBody* Create() { return new DataSetBody; }

    SharedBody* Clone() const override {
        auto* clone = Create();
        try {
            clone->texts = texts;
        } catch (...) {
            SharedBody::Release(clone);
            throw;
        }
        return clone;
    }

    CDataSet::Texts texts;
};

const CDataSet::Texts& CDataSet::_texts() const noexcept {
    static const Texts* const none = new Texts;  // never destroyed: sets may outlive static objects
    return _read() ? _read()->texts : *none;
}

bool CDataSet::Insert(std::string_view text) {
    const Texts& texts = _texts();
    const auto place = texts.lower_bound(text);
    if (place != texts.end() && *place == text) return false;  // first, so that nothing is cloned for it
    std::string own(text);                                     // `text` may lie in the body that gets cloned
    const bool isOwn = _body() && _body()->IsUnique();
    if (isOwn) {
        _edit().texts.insert(place, std::move(own));
    } else {
        _edit().texts.insert(std::move(own));
    }
    return true;
}

bool CDataSet::Remove(std::string_view text) {
    if (!Contains(text)) return false;
    const std::string own(text);
    _edit().texts.erase(own);
    return true;
}

bool CDataSet::Contains(std::string_view text) const { return _texts().contains(text); }

CDataSet::Texts::const_iterator CDataSet::LowerBound(std::string_view text) const {
    return _texts().lower_bound(text);
}

size_t CDataSet::Size() const noexcept { return _texts().size(); }

void CDataSet::Clear() { _assign(nullptr); }

CDataSet::Texts::const_iterator CDataSet::begin() const noexcept { return _texts().begin(); }

CDataSet::Texts::const_iterator CDataSet::end() const noexcept { return _texts().end(); }

}  // namespace luadui
