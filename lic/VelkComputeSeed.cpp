#include <velk/VelkCompute.h>

#include <cstdlib>

#include <velk/UxSobol.h>
#include <velk/VelkImage.h>
#include <velk/report.h>

// The sequential seeding orders: every sub-pixel without a hit yet is seeded,
// in scan order, offset pattern or Sobol order over the whole image. The cells
// are in row order (see compute()).

Vec2f VelkCompute::seedOf(int x, int y, int sub) const {
    const int N = numSubPixels;
    const float rx = 1.0f / xScale;
    const float ry = 1.0f / yScale;
    const int sx = sub % N;
    const int sy = sub / N;
    return {(static_cast<float>(x) + (static_cast<float>(sx) + 0.5f) / static_cast<float>(N)) * rx,
            (static_cast<float>(y) + (static_cast<float>(sy) + 0.5f) / static_cast<float>(N)) * ry};
}

void VelkCompute::markSeed(const Vec2f& seed, int x, int y, VelkImage* mask,
                           VelkImage* seedMap) const {
    if (seedMap) {
        int value;
        getPixelConst1(mask, seed.x, seed.y, &value);
        seedMap->data[static_cast<std::size_t>(y) * width + x] = static_cast<unsigned char>(value);
    }
}

void VelkCompute::seedPixel(int x, int y, int sub, VelkImage* mask, VelkImage* seedMap) {
    const Vec2f seed = seedOf(x, y, sub);
    sample(seed);
    markSeed(seed, x, y, mask, seedMap);
}

void VelkCompute::seedScan(VelkImage* mask, VelkImage* seedMap) {
    const int N = numSubPixels;
    for (int sub = 0; sub < N * N; sub++) {
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                if (accum[(static_cast<std::size_t>(y) * width + x) * cellStride + sub] == 0) {
                    seedPixel(x, y, sub, mask, seedMap);
                }
            }
        }
    }
}

void VelkCompute::seedOffset(VelkImage* mask, VelkImage* seedMap) {
    const int N = numSubPixels;
    for (int sub = 0; sub < N * N; sub++) {
        for (const int* o : offset) {
            for (int y = o[1]; y < height; y += 4) {
                for (int x = o[0]; x < width; x += 4) {
                    if (accum[(static_cast<std::size_t>(y) * width + x) * cellStride + sub] == 0) {
                        seedPixel(x, y, sub, mask, seedMap);
                    }
                }
            }
        }
    }
}

void VelkCompute::seedSobol(VelkImage* mask, VelkImage* seedMap) {
    const int N = numSubPixels;
    const int pixels = width * height;
    if (pixels < 1) return;
    UxSobol sobol;
    sobol.xTable = nullptr;
    sobol.yTable = nullptr;
    sobol.init(width * N, height * N);
    if (sobol.xTable == nullptr || sobol.yTable == nullptr) {
        std::free(sobol.xTable);
        std::free(sobol.yTable);
        velk_error("not enough memory for the Sobol seed order");
        return;
    }
    const int nx = sobol.nx;
    const int ny = sobol.ny;
    for (;;) {
        const int xi = sobol.xTable[sobol.xIndex];
        const int yi = sobol.yTable[sobol.yIndex % ny];
        sobol.xIndex++;
        sobol.yIndex++;
        if (sobol.xIndex == nx) {
            // Each pass over x meets the y sequence shifted by one.
            sobol.xIndex = 0;
            sobol.yIndex -= nx - 1;
        }
        if (++sobol.count >= pixels) break;
        const int x = xi / N;
        const int y = yi / N;
        const int sub = xi % N + N * (yi % N);
        if (accum[(static_cast<std::size_t>(y) * width + x) * cellStride + sub] == 0) {
            seedPixel(x, y, sub, mask, seedMap);
        }
    }
    std::free(sobol.xTable);
    std::free(sobol.yTable);
}
