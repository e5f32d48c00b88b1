// The index answers as the plain walk over all keys does.
#include "codedata/code_book.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
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

}  // namespace
}  // namespace luadui
