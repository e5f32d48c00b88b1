// The keyboard wizard over 40,000 securities, beside the walk over an ordered map that it stands for.
#include <algorithm>
#include <chrono>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "base/text.h"
#include "bench/report.h"
#include "codedata/code_book.h"
#include "codedata/data_manager.h"
#include "messaging/host_link.h"
#include "tests/fakes/securities.h"

namespace luadui::bench {
namespace {

constexpr size_t kKeys = 40'000;
constexpr size_t kQueriesOfAKind = 2'000;

const Securities& List() {
    static const auto* const list = new Securities(kKeys);
    return *list;
}

// The list is loaded as a terminal loads it: from the answer of the host.
void Load() {
    static const bool isLoaded = [] {
        CHostLink::Instance().SetRequestSyncCallback([](CQueueReqItem* request) {
            CUIData params;
            request->GetData("Params", params);
            request->SetData("result", List().Reply());
            return 0;
        });
        return CDataManager::InitKeyFairy("") && CDataManager::Get_KeyFairy_Size() == static_cast<int>(kKeys);
    }();
    if (!isLoaded) AtLeast("wizard_list_loaded", 0, 1);
}

struct Entry {
    CDuiString code, phonetic, market, name;
};

// As the tables are defined, key by key.
class PlainWalk {
  public:
    PlainWalk() {
        for (const Securities::Row& row : List().Rows()) {
            CDuiString key(GbkToWide(row.code + row.name + row.phonetic).c_str());
            for (const wchar_t* const separator : {L" ", L",", L";"}) key.Replace(separator, L"\xE900");
            key.MakeUpper();
            key += static_cast<wchar_t>(0xE900 + std::stoi(row.market));
            m_entries[key] = {GbkToWide(row.code).c_str(), GbkToWide(row.phonetic).c_str(),
                              GbkToWide(row.market).c_str(), GbkToWide(row.name).c_str()};
        }
    }

    const std::map<CDuiString, Entry>& Entries() const { return m_entries; }
    CDuiString Market(const CDuiString& query) const {
        const Entry* const entry = _find(query, nullptr);
        return entry ? entry->market : CDuiString();
    }
    CDuiString Name(const CDuiString& query, const CDuiString& market) const {
        const Entry* const entry = _find(query, &market);
        return entry ? entry->name : CDuiString();
    }

  private:
    const Entry* _find(CDuiString query, const CDuiString* market) const {
        query.MakeUpper();
        for (const auto& [key, entry] : m_entries) {
            if (key.Find(query) >= 0 && (!market || entry.market == *market)) return &entry;
        }
        return nullptr;
    }

