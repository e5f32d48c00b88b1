// What is computed for pages while an order is entered.
#include "datalists/ggt_reference.h"
#include "tests/datamgr/page_fixture.h"
#include "trade/trade.h"

namespace luadui {
namespace {

// Of the ordinary accounts A3 has no funds here, A2 and A4 no positions; C1 and C2 are credit accounts.
constexpr const char* kTables[][3] = {
    {"fund", "A1",
     "Currency,AvailableValue,Inst_AvailableValue,TotalAssets;CNY,10050,2000,30000;HKD,500,0,1"},
    {"fund", "A2", "Currency,AvailableValue,TotalAssets;,30000,1e5"},
    {"fund", "A4", "AvailableValue,TotalAssets;-,123456789012345678901234567890"},
    {"position", "A1", "SecurityID,Market,AvailableStockBalance;600000,17,250;600001,17,99;600000,17,50"},
    {"position", "A3", "SecurityID,Market,AvailableStockBalance;600000,17,1000"},
    {"credit_fund", "C1", "AvailableValue,FinEnableQuota,WT_RZRQ_RQXYZYLL;1000,2000,3000"},
    {"credit_fund", "C2", "AvailableValue,FinEnableQuota;9000,2000"},
    {"positioncredit", "C1", "SecurityID,Market,AvailableStockBalance;600000,17,400"},
};

// What follows '#' is common to the questions below it; after "=>" stands the answer, after "!>" the refusal.
constexpr char kCases[] = R"(
# stock_available handle=H stock_marketid=17 stock_code=600000
fund_token=<A1,A2> stock_price=10 => stock_available=4000 multi_account_amount={A1=1000 A2=3000}
fund_token=A1 stock_price=10 client_type=PB_MODE => stock_available=200 multi_account_amount={A1=200}
fund_token=A1 stock_price=1 currency=HKD => stock_available=500 multi_account_amount={A1=500}
fund_token=A1 stock_price=10 commission_rate=0.006 => stock_available=900 multi_account_amount={A1=900}
fund_token=<A1,A3> stock_price=10 => stock_available=1000 multi_account_amount={A1=1000} missing_account=<A3>
fund_token=A1 stock_price=- => stock_available=0 multi_account_amount={A1=0}
fund_token=<A1,A2> entrust_type=sell => stock_available=300 multi_account_amount={A1=300} missing_account=<A2>
fund_token=A2 entrust_type=sell stock_price=2 stock_code=204001 => stock_available=300 multi_account_amount={A2=300}
fund_token=C1 stock_price=10 => stock_available=200 multi_account_amount={C1=200}
fund_token=C1 stock_price=10 usertoken_type=3 entrust_type=sell => stock_available=300 multi_account_amount={C1=300}
fund_token=C1 entrust_type=sell => stock_available=400 multi_account_amount={C1=400}
fund_token=X trade_type=1 => stock_available=0 multi_account_amount={} missing_account=<X>
fund_token=<> stock_price=10 !> 缺少资金账号
fund_token=A1 stock_code= !> 缺少证券代码
# allocate handle=H stock_marketid=17 stock_code=600000 fund_token=<A1,A2,A4> stock_price=10
alloc_type=0 money=20000 => A1,1000,10000,33.3333|A2,1000,10000,33.3333|A4,0,0,33.3333 2000
alloc_type=equal amount=2500 => A1,1000,10000,33.3333|A2,1500,15000,33.3333|A4,0,0,33.3333 2500
alloc_type=1 amount=1700 commission_rate=0.001 => A1,400,4004,25.0936|A2,1300,13013,74.9064|A4,0,0,0.0000 1700
alloc_type=assets money=1e4 => A1,200,2000,23.0769|A2,800,8000,76.9231|A4,0,0,0.0000 1000
alloc_type=3 amount=1000 weights={A2=0.5} => A1,0,0,0.0000|A2,1000,10000,100.0000|A4,0,0,0.0000 1000
alloc_type=0 amount=1250 entrust_type=sell fund_token=<A1,A3> => A1,300,3000,50.0000|A3,900,9000,50.0000 1200
alloc_type=1 amount=1300 entrust_type=sell fund_token=<A1,A3> stock_price= => A1,300,0,23.0769|A3,1000,0,76.9231 1300
alloc_type=2 amount=100 entrust_type=sell fund_token=<A1,A3> => A1,100,1000,100.0000|A3,0,0,0.0000 100 <A3>
alloc_type=0 amount=99999999999999999999 fund_token=<A1,C1> => A1,0,0,50.0000|C1,200,2000,50.0000 200 <A1>
alloc_type=1 amount=200 fund_token=<C1,C2> => C1,100,1000,50.0000|C2,100,1000,50.0000 200
alloc_type=0 !> 缺少分配数量或金额
alloc_type=0 amount=0 money=5 !> 分配数量无效
alloc_type=0 amount=1,234.50 !> 分配数量无效
alloc_type=0 money=123456789012345678901234567890 !> 分配金额无效
alloc_type=0 money=5 stock_price=0 !> 缺少价格
alloc_type=0 amount=5 stock_price=-5 !> 价格无效
alloc_type=0 amount=5 commission_rate=1 !> 佣金费率无效
amount=5 !> 缺少分配方式
amount=5 alloc_type=weight !> 缺少分配权重
amount=5 alloc_type=weight weights={A1=-1} !> 分配权重无效
amount=5 alloc_type=weight weights={A1=0} !> 分配权重之和为零
amount=5 alloc_type=1 fund_token=<A4> !> 分配权重之和为零
# price_level handle=H stock_marketid=17 stock_code=600000
price_level=S10 quote={PriceSell10=10.1} price_offset=-3 => price=10.07
price_level=买一 PriceBuy1=10.12 price_offset=2 => price=10.14
price_level=0 PriceZxjg=10.126 => price=10.13
price_level=ZT PriceZtjg=11 PriceZrsp=12 => price=11.00
price_level=S1 PriceSell1=10.99 PriceZtjg=11.01 price_offset=5 => price=11.01
price_level=S1 PriceSell1=9.02 PriceZrsp=10 price_offset=-5 => price=9.00
price_level=S1 PriceSell1=9 PriceZtjg=7 PriceDtjg=8 => price=9.00
price_level=B1 PriceBuy1=0.02 price_offset=-5 => price=0.01
price_level=B1 PriceBuy1=0.25 stock_code=00700 stock_marketid=76 price_offset=-1 => price=0.249
price_level=B1 PriceBuy1=0.249 stock_code=00700 stock_marketid=76 price_offset=2 => price=0.255
price_level=NULL => price=
price_level=B1 PriceBuy1=- !> 该档位没有价格
price_level=B1 quote={PriceBuy2=1} PriceBuy1=9 !> 该档位没有价格
price_level=B1 PriceBuy1=1,234.50 !> 行情价格无效
price_level=B1 PriceBuy1=3 price_offset=1e9 !> 价格偏移无效
price_level=B1 PriceBuy1=3 stock_code=X price_offset=1 !> 缺少最小变动价位
price_level=B11 PriceBuy1=3 !> 价格档位无效
# limit_price handle=H stock_marketid=17 stock_code=600000 previous_close=10
reference_price=10.5 => limit_down=9.00 limit_up=11.00 declare_low=9.00 declare_high=10.71 price_step=0.01
entrust_type=sell => limit_down=9.00 limit_up=11.00 declare_low=9.80 declare_high=11.00 price_step=0.01
stock_code=204001 => limit_down= limit_up= declare_low= declare_high= price_step=0.005
previous_close=0 reference_price=10 !> 缺少昨收价
reference_price=1,0 !> 参考价无效
# code_mask handle=H stock_code=688001
masks=300***;6?8*** => is_match=true
masks=<688***> => is_match=true
masks=688***;; stock_code=600000 => is_match=false
masks=688*** stock_code=6880011 => is_match=false
masks=688*** stock_code=68800X => is_match=false
masks=688* stock_code=6880011 => is_match=true
 !> 缺少代码掩码
# price_spread handle=H
stock_price=0.3 Market=76 => price_spread=0.005
Market=76 !> 缺少市场或价格
)";

class TradeFactoriesTest : public PageFixture {
  protected:
    TradeFactoriesTest() {
        for (const auto& [kind, token, table] : kTables)
            _list(kind).TakeAnswer(token, TableOf(table), RequestLedger::Instance().NextAge());
        page->Lists()
            .FindOrMake<CPriceSpreadGGT>("tb_price_spred_ggt")
            ->SetResponse(ResponseOf(
                "{}Market,StockType,GGT_QDJG,GGT_ZDJG,GGT_JCZ;E,0,0.01,0.25,0.001;E,0,0.25,0.5,0.005"));
    }
    ~TradeFactoriesTest() override {
        for (const auto& [kind, token, table] : kTables) _list(kind).Remove(token);
        CTrade::SetPriceSpreads({});
    }

