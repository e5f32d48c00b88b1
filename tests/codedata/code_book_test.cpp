// The index answers as the plain walk over all keys does.
#include "codedata/code_book.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <tuple>
#include <unordered_map>

#include "base/counters.h"
#include "base/text.h"
#include "codedata/code_candidates.h"
#include "codedata/code_list_query.h"
#include "platform/duilib.h"
#include "tests/fakes/securities.h"

namespace luadui {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
constexpr size_t kQueries = 50'000;
#else
constexpr size_t kQueries = 250'000;
#endif
constexpr wchar_t kMark = 0xE900;

std::wstring Upper(const std::wstring& text) {
    CDuiString upper(text.c_str());
    upper.MakeUpper();
    return upper.GetData();
}

// The tables as they are defined: keys in order, walked from the first one on.
class PlainWalk {
  public:
    struct Entry {
        std::wstring market, name;
    };
    explicit PlainWalk(const Securities& securities) {
        for (const Securities::Row& row : securities.Rows()) {
            std::wstring readings = GbkToWide(row.phonetic);
            for (wchar_t& c : readings) c = c == L' ' || c == L',' || c == L';' ? kMark : c;
            const auto mark = static_cast<wchar_t>(kMark + 1 + CodeListRank(row.market));
            keys.emplace(Upper(GbkToWide(row.code + row.name) + readings) + mark,
                         Entry{GbkToWide(row.market), GbkToWide(row.name)});
        }
    }

    static bool IsMark(wchar_t c) { return c >= kMark && c < kMark + 99; }
    // The number of the first entry; -1 when there is none. A null market is any.
    int Find(const std::wstring& query, const std::wstring* market) const {
        if (query.empty() || std::any_of(query.begin(), query.end(), IsMark)) return -1;
        int number = 0;
        for (const auto& [key, entry] : keys) {
            if (key.find(query) != std::wstring::npos && (!market || entry.market == *market)) return number;
            ++number;
        }
        return -1;
    }

    std::map<std::wstring, Entry> keys;
};

struct Query {
    std::wstring text;  // upper-cased
    std::wstring market;
};
struct Answer {
    int any = -1, inMarket = -1;
    bool operator==(const Answer&) const = default;
};

// Walks once for all queries: looks every part of every key up among them.
std::vector<Answer> WalkOnce(const PlainWalk& walk, const std::vector<Query>& queries) {
    struct Text {
        size_t longest = 0;  // of the queries that begin with this one, of two characters
        int first = -1;
        std::map<std::wstring_view, int> firstInMarket;
    };
    std::unordered_map<std::wstring_view, Text> texts;
    for (const Query& query : queries) {
        const std::wstring_view text = query.text;
        texts[text];
        size_t& longest = texts[text.substr(0, 2)].longest;
        longest = std::max(longest, text.size());
    }
    int number = -1;
    for (const auto& [key, entry] : walk.keys) {
        ++number;
        const std::wstring_view view = key;
        for (size_t start = 0; start < view.size(); ++start) {
            size_t longest = 2;
            for (size_t length = 1; length <= longest && start + length <= view.size(); ++length) {
                if (PlainWalk::IsMark(view[start + length - 1])) break;
                const auto text = texts.find(view.substr(start, length));
                if (text == texts.end()) continue;
                if (length == 2) longest = text->second.longest;
                if (text->second.first < 0) text->second.first = number;
                text->second.firstInMarket.emplace(entry.market, number);
            }
        }
    }
    std::vector<Answer> answers;
    for (const Query& query : queries) {
        const Text& text = texts[query.text];
        const auto inMarket = text.firstInMarket.find(query.market);
        answers.push_back({text.first, inMarket == text.firstInMarket.end() ? -1 : inMarket->second});
    }
    return answers;
}

// What users type, and what they do not.
class Typist {
  public:
    Typist(const PlainWalk& walk, unsigned seed) : m_random(seed) {
        for (const auto& [key, entry] : walk.keys) {
            m_keys.push_back(&key);
            m_markets.insert(entry.market);
        }
        m_markets.insert({L"1", L"", L"99"});
    }

