#ifndef VELK_TESTS_TESTSUPPORT_H
#define VELK_TESTS_TESTSUPPORT_H

#include <string>
#include <vector>

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

}  // namespace velktest

#endif
