// What the server pushes, and what a window receives that wants every kind of which it is news, one after the other.
#pragma once

#include <string_view>

namespace luadui {

struct PushCase {
    std::string_view topic;
    std::string_view push;     // see PushOf
    std::string_view records;  // separated by " / ", each but for kPushEnd
};

constexpr char kPushEnd[] = " handle=-1 ret_code=0 ret_message=";

// clang-format off
constexpr PushCase kPushCases[] = {
    {"subkey_session_login", R"({"session_flag":"s0"})", "sub_session_login session_flag=s0 SrcServer=s"},
    {"subkey_session_event", R"({"no":1})", "sub_session_event no=1 SrcServer=s"},
    {"AllAccountOrder", "No;2", "all_account_order SrcServer=s all_account_order=[No|2]"},
    {"GrpAccountOrder", "No;3", "grp_account_order SrcServer=s grp_account_order=[No|3]"},
    {"subkey_dui_uievent", R"({"no":4})", "sub_dui_uievent no=4 SrcServer=s"},
    {"subkey_setting_modify", R"({"no":5})", "setting_change_data no=5 SrcServer=s"},
    {"Fund|F1", "Currency,TotalAssets;CNY,6",
     "fund SrcServer=s update_user=F1 fund=[Currency,TotalAssets|CNY,6] fund_token=F1"},
    {"FundCredit|F1", "Currency,TotalAssets;CNY,7",
     "credit_fund SrcServer=s update_user=F1 credit_fund=[Currency,TotalAssets|CNY,7] fund_token=F1"},
    {"Position|F1", "SecurityID,Qty;600000,8",
     "position SrcServer=s position=[SecurityID,Qty|600000,8] fund_token=F1 / "
     "positionmulti SrcServer=s positionmulti=[SecurityID,Qty|600000,8] fund_token=F1 / "
     "positionsum SrcServer=s positionsum=[SecurityID,Qty|600000,8] fund_token=F1"},
    {"PositionCredit|F1", "SecurityID,Qty;600000,9",
     "positioncredit SrcServer=s positioncredit=[SecurityID,Qty|600000,9] fund_token=F1 / "
     "positionmulticredit SrcServer=s positionmulticredit=[SecurityID,Qty|600000,9] fund_token=F1"},
    {"FundGGT|F1", "Currency,TotalAssets;CNY,10",
     "fund_ggt SrcServer=s fund_ggt=[Currency,TotalAssets|CNY,10] fund_token=F1"},
    {"PositionGGT|F1", "SecurityID,Qty;600000,11",
     "position_ggt_multi SrcServer=s position_ggt_multi=[SecurityID,Qty|600000,11] fund_token=F1 / "
     "position_ggt SrcServer=s position_ggt=[SecurityID,Qty|600000,11] fund_token=F1"},
    {"TradeGGT|F1", "ExecID,No;D12,1",
     "deal_ggt_multi SrcServer=s deal_ggt_multi=[No,ExecID|1,D12] fund_token=F1 / "
     "deal_ggt SrcServer=s deal_ggt=[No,ExecID|1,D12] fund_token=F1"},
    {"EntrustGGT|F1", "OrderID,No;O13,1",
     "entrust_ggt_multi SrcServer=s entrust_ggt_multi=[No,OrderID|1,O13] fund_token=F1 / "
     "entrust_ggt SrcServer=s entrust_ggt=[No,OrderID|1,O13] fund_token=F1"},
    {"traderet", R"({"InstanceID":"I14","TaskID":14,"Status":"2"})",
     "dealsubpush InstanceID=I14 TaskID=14 Status=2 SrcServer=s / "
     "order_deal_push InstanceID=I14 TaskID=14 Status=2 SrcServer=s"},
    {"TradeCredit|F1", "ExecID,No;D15,1",
     "dealpushcredit SrcServer=s dealpushcredit=[No,ExecID|1,D15] fund_token=F1 / "
     "dealcredit SrcServer=s dealcredit=[No,ExecID|1,D15] fund_token=F1 / "
     "dealmulticredit SrcServer=s dealmulticredit=[No,ExecID|1,D15] fund_token=F1"},
    {"Entrust|F1", "OrderID,No;O16,1",
     "entrustpush SrcServer=s entrustpush=[No,OrderID|1,O16] fund_token=F1 / "
     "entrustmulti SrcServer=s entrustmulti=[No,OrderID|1,O16] fund_token=F1 / "
     "entrust SrcServer=s entrust=[No,OrderID|1,O16] fund_token=F1"},
    {"EntrustCredit|F1", "OrderID,No;O17,1",
     "entrustpushcredit SrcServer=s entrustpushcredit=[No,OrderID|1,O17] fund_token=F1 / "
     "entrustmulticredit SrcServer=s entrustmulticredit=[No,OrderID|1,O17] fund_token=F1 / "
     "entrustcredit SrcServer=s entrustcredit=[No,OrderID|1,O17] fund_token=F1"},
    {"entrustret", R"({"InstanceID":"I18","TaskID":18,"Status":"2"})",
     "entrustsubpush InstanceID=I18 TaskID=18 Status=2 SrcServer=s / "
     "order_push InstanceID=I18 TaskID=18 Status=2 SrcServer=s"},
    {"basket_instruction", R"({"InstanceID":"I19","TaskID":19,"Status":"2"})",
     "instruction InstanceID=I19 TaskID=19 Status=2 SrcServer=s"},
    {"orderret", R"({"InstanceID":"I20","TaskID":20,"Status":"2"})",
     "orderpush InstanceID=I20 TaskID=20 Status=2 SrcServer=s"},
    {"AccountOnline", "No;21", "account SrcServer=s account=[No|21]"},
    {"AccountGroup", "No;22", "accountgroup SrcServer=s accountgroup=[No|22] / "
     "accountgroupcredit SrcServer=s accountgroupcredit=[No|22]"},
    {"create_portfolio", R"({"no":23})", "create_portfoil_account no=23 SrcServer=s"},
    {"multiinst_instruction", R"({"InstanceID":"I24","TaskID":24,"Status":"2"})",
     "inst_push_mutiinst InstanceID=I24 TaskID=24 Status=2 SrcServer=s / "
     "inst_resp_mutiinst InstanceID=I24 TaskID=24 Status=2 SrcServer=s"},
    {"multiinst_order", R"({"InstanceID":"I25","TaskID":25,"Status":"2"})",
     "order_push_mutilist InstanceID=I25 TaskID=25 Status=2 SrcServer=s"},
    {"subkey_reqinfo_record", R"({"no":26})", "reqinfo_record no=26 SrcServer=s"},
    {"subkey_resinfo_record", R"({"no":27})", "resinfo_record no=27 SrcServer=s"},
    {"condition_instruction", R"({"InstanceID":"I28","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_cond InstanceID=I28 Orders=[No|1|2] SrcServer=s"},
    {"grid_instruction", R"({"InstanceID":"I29","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_grid InstanceID=I29 Orders=[No|1|2] SrcServer=s"},
    {"etflist_push", R"({"no":30})", "etf_pushlist no=30 SrcServer=s"},
    {"risk_push", "No;31", "str_subkey_risk_push SrcServer=s str_subkey_risk_push=[No|31]"},
    {"subkey_cef_2_dui_basket", R"({"no":32})", "cef_send_dui_message_basket no=32 SrcServer=s"},
    {"subkey_cef_2_dui_pb_productgroup", R"({"no":33})", "product_group_change no=33 SrcServer=s"},
    {"algo_instruction", R"({"InstanceID":"I34","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_algo InstanceID=I34 Orders=[No|1|2] SrcServer=s"},
    {"twap_instruction", R"({"InstanceID":"I35","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_twap InstanceID=I35 Orders=[No|1|2] SrcServer=s"},
    {"twapplus_instruction", R"({"InstanceID":"I36","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_twapplus InstanceID=I36 Orders=[No|1|2] SrcServer=s"},
    {"vwap_instruction", R"({"InstanceID":"I37","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_vwap InstanceID=I37 Orders=[No|1|2] SrcServer=s"},
    {"iceberg_instruction", R"({"InstanceID":"I38","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_iceberg InstanceID=I38 Orders=[No|1|2] SrcServer=s"},
    {"HC-TWAP_instruction", R"({"InstanceID":"I39","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_hctwap InstanceID=I39 Orders=[No|1|2] SrcServer=s"},
    {"HC-VWAP_instruction", R"({"InstanceID":"I40","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_hcvwap InstanceID=I40 Orders=[No|1|2] SrcServer=s"},
    {"HC-VWAPPLUS_instruction", R"({"InstanceID":"I41","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_hcvwapplus InstanceID=I41 Orders=[No|1|2] SrcServer=s"},
    {"HC-STRICTTWAP_instruction", R"({"InstanceID":"I42","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_hcstricttwap InstanceID=I42 Orders=[No|1|2] SrcServer=s"},
    {"HC-POV_instruction", R"({"InstanceID":"I43","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_hcpov InstanceID=I43 Orders=[No|1|2] SrcServer=s"},
    {"AI-VP_instruction", R"({"InstanceID":"I44","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_aivp InstanceID=I44 Orders=[No|1|2] SrcServer=s"},
    {"AI-IceBurg_instruction", R"({"InstanceID":"I45","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_aiiceburg InstanceID=I45 Orders=[No|1|2] SrcServer=s"},
    {"nanjing_custom_instruction", R"({"InstanceID":"I46","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_nanjingalgo InstanceID=I46 Orders=[No|1|2] SrcServer=s"},
    {"rechase_instruction", R"({"InstanceID":"I47","Orders":[{"No":1},{"No":2}]})",
     "str_subkey_inst_autoalgo InstanceID=I47 Orders=[No|1|2] SrcServer=s"},
    {"grade_instruction", R"({"InstanceID":"I48","Orders":[{"No":1},{"No":2}]})",
     "grade_cond_inst InstanceID=I48 Orders=[No|1|2] SrcServer=s"},
    {"grade_order", R"({"InstanceID":"I49","TaskID":49,"Status":"2"})",
     "multigradeorderlist InstanceID=I49 TaskID=49 Status=2 SrcServer=s / "
     "order_push_gradelist InstanceID=I49 TaskID=49 Status=2 SrcServer=s"},
    {"instruction_push", R"({"InstanceID":"I50","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_SINGLE_INSTRUCTION InstanceID=I50 Orders=[No|1|2] SrcServer=s"},
    {"pb_fund_push", R"({"InstanceID":"I51","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_FUND_PUSH InstanceID=I51 Orders=[No|1|2] SrcServer=s"},
    {"pb_position_push", R"({"InstanceID":"I52","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_POSITION_PUSH InstanceID=I52 Orders=[No|1|2] SrcServer=s"},
    {"pb_entrust_push", R"({"InstanceID":"I53","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_ENTRUST_PUSH InstanceID=I53 Orders=[No|1|2] SrcServer=s"},
    {"pb_deal_push", R"({"InstanceID":"I54","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_DEAL_PUSH InstanceID=I54 Orders=[No|1|2] SrcServer=s"},
    {"pb_notify_page_permission", R"({"InstanceID":"I55","Orders":[{"No":1},{"No":2}]})",
     "STR_PB_NOTIFY_PORTFOLIO_PERMISSION_PUSH InstanceID=I55 Orders=[No|1|2] SrcServer=s"},
    {"Trade|F1", "ExecID,No;D56,1", "deal SrcServer=s deal=[No,ExecID|1,D56] fund_token=F1 / "
     "dealmulti SrcServer=s dealmulti=[No,ExecID|1,D56] fund_token=F1 / "
     "dealpush SrcServer=s dealpush=[No,ExecID|1,D56] fund_token=F1"},
    {"condition_order", R"({"InstanceID":"I57","TaskID":57,"Status":"2"})",
     "condition_order InstanceID=I57 TaskID=57 Status=2 SrcServer=s"},
};
// clang-format on

}  // namespace luadui
