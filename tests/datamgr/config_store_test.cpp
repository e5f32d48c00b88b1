#include "datamgr/config_store.h"

#include <gmock/gmock.h>

#include "base/data_set.h"
#include "datalists/muti_inst_cfg.h"
#include "tests/fakes/fake_settings.h"

namespace luadui {
namespace {

using testing::ElementsAre;

constexpr char kUser[] = "\\qsclient\\users\\user.cfg";

class ConfigStoreTest : public testing::Test {
  protected:
    ConfigStoreTest() {
        host.files[kUser] = {{"a", "1"}, {"b", "2"}, {"c", ""}};
        host.files["own.cfg"] = {{"a", "own"}};
    }
    static CUIData Record(std::initializer_list<std::pair<const char*, DataValue>> entries) {
        CUIData record;
        for (const auto& [key, value] : entries) record.SetData(key, value);
        return record;
    }

    FakeSettings host;
    CDataSet two;
    CDataSet none;

    void SetUp() override {
        two.Insert("b");
        two.Insert("absent");
    }
};

TEST_F(ConfigStoreTest, ReadsOneKeyOrSeveral) {
    CUIData one = Record({{"config_key", "a"}});
    EXPECT_TRUE(GetConfig(one));
    EXPECT_EQ(one.GetDataText("config_value"), "1");
    CUIData own = Record({{"config_key", "a"}, {"config_path", "own.cfg"}});
    EXPECT_TRUE(GetConfig(own));
    EXPECT_EQ(own.GetDataText("config_value"), "own");

    CUIData several = Record({{"config_key", two}});
    EXPECT_TRUE(GetConfig(several));
    EXPECT_TRUE(several.IsShared("config_value"));
    CUIData values;
    EXPECT_TRUE(several.GetDataShared("config_value", values));
    EXPECT_EQ(Describe(values), "absent= b=2");

    CUIData empty = Record({{"config_key", none}});
    EXPECT_FALSE(GetConfig(empty));
    CUIData number = Record({{"config_key", 5}});
    EXPECT_TRUE(GetConfig(number));
    EXPECT_EQ(empty.Size() + number.Size(), 2);
    EXPECT_EQ(host.calls.size(), 4);
}

TEST_F(ConfigStoreTest, ReadsAWholeFile) {
    CUIData record = Record({{"config_path", ""}, {"handle", 7}});
    EXPECT_TRUE(GetAllConfig(record));
    EXPECT_EQ(Describe(record), "a=1 b=2 c=");
    record = Record({{"config_path", "no such file"}});
    EXPECT_TRUE(GetAllConfig(record));
    EXPECT_TRUE(record.IsEmpty());
}

TEST_F(ConfigStoreTest, Erases) {
    EXPECT_TRUE(EraseConfig(Record({{"config_key", "a"}, {"config_path", "own.cfg"}})));
    EXPECT_TRUE(EraseConfig(Record({{"config_key", two}})));
    EXPECT_FALSE(EraseConfig(Record({{"config_key", none}})));
    EXPECT_TRUE(EraseConfig(Record({{"config_key", 1.5}})));
    EXPECT_TRUE(host.files["own.cfg"].empty());
    EXPECT_EQ(host.files[kUser], (StringMap{{"a", "1"}, {"c", ""}}));
    EXPECT_TRUE(EraseConfigKey(kUser, "a"));
    EXPECT_FALSE(EraseConfigKey(kUser, "a"));
}

TEST_F(ConfigStoreTest, ReadsSettingsUnderTheirOwnNames) {
    CUIData one = Record({{"names", "a"}, {"setting_path", "own.cfg"}});
    EXPECT_TRUE(GetSettingConfig(one, "names"));
    EXPECT_EQ(Describe(one), "names=a setting_path=own.cfg a=own");
    CUIData several = Record({{"names", two}});
    EXPECT_TRUE(GetSettingConfig(several, "names"));
    EXPECT_EQ(several.GetDataText("b"), "2");
    EXPECT_EQ(several.GetDataType("absent"), kDataString);
    // The name of a setting may be that of the entry that asks.
    CUIData itself = Record({{"a", "a"}});
    EXPECT_TRUE(GetSettingConfig(itself, "a"));
    EXPECT_EQ(Describe(itself), "a=1");
    EXPECT_TRUE(GetSettingConfig(itself, "no such entry"));
}

TEST_F(ConfigStoreTest, SavesTextsButNotHowToSave) {
    SaveSettingConfig(Record({{"setting_path", "own.cfg"},
                              {"b", "new"},
                              {"config_save_type", "1"},
                              {"handle", 7},
                              {"setting_config_type", "2"},
                              {"keys", two},
                              {"empty", ""}}));
    EXPECT_THAT(host.calls, ElementsAre("write own.cfg b new", "write own.cfg empty "));
}

// A host that comes back into the library changes the record that it is just being asked about.
TEST_F(ConfigStoreTest, RecordMayChangeMeanwhile) {
    CUIData record = Record({{"a", "x"}, {"b", "y"}});
    const auto answer = host.onAsk;
    host.onAsk = [&](CQueueReqItem& request) {
        record.Clear();
        answer(request);
    };
    SaveSettingConfig(record);
    EXPECT_EQ(host.calls.size(), 2);
}

TEST_F(ConfigStoreTest, MultiInstructionSettings) {
    host.files[kUser] = {{"basket_alloc_type", "3"}, {"Inst_AutoPause", ""}, {"other", "1"}};
    const CMutiInstCfg plain(false);
    EXPECT_TRUE(host.calls.empty());
    const CMutiInstCfg loaded(true);
    EXPECT_EQ(loaded.GetTypeText(), "mutiinst_config");
    EXPECT_STREQ(loaded.ClassName(), "CMutiInstCfg");
    ASSERT_EQ(host.calls.size(), plain.Size());
    size_t row = 0;
    for (const auto& [key, value] : loaded) {
        EXPECT_EQ(host.calls[row++], "read " + std::string(kUser) + ' ' + std::string(key));
        EXPECT_EQ(value.AsText(), key == "basket_alloc_type" ? "3" : std::string(plain.GetDataText(key)));
    }
    EXPECT_EQ(plain.GetDataText("setting_config_basket_BuyLPrice_LV"), "NULL");
    EXPECT_EQ(plain.GetDataText("setting_config_basket_Sell_CommissionRate"), "0.00025");
    EXPECT_EQ(plain.GetDataText("commbine_position"), "true");
}

}  // namespace
}  // namespace luadui
