#ifndef VELK_TESTS_TOOLRUN_H
#define VELK_TESTS_TOOLRUN_H

#include <string>
#include <vector>

namespace velktest {

struct ToolResult {
    int status = -1;  // exit status, or -1 when the tool did not exit normally
    std::string out;  // standard output
    std::string err;  // standard error
};

// Runs velk-lic with `args` in the directory `dir` (relative names are taken
// from there) and waits for it.
ToolResult runTool(const std::string& dir, const std::vector<std::string>& args);

struct Picture {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<unsigned char> pixels;  // top row first, interleaved
};

// The PNG file `path` read with libpng, with a test failure when it is none.
Picture png(const std::string& path);

// The names in a directory, sorted, without "." and "..".
std::vector<std::string> listDir(const std::string& dir);

}  // namespace velktest

#endif
