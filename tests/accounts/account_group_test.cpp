#include "accounts/account_group.h"

#include <gmock/gmock.h>

#include "base/counters.h"
#include "base/data_list.h"
#include "tests/accounts/service_probe.h"

namespace luadui {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

CUIData About(const std::string& groupId, const std::string& accountId = "") {
    CUIData values = ServiceProbe::Values(
        {{"groupid", groupId}, {"groupname", "G" + groupId}, {"grouptype", "1"}, {"issimulate", "0"}});
    if (!accountId.empty()) values.SetData("accountid", accountId);
    return values;
}

class AccountGroupTest : public testing::Test {
  protected:
    AccountGroupTest() { m_groups.SetUserAccount("user"); }

    void AnswerLast(bool isGood = true, const CDataTable& table = CDataTable()) {
        service.Answer(CQueueReqItem(service.host.pushed.back()), table, isGood);
    }
    void Make(const std::string& groupId) {
        ASSERT_TRUE(m_groups.AddGroup(About(groupId)));
        AnswerLast();
        service.Events();
        service.Lines();
    }
    static CDataTable Groups(const Rows& rows) {
        return MakeTable({"groupid", "groupname", "grouptype", "issimulate", "account"}, rows);
    }
    std::string Text() const {
        CUIData record;
        record.SetData("all", m_groups.ToJson());
        return Describe(record);
    }

