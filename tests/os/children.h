// What tests of child processes share.
#ifndef KFL_TESTS_OS_CHILDREN_H
#define KFL_TESTS_OS_CHILDREN_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/recording_host.h"
#include "tests/support/temporary_folder.h"

namespace kfl_test {

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// The rest of each line that begins with `word` and a blank.
inline std::vector<std::string> linesAfter(const std::string& word, const std::string& text) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(text)) {
        if (line.rfind(word + ' ', 0) == 0) found.push_back(line.substr(word.size() + 1));
    }
    return found;
}

// An exit status and a killing signal as waitpid stores them.
constexpr int exited(int code) { return code << 8; }
constexpr int killed(int signal) { return signal; }

// Runs `work` in a child that begins with nothing buffered and ends by exit, so that what its lines
// did is counted; true from it means that all is well.
inline int statusOfChild(const std::function<bool()>& work) {
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) std::exit(work() ? 0 : 1);
    int status = 0;
    return waitpid(pid, &status, 0) == pid ? status : -1;
}

// The open descriptors of this process.
inline std::vector<int> openDescriptors() {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone).string().find("/fd") ==
            std::string::npos) {
            found.push_back(std::stoi(entry.path().filename()));
        }
    }
    return found;
}

// Keeps the events that children of this process raise: a child's memory is its own, so they go
// through a file, which each event opens by its name.
class ChildEvents {
  public:
    ChildEvents() {
        path() = folder_ / "events";
        parent() = getpid();
        setEventHook(record);
    }
    ~ChildEvents() { setEventHook(nullptr); }
    ChildEvents(const ChildEvents&) = delete;
    ChildEvents& operator=(const ChildEvents&) = delete;

    // All of them, in order.
    static std::vector<Event> events() {
        std::vector<Event> found;
        std::ifstream file(path(), std::ios::binary);
        Event event{};
        while (file >> event.priority >> event.group >> event.index >> event.code) {
            file.get();
            std::getline(file, event.text, '\0');
            found.push_back(event);
        }
        return found;
    }

  private:
    static std::string& path() {
        static std::string name;
        return name;
    }
    static pid_t& parent() {
        static pid_t pid = 0;
        return pid;
    }
    static void record(const Event& event) {
        if (getpid() == parent()) return;
        std::ofstream file(path(), std::ios::binary | std::ios::app);
        file << event.priority << ' ' << event.group << ' ' << event.index << ' ' << event.code
             << ' ' << event.text << '\0';
    }

    TemporaryFolder folder_;
};

}  // namespace kfl_test

#endif
