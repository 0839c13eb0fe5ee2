#ifndef VELK_TESTS_GRAPHICSTESTSUPPORT_H
#define VELK_TESTS_GRAPHICSTESTSUPPORT_H

#include <string>

#include <velk/velk.h>
#include "TestSupport.h"

namespace gfxtest {

// A black image of the given size.
inline VelkImage blank(int width, int height, int channels = 1) {
    VelkImage image(width, height, channels);
    image.clear(0);
    return image;
}

// The first channel of every pixel as text, rows separated by '/', the top
// row (the highest y) first: '.' for 0, '#' for 255, '+' for any other value.
inline std::string picture(const VelkImage& image) {
    std::string text;
    for (int y = image.height - 1; y >= 0; y--) {
        for (int x = 0; x < image.width; x++) {
            int v = image.data[y * image.bytesPerLine + x * image.nChannels];
            text += v == 0 ? '.' : v == 255 ? '#' : '+';
        }
        if (y > 0) text += '/';
    }
    return text;
}

// A white pen of the given width.
inline VelkGraphics whitePen(int width = 1) {
    VelkGraphics g;
    g.setColor(255, 255, 255);
    g.setPixelWidth(width);
    return g;
}

}  // namespace gfxtest

#endif