    ServiceProbe service;
    CAccountGroupList m_groups{service};
};

TEST_F(AccountGroupTest, LifeOfAGroup) {
    struct Case {
        std::function<bool()> ask;
        std::string request;  // empty: refused
        std::vector<std::string> lines;
        std::string event, payload;
    };
    const std::string info = R"("groupid":"g","groupname":"Gg","grouptype":"1","issimulate":"0")";
    const auto member = [&](const std::string& list, const std::string& id) {
        return "{\"groupinfo\":{" + info + ",\"accountlist\":\"" + list + "\"},\"accountid\":\"" + id + "\"}";
    };
    const auto add = [&] { return m_groups.AddAccount(About("g", "1001")); };
    const auto remove = [&] { return m_groups.RemoveAccount(About("g", "1001")); };
    // clang-format off
    const Case cases[] = {
        {[&] { return m_groups.DeleteGroup(About("g")); }, "", {"账户组ID:g，不存在，删除失败！"}, "", ""},
        {[&] { return m_groups.AddGroup(About("g")); }, "1038 useraccount=user groupid=g groupname=Gg grouptype=1 issimulate=0",
         {"账户组ID:g，添加请求已发送！", "账户组ID:g，添加成功！"},
         "add_accountgroup_success ACCOUNTGROUP_LIST", "{\"groupinfo\":{" + info + "}}"},
        {[&] { return m_groups.AddGroup(About("g")); }, "", {"账户组ID:g，已存在，添加失败！"}, "", ""},
        {add, "1040 useraccount=user groupid=g accountid=1001", {"账户ID:1001，添加请求已发送！", "账户ID:1001，添加成功！"},
         "add_account_ingroup_success GROUP", member(R"([\"1001\"])", "1001")},
        {add, "", {"账户ID:1001，已添加！"}, "", ""},
        {remove, "1041 useraccount=user groupid=g accountid=1001", {"账户ID:1001，删除请求已发送！", "账户ID:1001，删除成功！"},
         "delete_account_ingroup_success GROUP", member("[]", "1001")},
        {remove, "", {"账户ID:1001，已删除！"}, "", ""},
        {[&] { return m_groups.DeleteGroup(About("g")); }, "1039 useraccount=user groupid=g", {"账户组ID:g，删除成功！"},
         "delete_accountgroup_success ACCOUNTGROUP_LIST", "{\"groupinfo\":{" + info + ",\"accountlist\":\"[]\"}}"},
    };
    // clang-format on
    for (const Case& each : cases) {
        const size_t sent = service.host.pushed.size();
        EXPECT_EQ(each.ask(), !each.request.empty());
        ASSERT_EQ(service.host.pushed.size() - sent, each.request.empty() ? 0u : 1u);
        if (!each.request.empty()) {
            EXPECT_EQ(service.LastRequest(), each.request);
            AnswerLast();
            ASSERT_EQ(service.events.size(), 1u);
            EXPECT_EQ(service.events[0].payload.ToText(), each.payload);
            EXPECT_THAT(service.Events(), ElementsAre(each.event));
        }
        std::vector<std::string> lines;
        for (const std::string& line : each.lines) lines.push_back("account:" + line);
        EXPECT_EQ(service.Lines(), lines);
    }
    EXPECT_TRUE(m_groups.All().empty());
    EXPECT_FALSE(m_groups.AddAccount(About("g", "1001"))) << "no such group";
    EXPECT_TRUE(m_groups.AddGroup(About("")));
    EXPECT_THAT(service.Events(),
                ElementsAre("add_accountgroup_failed ACCOUNTGROUP_LIST -8989 发送添加账户组请求失败！"));
}

TEST_F(AccountGroupTest, MemberTextFollowsTheMembers) {
    struct Case {
        std::string text;  // of the server
        std::vector<std::string> steps;
        std::string result, asAdded;  // empty: unreadable
    };
    const std::string pipe = Gbk("珅"), slash = Gbk("誠"), bracket = Gbk("淽");
    const std::string quoted = "[\"" + bracket + "\",\"" + pipe + "\",\"" + slash + "\"]";
    // clang-format off
    const Case cases[] = {
        {"", {"+1001"}, "[\"1001\"]", "1001,"},
        {"[ ]", {"+b", "+a", "+b"}, "[\"b\",\"a\"]", "b,a,"},
        {"[\"b\",\"a\",\"c\"]", {"-c", "-x", "+0"}, "[\"a\",\"b\",\"0\"]", "b,a,0,"},
        {"[ \"1\", 2 ,\"1\",null]", {}, "[\"1\",\"2\"]", "1,2,"},
        {quoted, {"+" + bracket, "+x", "-x"}, quoted, bracket + ',' + pipe + ',' + slash + ','},
        {"[]", {"+" + slash, "+" + bracket, "+a\"\\"}, "[\"" + slash + "\",\"" + bracket + "\",\"a\\\"\\\\\"]",
         slash + ',' + bracket + ",a\"\\,"},
        {"[\"a", {}, "", ""},
        {"1001,1002", {}, "", ""},
    };
    // clang-format on
    for (const Case& each : cases) {
        CAccountGroup group(service, {"g", "", "", ""});
        EXPECT_EQ(group.SetMembers(each.text), !each.result.empty()) << each.text;
        for (const std::string& step : each.steps) {
            const CUIData values = About("g", step.substr(1));
            if (step[0] == '+' ? group.AddAccount(values) : group.RemoveAccount(values)) AnswerLast();
        }
        EXPECT_EQ(group.MemberText(), each.result.empty() ? "[]" : each.result);
        std::string asAdded;
        for (const std::string& id : group.MembersAsAdded()) asAdded += id + ',';
        EXPECT_EQ(asAdded, each.asAdded) << each.text;
        EXPECT_EQ(group.Members().size(), group.MembersAsAdded().size());
    }
}

TEST_F(AccountGroupTest, AQueryIsTheWholeList) {
    Make("gone");
    Make("kept");
    const CAccountGroup* const kept = m_groups.Find("kept");
    EXPECT_TRUE(m_groups.Query());
    AnswerLast(true, Groups({{"new", "N", "2", "1", "[\"1\"]"},
                             {"", "x"},
                             {"kept", "K", "3", "0", "broken"},
                             {"new", "M", "2", "1", "[\"2\"]"}}));
    EXPECT_EQ(
        Text(),
        R"(all=({"groupid":"kept","groupname":"K","grouptype":"3","issimulate":"0","accountlist":"[]"},)"
        R"({"groupid":"new","groupname":"M","grouptype":"2","issimulate":"1","accountlist":"[\"2\"]"}))");
    EXPECT_EQ(m_groups.Find("kept"), kept) << "its pending requests must find it";
    EXPECT_EQ(service.events.at(0).payload.GetArray("clientgroups").Size(), 2u);
    EXPECT_THAT(service.Events(), ElementsAre("qry_accountgroup_success ACCOUNTGROUP_LIST"));