    std::map<CDuiString, Entry> m_entries;
};

const PlainWalk& Walk() {
    static const auto* const walk = new PlainWalk;
    return *walk;
}

struct Query {
    CDuiString text, market;
};
using Queries = std::vector<Query>;

// Parts of keys at the beginning, in the middle and at the end of the list, and what no key holds; of 1 to 8 characters.
std::vector<Queries> Kinds() {
    std::vector<const std::pair<const CDuiString, Entry>*> entries;
    for (const auto& entry : Walk().Entries()) entries.push_back(&entry);
    std::mt19937 random(7);
    std::vector<Queries> kinds;
    for (int length = 1; length <= 8; ++length) {
        for (const size_t third : {0, 1, 2, 3}) {  // the last: a miss
            Queries queries;
            while (queries.size() < kQueriesOfAKind) {
                const auto& [key, entry] = *entries[(third % 3 * kKeys + random() % kKeys) / 3];
                const int last = key.GetLength() - 1 - length;
                if (last < 0) continue;
                CDuiString text =
                    key.Mid(static_cast<int>(random() % static_cast<unsigned>(last + 1)), length);
                if (text.Find(L'\xE900') >= 0) continue;
                if (third == 3) text.SetAt(static_cast<int>(random() % static_cast<unsigned>(length)), L'#');
                if (random() % 2) text.MakeLower();
                queries.push_back({text, random() % 2 ? entry.market : CDuiString(L"33")});
            }
            kinds.push_back(std::move(queries));
        }
    }
    return kinds;
}

template <class Body>
double Seconds(Body body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The medians of all and of the slowest kind. Every query is measured on its own, the clock's time included, and the
// kinds take turns. The first `count` queries of each kind come in so many rounds.
template <class Ask>
std::pair<double, double> Medians(Ask ask, const std::vector<Queries>& kinds, size_t count, int rounds) {
    std::vector<double> all, ofKinds;
    std::vector<std::vector<double>> times(kinds.size());
    for (size_t i = 0; i < count * static_cast<size_t>(rounds); ++i) {
        Queries typed;  // just now
        for (const Queries& kind : kinds) typed.push_back(kind[i % count]);
        for (size_t kind = 0; kind < kinds.size(); ++kind) {
            times[kind].push_back(Seconds([&] { Keep(ask(typed[kind]).GetData()); }));
        }
    }
    for (const auto& ofKind : times) {
        all.insert(all.end(), ofKind.begin(), ofKind.end());
        ofKinds.push_back(Median(ofKind));
    }
    return {Median(all) * 1e9, *std::max_element(ofKinds.begin(), ofKinds.end()) * 1e9};
}

// Of 1,024 queries that come again and again, as those of pushes do, and of 64,000 of which each comes once, so that
// nothing it needs is near.
template <class Ask>
void ReportLookups(const std::string& name, Ask ask, const std::vector<Queries>& kinds) {
    const auto [median, slowest] = Medians(ask, kinds, 32, 60);
    const auto [coldMedian, coldSlowest] = Medians(ask, kinds, kQueriesOfAKind, 1);
    AtMost(name + "_median_ns", median, 250);
    AtMost(name + "_slowest_kind_ns", slowest, 1'000);
    AtMost(name + "_cold_median_ns", coldMedian, 250);
    AtMost(name + "_cold_slowest_kind_ns", coldSlowest, 1'000);
}

template <class Ours, class Plain>
void ReportSpeedup(const std::string& name, Ours ours, Plain plain, const std::vector<Queries>& kinds) {
    Queries mix;
    for (size_t i = 0; i < 100; ++i) {
        for (const Queries& kind : kinds) mix.push_back(kind[i]);
    }
    const double plainTime = Seconds([&] {
        for (const Query& query : mix) Keep(plain(query).GetData());
    });
    bool isSame = true;
    for (const Query& query : mix) isSame = isSame && ours(query) == plain(query);
    std::vector<double> ourTimes;
    for (int round = 0; round < 9; ++round) {
        ourTimes.push_back(Seconds([&] {
            for (const Query& query : mix) Keep(ours(query).GetData());
        }));
    }
    AtLeast(name + "_vs_walk", isSame ? plainTime / Median(ourTimes) : 0, 500);
}

LUADUI_REPORT(KeyboardWizard) {
    Load();
    const std::vector<Queries> kinds = Kinds();
    const auto market = [](const Query& query) { return CDataManager::GetMarketFromKeyFairy(query.text); };
    const auto name = [](const Query& query) {
        return CDataManager::GetZqmcFromKeyFairy(query.text, query.market);
    };
    ReportLookups("wizard_lookup", market, kinds);
    ReportLookups("wizard_lookup_in_market", name, kinds);
    ReportSpeedup(
        "wizard_lookup", market, [](const Query& query) { return Walk().Market(query.text); }, kinds);
    ReportSpeedup(
        "wizard_lookup_in_market", name,
        [](const Query& query) { return Walk().Name(query.text, query.market); }, kinds);
    const CDuiString endless(std::wstring(10'000, L'6').c_str());
    AtMost("wizard_lookup_10000_characters_ns",
           Measure([&] { Keep(CDataManager::GetMarketFromKeyFairy(endless).GetData()); }) * 1e9, 1'000);
}

LUADUI_REPORT(KeyboardWizardBuild) {
    const std::vector<CodeRecord> records = List().Records();
    const auto book = CodeBook::Build(records);
    const Rounds rounds{7, 0.001};
    AtMost("wizard_build_ms", Measure([&] { Keep(CodeBook::Build(records).get()); }, rounds) * 1e3, 150);
    const auto keys = static_cast<double>(book->Size());
    const auto withMarkets = static_cast<double>(book->Index().Bytes());
    AtMost("wizard_index_bytes_a_key", (withMarkets - static_cast<double>(book->Index().LabelBytes())) / keys,
           300);
    AtMost("wizard_index_bytes_a_key_with_markets", withMarkets / keys, 600);
    AtMost("wizard_book_bytes_a_key", static_cast<double>(book->Bytes()) / keys, 600);

    const std::string reply = Securities(10'000).Reply();
    const auto load = [&] { Keep(CodeBook::Build(CodeList::Parse(reply).Records()).get()); };
    AtMost("wizard_10000_codes_parsed_and_built_ms", Measure(load, rounds) * 1e3, 150);
}

LUADUI_REPORT(SecurityNames) {
    Load();
    std::map<std::pair<std::string, std::string>, std::string> names;
    for (const Securities::Row& row : List().Rows()) names[{row.code, row.market}] = row.name;
    size_t next = 0, nextInMap = 0;
    const auto& rows = List().Rows();
    const Timing time = Compare(
        [&] {
            const auto& row = rows[next = (next + 7'919) % rows.size()];
            Keep(CDataManager::SecurityName(row.code, row.market).data());
        },
        [&] {
            const auto& row = rows[nextInMap = (nextInMap + 7'919) % rows.size()];
            Keep(names.find({row.code, row.market})->second.data());
        });
    AtMost("security_name_ns", time.ours * 1e9, 250);
    AtLeast("security_name_vs_map", time.Speedup(), 1);
}

LUADUI_REPORT(SearchBox) {
    Load();
    double worst = 0;
    for (const wchar_t* const typed :
         {L"6", L"60", L"6000", L"z", L"zg", L"zgyh", L"\x4E2D", L"\x4E2D\x56FD", L"#"}) {
        const CDuiString query(typed);
        worst = std::max(worst,
                         Measure([&] { Keep(CDataManager::FindCandidates(query, 20).data()); }, {5, 0.005}));
    }
    AtMost("search_box_20_candidates_worst_us", worst * 1e6, 1'000);
}

}  // namespace
}  // namespace luadui::bench
