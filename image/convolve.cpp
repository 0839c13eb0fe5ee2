#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include <velk/VelkImage.h>
#include <velk/fastconv.h>
#include "destination.h"
#include "packedconv.h"

namespace {

inline unsigned char min2(unsigned char a, unsigned char b) {
    return a < b ? a : b;
}
inline unsigned char max2(unsigned char a, unsigned char b) {
    return a < b ? b : a;
}
inline unsigned char median3(unsigned char a, unsigned char b, unsigned char c) {
    return max2(min2(a, b), min2(max2(a, b), c));
}

}  // namespace

void VelkImage::convolve(int n, float* kernel, VelkImage* dst) {
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.target();
    if (!dest.inPlace()) out.setSize(width, height, 1);
    const ptrdiff_t stride = out.bytesPerLine;

    // The row pass goes into a scratch image with the output's row distance;
    // the column pass reads it back into the output.
    size_t scratchBytes = height > 0 && stride > 0 ? static_cast<size_t>(height) * stride : 0;
    std::unique_ptr<unsigned char[]> scratch(new unsigned char[scratchBytes]);

    velk_initPackedLuts(kernel, n);
    // Without a usable kernel nothing is written: the output stays as it was.
    if (width <= 0 || height <= 0 || !velk::packedTablesUsable()) return;

    int longest = width > height ? width : height;
    std::unique_ptr<unsigned char[]> line(new unsigned char[velk::packedScratchSize(longest)]);
    for (int y = 0; y < height; y++) {
        velk::packedConvolve(data + static_cast<ptrdiff_t>(y) * bytesPerLine, width, 1,
                             scratch.get() + y * stride, line.get());
    }

    // Columns go in blocks: gathered into contiguous lines, convolved, and
    // scattered back, so each row is visited once per block, not per column.
    constexpr int kBlock = 16;
    const size_t column = static_cast<size_t>(height);
    std::unique_ptr<unsigned char[]> gathered(new unsigned char[2 * kBlock * column]);
    unsigned char* convolved = gathered.get() + kBlock * column;
    for (int x0 = 0; x0 < width; x0 += kBlock) {
        const int columns = width - x0 < kBlock ? width - x0 : kBlock;
        for (int y = 0; y < height; y++) {
            const unsigned char* in = scratch.get() + y * stride + x0;
            for (int c = 0; c < columns; c++) gathered[c * column + y] = in[c];
        }
        for (int c = 0; c < columns; c++) {
            velk::packedConvolve(gathered.get() + c * column, height, 1, convolved + c * column,
                                 line.get());
        }
        for (int y = 0; y < height; y++) {
            unsigned char* o = out.data + y * stride + x0;
            for (int c = 0; c < columns; c++) o[c] = convolved[c * column + y];
        }
    }
}

void VelkImage::gaussBlur(int n, VelkImage* dst) {
    std::vector<float> kernel(n > 1 ? n : 1);
    kernel[0] = 1.0f;
    float sum = 1.0f;
    for (int i = 1; i < n; i++) {
        float u = static_cast<float>(i) / static_cast<float>(n);
        kernel[i] = static_cast<float>(std::exp(static_cast<double>(u * (-0.5f * u))));
        sum += 2.0f * kernel[i];
    }
    for (int i = 0; i < n; i++) kernel[i] = kernel[i] / sum;
    convolve(n, kernel.data(), dst);
}

void VelkImage::medianFilter(VelkImage* dst) {
    VelkImage result(width, height, nChannels);
    // The fifth smallest of a 3x3 neighbourhood is the median of the largest
    // column minimum, the median column median and the smallest column
    // maximum; each column of three is sorted once per row and shared by the
    // three windows that contain it. One byte per pixel; the neighbourhood is
    // clamped into the image.
    std::vector<unsigned char> low(width > 0 ? width : 0), mid(low.size()), high(low.size());
    for (int y = 0; y < height; y++) {
        const unsigned char* below =
            data + static_cast<ptrdiff_t>(y > 0 ? y - 1 : 0) * bytesPerLine;
        const unsigned char* row = data + static_cast<ptrdiff_t>(y) * bytesPerLine;
        const unsigned char* above =
            data + static_cast<ptrdiff_t>(y < height - 1 ? y + 1 : y) * bytesPerLine;
        for (int x = 0; x < width; x++) {
            unsigned char a = below[x], b = row[x], c = above[x];
            low[x] = min2(min2(a, b), c);
            high[x] = max2(max2(a, b), c);
            mid[x] = median3(a, b, c);
        }
        unsigned char* o = result.data + static_cast<ptrdiff_t>(y) * result.bytesPerLine;
        for (int x = 0; x < width; x++) {
            int l = x > 0 ? x - 1 : 0;
            int r = x < width - 1 ? x + 1 : x;
            o[x] = median3(max2(max2(low[l], low[x]), low[r]), median3(mid[l], mid[x], mid[r]),
                           min2(min2(high[l], high[x]), high[r]));
        }
    }
    velk::Destination(*this, dst).assign(result);
}
