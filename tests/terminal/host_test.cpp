// What the library asks the host, and the command line.
#include <gtest/gtest.h>

#include "base/text.h"
#include "host/callbacks.h"
#include "host/host_window.h"
#include "luadui/frame_message.h"
#include "messaging/queue_data.h"
#include "page/page_view.h"

namespace terminal {
namespace {

using luadui::CQueueReqItem;
using luadui::CUIData;
using luadui::Gbk;

class AnswerTest : public testing::Test {
  protected:
    AnswerTest() { std::filesystem::remove_all(m_options.data); }
    ~AnswerTest() override { std::filesystem::remove_all(m_options.data); }

    CQueueReqItem Ask(int type, std::initializer_list<std::pair<const char*, std::string>> fields) {
        CUIData params;
        for (const auto& [key, value] : fields) params.SetData(key, value);
        CQueueReqItem request;
        request.SetData("REQTYPE", type);
        request.SetData("Params", params);
        AnswerRequest({nullptr, &m_settings, &m_interface}, request);
        return request;
    }

    Options m_options{.home = TERMINAL_SOURCE,
                      .data = std::filesystem::path(testing::TempDir()) / "terminal_host"};
    SettingsStore m_settings{m_options.data};
    LuaInterface m_interface{m_options};
};

TEST_F(AnswerTest, AnswersTheFourSettingsRequests) {
    const std::string file = "\\users\\user.cfg";
    Ask(0x80002, {{"FileName", file}, {"Key", "skin"}, {"Value", "blue"}});
    Ask(0x80002, {{"FileName", file}, {"Key", Gbk("签名")}, {"Value", Gbk("甲|乙")}});
    EXPECT_EQ(Ask(0x80001, {{"FileName", file}, {"Key", "skin"}}).GetDataText("result"), "blue");
    const CQueueReqItem all = Ask(0x80003, {{"FileName", file}});
    CUIData pairs;
    CUIData params;
    ASSERT_TRUE(all.GetData("result", pairs));
    ASSERT_TRUE(all.GetData("Params", params));
    for (const CUIData& record : {pairs, params}) EXPECT_EQ(record.GetDataText(Gbk("签名")), Gbk("甲|乙"));
    EXPECT_EQ(pairs.Size(), 2U);
    EXPECT_EQ(Ask(0x80004, {{"FileName", file}, {"Key", "skin"}}).GetDataText("result"), "true");
    EXPECT_EQ(Ask(0x80001, {{"FileName", file}, {"Key", "skin"}}).GetDataText("result"), "");

    CUIData bare;  // fields in the record itself, no "Params"
    bare.SetData("REQTYPE", 0x80001);
    bare.SetData("FileName", file);
    bare.SetData("Key", Gbk("签名"));
    AnswerRequest({nullptr, &m_settings, &m_interface}, bare);
    EXPECT_EQ(bare.GetDataText("result"), Gbk("甲|乙"));
}

TEST_F(AnswerTest, HostileRequestsAreAnsweredEmpty) {
    for (const int type : {0x80001, 0x80002, 0x80003, 0x80004, 0x80006, 1502, 0, -1}) {
        for (const std::string& file : {std::string(), std::string("..\\a"), std::string(1 << 20, 'x')}) {
            const CQueueReqItem answer = Ask(type, {{"FileName", file}, {"Key", file}, {"Value", file}});
            EXPECT_EQ(answer.GetDataText("result"), "") << type;
        }
        CUIData wrong;
        wrong.SetData("REQTYPE", type);
        wrong.SetData("Params", 5);
        wrong.SetData("FileName", CUIData());
        AnswerRequest({nullptr, &m_settings, &m_interface}, wrong);
    }
    EXPECT_FALSE(std::filesystem::exists(m_options.data));
}

TEST(Options, ReadsTheCommandLine) {
    struct Case {
        std::vector<const char*> words;
        const char* error;  // "" when it is right
    };
    const Case cases[] = {
        {{}, ""},
        {{"--data", "d", "--securities", "f.csv", "--securities-count", "3000", "--scenario", "s.lua"}, ""},
        {{"--wrong"}, "unknown option --wrong"},
        {{"--data"}, "--data needs a value"},
        {{"--securities-count", "x"}, "--securities-count takes a number from 1 to 100000"},
        {{"--securities-count", "-5"}, "--securities-count takes a number from 1 to 100000"},
        {{"--securities-count", "99999999999"}, "--securities-count takes a number from 1 to 100000"},
    };
    for (const Case& test : cases) {
        std::vector<char*> arguments = {const_cast<char*>("terminal")};
        for (const char* word : test.words) arguments.push_back(const_cast<char*>(word));
        std::string error;
        const auto options = ParseOptions(static_cast<int>(arguments.size()), arguments.data(), error);
        EXPECT_EQ(error, test.error);
        EXPECT_EQ(options.has_value(), error.empty());
    }
}

TEST(HostWindow, TakesMessagesAndFreesWhatWaits) {
    HostWindow window;
    ASSERT_TRUE(window.Create());
    const auto post = [&](const char* page) {
        auto view = std::make_unique<CUIData>("page_view");
        view->SetData("page", page);
        if (PostMessageW(window.Handle(), kMsgPageView, 0, reinterpret_cast<LPARAM>(view.get())))
            view.release();
        auto frame = std::make_unique<luadui::FrameMessage>();
        frame->method = page;
        if (PostMessageW(window.Handle(), 9529, reinterpret_cast<WPARAM>(frame.get()), 0)) frame.release();
    };
    post("a");
    EXPECT_EQ(window.View("a"), nullptr);
    EXPECT_TRUE(window.Pump(1000));
    EXPECT_FALSE(window.Pump(0));
    EXPECT_NE(window.View("a"), nullptr);
    CUIData frame;
    ASSERT_TRUE(window.TakeFrame(frame));
    EXPECT_EQ(frame.GetDataText("method"), "a");
    EXPECT_FALSE(window.TakeFrame(frame));
    for (const char* kind : {"fund", "deal"})
        EXPECT_TRUE(PostToHost(window.Handle(), kMsgPageRecord, CUIData(kind)));
    EXPECT_TRUE(window.Pump(1000));
    CUIData record;
    for (const char* kind : {"fund", "deal"}) {
        ASSERT_TRUE(window.TakeRecord(record));
        EXPECT_EQ(record.GetTypeText(), kind);
    }
    EXPECT_FALSE(window.TakeRecord(record));
    post("b");  // left to Destroy
}

}  // namespace
}  // namespace terminal
