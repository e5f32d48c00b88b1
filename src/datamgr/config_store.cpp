#include "datamgr/config_store.h"

#include <algorithm>

#include "base/data_set.h"
#include "messaging/host_link.h"
#include "messaging/request_types.h"

namespace luadui {
namespace {

constexpr char kFileName[] = "FileName";
constexpr std::string_view kSaveControls[] = {"setting_path", "config_save_type", "setting_config_type"};

// The file that the entry `key` of a record names.
std::string FileOf(const CUIData& data, std::string_view key) {
    std::string file = data.GetDataString(key);
    return file.empty() ? kUserConfigFile : file;
}

void ReadInto(CUIData& record, const std::string& file, const std::string& key) {
    record.SetData(key, ReadConfig(file, key));
}

}  // namespace

StringMap ReadAllConfig(const std::string& file) {
    StringMap settings{{kFileName, file}};
    CHostLink::Instance().RequestSync(kReqConfigReadAll, settings, nullptr);
    settings.erase(kFileName);
    return settings;
}

bool EraseConfigKey(const std::string& file, const std::string& key) {
    StringMap params{{kFileName, file}, {"Key", key}};
    std::string result;
    CHostLink::Instance().RequestSync(kReqConfigErase, params, &result);
    return result == "true";
}

bool GetConfig(CUIData& data) {
    const std::string file = FileOf(data, "config_path");
    std::string key;
    CDataSet keys;
    if (data.GetData("config_key", key)) {
        data.SetData("config_value", ReadConfig(file, key));
    } else if (data.GetData("config_key", keys)) {
        if (keys.IsEmpty()) return false;
        CUIData values;
        for (const std::string& each : keys) ReadInto(values, file, each);
        data.SetDataShared("config_value", values);
    }
    return true;
}

bool GetAllConfig(CUIData& data) {
    const StringMap settings = ReadAllConfig(FileOf(data, "config_path"));
    data.Clear();
    for (const auto& [key, value] : settings) data.SetData(key, value);
    return true;
}

bool EraseConfig(const CUIData& data) {
    const std::string file = FileOf(data, "config_path");
    std::string key;
    CDataSet keys;
    if (data.GetData("config_key", key)) {
        EraseConfigKey(file, key);
    } else if (data.GetData("config_key", keys)) {
        if (keys.IsEmpty()) return false;
        for (const std::string& each : keys) EraseConfigKey(file, each);
    }
    return true;
}

bool GetSettingConfig(CUIData& data, std::string_view key) {
    const std::string file = FileOf(data, "setting_path");
    std::string name;
    CDataSet names;
    if (data.GetData(key, name)) {
        ReadInto(data, file, name);
    } else if (data.GetData(key, names)) {
        for (const std::string& each : names) ReadInto(data, file, each);
    }
    return true;
}

void SaveSettingConfig(const CUIData& data) {
    const std::string file = FileOf(data, "setting_path");
    // A copy: the host, called meanwhile, may come back and change the record.
    const CUIData settings = data;
    std::string text;
    for (const auto& [key, value] : settings) {
        if (std::ranges::find(kSaveControls, key) != std::end(kSaveControls) || !value.Get(text)) continue;
        WriteConfig(file, std::string(key), text);
    }
}

}  // namespace luadui
