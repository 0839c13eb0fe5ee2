#include <velk/VelkGraphics.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include <velk/VelkImage.h>
#include "topixel.h"

namespace {

using velk::toPixel;

using Wide = __int128;

// An inclusive pixel rectangle; empty when x0 > x1 or y0 > y1.
struct Rect {
    std::int64_t x0, x1, y0, y1;
    bool empty() const { return x0 > x1 || y0 > y1; }
    bool operator==(const Rect& o) const {
        return x0 == o.x0 && x1 == o.x1 && y0 == o.y0 && y1 == o.y1;
    }
};

// The pen of a VelkGraphics on one image.
class Pen {
  public:
    Pen(const VelkGraphics& g, VelkImage& image)
        : image(image), width(g.pixelWidth), half(g.halfWidth), grey(g.grey) {
        std::memcpy(rgb, g.rgb, 3);
    }

    bool canDraw() const {
        return image.data != nullptr && image.width > 0 && image.height > 0 &&
               image.nChannels > 0 && width > 0;
    }

    // The pixels the square at (x, y) paints inside the image.
    Rect square(std::int64_t x, std::int64_t y) const {
        Rect r = {x - half, x - half + width - 1, y - half, y - half + width - 1};
        r.x0 = std::max<std::int64_t>(r.x0, 0);
        r.y0 = std::max<std::int64_t>(r.y0, 0);
        r.x1 = std::min<std::int64_t>(r.x1, image.width - 1);
        r.y1 = std::min<std::int64_t>(r.y1, image.height - 1);
        return r;
    }

    void paint(const Rect& r) const {
        if (r.empty()) return;
        const int channels = image.nChannels;
        for (std::int64_t y = r.y0; y <= r.y1; y++) {
            unsigned char* p = image.data + y * image.bytesPerLine + r.x0 * channels;
            for (std::int64_t x = r.x0; x <= r.x1; x++) {
                if (channels == 3) {
                    p[0] = rgb[0];
                    p[1] = rgb[1];
                    p[2] = rgb[2];
                } else {
                    for (int c = 0; c < channels; c++) p[c] = grey;
                }
                p += channels;
            }
        }
    }

    // The pixels of r outside `done`: the rows of r above and below `done`,
    // and beside it the columns to its left and right.
    void paintBeyond(const Rect& r, const Rect& done) const {
        if (r.empty()) return;
        if (done.empty() || done.x1 < r.x0 || done.x0 > r.x1 || done.y1 < r.y0 || done.y0 > r.y1) {
            paint(r);
            return;
        }
        const std::int64_t y0 = std::max(r.y0, done.y0);
        const std::int64_t y1 = std::min(r.y1, done.y1);
        paint({r.x0, r.x1, r.y0, y0 - 1});
        paint({r.x0, r.x1, y1 + 1, r.y1});
        paint({r.x0, std::min(r.x1, done.x0 - 1), y0, y1});
        paint({std::max(r.x0, done.x1 + 1), r.x1, y0, y1});
    }

    // Centres (along one axis of `size` pixels) whose square reaches into
    // the image, and those whose square spans all of it.
    std::int64_t reachLo() const { return static_cast<std::int64_t>(half) - width + 1; }
    std::int64_t reachHi(int size) const { return static_cast<std::int64_t>(size) - 1 + half; }
    std::int64_t spanLo(int size) const { return static_cast<std::int64_t>(size) - width + half; }
    std::int64_t spanHi() const { return half; }

    VelkImage& image;

  private:
    int width;
    int half;
    unsigned char grey;
    unsigned char rgb[3];
};

// The Bresenham walk of drawLine in closed form. Step k (0 .. major) is at
// u = u0 + su * k along the major axis and v = v0 + sv * d(k) along the
// other, where d(k), the number of diagonal steps so far, is
// ceil((2ak - major) / (2 major)): the error term e > 0 that decides a
// diagonal step keeps 2 major d(k) within [2ak - major, 2ak + major).
// This lets a walk start and stop anywhere with exactly the state the full
// walk would have there.
struct Walk {
    std::int64_t u0, v0;
    int su, sv;
    std::int64_t a, major;

    std::int64_t diagonalsAt(std::int64_t k) const {
        if (major == 0) return 0;
        Wide p = Wide(2) * a * k - major;
        Wide q = Wide(2) * major;
        Wide d = p >= 0 ? (p + q - 1) / q : -((-p) / q);
        return static_cast<std::int64_t>(d);
    }

    // The error term after k steps with d diagonal ones.
    std::int64_t errorAt(std::int64_t k, std::int64_t d) const {
        return static_cast<std::int64_t>(Wide(2) * a * (k + 1) - major - Wide(2) * major * d);
    }

    // The first step with at least m diagonal steps behind it; major + 1
    // when there is none.
    std::int64_t firstWithDiagonals(std::int64_t m) const {
        if (m <= 0) return 0;
        if (a == 0 || m > a) return major + 1;
        return static_cast<std::int64_t>(Wide(major) * (2 * m - 1) / (2 * a)) + 1;
    }

