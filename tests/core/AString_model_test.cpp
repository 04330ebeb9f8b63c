// AString against a plain model of its rules: a std::string and two numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "kfl/AString.h"
#include "tests/support/seed.h"

using kfl::AString;

namespace {

// What the promise says about capacity, length and text, written down without any of the tricks
// that the library may use. Arguments are copies, so a piece of the text itself is nothing special.
class Model {
  public:
    Model(unsigned int capacity, unsigned int increment)
        : capacity_(capacity), increment_(increment) {}

    void makeRoom(unsigned int n) {
        if (capacity_ >= n + 1) return;
        capacity_ = n - capacity_ < increment_ ? capacity_ + increment_ : n;
    }
    void append(const std::string& text) {
        makeRoom(length() + static_cast<unsigned int>(text.size()));
        text_ += text;
    }
    void append(std::string text, unsigned int n) {
        text.resize(n);  // cuts, or fills with NULs
        append(text);
    }
    void insert(unsigned int pos, const std::string& text) {
        makeRoom(length() + static_cast<unsigned int>(text.size()));
        text_.insert(pos, text);
    }
    void erase(unsigned int pos, int count) {
        if (pos >= text_.size()) return;
        text_.erase(pos, count < 0 ? std::string::npos : static_cast<std::size_t>(count));
    }
    void trimRight(unsigned int n) { text_.resize(text_.size() - n); }
    void replace(char from, char to) {
        for (char& c : text_) {
            if (c == '\0') return;
            if (c != from) continue;
            c = to;
            if (to == '\0') return;
        }
    }
    void clear() { text_.clear(); }

    int find(const std::string& needle) const {
        const std::size_t at = visible().find(needle);
        return at == std::string::npos ? -1 : static_cast<int>(at);
    }
    int findFirstOf(const std::string& set, int start) const {
        return forward(set + '\0', start, true);
    }
    int findFirstNotOf(const std::string& set, int start) const {
        return forward(set + '\0', start, false);
    }
    int findLastOf(const std::string& set) const { return backward(set + '\0', true); }
    int findLastNotOf(const std::string& set) const { return backward(set + '\0', false); }

    const std::string& text() const { return text_; }
    std::string visible() const { return std::string(text_.c_str()); }
    // The visible text from a position on, as a caller sees it through a pointer into the string.
    std::string piece(unsigned int from) const { return std::string(text_.c_str() + from); }
    unsigned int length() const { return static_cast<unsigned int>(text_.size()); }
    unsigned int capacity() const { return capacity_; }
    unsigned int increment() const { return increment_; }

  private:
    // Forward searches stand still at the end, with the number of characters gone over.
    int forward(const std::string& set, int start, bool wanted) const {
        if (start < 0 || static_cast<std::size_t>(start) >= text_.size()) return -1;
        int gone = 0;
        for (std::size_t i = static_cast<std::size_t>(start); i < text_.size(); ++i, ++gone)
            if ((set.find(text_[i]) != std::string::npos) == wanted) break;
        return gone;
    }
    int backward(const std::string& set, bool wanted) const {
        for (std::size_t i = text_.size(); i > 0; --i)
            if ((set.find(text_[i - 1]) != std::string::npos) == wanted)
                return static_cast<int>(i) - 1;
        return -1;
    }

    std::string text_;
    unsigned int capacity_;
    unsigned int increment_;
};

// A string and its model, which get the same calls.
struct Pair {
    Pair(unsigned int capacity, unsigned int increment)
        : real(capacity, increment), model(capacity, increment) {}

    // A pointer to the real text and what is visible from there.
    const char* own(unsigned int from) const { return real.c_str() + from; }

