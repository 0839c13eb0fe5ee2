#include "classic_lic.h"

#include <cmath>
#include <cstddef>
#include <initializer_list>

#include <velk/velk.h>
#include "bilinear.h"
#include "periodic.h"

namespace {

// VelkCompute::getPixelBilinear1, inlined with the image's geometry hoisted.
struct Texture {
    const unsigned char* data;
    std::ptrdiff_t bytesPerLine;
    float periodX, periodY;

    int at(float x, float y) const {
        if (!velk::wrapPeriodic(x, periodX) || !velk::wrapPeriodic(y, periodY)) return 0;
        const int ix = static_cast<int>(x);
        const int iy = static_cast<int>(y);
        const float fx = x - static_cast<float>(ix);
        const float fy = y - static_cast<float>(iy);
        const unsigned char* p = data + iy * bytesPerLine + ix;
        const unsigned char* q = p + bytesPerLine;
        return static_cast<int>(velk::bilinear(p[0], p[1], q[0], q[1], fx, fy));
    }
};

// Unit field direction at a seed as the engine takes it (mirrored neighbours at
// the last column and row); false where the field vanishes.
bool directionAt(const VelkVectorField& field, Vec2f seed, Vec2f& direction) {
    const int W = field.width, H = field.height;
    const int ix = static_cast<int>(seed.x);
    const int iy = static_cast<int>(seed.y);
    const float fx = seed.x - static_cast<float>(ix);
    const float fy = seed.y - static_cast<float>(iy);
    const std::ptrdiff_t dx = ix < W - 1 ? 1 : -1;
    const std::ptrdiff_t dy = iy < H - 1 ? W : -W;
    const Vec2f* n00 = reinterpret_cast<const Vec2f*>(field.data) + (std::ptrdiff_t{iy} * W + ix);
    const Vec2f* n10 = n00 + dx;
    const Vec2f* n01 = n00 + dy;
    const Vec2f* n11 = n01 + dx;
    const float vx = velk::bilinear(n00->x, n10->x, n01->x, n11->x, fx, fy);
    const float vy = velk::bilinear(n00->y, n10->y, n01->y, n11->y, fx, fy);
    const float length2 = vx * vx + vy * vy;
    if (length2 == 0.0f || std::isnan(length2)) return false;
    const float length = std::sqrt(length2);
    direction = {vx / length, vy / length};
    return true;
}

}  // namespace

void classicLic(const VelkVectorField& field, const VelkImage& texture, int L, float stepSize,
                VelkImage& output) {
    const int width = texture.width, height = texture.height;
    output.setSize(width, height, 1);
    const float xScale = static_cast<float>(width) / static_cast<float>(field.width - 1);
    const float yScale = static_cast<float>(height) / static_cast<float>(field.height - 1);
    const float rx = 1.0f / xScale;
    const float ry = 1.0f / yScale;
    const Texture tex = {texture.data, texture.bytesPerLine, static_cast<float>(width - 1),
                         static_cast<float>(height - 1)};

    // Direct (qualified) calls: no virtual dispatch per step.
    Midpoint forward(+1), backward(-1);
    for (Midpoint* it : {&forward, &backward}) {
        it->stepSize = 2 * stepSize / (xScale + yScale);
        it->setField(field.width, field.height, reinterpret_cast<Vec2f*>(field.data));
    }

    const int samples = 2 * L + 1;
    for (int y = 0; y < height; y++) {
        unsigned char* row = output.data + static_cast<std::size_t>(y) * output.bytesPerLine;
        for (int x = 0; x < width; x++) {
            const Vec2f seed = {(static_cast<float>(x) + 0.5f) * rx,
                                (static_cast<float>(y) + 0.5f) * ry};
            Vec2f direction;
            if (!directionAt(field, seed, direction)) {
                row[x] = 0;
                continue;
            }
            forward.init(seed, direction);
            backward.init(seed, direction);
            int sum = tex.at(seed.x * xScale, seed.y * yScale);
            int status;
            // The two halves are independent: stepping them in turn lets the
            // processor overlap their chains of dependent operations.
            for (int k = 0; k < L; k++) {
                const Vec2f& p = forward.Midpoint::next(status);
                const Vec2f& q = backward.Midpoint::next(status);
                sum += tex.at(p.x * xScale, p.y * yScale);
                sum += tex.at(q.x * xScale, q.y * yScale);
            }
            row[x] = static_cast<unsigned char>(sum / samples);
        }
    }
}
