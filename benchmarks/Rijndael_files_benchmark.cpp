// Enciphering files: encryptFile beside reading, enciphering and writing by hand, and beside the
// command openssl enc in software (where it is installed). AES with a 128-bit key, in CBC. Lengths
// are whole blocks, so that no padding differs.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "benchmarks/contest.h"
#include "kfl/Rijndael.h"

namespace {

using kfl::AES::Rijndael;
using Path = std::filesystem::path;

constexpr char key[] = "0123456789abcdef";
constexpr char keyInHex[] = "30313233343536373839616263646566";

void encipherByLibrary(const Path& from, const Path& to) {
    Rijndael cipher;
    cipher.makeKey(key, Rijndael::_nullchain, 16, 16);
    cipher.encryptFile(from.c_str(), to.c_str(), Rijndael::modeCBC);
}

void encipherByHand(const Path& from, const Path& to) {
    Rijndael cipher;
    cipher.makeKey(key, Rijndael::_nullchain, 16, 16);
    const int source = open(from.c_str(), O_RDONLY);
    const int target = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    char buffer[65536];
    for (ssize_t n = 0; (n = read(source, buffer, sizeof buffer)) > 0;) {
        cipher.encrypt(buffer, buffer, static_cast<unsigned>(n), Rijndael::modeCBC);
        if (write(target, buffer, static_cast<std::size_t>(n)) != n) std::abort();
    }
    close(source);
    close(target);
}

void encipherByCommand(const Path& from, const Path& to) {
    const std::string command =
        "OPENSSL_ia32cap=~0x200020200000000 openssl enc -aes-128-cbc -nopad -K " +
        std::string(keyInHex) + " -iv " + std::string(32, '0') + " -in " + from.string() +
        " -out " + to.string();
    if (std::system(command.c_str()) != 0) std::abort();
}

void showFile(kfl_benchmark::Notes& notes, const Path& path) {
    std::ifstream in(path);
    const std::string content(std::istreambuf_iterator<char>(in), {});
    notes.bytes(content.data(), content.size());
}
void showFile(kfl_benchmark::Glance&, const Path&) {}

void enterSize(const Path& folder, const std::string& what, std::size_t size) {
    const Path from = folder / ("plain" + std::to_string(size));
    const Path to = folder / "coded";
    kfl_benchmark::Numbers numbers(1);
    std::string content(size, '\0');
    for (char& c : content) c = static_cast<char>(numbers.next(256));
    std::ofstream(from) << content;

    kfl_benchmark::Contest contest("encipher a file: " + what);
    const auto enter = [&](const char* who, void (*encipher)(const Path&, const Path&)) {
        const auto run = [encipher, from, to](auto& sees) {
            encipher(from, to);
            showFile(sees, to);
        };
        contest.enter(who, run)->UseRealTime();
    };
    enter("kfl", encipherByLibrary);
    enter("by_hand", encipherByHand);
    if (std::system("openssl version > /dev/null 2>&1") == 0)
        enter("openssl_enc", encipherByCommand);
}

}  // namespace

int main(int count, char** arguments) {
    // In memory, where there is such a folder: a disk has a time of its own.
    std::string folder = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
    folder += "/kfl-benchmark-XXXXXX";
    if (!mkdtemp(folder.data())) return 1;
    enterSize(folder, "4 KiB", std::size_t{4} << 10U);
    enterSize(folder, "1 MiB", std::size_t{1} << 20U);
    enterSize(folder, "64 MiB", std::size_t{64} << 20U);
    const int result = kfl_benchmark::runAll(count, arguments);
    std::filesystem::remove_all(folder);
    return result;
}