    AString real;
    Model model;
};

testing::AssertionResult same(const AString& real, const Model& model) {
    const std::string text(real.c_str(), real.length());
    if (text != model.text())
        return testing::AssertionFailure() << testing::PrintToString(text) << " instead of "
                                           << testing::PrintToString(model.text());
    if (real.c_str()[real.length()] != '\0') return testing::AssertionFailure() << "no terminator";
    if (real.capacity() != model.capacity())
        return testing::AssertionFailure()
               << "capacity " << real.capacity() << " instead of " << model.capacity();
    if (real.increment() != model.increment()) return testing::AssertionFailure() << "increment";
    return testing::AssertionSuccess();
}

void expectSameAnswers(AString& real, const Model& model, const std::string& set, int start) {
    const char* const members = set.c_str();
    ASSERT_EQ(real.find(members, start), model.find(set)) << set;
    ASSERT_EQ(real.findFirstOf(members, start), model.findFirstOf(set, start)) << set << start;
    ASSERT_EQ(real.findFirstNotOf(members, start), model.findFirstNotOf(set, start))
        << set << start;
    ASSERT_EQ(real.findLastOf(members), model.findLastOf(set)) << set;
    ASSERT_EQ(real.findLastNotOf(members), model.findLastNotOf(set)) << set;
}

// --- Random sequences ---

std::string randomText(kfl_test::Random& random, unsigned int longest) {
    std::string text(random.below(longest + 1), ' ');
    for (char& c : text) c = "abc\xE4"[random.below(4)];
    return text;
}

using Step = std::function<void(Pair&, kfl_test::Random&)>;

const std::vector<Step>& steps() {
    static const std::vector<Step> all = {
        [](Pair& pair, kfl_test::Random& random) {
            const std::string text = randomText(random, 12);
            pair.model.append(text);
            pair.real.append(text.c_str());
        },
        [](Pair& pair, kfl_test::Random& random) {
            const std::string text = randomText(random, 8);
            const unsigned int n = random.below(12);
            pair.model.append(text, n);
            pair.real.append(text.c_str(), n);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const char c = static_cast<char>(random.below(256));
            pair.model.append(std::string(1, c));
            if (random.oneIn(2)) {
                pair.real.append(c);
            } else {
                pair.real.append(static_cast<unsigned char>(c));
            }
        },
        [](Pair& pair, kfl_test::Random& random) {
            const std::string text = randomText(random, 12);
            pair.model.append(text);
            pair.real.append(AString(text.c_str()));
        },
        // The string itself, and pieces of it.
        [](Pair& pair, kfl_test::Random&) {
            pair.model.append(pair.model.visible());
            pair.real.append(pair.real);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            pair.model.append(pair.model.piece(from));
            pair.real.append(pair.own(from));
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            const unsigned int n = random.below(12);
            pair.model.append(pair.model.piece(from), n);
            pair.real.append(pair.own(from), n);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            const unsigned int pos = random.below(pair.model.length() + 1);
            pair.model.insert(pos, pair.model.piece(from));
            pair.real.insert(pos, pair.own(from));
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int pos = random.below(pair.model.length() + 1);
            const std::string text = randomText(random, 12);
            pair.model.insert(pos, text);
            pair.real.insert(pos, text.c_str());
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int pos = random.below(pair.model.length() + 3);
            const int count = random.oneIn(8) ? static_cast<int>(random()) : random.between(-2, 20);
            pair.model.erase(pos, count);
            pair.real.erase(pos, count);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int n = random.below(std::min(pair.model.length(), 8U) + 1);
            pair.model.trimRight(n);
            pair.real.trimRight(n);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const char from = "abcd"[random.below(4)];
            const char to = "ABC\0"[random.below(4)];
            pair.model.replace(from, to);
            pair.real.replace(from, to);
        },
        [](Pair& pair, kfl_test::Random& random) {
            const unsigned int n = random.below(pair.model.capacity() + 5);
            pair.model.makeRoom(n);
            pair.real.expandTo(n);
        },
        [](Pair& pair, kfl_test::Random& random) {
            if (!random.oneIn(4)) return;
            pair.model.clear();
            pair.real.clear();
        },
    };
    return all;
}

TEST(AStringModelTest, RandomSequencesFollowTheModel) {
    kfl_test::Random random;
    for (int round = 0; round < 60; ++round) {
        Pair pair(random.below(20), random.oneIn(4) ? 100 : random.below(12));
        for (int step = 0; step < 120; ++step) {
            const std::size_t which = random.below(static_cast<std::uint32_t>(steps().size()));
            SCOPED_TRACE(which);
            steps()[which](pair, random);
            ASSERT_TRUE(same(pair.real, pair.model));
            const std::string set = randomText(random, 3);
            expectSameAnswers(pair.real, pair.model, set, random.between(-2, 30));
            if (HasFatalFailure()) return;
            // Shorter again before it gets slow.
            if (pair.model.length() > 600) {
                pair.model.erase(20, -1);
                pair.real.erase(20, -1);
            }
        }
    }
}

TEST(AStringModelTest, RandomCopiesAreEqualAndIndependent) {
    kfl_test::Random random;
    for (int round = 0; round < 200; ++round) {
        Pair pair(random.below(10), random.below(12));
        for (int step = 0; step < 12; ++step)
            steps()[random.below(static_cast<std::uint32_t>(steps().size()))](pair, random);
        AString copy(pair.real);
        ASSERT_TRUE(same(copy, pair.model));
        ASSERT_TRUE(copy == pair.real);
        copy.append('x');
        ASSERT_FALSE(copy == pair.real);
        ASSERT_TRUE(same(pair.real, pair.model));
    }
}

TEST(AStringModelTest, EqualityFollowsLengthAndVisibleText) {
    kfl_test::Random random;
    for (int round = 0; round < 2000; ++round) {
        Pair a(random.below(5), random.below(3));
        Pair b(random.below(5), random.below(3));
        for (Pair* const pair : {&a, &b}) {
            const std::string text(random.below(3), 'a');
            const unsigned int n = random.below(4);
            pair->model.append(text, n);
            pair->real.append(text.c_str(), n);
        }
        const bool equal =
            a.model.length() == b.model.length() && a.model.visible() == b.model.visible();
        ASSERT_EQ(a.real == b.real, equal);
    }
}

// --- All small cases ---

using SmallStep = void (*)(Pair&);

// Each takes a string of any length; where a position is needed it is the middle.
unsigned int middle(const Pair& pair) { return pair.model.length() / 2; }

const SmallStep smallSteps[] = {
    [](Pair& pair) {
        pair.model.append("");
        pair.real.append("");
    },
    [](Pair& pair) {
        pair.model.append("ab");
        pair.real.append("ab");
    },
    [](Pair& pair) {
        pair.model.append("c", 2);
        pair.real.append("c", 2);
    },
    [](Pair& pair) {
        pair.model.append("d");
        pair.real.append('d');
    },
    [](Pair& pair) {
        pair.model.append(pair.model.visible());
        pair.real.append(pair.real);
    },
    [](Pair& pair) {
        const unsigned int from = middle(pair);
        pair.model.append(pair.model.piece(from));
        pair.real.append(pair.own(from));
    },
    [](Pair& pair) {
        const unsigned int from = middle(pair);
        pair.model.append(pair.model.piece(from), 2);
        pair.real.append(pair.own(from), 2);
    },
    [](Pair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.insert(pos, "e");
        pair.real.insert(pos, "e");
    },
    [](Pair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.insert(pos, pair.model.piece(0));
        pair.real.insert(pos, pair.own(0));
    },
    [](Pair& pair) {
        const unsigned int from = middle(pair);
        pair.model.insert(0, pair.model.piece(from));
        pair.real.insert(0, pair.own(from));
    },
    [](Pair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.erase(pos, 1);
        pair.real.erase(pos, 1);
    },
    [](Pair& pair) {
        pair.model.replace('a', '\0');
        pair.real.replace('a', '\0');
    },
    [](Pair& pair) {
        const unsigned int n = pair.model.length() + 1;
        pair.model.makeRoom(n);
        pair.real.expandTo(n);
    },
};

constexpr std::size_t smallStepCount = std::size(smallSteps);

// Makes every sequence of `depth` steps on every small string.
void tryAll(unsigned int capacity, unsigned int increment, std::size_t depth) {
    std::size_t sequences = 1;
    for (std::size_t i = 0; i < depth; ++i) sequences *= smallStepCount;
    for (std::size_t number = 0; number < sequences; ++number) {
        Pair pair(capacity, increment);
        std::size_t rest = number;
        for (std::size_t i = 0; i < depth; ++i, rest /= smallStepCount) {
            smallSteps[rest % smallStepCount](pair);
            ASSERT_TRUE(same(pair.real, pair.model))
                << "sequence " << number << ", step " << i << ", capacity " << capacity
                << ", increment " << increment;
        }
    }
}

TEST(AStringModelTest, AllSequencesOfThreeStepsFollowTheModel) {
    for (unsigned int capacity = 0; capacity <= 4; ++capacity) {
        for (const unsigned int increment : {0U, 1U, 3U}) {
            tryAll(capacity, increment, 3);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(AStringModelTest, AllSequencesOfFourStepsOnAnEmptyStringFollowTheModel) { tryAll(1, 2, 4); }

// Every text of up to four characters of this alphabet, every set of up to two, every start.
TEST(AStringModelTest, AllSmallSearchesFollowTheModel) {
    const std::array<char, 3> alphabet{'a', 'b', '\0'};
    const std::vector<std::string> sets{"", "a", "b", "c", "ab", "ba", "aa", "cb"};
    for (unsigned int length = 0; length <= 4; ++length) {
        unsigned int texts = 1;
        for (unsigned int i = 0; i < length; ++i) texts *= 3;
        for (unsigned int number = 0; number < texts; ++number) {
            Pair pair(4, 1);
            for (unsigned int i = 0, rest = number; i < length; ++i, rest /= 3) {
                pair.model.append(std::string(1, alphabet[rest % 3]));
                pair.real.append(alphabet[rest % 3]);
            }
            for (const std::string& set : sets) {
                for (int start = -1; start <= 5; ++start)
                    expectSameAnswers(pair.real, pair.model, set, start);
            }
            if (HasFatalFailure()) return;
        }
    }
}

// Every erasure of every small text.
TEST(AStringModelTest, AllSmallErasuresFollowTheModel) {
    const std::vector<int> counts{INT_MIN, -3, -2, -1, 0, 1, 2, 3, 4, 5, 6, INT_MAX};
    for (unsigned int length = 0; length <= 5; ++length) {
        for (const unsigned int pos : {0U, 1U, 2U, 3U, 4U, 5U, 6U, UINT_MAX - 1, UINT_MAX}) {
            for (const int count : counts) {
                Pair pair(8, 1);
                const std::string text = std::string("abcde").substr(0, length);
                pair.model.append(text);
                pair.real.append(text.c_str());
                pair.model.erase(pos, count);
                pair.real.erase(pos, count);
                ASSERT_TRUE(same(pair.real, pair.model)) << length << ", " << pos << ", " << count;
            }
        }
    }
}

}  // namespace
