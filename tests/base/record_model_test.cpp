// Random operations on records, copies and shared entries, against a model that copies everything deeply.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/ui_data.h"

namespace luadui {
namespace {

struct Box;

struct Content;
struct Child {
    std::shared_ptr<Box> box;        // attached, or opened in place
    std::shared_ptr<Content> plain;  // by value: never changed, so that it may be held twice
};
using Value = std::variant<int64_t, std::string, Child>;

struct Content {
    std::vector<std::pair<std::string, Value>> entries;

    Value* Find(const std::string& key) {
        for (auto& [name, value] : entries) {
            if (name == key) return &value;
        }
        return nullptr;
    }
    void Set(const std::string& key, Value value) {
        if (Value* old = Find(key)) {
            *old = std::move(value);
        } else {
            entries.emplace_back(key, std::move(value));
        }
    }
};

// An object with an identity. `open`: it stands for a by-value entry to which access was given.
struct Box {
    Content content;
    bool open = false;
};

const Content& ContentOf(const Child& child) { return child.box ? child.box->content : *child.plain; }

// The value of this moment: shared objects stay shared, opened ones are copied.
Content Snapshot(const Content& content) {
    Content copy = content;
    for (auto& [key, value] : copy.entries) {
        auto* child = std::get_if<Child>(&value);
        if (child && child->box && child->box->open) {
            *child = {nullptr, std::make_shared<Content>(Snapshot(child->box->content))};
        } else if (child && child->plain) {
            child->plain = std::make_shared<Content>(Snapshot(*child->plain));
        }
    }
    return copy;
}

bool Reaches(const Content& content, const Box* box, std::set<const Box*>& seen) {
    for (const auto& [key, value] : content.entries) {
        const auto* child = std::get_if<Child>(&value);
        if (!child) continue;
        if (child->box.get() == box) return true;
        if (child->box && !seen.insert(child->box.get()).second) continue;
        if (Reaches(ContentOf(*child), box, seen)) return true;
    }
    return false;
}

bool Reaches(const Content& content, const Box* box) {
    std::set<const Box*> seen;
    return Reaches(content, box, seen);
}

// Entries in all, as a tree; stops at `limit`.
size_t Weight(const Content& content, size_t limit) {
    size_t weight = 1;
    for (const auto& [key, value] : content.entries) {
        const auto* child = std::get_if<Child>(&value);
        weight += child && weight < limit ? Weight(ContentOf(*child), limit - weight) : 1;
    }
    return weight;
}

void ExpectEqual(const CUIData& real, const Content& model) {
    ASSERT_EQ(real.Size(), model.entries.size());
    size_t index = 0;
    for (const auto [key, value] : real) {
        const auto& [name, expected] = model.entries[index++];
        ASSERT_EQ(key, name);
        if (const auto* number = std::get_if<int64_t>(&expected)) {
            ASSERT_EQ(value.Kind(), kDataInteger);
            ASSERT_EQ(value.AsLong(), *number);
        } else if (const auto* text = std::get_if<std::string>(&expected)) {
            ASSERT_EQ(value.AsText(), *text);
        } else {
            const auto& child = std::get<Child>(expected);
            ASSERT_EQ(value.IsShared(), child.box && !child.box->open);
            CUIData inner;
            ASSERT_TRUE(value.Get(inner));
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(inner, ContentOf(child)));
        }
    }
}

class World {
  public:
    explicit World(unsigned seed) : m_random(seed) {
        for (auto& pair : m_pairs) pair = {std::make_unique<CUIData>(), std::make_shared<Box>(), false};
    }

    void Step() {
        Pair& target = m_pairs[_pick(kPairs)];
        Pair& other = m_pairs[_pick(kPairs)];
        const std::string key(1, static_cast<char>('a' + _pick(6)));
        switch (_pick(12)) {
            case 0:
                return _setNumber(target, key);
            case 1:
                return _setText(target, key);
            case 2:
                return _setValue(target, key, other);
            case 3:
            case 4:
                return _setShared(target, key, other);
            case 5:
            case 6:
            case 7:
                return _getShared(target, key, other);
            case 8:
                return _getValue(target, key, other);
            case 9:
                return _pick(2) ? _assign(target, other) : _moveAssign(target, other);
            case 10:
                return _pick(2) ? _copy(target, other) : _move(target, other);
            default:
                return _remove(target, key);
        }
    }

    void Check() const {
        for (const Pair& pair : m_pairs) ASSERT_NO_FATAL_FAILURE(ExpectEqual(*pair.real, pair.box->content));
    }

  private:
    static constexpr size_t kPairs = 7;
    static constexpr size_t kMaxWeight = 150;

