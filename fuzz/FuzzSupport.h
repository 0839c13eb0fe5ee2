#ifndef VELK_FUZZ_FUZZSUPPORT_H
#define VELK_FUZZ_FUZZSUPPORT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

// Shared pieces of the fuzz targets. Every target defines
// LLVMFuzzerTestOneInput; it is linked either with libFuzzer or with
// replay_main.cpp, which feeds it the files of a corpus.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace velkfuzz {

// Aborts with a message naming the violated check (a crash to the fuzzer).
[[noreturn]] void fail(const char* file, int line, const char* what);

#define FUZZ_CHECK(condition) \
    ((condition) ? (void)0 : velkfuzz::fail(__FILE__, __LINE__, #condition))

// Per-process scratch files (removed at exit); the readers take paths.
const char* scratchPath(int slot);
// Writes the bytes to scratch file `slot` and returns its path.
const char* writeScratch(int slot, const std::uint8_t* data, std::size_t size);

// For the duration of one reader call: library messages are counted (and
// checked for shape) instead of printed, and what the library writes to the
// standard error stream goes to a scratch file instead. File descriptors the
// call leaves open are caught when the call ends.
class Quiet {
  public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    int errors() const;
    int infos() const;
    // What the library wrote to the standard error stream during the call.
    std::string stderrText() const;
    // Ends the call: restores the handlers and the stream and checks that no
    // file descriptor was left open. Called by the destructor if not before.
    void finish();

  private:
    std::FILE* savedStderr;
    int lowestFreeFd;
    bool finished = false;
};

// Deterministic choices derived from the whole input, for the parameters a
// reader needs besides the file (grid sizes, boxes, images).
class Choices {
  public:
    Choices(const std::uint8_t* data, std::size_t size);
    std::uint32_t next();
    // Uniform in [lo, hi].
    int range(int lo, int hi);
    template <typename T, std::size_t N>
    const T& pick(const T (&table)[N]) {
        return table[range(0, static_cast<int>(N) - 1)];
    }

  private:
    std::uint64_t state;
};

// Reads typed values off the front of an input; past its end every value is
// zero, so any input is a complete recipe.
class ByteReader {
  public:
    ByteReader(const std::uint8_t* data, std::size_t size) : data(data), size(size) {}
    std::uint8_t byte();
    // Uniform-ish in [lo, hi].
    int range(int lo, int hi);
    // A float from a table of awkward values (zeros, NaN, infinities, huge,
    // tiny, subnormal) or from the raw bits of the next four bytes.
    float awkwardFloat();
    float rawFloat();
    std::size_t remaining() const { return size - pos; }

  private:
    const std::uint8_t* data;
    std::size_t size;
    std::size_t pos = 0;
};

}  // namespace velkfuzz

#endif
