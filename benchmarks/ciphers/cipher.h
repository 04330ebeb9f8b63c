// What the benchmark asks of every cipher.
#ifndef KFL_BENCHMARKS_CIPHER_H
#define KFL_BENCHMARKS_CIPHER_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kfl_benchmark {

using Byte = unsigned char;
using Bytes = std::vector<Byte>;

// The implementation that enciphers nothing: its time is the look-ups' alone.
constexpr const char* boundName = "look-ups";

enum Mode { ecb, cbc, cfb, singleBlock };

struct Kind {
    Bytes key;
    // Its length is the block size.
    Bytes chain;
    Mode mode;
    bool enciphering;
};

// A cipher with a key, whose chain carries on from call to call.
class Cipher {
  public:
    virtual ~Cipher() = default;
    virtual void run(const Byte* in, Byte* out, std::size_t n) = 0;
};

struct Implementation {
    std::string name;
    // Null for what it does not have.
    std::unique_ptr<Cipher> (*make)(const Kind& kind);
    // Makes the round keys of both directions; null when it is not compared in that.
    void (*setKey)(const Bytes& key);
};

std::vector<Implementation>& implementations();

// Enters an implementation into the list, from its own source.
struct Entered {
    explicit Entered(const Implementation& implementation) {
        implementations().push_back(implementation);
    }
};

}  // namespace kfl_benchmark

#endif
