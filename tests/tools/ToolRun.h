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

// Lowest and highest sample of a picture.
void sampleRange(const std::vector<unsigned char>& pixels, int& lo, int& hi);

struct Picture {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<unsigned char> pixels;  // top row first, interleaved
};

// Reads a PNG file with libpng; false when it is no readable PNG.
bool readPng(const std::string& path, Picture& picture, std::string& error);

// The names in a directory, sorted, without "." and "..".
std::vector<std::string> listDir(const std::string& dir);

}  // namespace velktest

#endif
