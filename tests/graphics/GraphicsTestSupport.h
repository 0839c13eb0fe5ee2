#ifndef VELK_TESTS_GRAPHICSTESTSUPPORT_H
#define VELK_TESTS_GRAPHICSTESTSUPPORT_H

#include <string>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

namespace gfxtest {

// A black grey image of the given size.
inline VelkImage blank(int width, int height, int channels = 1) {
    VelkImage image(width, height, channels);
    image.clear(0);
    return image;
}

// The first channel of every pixel as text, top row (the highest y) first:
// '.' for 0, '#' for 255, '+' for any other value.
inline std::vector<std::string> picture(const VelkImage& image) {
    std::vector<std::string> rows;
    for (int y = image.height - 1; y >= 0; y--) {
        std::string row;
        for (int x = 0; x < image.width; x++) {
            int v = image.data[y * image.bytesPerLine + x * image.nChannels];
            row += v == 0 ? '.' : v == 255 ? '#' : '+';
        }
        rows.push_back(row);
    }
    return rows;
}

inline std::string dataFile(const std::string& name) {
    return velktest::dataPath("graphics/" + name);
}

// Replaces each "%s" of `pattern` by `path`.
inline std::string withPath(std::string pattern, const std::string& path) {
    for (size_t at; (at = pattern.find("%s")) != std::string::npos;) pattern.replace(at, 2, path);
    return pattern;
}

}  // namespace gfxtest

#endif
