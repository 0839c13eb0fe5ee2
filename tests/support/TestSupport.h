#ifndef VELK_TESTS_TESTSUPPORT_H
#define VELK_TESTS_TESTSUPPORT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <velk/velk.h>

namespace velktest {

// Collects every message the library reports while it lives, and restores the
// previous handlers and verbosity afterwards.
class MessageCapture {
  public:
    explicit MessageCapture(int verbosity = 0);
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    const std::vector<std::string>& infos() const;
    const std::vector<std::string>& errors() const;
    // All error messages joined by newlines, for assertion output.
    std::string errorText() const;
};

// A fresh, empty directory for one test, removed with its contents afterwards.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const;

  private:
    std::string root;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
// A file below tests/data.
std::string dataPath(const std::string& name);
// Number of file descriptors this process has open (to catch leaked handles).
int openFileCount();

// What `operation` wrote to the standard error stream.
template <typename F>
std::string stderrOf(F operation) {
    testing::internal::CaptureStderr();
    operation();
    return testing::internal::GetCapturedStderr();
}

typedef std::vector<int> Bytes;

// A compact image whose bytes, in memory order (row 0 first), are `values`.
VelkImage makeImage(int width, int height, int channels, const Bytes& values);
// The image bytes row by row without the row padding.
Bytes bytesOf(const VelkImage& image);
// The first channel as text, top row first, rows separated by '/': '.' for 0,
// '#' for 255, '+' for anything else.
std::string picture(const VelkImage& image);

// FNV-1a over everything an output consists of; floats by their bits.
class Hash {
  public:
    Hash& bytes(const void* p, std::size_t n);
    Hash& add(int v);
    Hash& add(float v);
    Hash& add(const std::string& text);
    // Size, channels, row distance and the bytes of every row (not the padding).
    Hash& add(const VelkImage& image);
    std::string hex() const;

  private:
    std::uint64_t h = 14695981039346656037ull;
};

typedef std::vector<std::pair<std::string, std::string>> Hashes;  // case name, hash

// Compares the hashes with those recorded in tests/data/<file>, which must
// hold the same case names. With VELK_RECORD_HASHES set to a directory, writes
// <directory>/<file> instead and skips the test.
void expectRecorded(const std::string& file, const Hashes& hashes);

// Integrators: a field grid owned by the test, filled node by node from f(i, j).
struct Grid {
    int width, height;
    std::vector<Vec2f> nodes;

    Grid(int w, int h, const std::function<Vec2f(int, int)>& f);
    void attach(VelkIntegrator& it) { it.setField(width, height, nodes.data()); }
};

extern const char* const kSchemes[5];  // euler, midpoint, then the adaptive ones
// The named scheme; the adaptive ones with the LIC engine's step limits.
std::unique_ptr<VelkIntegrator> makeScheme(const std::string& name, int direction,
                                           float tolerance = 0.001f);

}  // namespace velktest

#endif
