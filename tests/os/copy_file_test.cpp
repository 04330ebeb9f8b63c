// Copies of real files, of every kind that the machine has.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <thread>

#include "kfl/process.h"
#include "tests/os/children.h"
#include "tests/support/seed.h"

namespace {

using kfl::osCopyFile;
using kfl_test::contentOf;
using kfl_test::events;
using kfl_test::statusOfChild;
namespace fs = std::filesystem;

std::string randomBytes(std::size_t size) {
    kfl_test::Random random;
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

mode_t modeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

class CopyFileTest : public testing::Test {
  public:
    void copyOnce() const { osCopyFile(from_.c_str(), to_.c_str(), false); }

  protected:
    int copy(bool sync = false) const { return osCopyFile(from_.c_str(), to_.c_str(), sync); }
    void writeSource(const std::string& content) const { folder_.write("from", content); }

    kfl_test::TemporaryFolder folder_;
    std::string from_ = folder_ / "from";
    std::string to_ = folder_ / "to";
};

TEST_F(CopyFileTest, CopiesEverySize) {
    const std::string bytes = randomBytes(3 << 20);
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{4095}, std::size_t{4096},
          std::size_t{4097}, std::size_t{8191}, std::size_t{8192}, std::size_t{8193},
          std::size_t{16384}, std::size_t{100000}, std::size_t{1} << 20, bytes.size()}) {
        writeSource(bytes.substr(0, size));
        for (const bool sync : {false, true}) {
            EXPECT_EQ(copy(sync), 0) << size;
            EXPECT_TRUE(contentOf(to_) == bytes.substr(0, size)) << size;
        }
    }
}

// Instruments need more of it than the code that they watch.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(CopyFileTest, DoesWithTheSmallestStack) {
    const std::string bytes = randomBytes(100000);
    writeSource(bytes);
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    const auto size = static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN));
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
    const auto body = [](void* test) -> void* {
        static_cast<CopyFileTest*>(test)->copyOnce();
        return nullptr;
    };
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, &attributes, body, this), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
    EXPECT_TRUE(contentOf(to_) == bytes);
}
#endif

TEST_F(CopyFileTest, LeavesTheSourceAsItWas) {
    writeSource("content");
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(contentOf(from_), "content");
}

TEST_F(CopyFileTest, ReplacesALongerTarget) {
    writeSource("short");
    folder_.write("to", std::string(100000, 'x'));
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(contentOf(to_), "short");
}

TEST_F(CopyFileTest, CopiesAnEmptySourceToAnEmptyTarget) {
    writeSource("");
    EXPECT_EQ(copy(), 0);
    EXPECT_TRUE(fs::exists(to_));
    EXPECT_EQ(contentOf(to_), "");
    folder_.write("to", "old");
    EXPECT_EQ(copy(true), 0);
    EXPECT_EQ(contentOf(to_), "");
}

TEST_F(CopyFileTest, CreatesNoTargetForAMissingSource) {
    EXPECT_EQ(copy(), -1);
    EXPECT_FALSE(fs::exists(to_));
}

TEST_F(CopyFileTest, LeavesTheTargetAloneForAMissingSource) {
    folder_.write("to", "old");
    EXPECT_EQ(copy(true), -1);
    EXPECT_EQ(contentOf(to_), "old");
}

TEST_F(CopyFileTest, RefusesATargetThatCannotBeOpened) {
    writeSource("content");
    for (const std::string& target :
         {folder_.path(), folder_ / "none/to", std::string(), folder_ / std::string(5000, 'x')}) {
        EXPECT_EQ(osCopyFile(from_.c_str(), target.c_str(), true), -1) << target;
    }
    EXPECT_EQ(contentOf(from_), "content");
}

TEST_F(CopyFileTest, RefusesNullPaths) {
    writeSource("content");
    EXPECT_EQ(osCopyFile(nullptr, to_.c_str(), false), -1);
    EXPECT_FALSE(fs::exists(to_));
    EXPECT_EQ(osCopyFile(from_.c_str(), nullptr, false), -1);
    EXPECT_EQ(osCopyFile(nullptr, nullptr, true), -1);
}

TEST_F(CopyFileTest, ReportsNothing) {
    kfl_test::clearEvents();
    EXPECT_EQ(copy(), -1);
    writeSource("content");
    EXPECT_EQ(copy(true), 0);
    EXPECT_EQ(osCopyFile(from_.c_str(), folder_.path().c_str(), false), -1);
    EXPECT_TRUE(events().empty());
}

