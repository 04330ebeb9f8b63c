// The cipher beside other implementations of it, all in software: what the processor has for AES is
// switched off. Results are compared before anything is timed.
//
//     Rijndael_benchmark --benchmark_out=cipher.json     (then: benchmarks/ratios.py cipher.json)
//
// A name reads OPERATION/KEY BITS/BLOCK BITS/BYTES/IMPLEMENTATION.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmarks/ciphers/cipher.h"

namespace kfl_benchmark {

std::vector<Implementation>& implementations() {
    static std::vector<Implementation> all;
    return all;
}

namespace {

struct Operation {
    const char* name;
    Mode mode;
    bool enciphering;
};

constexpr Operation operations[] = {{"ecb-encrypt", ecb, true}, {"ecb-decrypt", ecb, false},
                                    {"cbc-encrypt", cbc, true}, {"cbc-decrypt", cbc, false},
                                    {"cfb-encrypt", cfb, true}, {"cfb-decrypt", cfb, false}};

constexpr std::size_t sizes[] = {16, 1024, 65536, 16 << 20};

Bytes madeBytes(std::size_t n, unsigned seed) {
    Bytes bytes(n);
    for (Byte& b : bytes) {
        seed = seed * 1664525 + 1013904223;
        b = static_cast<Byte>(seed >> 24);
    }
    return bytes;
}

// What all of them work on, and where the result goes.
Bytes& input() {
    static Bytes bytes = madeBytes(16 << 20, 1);
    return bytes;
}
Bytes& output() {
    static Bytes bytes(16 << 20);
    return bytes;
}

Kind kindOf(const Operation& operation, std::size_t keyLength, std::size_t blockSize) {
    return Kind{madeBytes(keyLength, 2), madeBytes(blockSize, 3), operation.mode,
                operation.enciphering};
}

// Three calls, the chain carrying on, must give the same everywhere.
bool agree(const Kind& kind) {
    const std::size_t n = kind.mode == singleBlock ? kind.chain.size() : 20 * kind.chain.size();
    Bytes first;
    for (const Implementation& implementation : implementations()) {
        if (implementation.name == boundName) continue;
        const std::unique_ptr<Cipher> cipher = implementation.make(kind);
        if (!cipher) continue;
        Bytes result(3 * n);
        for (std::size_t i = 0; i < 3; ++i) cipher->run(&input()[i * n], &result[i * n], n);
        if (first.empty()) first = result;
        if (result == first) continue;
        std::fprintf(stderr, "%s: another result, mode %d, key of %zu bytes, block of %zu\n",
                     implementation.name.c_str(), kind.mode, kind.key.size(), kind.chain.size());
        return false;
    }
    return true;
}

void runCipher(benchmark::State& state, const Implementation& implementation, const Kind& kind,
               std::size_t n) {
    const std::unique_ptr<Cipher> cipher = implementation.make(kind);
    Byte* const out = output().data();
    for (auto _ : state) {
        cipher->run(input().data(), out, n);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(n) * state.iterations());
}

void runSetKey(benchmark::State& state, const Implementation& implementation, const Bytes& key) {
    for (auto _ : state) {
        implementation.setKey(key);
        benchmark::ClobberMemory();
    }
}

std::string nameOf(const char* operation, const Kind& kind, std::size_t n, const std::string& who) {
    return std::string(operation) + '/' + std::to_string(8 * kind.key.size()) + '/' +
           std::to_string(8 * kind.chain.size()) + '/' + std::to_string(n) + '/' + who;
}

// The wanted sizes, in whole blocks. 16 MiB of the slow wide blocks tell nothing new.
std::size_t wholeBlocks(std::size_t n, std::size_t blockSize) {
    return n < blockSize ? blockSize : n / blockSize * blockSize;
}

bool enter(const Operation& operation, std::size_t keyLength, std::size_t blockSize) {
    const Kind kind = kindOf(operation, keyLength, blockSize);
    if (!agree(kind)) return false;
    for (const std::size_t size : sizes) {
        if (blockSize != 16 && size > 65536) continue;
        const std::size_t n = wholeBlocks(size, blockSize);
        for (const Implementation& implementation : implementations()) {
            if (!implementation.make(kind)) continue;
            const std::string name = nameOf(operation.name, kind, n, implementation.name);
            benchmark::RegisterBenchmark(name.c_str(), runCipher, implementation, kind, n);
        }
        if (kind.mode == singleBlock) break;
    }
    return true;
}

void enterSetKey(std::size_t keyLength) {
    const Kind kind = kindOf(operations[0], keyLength, 16);
    for (const Implementation& implementation : implementations()) {
        if (!implementation.setKey) continue;
        const std::string name = nameOf("set-key", kind, 0, implementation.name);
        benchmark::RegisterBenchmark(name.c_str(), runSetKey, implementation, kind.key);
    }
}

bool enterAll() {
    for (const std::size_t keyLength : {16U, 24U, 32U}) {
        for (const std::size_t blockSize : {16U, 24U, 32U})
            for (const Operation& operation : operations)
                if (!enter(operation, keyLength, blockSize)) return false;
        if (!enter({"block", singleBlock, true}, keyLength, 16)) return false;
        enterSetKey(keyLength);
    }
    return true;
}

// Two libraries read when they are loaded what they may use: the program starts again with that
// said.
void switchHardwareOff(char** arguments) {
    if (std::getenv("OPENSSL_ia32cap")) return;
    setenv("OPENSSL_ia32cap", "~0x200020200000000", 1);
    setenv("NETTLE_FAT_OVERRIDE", "none", 1);
    execv("/proc/self/exe", arguments);
}

}  // namespace
}  // namespace kfl_benchmark

int main(int count, char** arguments) {
    kfl_benchmark::switchHardwareOff(arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    if (!kfl_benchmark::enterAll()) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
