#include "NoData.h"

#include <cstddef>

#include <velk/VelkImage.h>

namespace {

// Calls reached(x, y, yes) for every pixel of a width x height picture, with
// the weight of the pixel it was zoomed from.
template <class F>
void forEachPixel(const VelkImage& weight, int width, int height, F reached) {
    for (int y = 0; y < height; y++) {
        const long long wy = static_cast<long long>(y) * weight.height / height;
        const unsigned char* row = weight.data + wy * weight.bytesPerLine;
        for (int x = 0; x < width; x++) {
            reached(x, y, row[static_cast<long long>(x) * weight.width / width] != 0);
        }
    }
}

}  // namespace

void fillNoData(const VelkImage& weight, int fill, VelkImage& picture) {
    forEachPixel(weight, picture.width, picture.height, [&](int x, int y, bool reached) {
        if (reached) return;
        unsigned char* p = picture.data + static_cast<std::ptrdiff_t>(y) * picture.bytesPerLine +
                           static_cast<std::ptrdiff_t>(x) * picture.nChannels;
        for (int c = 0; c < picture.nChannels; c++) p[c] = static_cast<unsigned char>(fill);
    });
}

void noDataAlpha(const VelkImage& weight, int width, int height, VelkImage& alpha) {
    alpha.setSize(width, height, 1);
    forEachPixel(weight, width, height, [&](int x, int y, bool reached) {
        alpha.data[static_cast<std::ptrdiff_t>(y) * alpha.bytesPerLine + x] = reached ? 255 : 0;
    });
}