TEST_F(CopyFileTest, LeavesNoDescriptorOpen) {
    const auto before = kfl_test::openDescriptors();
    EXPECT_EQ(copy(), -1);
    writeSource(randomBytes(100000));
    EXPECT_EQ(copy(true), 0);
    EXPECT_EQ(osCopyFile(from_.c_str(), folder_.path().c_str(), false), -1);
    EXPECT_EQ(kfl_test::openDescriptors(), before);
}

TEST_F(CopyFileTest, CopiesWhereTheLowestDescriptorsAreFree) {
    writeSource("content");
    EXPECT_EQ(statusOfChild([this] {
                  close(0);
                  close(1);
                  return copy() == 0 && contentOf(to_) == "content";
              }),
              0);
}

TEST_F(CopyFileTest, CreatesTheTargetUnderTheUmaskAndKeepsTheModeOfAnOldOne) {
    writeSource("content");
    chmod(from_.c_str(), 0700);
    for (const mode_t mask : {0U, 027U, 077U}) {
        fs::remove(to_);
        const mode_t old = umask(mask);
        EXPECT_EQ(copy(), 0);
        umask(old);
        EXPECT_EQ(modeOf(to_), 0666U & ~mask);
    }
    chmod(to_.c_str(), 0640);
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(modeOf(to_), 0640U);
}

TEST_F(CopyFileTest, FollowsLinks) {
    writeSource("content");
    fs::create_symlink("to", folder_ / "link");
    EXPECT_EQ(osCopyFile(from_.c_str(), (folder_ / "link").c_str(), false), 0);
    EXPECT_EQ(contentOf(to_), "content");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
}

// Opening the target empties what is about to be read.
TEST_F(CopyFileTest, EmptiesAFileThatIsCopiedOntoItself) {
    fs::create_symlink("from", folder_ / "symbolic");
    writeSource("content");
    fs::create_hard_link(from_, folder_ / "hard");
    for (const std::string& same : {from_, folder_ / "symbolic", folder_ / "hard"}) {
        writeSource(randomBytes(50000));
        EXPECT_EQ(osCopyFile(from_.c_str(), same.c_str(), false), 0);
        EXPECT_EQ(contentOf(from_), "") << same;
    }
}

// A directory can be opened for reading, and then not be read.
TEST_F(CopyFileTest, CopiesADirectoryAsAnEmptyFile) {
    folder_.write("to", "old");
    EXPECT_EQ(osCopyFile(folder_.path().c_str(), to_.c_str(), true), 0);
    EXPECT_EQ(contentOf(to_), "");
}

TEST_F(CopyFileTest, CopiesKernelFilesThatClaimToBeEmpty) {
    for (const char* const source :
         {"/proc/version", "/proc/filesystems", "/proc/kallsyms", "/proc/sys/kernel/ostype"}) {
        if (!fs::exists(source)) continue;
        EXPECT_EQ(osCopyFile(source, to_.c_str(), false), 0);
        EXPECT_TRUE(contentOf(to_) == contentOf(source)) << source;
    }
    EXPECT_FALSE(contentOf("/proc/version").empty());
}

TEST_F(CopyFileTest, CopiesBetweenFileSystems) {
    const std::string bytes = randomBytes(200000);
    writeSource(bytes);
    const std::string other = "/dev/shm/kfl-copy-" + std::to_string(getpid());
    EXPECT_EQ(osCopyFile(from_.c_str(), other.c_str(), true), 0);
    EXPECT_TRUE(contentOf(other) == bytes);
    EXPECT_EQ(osCopyFile(other.c_str(), to_.c_str(), false), 0);
    EXPECT_TRUE(contentOf(to_) == bytes);
    fs::remove(other);
}

TEST_F(CopyFileTest, CopiesAPipeToItsEnd) {
    const std::string bytes = randomBytes(300000);
    ASSERT_EQ(mkfifo(from_.c_str(), 0600), 0);
    std::thread writer([&] {
        std::ofstream pipe(from_, std::ios::binary);
        for (std::size_t at = 0; at < bytes.size(); at += 10000) {
            pipe.write(&bytes[at], 10000).flush();
        }
    });
    EXPECT_EQ(copy(), 0);
    writer.join();
    EXPECT_TRUE(contentOf(to_) == bytes);
}

