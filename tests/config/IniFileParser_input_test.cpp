// Where the INI parser's bytes come from: pipes, directories, devices, reads in odd pieces, reads
// that fail, and lines without end. The system calls of the reader are watched.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

#include "kfl/IniFileParser.h"
#include "tests/config/simple_ini_reader.h"
#include "tests/support/counted_new.h"
#include "tests/support/seed.h"
#include "tests/support/temporary_folder.h"

namespace {

using Read = std::function<ssize_t(int descriptor, void* buffer, std::size_t size)>;

// What stands in for read, if anything does, and how often it was asked for.
Read readInstead;
int reads = 0;

}  // namespace

extern "C" {
ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size);
}

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
    ++reads;
    return readInstead ? readInstead(descriptor, buffer, size)
                       : __real_read(descriptor, buffer, size);
}

namespace {

using kfl_test::contentOf;
using kfl_test::Random;
using kfl_test::SimpleIniReader;

// The descriptor that the next open will get: unchanged where none was left open.
int nextDescriptor() {
    const int descriptor = open("/dev/null", O_RDONLY);
    close(descriptor);
    return descriptor;
}

std::string modelOf(const std::string& bytes) {
    SimpleIniReader model;
    model.read(bytes);
    return contentOf(model);
}

// Lines of all kinds, with long ones and a NUL among them.
std::string manyLines() {
    std::string text = "a = 1\r\n; comment\n[s]\nk:" + std::string(700, 'k') + "\n";
    for (int i = 0; i < 300; ++i)
        text += "[section " + std::to_string(i) + "]\nkey = value " + std::to_string(i) + "\r\n";
    text += std::string("nul=1\0hidden\n", 13) + "[" + std::string(600, 'n') + "]\nlast = one";
    return text;
}

class IniFileParserInputTest : public testing::Test {
  protected:
    void SetUp() override { descriptor_ = nextDescriptor(); }
    void TearDown() override {
        readInstead = nullptr;
        EXPECT_EQ(nextDescriptor(), descriptor_) << "a descriptor was left open";
    }

    const kfl_test::TemporaryFolder folder;
    kfl::IniFileParser parser;

  private:
    int descriptor_ = -1;
};

// A child that writes to a pipe or FIFO.
class Writer {
  public:
    template <class Work>
    explicit Writer(Work work) : child_(fork()) {
        if (child_ == 0) {
            work();
            _exit(0);
        }
    }
    ~Writer() {
        int status = 0;
        waitpid(child_, &status, 0);
        EXPECT_EQ(status, 0);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

  private:
    pid_t child_;
};

bool writeAll(int descriptor, const std::string& text, std::size_t piece) {
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t n = write(descriptor, text.data() + at, std::min(piece, text.size() - at));
        if (n < 0) return false;
        at += static_cast<std::size_t>(n);
    }
    return true;
}

TEST_F(IniFileParserInputTest, ReadsAFifoThatIsFilledInOddPieces) {
    const std::string path = folder / "fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const std::string text = manyLines();
    for (const std::size_t piece : {std::size_t{7}, std::size_t{511}, std::size_t{4099}}) {
        const Writer writer([&] {
            const int descriptor = open(path.c_str(), O_WRONLY);
            if (!writeAll(descriptor, text, piece)) _exit(1);
        });
        kfl::IniFileParser fresh;
        EXPECT_TRUE(fresh.parseFile(path.c_str()));
        EXPECT_EQ(contentOf(fresh), modelOf(text)) << piece;
    }
}

TEST_F(IniFileParserInputTest, ReadsAPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        const Writer writer([&] {
            if (!writeAll(ends[1], "k = v\n[s]\nl=", 5)) _exit(1);
            usleep(20000);  // the reader waits within a line
            if (!writeAll(ends[1], "w\n", 1)) _exit(1);
        });
        close(ends[1]);
        EXPECT_TRUE(parser.parseFile(("/dev/fd/" + std::to_string(ends[0])).c_str()));
    }
    close(ends[0]);
    EXPECT_EQ(contentOf(parser), "modified\n[]\nk= v\n[s]\nl=w\n");
}

TEST_F(IniFileParserInputTest, PiecesOfAReadDoNotShow) {
    const std::string text = manyLines();
    const std::string path = folder.write("pieces.ini", text);
    Random random;
    for (int round = 0; round < 60; ++round) {
        const unsigned int most = round < 3 ? static_cast<unsigned int>(round) + 1
                                            : 1 + random.below(random.oneIn(2) ? 1000 : 20);
        readInstead = [&](int descriptor, void* buffer, std::size_t size) {
            const std::size_t piece = 1 + random.below(most);
            return __real_read(descriptor, buffer, std::min(size, piece));
        };
        kfl::IniFileParser fresh;
        ASSERT_TRUE(fresh.parseFile(path.c_str()));
        ASSERT_EQ(contentOf(fresh), modelOf(text)) << "pieces of up to " << most;
    }
}

