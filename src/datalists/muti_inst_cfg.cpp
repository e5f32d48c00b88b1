#include "datalists/muti_inst_cfg.h"

#include <string>
#include <string_view>

#include "messaging/host_link.h"

namespace luadui {
namespace {

struct Setting {
    std::string_view key;
    std::string_view fallback;
};

// Append only: the keys are those of the users' files.
constexpr Setting kSettings[] = {
    {"setting_config_basket_MinPerMoney", "100000.0"},
    {"setting_config_basket_MaxPerMoney", "200000.0"},
    {"basket_alloc_type", "0"},
    {"setting_config_basket_Buy_CommissionRate", "0.00025"},
    {"setting_config_basket_Sell_CommissionRate", "0.00025"},
    {"algorithm_type", "0"},
    {"setting_config_basket_MaxAmount", "0"},
    {"setting_config_basket_BuyLPrice_LV", "NULL"},  // no price level is chosen
    {"setting_config_basket_SellLPrice_LV", "NULL"},
    {"Inst_AutoPause", "0"},
    {"setting_config_basket_SyncData", "1"},
    {"tradetype_buy", "0"},
    {"tradetype_sell", "0"},
    {"setting_config_basket_Strategy_buy_lv", "0"},
    {"setting_config_basket_Strategy_sell_lv", "0"},
    {"setting_config_basket_Strategy_adjust_lv", "0"},
    {"commbine_position", "true"},
};

}  // namespace

CMutiInstCfg::CMutiInstCfg(bool load) : CUIData("mutiinst_config") {
    for (const auto& [key, fallback] : kSettings) {
        SetData(key, load ? ReadConfig(kUserConfigFile, std::string(key), std::string(fallback))
                          : std::string(fallback));
    }
}

CMutiInstCfg::~CMutiInstCfg() = default;

const char* CMutiInstCfg::ClassName() const { return "CMutiInstCfg"; }

}  // namespace luadui
