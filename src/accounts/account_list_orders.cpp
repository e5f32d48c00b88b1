// CAccountList: the order of display.
#include "accounts/account_list.h"
#include "base/counters.h"

namespace luadui {

bool CAccountList::SetOrder(const AccountNumbers& numbers) {
    bool isChanged = false;
    for (const auto& [key, number] : numbers) {
        if (m_accounts.contains(key)) {
            isChanged |= m_order.Set(key, number);
        } else {
            CCounters::Add("account_order_unknown");
        }
    }
    return isChanged;
}

bool CAccountList::SaveOrder(const CUIData& values) {
    CUIData completed = _withUser(values);
    completed.SetData("From", kModuleAccountList);
    completed.SetData("Refresh", "true");
    completed.SetData("action", "batch_modifyaccount");
    CDataTable rows = AccountTable(kSaveAccountOrder);
    for (const CAccount* const account : InOrder()) {
        const int row = rows.AppendRow();
        const std::string_view key = account->Get(AccountField::kAccountKey);
        rows.SetItemText(row, "order", std::to_string(m_order.Find(key).value_or(0)));
        rows.SetItemText(row, "user_id", account->Get(AccountField::kUserId));
        rows.SetItemText(row, "account_code", account->Get(AccountField::kAccountId));
        rows.SetItemText(row, "institution_id", account->Get(AccountField::kInstitutionId));
        rows.SetItemText(row, "product_id", account->Get(AccountField::kProductId));
    }
    CQueueReqItem request = MakeAccountRequest(kSaveAccountOrder, completed, rows);
    m_order.SetSaved();  // until its answer says that it is not
    return _sendAbout(kSaveAccountOrder, request, {});
}

void CAccountList::NotifyOrder(OrderNotice mode) {
    CDataList accounts;
    for (const auto& [key, number] : m_order.Numbers()) {
        CJsonObject entry;
        entry.Set("accountkey", key);
        entry.Set("order", std::to_string(number));
        accounts.Append(entry);
    }
    CJsonObject payload;
    payload.Set("accounts", accounts);
    _report(mode == kTellPages ? "notifyOrderToPage" : "modifyAccountOrder", {}, payload);
}

}  // namespace luadui