    // Steps whose major coordinate lies in [lo, hi].
    void stepsWithU(std::int64_t lo, std::int64_t hi, std::int64_t& k0, std::int64_t& k1) const {
        k0 = su > 0 ? lo - u0 : u0 - hi;
        k1 = su > 0 ? hi - u0 : u0 - lo;
    }

    // Steps whose minor coordinate lies in [lo, hi] (one stretch, as v is
    // monotonic in k).
    void stepsWithV(std::int64_t lo, std::int64_t hi, std::int64_t& k0, std::int64_t& k1) const {
        std::int64_t mLo = sv > 0 ? lo - v0 : v0 - hi;
        std::int64_t mHi = sv > 0 ? hi - v0 : v0 - lo;
        k0 = firstWithDiagonals(mLo);
        k1 = firstWithDiagonals(mHi + 1) - 1;
    }
};

// The last step from k on for which v stays in [lo, hi], if it is there now.
std::int64_t lastStepWithV(const Walk& w, std::int64_t lo, std::int64_t hi) {
    std::int64_t k0, k1;
    w.stepsWithV(lo, hi, k0, k1);
    return k1;
}

}  // namespace

VelkGraphics::VelkGraphics() : rgb{0, 0, 0}, grey(0), pixelWidth(1), halfWidth(0) {}

VelkGraphics::~VelkGraphics() {}

void VelkGraphics::setColor(int r, int g, int b) {
    rgb[0] = static_cast<unsigned char>(r);
    rgb[1] = static_cast<unsigned char>(g);
    rgb[2] = static_cast<unsigned char>(b);
    double v = 0.3 * r + 0.59 * g + 0.11 * b + 0.5;
    grey = static_cast<unsigned char>(v <= 0.0 ? 0 : v >= 255.0 ? 255 : static_cast<int>(v));
}

void VelkGraphics::setPixelWidth(int w) {
    pixelWidth = w;
    halfWidth = w / 2;
}

void VelkGraphics::drawPixel(VelkImage& image, int x, int y) {
    Pen pen(*this, image);
    if (pen.canDraw()) pen.paint(pen.square(x, y));
}

void VelkGraphics::drawLine(VelkImage& image, int x0, int y0, int x1, int y1) {
    Pen pen(*this, image);
    if (!pen.canDraw()) return;
    if (x1 < x0) {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    const std::int64_t dx = static_cast<std::int64_t>(x1) - x0;
    const std::int64_t dy = static_cast<std::int64_t>(y1) - y0;
    const int sy = dy >= 0 ? 1 : -1;
    const std::int64_t ady = dy >= 0 ? dy : -dy;
    const bool steep = ady > dx;
    Walk w;
    if (steep) {
        w = {y0, x0, sy, 1, dx, ady};
    } else {
        w = {x0, y0, 1, sy, ady, dx};
    }
    const int uSize = steep ? image.height : image.width;
    const int vSize = steep ? image.width : image.height;

    // Only the steps whose square reaches into the image are walked.
    std::int64_t first = 0, last = w.major, k0, k1;
    w.stepsWithU(pen.reachLo(), pen.reachHi(uSize), k0, k1);
    first = std::max(first, k0);
    last = std::min(last, k1);
    w.stepsWithV(pen.reachLo(), pen.reachHi(vSize), k0, k1);
    first = std::max(first, k0);
    last = std::min(last, k1);
    if (first > last) return;

    std::int64_t k = first;
    std::int64_t d = w.diagonalsAt(k);
    std::int64_t e = w.errorAt(k, d);
    Rect painted = {1, 0, 1, 0};
    for (;;) {
        const std::int64_t u = w.u0 + w.su * k;
        const std::int64_t v = w.v0 + w.sv * d;
        Rect r = steep ? pen.square(v, u) : pen.square(u, v);
        // Painting the same pixels again changes nothing, so only the part of
        // the square that the previous one did not cover is painted: a wide
        // pen costs its width per step, not its area.
        if (!(r == painted)) {
            pen.paintBeyond(r, painted);
            painted = r;
        }
        if (k == last) break;

        // While the square spans the image along the major axis, the painted
        // pixels change only with v: skip to the last step before they do.
        if (u >= pen.spanLo(uSize) && u <= pen.spanHi()) {
            std::int64_t kStay, unused;
            w.stepsWithU(pen.spanLo(uSize), pen.spanHi(), unused, kStay);
            if (v >= pen.spanLo(vSize) && v <= pen.spanHi()) {
                kStay = std::min(kStay, lastStepWithV(w, pen.spanLo(vSize), pen.spanHi()));
            } else {
                kStay = std::min(kStay, lastStepWithV(w, v, v));
            }
            kStay = std::min(kStay, last);
            if (kStay > k) {
                k = kStay;
                d = w.diagonalsAt(k);
                e = w.errorAt(k, d);
                continue;
            }
        }

        if (e > 0) {
            d++;
            e += 2 * (w.a - w.major);
        } else {
            e += 2 * w.a;
        }
        k++;
    }
}
