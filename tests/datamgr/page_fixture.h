// Two pages beside the common data, windows of theirs that write down what they receive, and a host with settings.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "base/counters.h"
#include "datamgr/ui_page_data.h"
#include "datamgr/ui_stock_data_manager.h"
#include "tests/datamgr/traffic.h"
#include "tests/fakes/fake_settings.h"

namespace luadui {

// "kind key=text key=<text,text> key={key=text}"; H stands for `handle`.
inline CUIData RecordOf(std::string_view text, int32_t handle = 0) {
    const auto parts = SplitText(text, ' ');
    CUIData record(parts[0]);
    for (size_t i = 1; i < parts.size(); ++i) {
        const size_t equals = parts[i].find('=');
        const std::string_view key = parts[i].substr(0, equals), value = parts[i].substr(equals + 1);
        const std::string_view inside = value.size() < 2 ? "" : value.substr(1, value.size() - 2);
        if (value == "H") {
            record.SetData(key, handle);
        } else if (value.starts_with('<')) {
            CDataSet set;
            for (const auto item : SplitText(inside, ',')) {
                if (!item.empty()) set.Insert(item);
            }
            record.SetData(key, set);
        } else if (value.starts_with('{')) {
            record.SetData(key, RecordOf(' ' + std::string(inside)));
        } else {
            record.SetData(key, value);
        }
    }
    return record;
}

class PageFixture : public testing::Test {
  protected:
    PageFixture() {
        CUIStockDataManager::get_mutable_instance().StartCommonData();
        page->Init();
        otherPage->Init();
        host.calls.clear();
        host.asked.clear();
    }

    void Set(SET_DATA mode, std::string_view text) {
        CUIData record = RecordOf(text, window.GetHandle());
        page->SetData(&record, mode);
    }

    FakeSettings host;
    CUIStockDataManager& router = CUIStockDataManager::get_mutable_instance();
    std::unique_ptr<CUIPageData> page = std::make_unique<CUIPageData>("P");
    std::unique_ptr<CUIPageData> otherPage = std::make_unique<CUIPageData>("Q");
    Receiver window, neighbour;  // of the page
    Receiver stranger;           // of the other page
};

}  // namespace luadui
