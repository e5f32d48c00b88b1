#include "datamgr/account_requests.h"

#include <array>
#include <span>
#include <string>

#include "accounts/account_commands.h"
#include "base/counters.h"
#include "base/data_table.h"
#include "datamgr/kind_table.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

// The fields of a command, by the name under which requests carry them. What a request lacks is left out.
constexpr const char* kOrderFields[] = {
    "account_order_source", "ActOrderSource", "account_type",    "curGroupID",     "AccountOrder",
    "AccountKey",           "Index",          "AccountProperty", "GrpAccountOrder"};
constexpr const char* kPortfolioFields[] = {"version",
                                            "expire",
                                            "InstitutionID",
                                            "balance",
                                            "trade_type",
                                            "broker_id",
                                            "portfolio_name",
                                            "security_account_id",
                                            "security_account_code",
                                            "remark",
                                            "product_id",
                                            "qsflag"};

struct AccountRequest {
    int type;
    const char* command;
    std::span<const char* const> fields;
};
constexpr AccountRequest kAccountRequests[] = {
    {1130, "add_portfolio", kPortfolioFields},
    {1801, "queryOrderFromPage", kOrderFields},
    {1802, "modifyAccountOrder", kOrderFields},
    {1803, "modifyOrderInGroup", kOrderFields},
};
using AccountRequestIndex = NumberIndex<kAccountRequests, &AccountRequest::type>;

// Requests name their sender in one of two ways.
constexpr std::array<const char*, 2> kSenderNames[] = {
    {"handle", "strSourceHandle"}, {"From", "strFrom"}, {"UUID", "struuid"}};

void CopySender(const CUIData& request, const CUIData& params, CUIData& arguments) {
    for (const auto& [name, otherName] : kSenderNames) {
        for (const ValueView value :
             {request.GetDataView(name), params.GetDataView(name), params.GetDataView(otherName)}) {
            const bool isEmpty = !value || (value.Kind() == kDataString && value.AsText().empty());
            if (isEmpty || arguments.Has(name)) continue;
            arguments.SetData(name, value);
        }
    }
}

}  // namespace

bool IsAccountRequest(int type) { return AccountRequestIndex::Find(type); }

bool DisPatchReq2AccountManager(AccountCommands* commands, const CQueueReqItem& request) {
    if (!commands) {
        CCounters::Add("account_manager_missing");
        return false;
    }
    const AccountRequest* const row = AccountRequestIndex::Find(RequestTypeOf(request));
    if (!row) return false;
    CUIData params, arguments;
    request.GetData("Params", params);
    arguments.SetData("module", "MODULE_STOCK_DATAMANAGER");
    arguments.SetData("REQTYPE", RequestTypeOf(request));
    CopySender(request, params, arguments);
    for (const char* field : row->fields) arguments.SetData(field, params.GetDataView(field));
    if (CDataTable table; request.GetData("Table", table)) arguments.SetData("Table", table);
    return commands->Execute(row->command, arguments);
}

CQueueRespData MakeUIEvent(const CQueueReqItem& request) {
    CQueueRespData event;
    CUIData params, fields;
    request.GetData("Params", params);
    if (!request.GetData("MapData", fields)) params.GetData("MapData", fields);
    std::string_view name = request.GetDataText("Topic");
    if (name.empty()) name = params.GetDataText("Topic");
    fields.SetData("Topic", name);
    event.SetData("REQTYPE", RequestTypeOf(request));
    event.SetData("Topic", "subkey_dui_uievent");
    event.SetData("MapData", fields);
    if (CDataTable table; request.GetData("Table", table)) event.SetData("Table", table);
    return event;
}

}  // namespace luadui