    // Asks in every way; what is told is what is added to the record.
    void Expect(const std::string& asked, const std::string& answer, bool isGood) {
        for (const char* refresh : {"", " refresh=1"}) {
            const CUIData record = RecordOf(Utf8ToGbk(asked) + refresh, window.GetHandle());
            CUIData silent = record, told = record, made = record;
            EXPECT_EQ(page->GetData(silent, true, true), isGood) << asked;
            EXPECT_EQ(window.Take(), "");
            EXPECT_EQ(_added(Describe(silent)), answer) << asked;
            EXPECT_EQ(page->GetData(told, false, true), isGood) << asked;
            EXPECT_EQ(_added(window.Take()), answer) << asked;
            page->SetData(&made, kSetFactoryRequest);
            EXPECT_EQ(_added(window.Take()), answer) << asked;
        }
        EXPECT_TRUE(host.pushed.empty());
    }

  private:
    CTokenTableList& _list(const char* kind) { return *router.CommonData().Lists().FindOrMake(kind); }
    static std::string _added(const std::string& text) {
        const std::string mark = "pageName=P ";
        const size_t at = text.find(mark);
        return at == std::string::npos ? "" : GbkToUtf8(text.substr(at + mark.size()));
    }
};

// "rows total missing" as the record has them.
std::string AllocationText(std::string_view text) {
    const auto parts = SplitText(text, ' ');
    std::string amounts;
    for (const auto row : SplitText(parts[0], '|')) {
        const auto cells = SplitText(row, ',');
        amounts += (amounts.empty() ? "" : " ") + std::string(cells[0]) + '=' + std::string(cells[1]);
    }
    return "allocate=[fund_token,Amount,Money,Weight|" + std::string(parts[0]) + "] multi_account_amount={" +
           amounts + "} stock_available=" + std::string(parts[1]) +
           (parts.size() > 2 ? " missing_account=" + std::string(parts[2]) : "");
}

TEST_F(TradeFactoriesTest, AnswersOrSaysWhatIsMissing) {
    const auto unreadable = CCounters::Get("allocate_total_assets_unreadable");
    std::string common;
    for (const auto text : SplitText(kCases, '\n')) {
        const std::string line(text);
        if (line.starts_with("# ")) common = line.substr(2) + ' ';
        const size_t at = std::min(line.find(" => "), line.find(" !> "));
        if (at == std::string::npos) continue;
        const bool isGood = line[at + 1] == '=';
        std::string answer = line.substr(at + 4);
        if (isGood && common.starts_with("allocate")) answer = AllocationText(answer);
        Expect(common + line.substr(0, at),
               isGood ? answer + " ret_code=0 ret_message=" : "ret_code=-1 ret_message=" + answer, isGood);
    }
    EXPECT_GT(CCounters::Get("allocate_total_assets_unreadable"), unreadable);

    CUIData used = RecordOf("price_level price=10 price_level=B1 stock_code=600000");
    EXPECT_FALSE(page->GetData(used, true, false));
    EXPECT_FALSE(used.Has("price"));
    CUIData request =
        RecordOf("allocate alloc_type=0 amount=1e9 stock_code=600000 stock_marketid=17 stock_price=10");
    CDataSet tokens, missing;
    for (int i = 0; i < 10'000; ++i) tokens.Insert("X|" + std::to_string(i));
    request.SetData("fund_token", tokens);
    EXPECT_TRUE(page->GetData(request, true, false));
    EXPECT_TRUE(request.GetData("missing_account", missing) && missing.Size() == tokens.Size());
}

TEST_F(TradeFactoriesTest, TheServersMasksServeLaterQuestions) {
    Set(kSetRequest, "kcb_code_mask handle=H");
    ASSERT_EQ(host.pushed.size(), 1);
    CQueueRespData response = ResponseOf("{}No,Mask;1,300***");
    for (const char* key : {"REQTYPE", "UUID"}) response.SetData(key, host.pushed[0].GetDataView(key));
    response.SetData("Request", static_cast<const CUIData&>(std::exchange(host.pushed, {})[0]));
    page->OnResponse(&response);
    window.Take();
    Expect("code_mask handle=H stock_code=300750", "is_match=true ret_code=0 ret_message=", true);
    Expect("code_mask handle=H stock_code=300750 masks=688*", "is_match=false ret_code=0 ret_message=", true);
}

}  // namespace
}  // namespace luadui
