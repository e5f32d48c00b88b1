// The quote side of a page: which securities its windows show, and which news of quotes are for it.
#include <algorithm>

#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"

namespace luadui {
namespace {

constexpr char kUpdated[] = "updatecode", kAsked[] = "stock_code";

QuoteFeed& Feed() { return CUIStockDataManager::get_mutable_instance().CommonData().Quotes(); }

int32_t HandleOf(const CUIData& record) {
    int32_t handle = 0;
    record.GetData("handle", handle);
    return handle;
}

// The keys of the quotes that changed; false when the record does not say.
bool ReadUpdated(const CUIData& record, CDataSet& keys) {
    if (record.GetData(kUpdated, keys)) return true;
    const TextView key = record.GetDataText(kUpdated);
    if (!key.empty()) keys.Insert(key);
    return !key.empty();
}

}  // namespace

QuoteInterest* CUIPageData::_interestIn(std::string_view kind) {
    const size_t number = QuoteKindOf(kind);
    return number == kQuoteKindCount ? nullptr : &m_quotes[number];
}

bool CUIPageData::_takeQuoteQuery(CUIData& record) {
    const int32_t window = HandleOf(record), self = GetHandle();
    if (IsQuoteKind(record.GetTypeText()))
        return _takeQuoteQuery(record, window) || CBaseObject::Find(self) != this;
    if (record.GetDataLong("req_level") != 2) return false;
    for (const auto [key, value] : CUIData(record)) {
        CUIData request;
        if (!value.Get(request) || !IsQuoteKind(request.GetTypeText())) continue;
        const bool isTaken = _takeQuoteQuery(request, request.Has("handle") ? HandleOf(request) : window);
        // The host may have closed the page when it was asked, and the record with it.
        if (CBaseObject::Find(self) != this) return true;
        if (isTaken) {
            record.Remove(key);
        } else {
            record.SetData(key, request);
        }
    }
    return false;
}

bool CUIPageData::_takeQuoteQuery(CUIData& request, int32_t window) {
    if (window == GetHandle()) return false;  // its own question, after waking
    const auto securities = SecuritiesOf(request);
    const auto holder = static_cast<uint32_t>(window > 0 ? window : GetHandle());
    QuoteInterest& interest = *_interestIn(request.GetTypeText());
    if (request.GetDataText("unsub") == "true") {
        interest.Unname(holder, securities);
    } else if (window > 0 && !securities.empty()) {
        interest.Name(holder, securities);
    }
    return Feed().TakeQuery(request, holder);
}

void CUIPageData::_setQuoteSubscription(CUIData* record, SET_DATA mode) {
    const CUIData given = *record;  // whoever is called may change or free the record
    const auto securities = SecuritiesOf(given);
    const bool subscribe = mode == kSetSubscribe;
    QuoteInterest& interest = *_interestIn(given.GetTypeText());
    const int32_t window = HandleOf(given);
    const auto holder = static_cast<uint32_t>(window > 0 ? window : GetHandle());
    // First, so that the window never listens for more than it wants.
    if (window > 0 && securities.empty()) {
        interest.SetTakesAll(holder, subscribe);
    } else if (window > 0) {
        subscribe ? interest.Name(holder, securities) : interest.Unname(holder, securities);
    }
    _send(record, mode);
    // This page may have gone.
    if (subscribe) {
        Feed().Subscribe(given.GetTypeText(), securities, holder);
    } else {
        Feed().Unsubscribe(given.GetTypeText(), securities, holder);
    }
}

void CUIPageData::_noteListening(uint32_t window, std::string_view kind) {
    if (QuoteInterest* const interest = _interestIn(kind))
        interest->SetListening(window, m_notify.Has(window, kind));
}

void CUIPageData::_leaveQuotes() {
    const int32_t self = GetHandle();
    for (size_t kind = 0; kind < kQuoteKindCount; ++kind) {
        for (const uint32_t window : m_quotes[kind].Windows()) Feed().Leave(kQuoteKinds[kind], window);
        Feed().Leave(kQuoteKinds[kind], static_cast<uint32_t>(self));
    }
}

bool CUIPageData::_showsNone(const CUIData& record) {
    QuoteInterest* const interest = _interestIn(record.GetTypeText());
    CDataSet keys;
    return interest && ReadUpdated(record, keys) && !interest->Meets(keys);
}

bool CUIPageData::_noteForQuery(std::string_view query, const CUIData& record) {
    QuoteInterest* const interest = _interestIn(query);
    CDataSet keys;
    if (!interest || !ReadUpdated(record, keys)) return m_requeries.Add(query, record);
    CUIData shown;
    shown.SetData(kUpdated, interest->Met(keys));
    return m_requeries.Add(query, shown);
}

bool CUIPageData::_dropUnshown(CUIData& query) {
    QuoteInterest* const interest = _interestIn(query.GetTypeText());
    if (!interest) return true;
    const auto securities = interest->Taken(SecuritiesOf(query));
    if (!securities.empty()) query.SetData(kAsked, JoinSecurities(securities));
    return !securities.empty();
}

}  // namespace luadui