    Query Type() {
        std::wstring text = _part(1 + _below(8));
        switch (_below(16)) {
            case 0:
                text = *m_keys[_below(m_keys.size())];
                break;  // with its mark
            case 1:
                text = text.substr(0, 1);
                break;
            case 2:
                text += _part(1 + _below(3));
                break;  // of two keys
            case 3:
                text[_below(text.size())] = _character();
                break;
            case 4:
                text = std::wstring(1 + _below(3), _character());
                break;
            case 5:
                text = std::to_wstring(_below(1'000'000));
                break;
            case 6:
                text = _part(100);
                text.pop_back();
                break;  // to the end
            case 7:
                std::replace(text.begin(), text.end(), kMark, L' ');
                break;
            default:
                break;
        }
        auto market = m_markets.begin();
        std::advance(market, _below(m_markets.size()));
        return {Upper(text), *market};
    }

  private:
    size_t _below(size_t limit) { return m_random() % limit; }
    std::wstring _part(size_t length) {
        const std::wstring& key = *m_keys[_below(m_keys.size())];
        return key.substr(_below(key.size()), length);
    }
    wchar_t _character() {
        static const std::wstring kOdd =
            L" *,;az09AZ\xFF21\xFF41\x3000\xFFFD\x4E2D\x80A1\xE864\xE865\xF8F5\xD83D\xFFFF";
        return kOdd[_below(kOdd.size())];
    }

