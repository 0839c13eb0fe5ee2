#include "fieldfile.h"

#include <cstring>

#include <velk/report.h>

namespace velk {

void writeFieldHeader(std::FILE* file, const char* magic, int ascii, int width, int height) {
    std::fprintf(file, "%s %s\n%d %d\n", magic, ascii ? "ASCII" : "BINARY", width, height);
}

int readFieldHeader(std::FILE* file, const char* path, const char* magic, const char* badSize,
                    int& binary, int& width, int& height) {
    char line[64] = {};
    if (std::fgets(line, 63, file) == nullptr) line[0] = '\0';
    if (std::strstr(line, magic) == nullptr) {
        char reason[96];
        std::snprintf(reason, sizeof reason, "header string '%s' not found", magic);
        return velk_ioerror(path, reason);
    }
    binary = std::strstr(line, "BINARY") != nullptr;

    if (std::fgets(line, 63, file) == nullptr) line[0] = '\0';
    width = 0;
    height = 0;
    if (std::sscanf(line, "%d%d", &width, &height) < 2 || width < 2 || width > 10000 ||
        height < 2 || height > 10000) {
        return velk_ioerror(path, badSize);
    }
    return 1;
}

}  // namespace velk
