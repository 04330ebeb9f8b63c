// A plain model of AString's rules, a std::string and two numbers, and steps that a string and its
// model take together.
#ifndef KFL_TESTS_CORE_ASTRING_MODEL_H
#define KFL_TESTS_CORE_ASTRING_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "kfl/AString.h"
#include "tests/support/choices.h"

namespace kfl_test {

// What the promise says about capacity, length and text, written down without any of the tricks
// that the library may use. Arguments are copies, so a piece of the text itself is nothing special.
class AStringModel {
  public:
    AStringModel(unsigned int capacity, unsigned int increment)
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
struct AStringPair {
    AStringPair(unsigned int capacity, unsigned int increment)
        : real(capacity, increment), model(capacity, increment) {}

    // A pointer to the real text and what is visible from there.
    const char* own(unsigned int from) const { return real.c_str() + from; }

    kfl::AString real;
    AStringModel model;
};

inline testing::AssertionResult same(const kfl::AString& real, const AStringModel& model) {
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

inline void expectSameAnswers(kfl::AString& real, const AStringModel& model, const std::string& set,
                              int start) {
    const char* const members = set.c_str();
    ASSERT_EQ(real.find(members, start), model.find(set)) << set;
    ASSERT_EQ(real.findFirstOf(members, start), model.findFirstOf(set, start)) << set << start;
    ASSERT_EQ(real.findFirstNotOf(members, start), model.findFirstNotOf(set, start))
        << set << start;
    ASSERT_EQ(real.findLastOf(members), model.findLastOf(set)) << set;
    ASSERT_EQ(real.findLastNotOf(members), model.findLastNotOf(set)) << set;
}

inline std::string randomText(Choices& random, unsigned int longest) {
    std::string text(random.below(longest + 1), ' ');
    for (char& c : text) c = "abc\xE4"[random.below(4)];
    return text;
}

using AStringStep = std::function<void(AStringPair&, Choices&)>;

inline const std::vector<AStringStep>& steps() {
    static const std::vector<AStringStep> all = {
        [](AStringPair& pair, Choices& random) {
            const std::string text = randomText(random, 12);
            pair.model.append(text);
            pair.real.append(text.c_str());
        },
        [](AStringPair& pair, Choices& random) {
            const std::string text = randomText(random, 8);
            const unsigned int n = random.below(12);
            pair.model.append(text, n);
            pair.real.append(text.c_str(), n);
        },
        [](AStringPair& pair, Choices& random) {
            const char c = static_cast<char>(random.below(256));
            pair.model.append(std::string(1, c));
            if (random.oneIn(2)) {
                pair.real.append(c);
            } else {
                pair.real.append(static_cast<unsigned char>(c));
            }
        },
        [](AStringPair& pair, Choices& random) {
            const std::string text = randomText(random, 12);
            pair.model.append(text);
            pair.real.append(kfl::AString(text.c_str()));
        },
        // The string itself, and pieces of it.
        [](AStringPair& pair, Choices&) {
            pair.model.append(pair.model.visible());
            pair.real.append(pair.real);
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            pair.model.append(pair.model.piece(from));
            pair.real.append(pair.own(from));
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            const unsigned int n = random.below(12);
            pair.model.append(pair.model.piece(from), n);
            pair.real.append(pair.own(from), n);
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int from = random.below(pair.model.length() + 1);
            const unsigned int pos = random.below(pair.model.length() + 1);
            pair.model.insert(pos, pair.model.piece(from));
            pair.real.insert(pos, pair.own(from));
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int pos = random.below(pair.model.length() + 1);
            const std::string text = randomText(random, 12);
            pair.model.insert(pos, text);
            pair.real.insert(pos, text.c_str());
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int pos = random.below(pair.model.length() + 3);
            const int count = random.oneIn(8) ? static_cast<int>(random()) : random.between(-2, 20);
            pair.model.erase(pos, count);
            pair.real.erase(pos, count);
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int n = random.below(std::min(pair.model.length(), 8U) + 1);
            pair.model.trimRight(n);
            pair.real.trimRight(n);
        },
        [](AStringPair& pair, Choices& random) {
            const char from = "abcd"[random.below(4)];
            const char to = "ABC\0"[random.below(4)];
            pair.model.replace(from, to);
            pair.real.replace(from, to);
        },
        [](AStringPair& pair, Choices& random) {
            const unsigned int n = random.below(pair.model.capacity() + 5);
            pair.model.makeRoom(n);
            pair.real.expandTo(n);
        },
        [](AStringPair& pair, Choices& random) {
            if (!random.oneIn(4)) return;
            pair.model.clear();
            pair.real.clear();
        },
    };
    return all;
}

}  // namespace kfl_test

#endif