    std::mt19937 m_random;
    std::vector<const std::wstring*> m_keys;
    std::set<std::wstring> m_markets;
};

Answer Ask(const CodeBook& book, const Query& query) {
    const auto any = book.Search(query.text), inMarket = book.Search(query.text, query.market);
    return {any ? static_cast<int>(*any) : -1, inMarket ? static_cast<int>(*inMarket) : -1};
}

std::string Describe(const Query& query) { return WideToGbk(query.text) + " in " + WideToGbk(query.market); }

void CompareWithWalk(size_t count, unsigned seed, size_t queryCount, size_t plainly) {
    const Securities securities(count, seed);
    const auto book = CodeBook::Build(securities.Records());
    const PlainWalk walk(securities);
    ASSERT_EQ(book->Size(), walk.keys.size());
    size_t number = 0;
    for (const auto& [key, entry] : walk.keys) {
        const std::wstring ours = book->SearchKey(number);
        ASSERT_EQ(ours.substr(0, ours.size() - 1), key.substr(0, key.size() - 1));
        ASSERT_EQ(book->WideName(number), entry.name);
        ASSERT_EQ(book->WideMarket(number++), entry.market);
    }
    Typist typist(walk, seed);
    std::vector<Query> queries(queryCount);
    for (Query& query : queries) query = typist.Type();
    const std::vector<Answer> answers = WalkOnce(walk, queries);
    size_t hits = 0;
    for (size_t i = 0; i < queries.size(); ++i) {
        ASSERT_EQ(Ask(*book, queries[i]), answers[i]) << Describe(queries[i]);
        if (i < plainly) {
            ASSERT_EQ(walk.Find(queries[i].text, nullptr), answers[i].any);
            ASSERT_EQ(walk.Find(queries[i].text, &queries[i].market), answers[i].inMarket);
        }
        hits += answers[i].any >= 0;
    }
    EXPECT_GT(hits, queryCount / 3);
    EXPECT_LT(hits, queryCount * 9 / 10);
}

TEST(CodeBook, AnswersAsThePlainWalk) { CompareWithWalk(40'000, 1, kQueries, kQueries / 1'000); }

TEST(CodeBook, AnswersAsThePlainWalkForShortLists) {
    for (unsigned seed = 2; seed < 60; ++seed) CompareWithWalk(1 + seed * seed % 300, seed, 500, 500);
}

struct RowCase {
    const char *code, *name, *market, *phonetic;
};

TEST(CodeBook, LeavesOutWhatIsNoSecurity) {
    const std::string longName(128, 'N');
    const RowCase rows[] = {{"600000", "A", "17", ""},
                            {"600000", "B", "17", ""},
                            {"600000", "C", "1", ""},
                            {"", "A", "17", ""},
                            {"1", "A", "", ""},
                            {"\xB0\xA1", "A", "17", ""},
                            {"2", longName.c_str(), "17", ""},
                            {"3", "\xFF\x80", "99999", "  ;"}};
    std::vector<CodeRecord> records;
    for (const RowCase& row : rows) records.push_back({row.code, row.name, row.market, row.phonetic});
    const uint64_t unusable = CCounters::Get("code_list_row_unusable"),
                   doubled = CCounters::Get("code_list_duplicate");
    const CodeRecord additions[] = {{"600000", "D", "17", ""}, {"600000", "E", "18", ""}};
    const auto book = CodeBook::Build(records, additions);
    EXPECT_EQ(CCounters::Get("code_list_row_unusable"), unusable + 4);
    EXPECT_EQ(CCounters::Get("code_list_duplicate"), doubled + 1);
    std::string names;
    for (const uint32_t entry : book->EntriesOf("600000")) names += book->At(entry).name;
    EXPECT_EQ(names, "AEC") << "by the rank of their markets";
    EXPECT_EQ(book->Size(), 4U);
    EXPECT_EQ(book->At(*book->Find("3")).phonetic, "  ;");
    EXPECT_EQ(book->Search(L"\xF8F5"), book->Find("3"));

    std::vector<std::string> markets;
    for (size_t i = 0; i < 2 * CodeBook::kMaxMarkets; ++i) markets.push_back(std::to_string(1'000 + i));
    records.clear();
    for (const std::string& market : markets) records.push_back({"1", "N", market, ""});
    EXPECT_EQ(CodeBook::Build(records)->Size(), CodeBook::kMaxMarkets);
    EXPECT_EQ(CodeBook::Build({})->Size(), 0U);
    EXPECT_FALSE(CodeBook::Build({})->Search(L"1"));
    EXPECT_FALSE(CodeBook().Search(L"1"));
    EXPECT_FALSE(CodeBook().Find("1"));
}

// One key, endlessly repeated or of the same character, neither hangs the sort nor blurs the answer.
TEST(CodeBook, RepeatedTextsAreSorted) {
    std::vector<std::string> codes;
    for (int i = 0; i < 500; ++i)
        codes.push_back(std::string(static_cast<size_t>(1 + i % 31), 'A') + std::to_string(i));
    const std::string name(127, 'A'), phonetic(255, 'A');
    std::vector<CodeRecord> records;
    for (const std::string& code : codes) {
        if (code.size() <= CodeList::kMaxCode) records.push_back({code, name, "17", phonetic});
    }
    const auto book = CodeBook::Build(records);
    EXPECT_EQ(book->Search(std::wstring(300, L'A')), 0U);
    EXPECT_EQ(book->Search(std::wstring(383, L'A')), std::nullopt);
    EXPECT_EQ(book->Search(L"499A"), book->Find(codes[499]));
}

// The best match of an entry, as a search box defines it; kInside + 1 when there is none.
int MatchOf(const CodeBook& book, size_t entry, const std::wstring& query) {
    const std::wstring key = book.SearchKey(entry);
    const size_t code = book.At(entry).code.size(), readings = code + book.WideName(entry).size();
    int best = 5;
    for (size_t at = key.find(query); at != std::wstring::npos; at = key.find(query, at + 1)) {
        const bool isReading = at >= readings && (at == readings || key[at - 1] == kMark);
        const int match = at == 0 ? (query.size() == code ? 0 : 1) : isReading ? 2 : at == code ? 3 : 4;
        best = std::min(best, match);
    }
    return best;
}

TEST(CodeBook, CandidatesAreRanked) {
    const Securities securities(1'500, 9);
    const auto book = CodeBook::Build(securities.Records());
    const PlainWalk walk(securities);
    Typist typist(walk, 4);
    for (int i = 0; i < 300; ++i) {
        const std::wstring query = typist.Type().text;
        if (query.empty() || std::any_of(query.begin(), query.end(), PlainWalk::IsMark)) continue;
        using Rank = std::tuple<int, size_t, size_t>;
        std::vector<Rank> expected, found;
        for (size_t entry = 0; entry < book->Size(); ++entry) {
            const int match = MatchOf(*book, entry, query);
            if (match <= 4) expected.emplace_back(match, CodeListRank(book->At(entry).market), entry);
        }
        std::sort(expected.begin(), expected.end());
        const size_t most = 1 + static_cast<size_t>(i) % 30 * 40;
        expected.resize(std::min(most, expected.size()));
        for (const CodeCandidate& candidate : FindCandidates(*book, query, most)) {
            const size_t entry = *book->Find(candidate.code, candidate.market);
            found.emplace_back(static_cast<int>(candidate.match), CodeListRank(candidate.market), entry);
            const std::string fields[] = {candidate.code, candidate.name, candidate.phonetic};
            std::wstring rest;
            for (auto field = static_cast<size_t>(candidate.field); field < 3; ++field)
                rest += GbkToWide(fields[field]);
            ASSERT_EQ(Upper(rest.substr(candidate.start, candidate.length)), query);
        }
        ASSERT_EQ(found, expected) << WideToGbk(query);
    }
}

}  // namespace
}  // namespace luadui
