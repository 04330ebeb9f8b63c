// AString against a plain model of its rules.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <iterator>
#include <string>
#include <vector>

#include "kfl/AString.h"
#include "tests/core/AString_model.h"
#include "tests/support/seed.h"

using kfl::AString;
using kfl_test::AStringPair;
using kfl_test::expectSameAnswers;
using kfl_test::randomText;
using kfl_test::same;
using kfl_test::steps;

namespace {

TEST(AStringModelTest, RandomSequencesFollowTheModel) {
    kfl_test::Random random;
    for (int round = 0; round < 60; ++round) {
        AStringPair pair(random.below(20), random.oneIn(4) ? 100 : random.below(12));
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
        AStringPair pair(random.below(10), random.below(12));
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
        AStringPair a(random.below(5), random.below(3));
        AStringPair b(random.below(5), random.below(3));
        for (AStringPair* const pair : {&a, &b}) {
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

using SmallStep = void (*)(AStringPair&);

// Each takes a string of any length; where a position is needed it is the middle.
unsigned int middle(const AStringPair& pair) { return pair.model.length() / 2; }

const SmallStep smallSteps[] = {
    [](AStringPair& pair) {
        pair.model.append("");
        pair.real.append("");
    },
    [](AStringPair& pair) {
        pair.model.append("ab");
        pair.real.append("ab");
    },
    [](AStringPair& pair) {
        pair.model.append("c", 2);
        pair.real.append("c", 2);
    },
    [](AStringPair& pair) {
        pair.model.append("d");
        pair.real.append('d');
    },
    [](AStringPair& pair) {
        pair.model.append(pair.model.visible());
        pair.real.append(pair.real);
    },
    [](AStringPair& pair) {
        const unsigned int from = middle(pair);
        pair.model.append(pair.model.piece(from));
        pair.real.append(pair.own(from));
    },
    [](AStringPair& pair) {
        const unsigned int from = middle(pair);
        pair.model.append(pair.model.piece(from), 2);
        pair.real.append(pair.own(from), 2);
    },
    [](AStringPair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.insert(pos, "e");
        pair.real.insert(pos, "e");
    },
    [](AStringPair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.insert(pos, pair.model.piece(0));
        pair.real.insert(pos, pair.own(0));
    },
    [](AStringPair& pair) {
        const unsigned int from = middle(pair);
        pair.model.insert(0, pair.model.piece(from));
        pair.real.insert(0, pair.own(from));
    },
    [](AStringPair& pair) {
        const unsigned int pos = middle(pair);
        pair.model.erase(pos, 1);
        pair.real.erase(pos, 1);
    },
    [](AStringPair& pair) {
        pair.model.replace('a', '\0');
        pair.real.replace('a', '\0');
    },
    [](AStringPair& pair) {
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
        AStringPair pair(capacity, increment);
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
            AStringPair pair(4, 1);
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
                AStringPair pair(8, 1);
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
