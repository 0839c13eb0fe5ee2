#include "FuzzSupport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <limits>

#include <velk/report.h>

namespace velkfuzz {

namespace {

constexpr int kSlots = 4;
constexpr int kStderrSlot = kSlots - 1;
std::string gPaths[kSlots];

void removeScratch() {
    for (const std::string& path : gPaths) {
        if (!path.empty()) unlink(path.c_str());
    }
}

int gErrors = 0;
int gInfos = 0;
std::FILE* gStderr = nullptr;

// A message reaches its handler complete: prefixed, NUL-terminated inside
// the 4096-byte buffer, without the newline that is the sink's business.
void checkMessage(const char* message, const char* prefix) {
    std::size_t n = strnlen(message, 4096);
    FUZZ_CHECK(n < 4096);
    FUZZ_CHECK(std::strncmp(message, prefix, std::strlen(prefix)) == 0);
    FUZZ_CHECK(n == 0 || message[n - 1] != '\n');
}

void countError(const char* message) {
    checkMessage(message, "VELK error: ");
    gErrors++;
}

void countInfo(const char* message) {
    checkMessage(message, "VELK info: ");
    gInfos++;
}

// The lowest descriptor number not in use (what the next open would get).
int lowestFreeDescriptor() {
    int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (fd >= 0) close(fd);
    return fd;
}

}  // namespace

void fail(const char* file, int line, const char* what) {
    char text[512];
    int n = std::snprintf(text, sizeof text, "%s:%d: fuzz check failed: %s\n", file, line, what);
    if (n > 0) {
        ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
        (void)written;
    }
    std::abort();
}

const char* scratchPath(int slot) {
    FUZZ_CHECK(slot >= 0 && slot < kSlots);
    std::string& path = gPaths[slot];
    if (path.empty()) {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/velk-fuzz-XXXXXX";
        int fd = mkstemp(&pattern[0]);
        FUZZ_CHECK(fd >= 0);
        close(fd);
        static bool registered = false;
        if (!registered) {
            std::atexit(removeScratch);
            registered = true;
        }
        path = pattern;
    }
    return path.c_str();
}

const char* writeScratch(int slot, const std::uint8_t* data, std::size_t size) {
    const char* path = scratchPath(slot);
    std::FILE* file = std::fopen(path, "wb");
    FUZZ_CHECK(file != nullptr);
    if (size > 0) FUZZ_CHECK(std::fwrite(data, 1, size, file) == size);
    FUZZ_CHECK(std::fclose(file) == 0);
    return path;
}

Quiet::Quiet() {
    if (gStderr == nullptr) {
        gStderr = std::fopen(scratchPath(kStderrSlot), "w+");
        FUZZ_CHECK(gStderr != nullptr);
    }
    std::rewind(gStderr);
    FUZZ_CHECK(ftruncate(fileno(gStderr), 0) == 0);
    gErrors = 0;
    gInfos = 0;
    velk_error_handler = countError;
    velk_info_handler = countInfo;
    // glibc's standard streams are plain variables; the sanitizers write to
    // descriptor 2 directly and so still reach the terminal.
    savedStderr = stderr;
    stderr = gStderr;
    lowestFreeFd = lowestFreeDescriptor();
}

Quiet::~Quiet() {
    finish();
}

void Quiet::finish() {
    if (finished) return;
    finished = true;
    std::fflush(gStderr);
    stderr = savedStderr;
    velk_error_handler = nullptr;
    velk_info_handler = nullptr;
    FUZZ_CHECK(lowestFreeDescriptor() == lowestFreeFd);
}

int Quiet::errors() const {
    return gErrors;
}
int Quiet::infos() const {
    return gInfos;
}

std::string Quiet::stderrText() const {
    std::fflush(gStderr);
    std::string text;
    long end = std::ftell(gStderr);
    if (end <= 0) return text;
    text.resize(static_cast<std::size_t>(end));
    std::rewind(gStderr);
    std::size_t got = std::fread(&text[0], 1, text.size(), gStderr);
    text.resize(got);
    std::fseek(gStderr, 0, SEEK_END);
    return text;
}

Choices::Choices(const std::uint8_t* data, std::size_t size) {
    // FNV-1a over the input.
    std::uint64_t h = 1469598103934665603ull;
    for (std::size_t i = 0; i < size; i++) {
        h ^= data[i];
        h *= 1099511628211ull;
    }
    state = h ^ (static_cast<std::uint64_t>(size) << 32);
}

std::uint32_t Choices::next() {
    // splitmix64
    std::uint64_t z = (state += 0x9e3779b97f4a7c15ull);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 32);
}

int Choices::range(int lo, int hi) {
    std::uint32_t span = static_cast<std::uint32_t>(hi - lo) + 1u;
    return lo + static_cast<int>(next() % span);
}

std::uint8_t ByteReader::byte() {
    return pos < size ? data[pos++] : 0;
}

int ByteReader::range(int lo, int hi) {
    std::uint32_t span = static_cast<std::uint32_t>(hi - lo) + 1u;
    std::uint32_t v = byte();
    if (span > 256) v = (v << 8) | byte();
    return lo + static_cast<int>(v % span);
}

float ByteReader::rawFloat() {
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; i++) bits = (bits << 8) | byte();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

float ByteReader::awkwardFloat() {
    static const float kTable[] = {
        0.0f,
        -0.0f,
        1.0f,
        -1.0f,
        0.5f,
        std::numeric_limits<float>::quiet_NaN(),
        std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity(),
        std::numeric_limits<float>::max(),
        -std::numeric_limits<float>::max(),
        std::numeric_limits<float>::min(),
        std::numeric_limits<float>::denorm_min(),
        1e30f,
        -1e30f,
        1e-30f,
        3.0f,
    };
    std::uint8_t b = byte();
    if (b < 16) return kTable[b];
    if (b < 64) return rawFloat();
    // Ordinary values in [-8, 8).
    return (static_cast<float>(b) - 64.0f) / 12.0f - 8.0f;
}

}  // namespace velkfuzz

// A header may announce far more than the file holds and the readers allocate
// what it announces; above this size the allocation fails instead (as it
// would on a smaller machine), which exercises the readers' failure paths and
// keeps the fuzzer inside its memory limit.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=128";
}
