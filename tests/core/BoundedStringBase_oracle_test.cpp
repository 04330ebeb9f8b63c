// makeString() beside the C library's vsnprintf where both follow the same rules, and beside a
// plain model everywhere. KFL_TEST_ROUNDS sets the number of formats.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "kfl/BoundedStringBase.h"
#include "tests/core/format_model.h"
#include "tests/core/library_format.h"
#include "tests/core/random_formats.h"
#include "tests/support/seed.h"

namespace {

using kfl_test::ModelFormatter;
using kfl_test::ModelNumber;
using kfl_test::ModelOutput;
using kfl_test::Random;
using kfl_test::RandomArguments;

using B = BoundedStringBase;

// What a formatter stored, and what it returned.
struct Outcome {
    std::string text;
    int stored;
    bool untouchedBehind;
};

Outcome outcomeOf(kfl_test::Formatter formatter, unsigned int size, const std::string& format,
                  const RandomArguments& arguments) {
    constexpr char mark = '\x7E';
    std::vector<char> buf(std::size_t{size} + 3, mark);
    const auto& list = arguments.all();
    const int stored = kfl_test::callWith(formatter, buf.data(), size, format.c_str(), list.data(),
                                          list.data() + list.size());
    const std::size_t length = stored < 0 ? 0 : static_cast<std::size_t>(stored);
    if (length > size || buf[length] != '\0') return {"not terminated", stored, false};
    return {std::string(buf.data(), length), stored,
            buf[size + 1] == mark && buf[size + 2] == mark};
}

unsigned int anySize(Random& random) {
    static constexpr unsigned int usual[] = {0, 1, 2, 5, 12, 30, 80, 400};
    return random.oneIn(2) ? 2000 : usual[random.below(std::size(usual))];
}

std::string shown(unsigned int size, const std::string& format, const RandomArguments& arguments) {
    std::string text = "size " + std::to_string(size) + ", format \"" + format + "\"";
    for (const auto& argument : arguments.all()) {
        text += ", " + (argument.kind == kfl_test::Argument::Int ? std::to_string(argument.integer)
                        : argument.kind == kfl_test::Argument::Long
                            ? std::to_string(argument.longInteger) + "L"
                            : testing::PrintToString(argument.pointer));
    }
    return text;
}

TEST(BoundedStringBaseOracleTest, AgreesWithTheCLibraryWhereTheRulesAreTheSame) {
    Random random;
    const int count = kfl_test::rounds(50000);
    for (int i = 0; i < count; ++i) {
        bool nonZero = false;
        const std::string format = kfl_test::commonFormat(random, nonZero);
        const unsigned int size = anySize(random);
        RandomArguments arguments(random, true, nonZero);
        const std::string model = ModelFormatter(size, format, arguments).run();
        const Outcome ours = outcomeOf(&B::format, size, format, arguments);
        const Outcome theirs = outcomeOf(&kfl_test::libraryFormat, size, format, arguments);
        ASSERT_EQ(ours.text, theirs.text) << shown(size, format, arguments);
        ASSERT_EQ(ours.stored, theirs.stored) << shown(size, format, arguments);
        ASSERT_EQ(model, theirs.text) << shown(size, format, arguments);
        ASSERT_TRUE(ours.untouchedBehind) << shown(size, format, arguments);
    }
}

TEST(BoundedStringBaseOracleTest, AgreesWithAModelForFormatsOfAllKinds) {
    Random random(1);
    const int count = kfl_test::rounds(50000);
    for (int i = 0; i < count;) {
        const std::string format = kfl_test::anyFormat(random);
        const unsigned int size = anySize(random);
        RandomArguments arguments(random, false, false);
        const std::string model = ModelFormatter(size, format, arguments).run();
        if (arguments.all().size() > kfl_test::maxArguments) continue;
        const Outcome ours = outcomeOf(&B::format, size, format, arguments);
        ASSERT_EQ(ours.text, model) << shown(size, format, arguments);
        ASSERT_EQ(ours.stored, static_cast<int>(model.size())) << shown(size, format, arguments);
        ASSERT_TRUE(arguments.countsAreRight()) << shown(size, format, arguments);
        ASSERT_TRUE(ours.untouchedBehind) << shown(size, format, arguments);
        ++i;
    }
}

// Runs number() in a place of its own and compares every byte of it.
void compareNumber(const ModelNumber& what, std::size_t places) {
    ModelOutput model(places);
    kfl_test::modelNumber(model, what);
    std::string ours(places, '\0');
    char* const end =
        B::number(ours.data(), ours.data() + places, what.num, static_cast<int>(what.base),
                  static_cast<int>(what.width), static_cast<int>(what.precision), what.flags);
    ASSERT_EQ(end - ours.data(), static_cast<std::ptrdiff_t>(model.position()))
        << what.num << " base " << what.base << " width " << what.width << " precision "
        << what.precision << " flags " << what.flags << " places " << places;
    ASSERT_EQ(ours, model.places())
        << what.num << " base " << what.base << " width " << what.width << " precision "
        << what.precision << " flags " << what.flags << " places " << places;
}

TEST(BoundedStringBaseOracleTest, NumberAgreesWithAModelForEveryFlagSet) {
    for (int flags = 0; flags < 128; ++flags) {
        for (const unsigned int base : {2U, 8U, 10U, 16U, 36U}) {
            for (const long num : {0L, 7L, -42L, LONG_MAX, LONG_MIN}) {
                for (const long long width : {-1, 0, 1, 2, 3, 5, 8, 12}) {
                    for (const long long precision : {-1, 0, 1, 2, 3, 5, 8, 12}) {
                        compareNumber({num, base, width, precision, flags}, 80);
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

TEST(BoundedStringBaseOracleTest, NumberAgreesWithAModelWhereItsLengthChanges) {
    for (unsigned int base = 2; base <= 36; ++base) {
        for (unsigned long power = base;; power *= base) {
            for (const unsigned long value : {power - 1, power, power + 1}) {
                compareNumber({static_cast<long>(value), base, -1, -1, 0}, 80);
                if (HasFatalFailure()) return;
            }
            if (power > ULONG_MAX / base) break;
        }
    }
}

TEST(BoundedStringBaseOracleTest, NumberAgreesWithAModelInRoomsOfEverySize) {
    Random random(2);
    for (int i = 0; i < 30000; ++i) {
        const long num = static_cast<long>(random()) * random.between(-70000, 70000);
        const ModelNumber what{num, 2 + random.below(35), random.between(-2, 24),
                               random.between(-2, 20), static_cast<int>(random.below(128))};
        compareNumber(what, 1 + random.below(40));
        if (HasFatalFailure()) return;
    }
}

}  // namespace
