// CHqData: the quotes of one kind, as pushes and answers of the quote server tell them.
#pragma once

#include <memory>
#include <string_view>

#include "base/data_table.h"
#include "base/ui_data.h"

namespace luadui {

// Keeps one record for each security that was ever told of, under the key "code:market" ("600000:17"). Its named
// fields (see datalists/quote_field_table.h) keep the last known value of whatever a row leaves empty or says "-" for;
// what is derived is derived from them. Records are attached to the outputs: who holds one sees later quotes, too, takes
// a copy to keep those of the moment, and does not write to it.
//
// Entries:   "push_table"    what was pushed since the last ClearPush, a row for each security; its 64 columns are
//                            named by the quote fields. Cells keep the last value pushed.
//            "push_code2row" the number of the row, under the key
// Rows:      columns are named by quote fields, in decimal; others are passed over. A row without a code (field 4) or
//            with a market (field 3) that is no number counts as "quote_row_without_security"; a number that is none,
//            is not finite, or below zero where it counts something, keeps the value before it and counts as
//            "quote_number_unreadable"; only what was pushed since the last FlushPush is gone with it, for pushes are
//            kept as text. Rows of securities beyond kMostQuotes count as "quote_store_full".
// Threads:   one, on which all that is attached is read, too.
class CHqData : public CUIData {
  public:
    static constexpr size_t kMostQuotes = 100'000;
    static constexpr size_t kMostCodeBytes = 64;  // a longer code is none

    // `kind` is the type of the record and of outputs.
    explicit CHqData(std::string_view kind = "hq");
    ~CHqData() override;
    CHqData(const CHqData&) = delete;
    CHqData& operator=(const CHqData&) = delete;
    const char* ClassName() const override;

    // Makes the entries of pushes, without rows.
    void InitPushTable();
    // Forgets what was pushed, but no quote.
    void ClearPush();

    // Takes a pushed table: rows are kept until the next FlushPush.
    void MergePushRows(const CDataTable& pushed);
    // Puts what was pushed since the last ClearPush into the records. `out` gets these, attached under their keys, the
    // set of keys as "updatecode", and "is_push" 1, which the records get, too. False, and `out` unchanged, when
    // nothing was pushed. The cost is that of the rows pushed, whatever the number of quotes.
    bool FlushPush(CUIData& out);

    // The same for an answer, at once: its rows go into the records, "is_push" is 0. It is newer than what was pushed
    // before it, also when that is flushed afterwards.
    void BuildQueryQuotes(const CDataTable& answer, CUIData& out);

    // Fills a record, which need not be one of this object, with a row of `table`. False, counted and nothing changed,
    // when the row is of no security.
    bool FillQuoteRecord(const CDataTable& table, int row, CUIData& record);

    // A copy of the record; false, and `out` unchanged, when there is none. `market` is a number in decimal.
    bool FindQuote(std::string_view code, std::string_view market, CUIData& out) const;

  private:
    class Store;
    const std::unique_ptr<Store> m_store;
};

}  // namespace luadui
