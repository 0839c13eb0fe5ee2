#ifndef VELK_FIELDS_CFILE_H
#define VELK_FIELDS_CFILE_H

#include <cstdio>
#include <memory>

namespace velk {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A stdio stream that is closed on every way out of the scope that holds it.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

inline FilePtr openFile(const char* path, const char* mode) {
    return FilePtr(std::fopen(path, mode));
}

}  // namespace velk

#endif