// After a failed read the bytes before it count as the whole file, a line cut short included, and
// nothing is read again.
TEST_F(IniFileParserInputTest, FailedReadEndsTheFileWhereItHappens) {
    const std::string text =
        "a=1\n[s]\nkey = value\n; c\nlong=" + std::string(600, 'x') + "\n[t]\nb=2";
    const std::string path = folder.write("failing.ini", text);
    for (const int error : {EIO, EINTR, EAGAIN}) {
        for (std::size_t good = 0; good <= text.size(); good += good < 40 ? 1 : 29) {
            bool failed = false;
            std::size_t given = 0;
            readInstead = [&](int descriptor, void* buffer, std::size_t size) -> ssize_t {
                EXPECT_FALSE(failed) << "read after a failure";
                const std::size_t n = std::min(size, good - given);
                given += n;
                if (n > 0) return __real_read(descriptor, buffer, n);
                failed = true;
                errno = error;
                return -1;
            };
            kfl::IniFileParser fresh;
            EXPECT_TRUE(fresh.parseFile(path.c_str()));
            EXPECT_EQ(contentOf(fresh), modelOf(text.substr(0, good))) << good;
            EXPECT_EQ(fresh.flags, 6U);
        }
    }
}

TEST_F(IniFileParserInputTest, NothingIsReadBehindTheEnd) {
    const std::string path = folder.write("small.ini", "a=1\nb=2");
    reads = 0;
    EXPECT_TRUE(parser.parseFile(path.c_str()));
    EXPECT_EQ(reads, 2);
}

TEST_F(IniFileParserInputTest, DirectoryHoldsNothing) {
    EXPECT_TRUE(parser.parseFile(folder.path().c_str()));
    EXPECT_TRUE(parser.parseFile("/"));
    EXPECT_EQ(contentOf(parser), "[]\n");
    EXPECT_FALSE(parser.modified);
}

TEST_F(IniFileParserInputTest, DevicesAndKernelFilesAreReadLikeOthers) {
    EXPECT_TRUE(parser.parseFile("/dev/null"));
    EXPECT_EQ(contentOf(parser), "[]\n");
    // Says that it is empty, and is not.
    EXPECT_TRUE(parser.parseFile("/proc/self/status"));
    EXPECT_NE(parser.getValue("PPid", ""), nullptr);
}

// Root may read whatever it likes; what nobody can open is a socket or a path through a file.
TEST_F(IniFileParserInputTest, FileThatCannotBeOpenedLeavesNoDescriptor) {
    const std::string path = folder.write("plain.ini", "a=1\n");
    EXPECT_FALSE(parser.parseFile((path + "/x").c_str()));
    EXPECT_FALSE(parser.parseFile(std::string(5000, 'p').c_str()));
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_EQ(parser.parseFile(path.c_str()), access(path.c_str(), R_OK) == 0);
    EXPECT_EQ(contentOf(parser), parser.modified ? "modified\n[]\na=1\n" : "[]\n");
}

TEST_F(IniFileParserInputTest, EveryFileIsClosed) {
    const std::string path = folder.write("plain.ini", "a=1\n");
    for (int i = 0; i < 3000; ++i) ASSERT_TRUE(parser.parseFile(path.c_str()));
}

TEST_F(IniFileParserInputTest, WorksOnTheLowestDescriptor) {
    const std::string path = folder.write("plain.ini", "a=1\n");
    const int saved = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_TRUE(parser.parseFile(path.c_str()));
    EXPECT_LT(fcntl(STDIN_FILENO, F_GETFD), 0);
    if (saved >= 0) {
        dup2(saved, STDIN_FILENO);
        close(saved);
    }
    EXPECT_STREQ(parser.getValue("a", ""), "1");
}

TEST_F(IniFileParserInputTest, BinaryFilesAreReadAsTheSimpleReaderDoes) {
    Random random;
    for (int round = 0; round < 40; ++round) {
        std::string bytes(random.below(20000), '\0');
        for (char& c : bytes) c = static_cast<char>(random());
        kfl::IniFileParser fresh;
        ASSERT_TRUE(fresh.parseFile(folder.write("binary", bytes).c_str()));
        ASSERT_EQ(contentOf(fresh), modelOf(bytes));
    }
    kfl::IniFileParser program;
    EXPECT_TRUE(program.parseFile("/proc/self/exe"));
}

// Mebibytes of a line without end; KFL_TEST_LINE_MIB sets another number.
std::size_t lineSize() {
    const char* const given = std::getenv("KFL_TEST_LINE_MIB");
    return (given ? std::strtoul(given, nullptr, 10) : 64) << 20U;
}

// Lets the reader see `size` bytes of 'x' and then the text.
void giveLongLine(std::size_t size, const std::string& text) {
    std::size_t given = 0;
    readInstead = [=](int, void* buffer, std::size_t room) mutable -> ssize_t {
        char* const bytes = static_cast<char*>(buffer);
        std::size_t n = 0;
        if (given < size) {
            n = std::min(room, size - given);
            std::memset(bytes, 'x', n);
        } else {
            n = text.copy(bytes, room, given - size);
        }
        given += n;
        return static_cast<ssize_t>(n);
    };
}

// The memory for a line is the same however long it is.
TEST_F(IniFileParserInputTest, LineWithoutEndTakesNoMemory) {
    giveLongLine(lineSize(), "\nk=v\n");
    kfl_test::AllocationCount count;
    EXPECT_TRUE(parser.parseFile("/dev/null"));
    readInstead = nullptr;
    // A key with two strings is all that was stored.
    EXPECT_EQ(count.made(), 3U);
    EXPECT_STREQ(parser.getValue("k", ""), "v");
}

TEST_F(IniFileParserInputTest, SparseFileTakesNoMemory) {
    const std::string path = folder.write("sparse.ini", "a=1\n");
    ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(lineSize())), 0);
    kfl_test::AllocationCount count;
    EXPECT_TRUE(parser.parseFile(path.c_str()));
    EXPECT_EQ(count.made(), 3U);
    EXPECT_EQ(contentOf(parser), "modified\n[]\na=1\n");
}

}  // namespace