    struct Pair {
        std::unique_ptr<CUIData> real;
        std::shared_ptr<Box> box;
        bool attached;
    };

    size_t _pick(size_t count) { return m_random() % count; }
    bool _tooLarge(const Pair& pair) { return Weight(pair.box->content, kMaxWeight) >= kMaxWeight; }

    void _setNumber(Pair& target, const std::string& key) {
        const auto number = static_cast<int64_t>(m_random());
        target.real->SetData(key, number);
        target.box->content.Set(key, number);
    }
    void _setText(Pair& target, const std::string& key) {
        const std::string text(_pick(2) ? _pick(40) : _pick(600), static_cast<char>('a' + _pick(26)));
        target.real->SetData(key, text);
        target.box->content.Set(key, text);
    }
    void _setValue(Pair& target, const std::string& key, Pair& other) {
        if (_tooLarge(other)) return;
        target.real->SetData(key, *other.real);
        Content value = Snapshot(other.box->content);
        if (Reaches(value, target.box.get())) return;
        target.box->content.Set(key, Child{nullptr, std::make_shared<Content>(std::move(value))});
    }
    void _setShared(Pair& target, const std::string& key, Pair& other) {
        if (_tooLarge(other)) return;
        const bool ring = other.box == target.box || Reaches(other.box->content, target.box.get());
        ASSERT_EQ(target.real->SetDataShared(key, *other.real), !ring);
        if (ring) return;
        other.attached = true;
        other.box->open = false;
        target.box->content.Set(key, Child{other.box, nullptr});
    }
    void _getShared(Pair& target, const std::string& key, Pair& other) {
        Value* value = target.box->content.Find(key);
        auto* child = value ? std::get_if<Child>(value) : nullptr;
        ASSERT_EQ(target.real->GetDataShared(key, *other.real), child != nullptr);
        if (!child) return;
        if (child->plain) {
            auto box = std::make_shared<Box>(Box{*child->plain, true});
            *child = {box, nullptr};
        }
        const std::shared_ptr<Box> box = child->box;  // `other` may own the entry
        other.box = box;
        other.attached = true;
    }
    void _getValue(Pair& target, const std::string& key, Pair& other) {
        Value* value = target.box->content.Find(key);
        auto* child = value ? std::get_if<Child>(value) : nullptr;
        ASSERT_EQ(target.real->GetData(key, *other.real), child != nullptr);
        if (!child) return;
        other.box = std::make_shared<Box>(Box{Snapshot(ContentOf(*child))});
        other.attached = false;
    }
    static void _assign(Pair& target, Pair& other) {
        *target.real = *other.real;
        _assignModel(target, other);
    }
    static void _assignModel(Pair& target, Pair& other) {
        if (target.box == other.box) return;
        Content value = Snapshot(other.box->content);
        if (!Reaches(value, target.box.get())) target.box->content = std::move(value);
    }
    static void _moveAssign(Pair& target, Pair& other) {
        *target.real = std::move(*other.real);
        if (&target == &other || other.attached || Reaches(other.box->content, target.box.get())) {
            _assignModel(target, other);
        } else {
            target.box->content = std::exchange(other.box->content, {});
        }
    }
    void _copy(Pair& target, Pair& other) {
        target.real = std::make_unique<CUIData>(*other.real);
        target.box = std::make_shared<Box>(Box{Snapshot(other.box->content)});
        target.attached = false;
    }
    void _move(Pair& target, Pair& other) {
        if (&target == &other) return;
        target.real = std::make_unique<CUIData>(std::move(*other.real));
        target.box = std::exchange(other.box, std::make_shared<Box>());
        target.attached = std::exchange(other.attached, false);
    }
    void _remove(Pair& target, const std::string& key) {
        if (_pick(10) == 0) {
            target.real->Clear();
            target.box->content.entries.clear();
            return;
        }
        auto& entries = target.box->content.entries;
        const auto found =
            std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.first == key; });
        ASSERT_EQ(target.real->Remove(key), found != entries.end());
        if (found != entries.end()) entries.erase(found);
    }

    std::mt19937 m_random;
    Pair m_pairs[kPairs];
};

class RecordModelTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(RecordModelTest, RandomOperations) {
    World world(GetParam());
    for (int step = 0; step < 30000; ++step) {
        SCOPED_TRACE(step);
        ASSERT_NO_FATAL_FAILURE(world.Step());
        // Looking settles entries that were opened: long stretches without a look, too.
        if (step % 41 != 0) continue;
        ASSERT_NO_FATAL_FAILURE(world.Check());
    }
    ASSERT_NO_FATAL_FAILURE(world.Check());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RecordModelTest, ::testing::Range(1u, 11u));

}  // namespace
}  // namespace luadui