    const std::string before = Text();
    m_groups.Query();
    AnswerLast(true, MakeTable({"groupname"}, {{"x"}}));
    m_groups.Query();
    AnswerLast(false);
    EXPECT_THAT(
        service.Events(),
        ElementsAre("qry_accountgroup_failed ACCOUNTGROUP_LIST -8989 获取应答数据生成表格失败！原始数据：",
                    "qry_accountgroup_failed ACCOUNTGROUP_LIST -8989 查询失败！"));
    EXPECT_EQ(Text(), before);
    m_groups.Query();
    AnswerLast(true, MakeTable({"groupid"}, {{"new"}}));  // what the server does not say stays
    EXPECT_EQ(
        Text(),
        R"(all=({"groupid":"new","groupname":"M","grouptype":"2","issimulate":"1","accountlist":"[\"2\"]"}))");
}

TEST_F(AccountGroupTest, AnswersThatCrossEndInTheServersState) {
    Make("g");
    // A query that was answered from what the server knew before the member came.
    m_groups.Query();
    const CQueueReqItem query = service.host.pushed.back();
    m_groups.AddAccount(About("g", "1001"));
    AnswerLast();
    service.Answer(query, Groups({{"g", "G", "1", "0", "[]"}}));
    EXPECT_TRUE(m_groups.Find("g")->HasMember("1001"));
    EXPECT_EQ(service.Events().size(), 1u) << "the query is not answered yet";
    EXPECT_EQ(service.host.pushed.back().GetDataText("UUID"), query.GetDataText("UUID"));
    AnswerLast(true, Groups({{"g", "G", "1", "0", "[\"1001\"]"}}));
    EXPECT_THAT(service.Events(), ElementsAre("qry_accountgroup_success ACCOUNTGROUP_LIST"));

    // The query's answer has the member already when the member's own answer comes, twice.
    m_groups.AddAccount(About("g", "1002"));
    const CQueueReqItem add = service.host.pushed.back();
    m_groups.Query();
    AnswerLast(true, Groups({{"g", "G", "1", "0", "[\"1001\",\"1002\"]"}}));
    service.Answer(add);
    service.Answer(add);
    EXPECT_EQ(m_groups.Find("g")->MemberText(), "[\"1001\",\"1002\"]");
    EXPECT_EQ(service.Events().size(), 2u);

    // Deleted while a member is being added, deleted twice, and made twice.
    m_groups.AddAccount(About("g", "1003"));
    const CQueueReqItem late = service.host.pushed.back();
    m_groups.DeleteGroup(About("g"));
    const CQueueReqItem first = service.host.pushed.back();
    m_groups.DeleteGroup(About("g"));
    AnswerLast();
    service.Answer(late);
    service.Answer(first, CDataTable(), false);
    EXPECT_EQ(Text(), "all=()");
    EXPECT_THAT(service.Events(),
                ElementsAre("delete_accountgroup_success ACCOUNTGROUP_LIST",
                            "add_account_ingroup_failed GROUP -8989 账户组不存在！",
                            "delete_accountgroup_failed ACCOUNTGROUP_LIST -8989 删除失败！"));
    m_groups.AddGroup(About("g"));
    const CQueueReqItem again = service.host.pushed.back();
    m_groups.AddGroup(About("g"));
    AnswerLast();
    m_groups.AddAccount(About("g", "1004"));
    AnswerLast();
    service.Answer(again);
    EXPECT_EQ(m_groups.Find("g")->MemberText(), "[\"1004\"]");
    EXPECT_EQ(service.Events().size(), 3u);
}

TEST_F(AccountGroupTest, SinksMayRemoveTheGroup) {
    Make("g");
    m_groups.AddAccount(About("g", "1001"));
    const CQueueReqItem add = service.host.pushed.back();
    service.onEvent = [&](const ResultEvent& event) {
        if (event.module != kModuleGroup) return;
        m_groups.DeleteGroup(About("g"));
        AnswerLast();
    };
    service.Answer(add);
    EXPECT_TRUE(m_groups.All().empty());
    EXPECT_EQ(service.Events().size(), 2u);
}

}  // namespace
}  // namespace luadui
