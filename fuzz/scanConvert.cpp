// VelkScanConvert::scanConvert on random polygons (mostly triangles, with
// huge, infinite and NaN corners) and canvases. Every reported pixel lies in
// [0, width] x [0, height - 1], each row is reported at most once per
// polygon, and values that are equal at every corner of an ordinary polygon
// stay equal.

#include <cmath>

#include <velk/VelkScanConvert.h>
#include "FuzzSupport.h"

namespace {

struct Seen {
    int width;
    int height;
    int nValues;
    bool constant;
    float values[6];
    long long calls;
    int lastY;
    int lastX;
};

void pixel(int x, int y, float* values, void* userData) {
    Seen& s = *static_cast<Seen*>(userData);
    FUZZ_CHECK(x >= 0 && x <= s.width);
    FUZZ_CHECK(y >= 0 && y <= s.height - 1);
    // Rows go down the polygon and spans left to right.
    FUZZ_CHECK(y > s.lastY || (y == s.lastY && x == s.lastX + 1));
    s.lastY = y;
    s.lastX = x;
    s.calls++;
    FUZZ_CHECK(values != nullptr);
    if (s.constant) {
        // Equal as numbers: c - c is +0, so a constant -0 may come out as +0.
        for (int i = 0; i < s.nValues; i++) FUZZ_CHECK(values[i] == s.values[i]);
    }
}

// `ordinary` turns false once an awkward value was handed out.
float coordinate(velkfuzz::ByteReader& in, bool& ordinary) {
    int kind = in.range(0, 3);
    if (kind == 0) {
        ordinary = false;
        return in.awkwardFloat();
    }
    // On or near the canvas, in steps of a quarter pixel.
    return static_cast<float>(in.range(-80, 280)) * 0.25f;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velkfuzz::ByteReader in(data, size);
    int nValues = in.range(0, 6);
    VelkScanConvert converter(6);
    converter.nValues = nValues;
    Seen seen = {};
    seen.width = in.range(-2, 64);
    seen.height = in.range(-2, 64);
    seen.nValues = nValues;
    converter.setCanvas(seen.width, seen.height);
    converter.setPixelCallback(in.range(0, 7) ? pixel : nullptr, &seen);

    while (in.remaining() > 0) {
        int n = in.range(0, 8);
        if (n > 5) n = 3;
        bool constant = in.range(0, 1);
        bool ordinary = true;
        for (int i = 0; i < nValues; i++) {
            bool any;
            float v = coordinate(in, any);
            // c - c is 0 only for finite c.
            seen.values[i] = std::isfinite(v) ? v : 0.0f;
        }
        VelkScanConvert::Vertex v[5] = {};
        for (int i = 0; i < n; i++) {
            v[i].x = coordinate(in, ordinary);
            v[i].y = coordinate(in, ordinary);
            for (int k = 0; k < 6; k++) {
                v[i].values[k] = constant ? seen.values[k] : in.awkwardFloat();
            }
        }
        // Corners far apart or close to each other can drive an edge to
        // infinity, and 0 * infinity is no longer the constant.
        seen.constant = constant && ordinary;
        seen.calls = 0;
        seen.lastY = -1;
        seen.lastX = -2;
        converter.scanConvert(n, v);
        long long limit = seen.width >= 0 && seen.height > 0
                              ? static_cast<long long>(seen.width + 1) * seen.height
                              : 0;
        FUZZ_CHECK(seen.calls <= limit);
    }
    return 0;
}
