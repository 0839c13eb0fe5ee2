#include <velk/VelkScanConvert.h>

#include <algorithm>
#include <climits>
#include <cmath>

#include "repeatedadd.h"

namespace {

// Pixel index of a rounded position; positions beyond the int range saturate
// so that far-away corners still bound the loops correctly.
int toIndex(double v) {
    if (v <= static_cast<double>(INT_MIN)) return INT_MIN;
    if (v >= static_cast<double>(INT_MAX)) return INT_MAX;
    return static_cast<int>(v);
}

int rowStart(float y) {
    return toIndex(std::ceil(static_cast<double>(y) - 0.5));
}
int rowEnd(float y) {
    return toIndex(std::floor(static_cast<double>(y) + 0.5));
}

}  // namespace

VelkScanConvert::VelkScanConvert(int nValues)
    : nValues(nValues), width(100), height(100), userData(nullptr), callback(nullptr) {}

VelkScanConvert::~VelkScanConvert() {}

void VelkScanConvert::setCanvas(int width, int height) {
    this->width = width;
    this->height = height;
}

void VelkScanConvert::setPixelCallback(PixelCallback callback, void* userData) {
    this->callback = callback;
    this->userData = userData;
}

// nValues is a public member; the vertices hold no more than 6 values.
int VelkScanConvert::valueCount() const {
    if (nValues < 0) return 0;
    return nValues > 6 ? 6 : nValues;
}

void VelkScanConvert::increment_y(const Vertex& p1, const Vertex& p2, Vertex& p, Vertex& dp,
                                  int y) {
    float dy = p2.y - p1.y;
    if (dy == 0.0f) dy = 1.0f;
    float frac = static_cast<float>(y) + 0.5f - p1.y;
    dp.x = (p2.x - p1.x) / dy;
    p.x = p1.x + dp.x * frac;
    int n = valueCount();
    for (int i = 0; i < n; i++) {
        dp.values[i] = (p2.values[i] - p1.values[i]) / dy;
        p.values[i] = p1.values[i] + dp.values[i] * frac;
    }
}

void VelkScanConvert::increment_x(const Vertex& p1, const Vertex& p2, Vertex& p, Vertex& dp,
                                  int x) {
    float dx = p2.x - p1.x;
    if (dx == 0.0f) dx = 1.0f;
    float frac = static_cast<float>(x) + 0.5f - p1.x;
    int n = valueCount();
    for (int i = 0; i < n; i++) {
        dp.values[i] = (p2.values[i] - p1.values[i]) / dx;
        p.values[i] = p1.values[i] + dp.values[i] * frac;
    }
}

void VelkScanConvert::scanline(int y, Vertex& l, Vertex& r) {
    double lx = std::ceil(static_cast<double>(l.x) - 0.5);
    double rx = std::floor(static_cast<double>(r.x) - 0.5);
    if (lx < 0.0) lx = 0.0;
    if (rx > static_cast<double>(width)) rx = static_cast<double>(width);
    // Also false for an edge position that overflowed to NaN.
    if (!(lx <= rx)) return;
    int x0 = static_cast<int>(lx);
    int x1 = static_cast<int>(rx);

    Vertex p = {};
    Vertex dp = {};
    increment_x(l, r, p, dp, x0);
    int n = valueCount();
    for (int x = x0;; x++) {
        if (callback) callback(x, y, p.values, userData);
        for (int i = 0; i < n; i++) p.values[i] += dp.values[i];
        if (x == x1) break;  // x1 may be INT_MAX
    }
}

void VelkScanConvert::scanConvert(int n, const Vertex* v) {
    if (n < 1) return;
    int top = 0;
    for (int i = 0; i < n; i++) {
        // Corners that are not finite have no pixel position.
        if (!std::isfinite(v[i].x) || !std::isfinite(v[i].y)) return;
        if (v[i].y < v[top].y) top = i;
    }

    int nv = valueCount();
    int y = rowStart(v[top].y);
    // y - 1 without overflow: a top corner far above the int range starts at
    // INT_MIN, where no row can be drawn anyway.
    int ly = y == INT_MIN ? y : y - 1;
    int ry = ly;
    int li = top;
    int ri = top;
    int rem = n;
    Vertex l = {}, dl = {}, r = {}, dr = {};

    do {
        while (ly <= y && rem > 0) {
            rem--;
            int i = li - 1;
            if (i < 0) i = n - 1;
            increment_y(v[li], v[i], l, dl, y);
            ly = rowEnd(v[i].y);
            li = i;
        }
        while (ry <= y && rem > 0) {
            rem--;
            int i = ri + 1;
            if (i >= n) i = 0;
            increment_y(v[ri], v[i], r, dr, y);
            ry = rowEnd(v[i].y);
            ri = i;
        }
        while (y < ly && y < ry) {
            // Rows only grow: nothing below the canvas can be drawn any more.
            if (y >= height) return;
            if (y < 0) {
                // Rows above the canvas only advance the edges. Far-off corners put
                // billions of them there, so they are passed in one go, with the
                // same sums as row by row.
                int next = std::min(std::min(ly, ry), 0);
                long long rows = static_cast<long long>(next) - y;
                l.x = velk::addRepeatedly(l.x, dl.x, rows);
                r.x = velk::addRepeatedly(r.x, dr.x, rows);
                for (int i = 0; i < nv; i++) {
                    l.values[i] = velk::addRepeatedly(l.values[i], dl.values[i], rows);
                    r.values[i] = velk::addRepeatedly(r.values[i], dr.values[i], rows);
                }
                y = next;
                continue;
            }
            if (l.x <= r.x) {
                scanline(y, l, r);
            } else {
                scanline(y, r, l);
            }
            l.x += dl.x;
            r.x += dr.x;
            for (int i = 0; i < nv; i++) {
                l.values[i] += dl.values[i];
                r.values[i] += dr.values[i];
            }
            y++;
        }
    } while (rem > 0);
}