TEST_F(CopyFileTest, CopiesIntoAPipe) {
    const std::string bytes = randomBytes(300000);
    writeSource(bytes);
    ASSERT_EQ(mkfifo(to_.c_str(), 0600), 0);
    // Both ends, so that opening and closing the other ones never matters.
    const int pipe = open(to_.c_str(), O_RDWR);
    std::string read(bytes.size(), '\0');
    std::thread reader([&] {
        for (std::size_t at = 0; at < read.size();) {
            at += static_cast<std::size_t>(::read(pipe, &read[at], read.size() - at));
        }
    });
    EXPECT_EQ(copy(true), 0);
    reader.join();
    close(pipe);
    EXPECT_TRUE(read == bytes);
}

TEST_F(CopyFileTest, CopiesDevices) {
    EXPECT_EQ(osCopyFile("/dev/null", to_.c_str(), true), 0);
    EXPECT_EQ(contentOf(to_), "");
    writeSource(randomBytes(100000));
    EXPECT_EQ(osCopyFile(from_.c_str(), "/dev/null", true), 0);
}

TEST_F(CopyFileTest, LooksAtNoWriteError) {
    for (const std::size_t size : {1U, 5000U, 100000U}) {
        writeSource(randomBytes(size));
        EXPECT_EQ(osCopyFile(from_.c_str(), "/dev/full", true), 0) << size;
    }
}

TEST_F(CopyFileTest, WritesAsMuchAsFits) {
    const std::string bytes = randomBytes(200000);
    writeSource(bytes);
    for (const unsigned limit : {0U, 1000U, 50000U, 199999U}) {
        EXPECT_EQ(statusOfChild([&] {
                      signal(SIGXFSZ, SIG_IGN);
                      rlimit size = {};
                      getrlimit(RLIMIT_FSIZE, &size);
                      const rlim_t old = size.rlim_cur;
                      size.rlim_cur = limit;
                      setrlimit(RLIMIT_FSIZE, &size);
                      const int result = copy(true);
                      size.rlim_cur = old;
                      setrlimit(RLIMIT_FSIZE, &size);
                      return result == 0;
                  }),
                  0);
        EXPECT_TRUE(contentOf(to_) == bytes.substr(0, limit)) << limit;
    }
}

// What is written while nobody can take it is lost, and the source is read to its end all the same.
TEST_F(CopyFileTest, ReadsAPipeToItsEndWhateverBecomesOfIt) {
    ASSERT_EQ(mkfifo(from_.c_str(), 0600), 0);
    bool written = false;
    std::thread writer([&] {
        std::ofstream pipe(from_, std::ios::binary);
        written = static_cast<bool>(pipe.write(randomBytes(300000).data(), 300000).flush());
    });
    EXPECT_EQ(osCopyFile(from_.c_str(), "/dev/full", false), 0);
    writer.join();
    EXPECT_TRUE(written);
}

TEST_F(CopyFileTest, CopiesHoles) {
    writeSource("begin");
    fs::resize_file(from_, 8 << 20);
    EXPECT_EQ(copy(), 0);
    std::string expected(8 << 20, '\0');
    expected.replace(0, 5, "begin");
    EXPECT_TRUE(contentOf(to_) == expected);
}

// As another user than root, for whom modes count.
TEST_F(CopyFileTest, NeedsAReadableSourceAndATargetThatCanBeReadAndWritten) {
    writeSource("content");
    chmod(folder_.path().c_str(), 0777);
    folder_.write("unreadable", "x");
    chmod((folder_ / "unreadable").c_str(), 0222);
    folder_.write("read-only", "x");
    chmod((folder_ / "read-only").c_str(), 0444);
    chmod(from_.c_str(), 0444);
    EXPECT_EQ(statusOfChild([&] {
                  if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) return false;
                  const auto copied = [](const std::string& from, const std::string& to) {
                      return osCopyFile(from.c_str(), to.c_str(), false);
                  };
                  return copied(folder_ / "unreadable", to_) == -1 && !fs::exists(to_) &&
                         copied(from_, folder_ / "read-only") == -1 &&
                         copied(from_, folder_ / "unreadable") == -1 && copied(from_, to_) == 0;
              }),
              0);
    EXPECT_EQ(contentOf(folder_ / "read-only"), "x");
}

}  // namespace
