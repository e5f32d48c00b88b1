// The tables behind datamgr/ui_registry.h but for the request types, each list once. Append only: pages and
// the server send these very names.
#pragma once

#include <string_view>

#include "datamgr/ui_registry.h"

namespace luadui::registry {

// Kind, key of its pushes.
inline constexpr KindPushKey kPushKeys[] = {
    // Sessions and events.
    {"sub_session_login", "subkey_session_login"},
    {"sub_session_event", "subkey_session_event"},
    {"all_account_order", "AllAccountOrder"},
    {"grp_account_order", "GrpAccountOrder"},
    {"sub_dui_uievent", "subkey_dui_uievent"},
    {"setting_change_data", "subkey_setting_modify"},
    // Funds and positions.
    {"fund", "Fund|"},
    {"credit_fund", "FundCredit|"},
    {"position", "Position|"},
    {"positioncredit", "PositionCredit|"},
    {"positionmulti", "Position|"},
    {"positionmulticredit", "PositionCredit|"},
    {"positionsum", "Position|"},
    {"fund_ggt", "FundGGT|"},
    {"position_ggt_multi", "PositionGGT|"},
    {"position_ggt", "PositionGGT|"},
    // Deals and orders.
    {"deal_ggt_multi", "TradeGGT|"},
    {"deal_ggt", "TradeGGT|"},
    {"entrust_ggt_multi", "EntrustGGT|"},
    {"entrust_ggt", "EntrustGGT|"},
    {"dealsubpush", "traderet"},
    {"dealpushcredit", "TradeCredit|"},
    {"entrustpush", "Entrust|"},
    {"entrustmulti", "Entrust|"},
    {"entrustpushcredit", "EntrustCredit|"},
    {"entrustmulticredit", "EntrustCredit|"},
    {"entrustsubpush", "entrustret"},
    {"instruction", "basket_instruction"},
    {"orderpush", "orderret"},
    // Accounts.
    {"account", "AccountOnline"},
    {"accountgroup", "AccountGroup"},
    {"accountgroupcredit", "AccountGroup"},
    {"create_portfoil_account", "create_portfolio"},
    // Multi-account instructions and records.
    {"inst_push_mutiinst", "multiinst_instruction"},
    {"order_push_mutilist", "multiinst_order"},
    {"reqinfo_record", "subkey_reqinfo_record"},
    {"resinfo_record", "subkey_resinfo_record"},
    // Conditional, grid, ETF, risk and embedded-browser pushes.
    {"str_subkey_inst_cond", "condition_instruction"},
    {"str_subkey_inst_grid", "grid_instruction"},
    {"etf_pushlist", "etflist_push"},
    {"str_subkey_risk_push", "risk_push"},
    {"cef_send_dui_message_basket", "subkey_cef_2_dui_basket"},
    {"product_group_change", "subkey_cef_2_dui_pb_productgroup"},
    // Algorithmic instructions.
    {"str_subkey_inst_algo", "algo_instruction"},
    {"str_subkey_inst_twap", "twap_instruction"},
    {"str_subkey_inst_twapplus", "twapplus_instruction"},
    {"str_subkey_inst_vwap", "vwap_instruction"},
    {"str_subkey_inst_iceberg", "iceberg_instruction"},
    {"str_subkey_inst_hctwap", "HC-TWAP_instruction"},
    {"str_subkey_inst_hcvwap", "HC-VWAP_instruction"},
    {"str_subkey_inst_hcvwapplus", "HC-VWAPPLUS_instruction"},
    {"str_subkey_inst_hcstricttwap", "HC-STRICTTWAP_instruction"},
    {"str_subkey_inst_hcpov", "HC-POV_instruction"},
    {"str_subkey_inst_aivp", "AI-VP_instruction"},
    {"str_subkey_inst_aiiceburg", "AI-IceBurg_instruction"},
    {"str_subkey_inst_nanjingalgo", "nanjing_custom_instruction"},
    {"str_subkey_inst_autoalgo", "rechase_instruction"},
    // Graded instructions.
    {"grade_cond_inst", "grade_instruction"},
    {"multigradeorderlist", "grade_order"},
    // Portfolio-trading pushes.
    {"STR_PB_SINGLE_INSTRUCTION", "instruction_push"},
    {"STR_PB_FUND_PUSH", "pb_fund_push"},
    {"STR_PB_POSITION_PUSH", "pb_position_push"},
    {"STR_PB_ENTRUST_PUSH", "pb_entrust_push"},
    {"STR_PB_DEAL_PUSH", "pb_deal_push"},
    {"STR_PB_NOTIFY_PORTFOLIO_PERMISSION_PUSH", "pb_notify_page_permission"},
};

// What the common data manager holds for all pages.
inline constexpr std::string_view kCommonKinds[] = {
    "hq",
    "hq_zq",
    "hq_quote",
    "account",
    "account_xy",
    "accountgroup",
    "accountgroupcredit",
    "currency",
    "create_entrust",
    "create_entrust_res",
    "position",
    "positioncredit",
    "position_ggt",
    "fund",
    "credit_fund",
    "fund_ggt",
    "deal",
    "dealcredit",
    "deal_ggt",
    "entrust",
    "entrustcredit",
    "entrust_ggt",
    "entrustmulti",
    "dealmulti",
    "positionmulti",
    "entrustmulticredit",
    "dealmulticredit",
    "positionmulticredit",
    "entrust_ggt_multi",
    "deal_ggt_multi",
    "position_ggt_multi",
    "entrustpush",
    "entrustpushcredit",
    "dealpush",
    "dealpushcredit",
    "accountdatalist",
    "accountdatalistcredit",
    "accountdatalist_ggt",
    "accountdatalist_push",
    "accountdatalist_push_credit",
    "accountdatalist_ggt_push",
    "currency_accountdatalist",
    "currency_accountdatalist_push",
    "entrust_cancel",
    "order_push",
    "order_deal_push",
    "order_push_gradelist",
    "record_req_end",
    "account_param_filter",
    "sub_account_filter",
    "inst_resp_mutiinst",
    "fund_update_extravalue",
};

// What a page missed, what it asks again.
inline constexpr PushQuery kPushQueries[] = {
    {"hq", "hq"},
    {"hq_zq", "hq_zq"},
    {"account", "accountdatalist"},
    {"accountdatalist_push", "accountdatalist"},
    {"accountdatalist", "accountdatalist"},
    {"account_xy", "accountdatalistcredit"},
    {"accountdatalist_push_credit", "accountdatalistcredit"},
    {"accountdatalistcredit", "accountdatalistcredit"},
    {"fund", "fund"},
    {"credit_fund", "credit_fund"},
    {"position", "position"},
    {"positioncredit", "positioncredit"},
    {"entrust", "entrust"},
    {"entrustpush", "entrust"},
    {"entrustcredit", "entrustcredit"},
    {"entrustpushcredit", "entrustcredit"},
    {"deal", "deal"},
    {"dealpush", "deal"},
    {"dealcredit", "dealcredit"},
    {"dealpushcredit", "dealcredit"},
};

// What never turns into a query; some of it has a row above all the same.
inline constexpr std::string_view kNeverConverted[] = {
    "entrust_cancel",
    "entrustpush",
    "entrustpushcredit",
    "dealpush",
    "dealpushcredit",
    "accountdatalist_push",
    "accountdatalist_push_credit",
    "accountgroup",
    "accountgroupcredit",
    "entrustmulti",
    "dealmulti",
    "positionmulti",
    "entrustmulticredit",
    "dealmulticredit",
    "positionmulticredit",
};

// "DATATYPE" and "Topic" of responses for the common data manager.
inline constexpr int kCommonDataTypes[] = {2002, 2003, 2004, 2005, 2006, 2007, 2008, 2009,   2010,
                                           2011, 2012, 2013, 2014, 2015, 2019, 2031, 2033,   2034,
                                           2036, 2045, 2082, 2102, 2308, 2407, 2500, 274435, 274437};
inline constexpr std::string_view kCommonTopics[] = {"entrustret", "traderet"};

}  // namespace luadui::registry
