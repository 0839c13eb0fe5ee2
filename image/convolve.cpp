#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "VelkImage.h"
#include "destination.h"
#include "fastconv.h"
#include "packedconv.h"

namespace {

inline void sort2(unsigned char& a, unsigned char& b) {
    if (a > b) {
        unsigned char t = a;
        a = b;
        b = t;
    }
}

// Fifth smallest of nine (a fixed exchange network).
unsigned char median9(unsigned char* p) {
    sort2(p[1], p[2]), sort2(p[4], p[5]), sort2(p[7], p[8]);
    sort2(p[0], p[1]), sort2(p[3], p[4]), sort2(p[6], p[7]);
    sort2(p[1], p[2]), sort2(p[4], p[5]), sort2(p[7], p[8]);
    sort2(p[0], p[3]), sort2(p[5], p[8]), sort2(p[4], p[7]);
    sort2(p[3], p[6]), sort2(p[1], p[4]), sort2(p[2], p[5]);
    sort2(p[4], p[7]), sort2(p[4], p[2]), sort2(p[6], p[4]);
    sort2(p[4], p[2]);
    return p[4];
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
    if (width <= 0 || height <= 0) return;

    int longest = width > height ? width : height;
    std::unique_ptr<unsigned char[]> line(new unsigned char[velk::packedScratchSize(longest)]);
    for (int y = 0; y < height; y++) {
        velk::packedConvolve(data + static_cast<ptrdiff_t>(y) * bytesPerLine, width, 1,
                             scratch.get() + y * stride, line.get());
    }
    for (int x = 0; x < width; x++) {
        velk::packedConvolve(scratch.get() + x, height, static_cast<int>(stride), out.data + x,
                             line.get());
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
    // One byte per pixel; the neighbourhood is clamped into the image.
    for (int y = 0; y < height; y++) {
        const unsigned char* rows[3] = {
            data + static_cast<ptrdiff_t>(y > 0 ? y - 1 : 0) * bytesPerLine,
            data + static_cast<ptrdiff_t>(y) * bytesPerLine,
            data + static_cast<ptrdiff_t>(y < height - 1 ? y + 1 : y) * bytesPerLine};
        unsigned char* o = result.data + static_cast<ptrdiff_t>(y) * result.bytesPerLine;
        for (int x = 0; x < width; x++) {
            int left = x > 0 ? x - 1 : 0;
            int right = x < width - 1 ? x + 1 : x;
            unsigned char v[9];
            for (int r = 0; r < 3; r++) {
                v[3 * r] = rows[r][left];
                v[3 * r + 1] = rows[r][x];
                v[3 * r + 2] = rows[r][right];
            }
            o[x] = median9(v);
        }
    }
    velk::Destination(*this, dst).assign(result);
}
