#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "velk/velk.h"

namespace {

typedef VelkScanConvert::Vertex Vertex;

struct Pixel {
    int x;
    int y;
    float values[6];
};

struct Recorder {
    int nValues = 0;
    std::vector<Pixel> pixels;
};

void record(int x, int y, float* values, void* userData) {
    Recorder* r = static_cast<Recorder*>(userData);
    Pixel p = {x, y, {}};
    for (int i = 0; i < r->nValues; i++) p.values[i] = values[i];
    r->pixels.push_back(p);
}

std::vector<Pixel> convert(const std::vector<Vertex>& polygon, int nValues, int width = 100,
                           int height = 100) {
    VelkScanConvert sc(nValues);
    sc.setCanvas(width, height);
    Recorder r;
    r.nValues = nValues;
    sc.setPixelCallback(record, &r);
    sc.scanConvert(static_cast<int>(polygon.size()), polygon.data());
    return r.pixels;
}

typedef std::map<std::pair<int, int>, int> Coverage;

Coverage coverageOf(const std::vector<Pixel>& pixels) {
    Coverage c;
    for (const Pixel& p : pixels) c[{p.x, p.y}]++;
    return c;
}

Vertex vertex(float x, float y, float v0 = 0, float v1 = 0) {
    Vertex v = {x, y, {v0, v1}};
    return v;
}

// Signed distances of (px, py) from the edges of a convex polygon, all
// positive inside whatever the orientation; the smallest is returned.
double insideMargin(const std::vector<Vertex>& poly, double px, double py) {
    double area = 0;
    size_t n = poly.size();
    for (size_t i = 0; i < n; i++) {
        const Vertex& a = poly[i];
        const Vertex& b = poly[(i + 1) % n];
        area += static_cast<double>(a.x) * b.y - static_cast<double>(b.x) * a.y;
    }
    double sign = area > 0 ? 1 : -1;
    double margin = INFINITY;
    for (size_t i = 0; i < n; i++) {
        const Vertex& a = poly[i];
        const Vertex& b = poly[(i + 1) % n];
        double ex = b.x - a.x, ey = b.y - a.y;
        double d = sign * (ex * (py - a.y) - ey * (px - a.x)) / std::hypot(ex, ey);
        margin = std::min(margin, d);
    }
    return margin;
}

// Every pixel whose centre lies inside the polygon or on its boundary.
Coverage bruteForce(const std::vector<Vertex>& poly, int width, int height) {
    Coverage c;
    for (int y = 0; y < height; y++) {
        for (int x = 0; x <= width; x++) {
            if (insideMargin(poly, x + 0.5, y + 0.5) >= 0) c[{x, y}] = 1;
        }
    }
    return c;
}

}  // namespace

TEST(ScanConvert, CornersOnPixelCentresAreCoveredOnEverySide) {
    // Slopes are exact in binary, so the edge positions are exact too.
    const std::vector<std::vector<Vertex>> polygons = {
        {vertex(2.5f, 0.5f), vertex(6.5f, 4.5f), vertex(0.5f, 4.5f)},
        {vertex(2.5f, 0.5f), vertex(4.5f, 2.5f), vertex(2.5f, 4.5f), vertex(0.5f, 2.5f)},
        {vertex(1.5f, 0.5f), vertex(5.5f, 4.5f), vertex(1.5f, 6.5f)},
    };
    for (const auto& poly : polygons) {
        std::vector<Vertex> reversed(poly.rbegin(), poly.rend());
        for (const auto& p : {poly, reversed}) {
            Coverage got = coverageOf(convert(p, 0, 10, 10));
            EXPECT_EQ(got, bruteForce(p, 10, 10));
            for (const Vertex& v : p) {
                EXPECT_EQ(got.count({static_cast<int>(v.x), static_cast<int>(v.y)}), 1u)
                    << "corner " << v.x << "," << v.y;
            }
        }
    }
    // The diamond |x - 2| + |y - 2| <= 2 has 13 pixels.
    EXPECT_EQ(convert(polygons[1], 0, 10, 10).size(), 13u);
}

TEST(ScanConvert, MatchesExactCoverageAndInterpolationOnRandomTriangles) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<float> px(-4.0f, 36.0f), py(-4.0f, 28.0f), pv(-5.0f, 5.0f);
    const int width = 32, height = 24;
    int checkedInside = 0;
    for (int t = 0; t < 300; t++) {
        std::vector<Vertex> tri;
        for (int k = 0; k < 3; k++) tri.push_back(vertex(px(rng), py(rng), pv(rng), pv(rng)));
        std::vector<Pixel> pixels = convert(tri, 2, width, height);
        Coverage got = coverageOf(pixels);
        for (const auto& entry : got) EXPECT_EQ(entry.second, 1) << "pixel reported twice";

        // Barycentric reference for the values at a pixel centre.
        const Vertex &a = tri[0], &b = tri[1], &c = tri[2];
        double det = (double)(b.x - a.x) * (c.y - a.y) - (double)(c.x - a.x) * (b.y - a.y);
        if (std::fabs(det) < 1.0) continue;  // slivers: coverage only near edges
        for (const Pixel& p : pixels) {
            EXPECT_TRUE(p.y >= 0 && p.y < height && p.x >= 0 && p.x <= width);
            double cx = p.x + 0.5, cy = p.y + 0.5;
            double wb = ((cx - a.x) * (c.y - a.y) - (c.x - a.x) * (cy - a.y)) / det;
            double wc = ((b.x - a.x) * (cy - a.y) - (cx - a.x) * (b.y - a.y)) / det;
            double wa = 1 - wb - wc;
            for (int i = 0; i < 2; i++) {
                double want = wa * a.values[i] + wb * b.values[i] + wc * c.values[i];
                EXPECT_NEAR(p.values[i], want, 2e-3) << "triangle " << t;
            }
        }
        for (int y = 0; y < height; y++) {
            for (int x = 0; x <= width; x++) {
                double m = insideMargin(tri, x + 0.5, y + 0.5);
                if (std::fabs(m) < 1e-3) continue;  // too close to an edge to call
                bool inside = m > 0;
                checkedInside += inside;
                EXPECT_EQ(got.count({x, y}), inside ? 1u : 0u)
                    << "triangle " << t << " pixel " << x << "," << y;
            }
        }
    }
    EXPECT_GT(checkedInside, 1000);
}

TEST(ScanConvert, OrientationAndStartingCornerDoNotChangePixelsOrValues) {
    std::mt19937 rng(777);
    std::uniform_real_distribution<float> pos(-2.0f, 20.0f), val(-1.0f, 1.0f);
    for (int t = 0; t < 100; t++) {
        std::vector<Vertex> tri;
        for (int k = 0; k < 3; k++) tri.push_back(vertex(pos(rng), pos(rng), val(rng), val(rng)));
        std::vector<Pixel> base = convert(tri, 2, 16, 16);
        std::vector<std::vector<Vertex>> variants = {
            {tri[2], tri[1], tri[0]}, {tri[1], tri[2], tri[0]}, {tri[0], tri[2], tri[1]}};
        for (const auto& v : variants) {
            std::vector<Pixel> other = convert(v, 2, 16, 16);
            ASSERT_EQ(other.size(), base.size());
            for (size_t i = 0; i < base.size(); i++) {
                EXPECT_EQ(other[i].x, base[i].x);
                EXPECT_EQ(other[i].y, base[i].y);
                EXPECT_EQ(other[i].values[0], base[i].values[0]);
                EXPECT_EQ(other[i].values[1], base[i].values[1]);
            }
        }
    }
}

TEST(ScanConvert, ClipsRowsToTheCanvasAndReportsColumnWidth) {
    // Default canvas 100 x 100: rows 0..99, columns 0..100 (the right bound is inclusive).
    std::vector<Pixel> pixels = convert({vertex(-10, -10), vertex(500, -10), vertex(-10, 500)}, 1);
    Coverage got = coverageOf(pixels);
    EXPECT_EQ(pixels.size(), 100u * 101u);
    EXPECT_EQ(got.size(), 100u * 101u);
    EXPECT_TRUE(got.count({0, 0}) && got.count({100, 99}));
    EXPECT_FALSE(got.count({101, 0}) || got.count({0, 100}));

    // Entirely outside the canvas: nothing.
    EXPECT_TRUE(convert({vertex(-9, -9), vertex(-1, -9), vertex(-9, -1)}, 1).empty());
    EXPECT_TRUE(convert({vertex(10, 101), vertex(20, 101), vertex(15, 120)}, 1).empty());

    // Clipped spans still start with the value of their first visible column.
    std::vector<Pixel> ramp =
        convert({vertex(-50, 0, -50), vertex(50, 0, 50), vertex(50, 2, 50), vertex(-50, 2, -50)}, 1,
                10, 10);
    ASSERT_FALSE(ramp.empty());
    EXPECT_EQ(ramp[0].x, 0);
    EXPECT_NEAR(ramp[0].values[0], 0.5f, 1e-4f);
}

TEST(ScanConvert, DegeneratePolygons) {
    EXPECT_TRUE(convert({}, 1).empty());
    EXPECT_TRUE(convert({vertex(3.5f, 3.5f)}, 1).empty());

    // Zero height on the centre line of row 3: only the column whose centre is
    // the top corner's x, if there is one.
    std::vector<Pixel> one =
        convert({vertex(3.5f, 3.5f), vertex(5.5f, 3.5f), vertex(1.2f, 3.5f)}, 1);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].x, 3);
    EXPECT_EQ(one[0].y, 3);
    EXPECT_TRUE(convert({vertex(1.2f, 3.5f), vertex(5.5f, 3.5f), vertex(3.5f, 3.5f)}, 1).empty());
    // Zero height between centre lines: nothing.
    EXPECT_TRUE(convert({vertex(1, 3.2f), vertex(6, 3.2f), vertex(3, 3.2f)}, 1).empty());

    // A flat top on a centre line is served by the horizontal edge, which
    // contributes the top corner's column only; the rows below are full.
    Coverage flat =
        coverageOf(convert({vertex(0.5f, 0.5f), vertex(4.5f, 0.5f), vertex(0.5f, 4.5f)}, 0));
    EXPECT_TRUE(flat.count({0, 0}));
    EXPECT_FALSE(flat.count({1, 0}));
    EXPECT_TRUE(flat.count({3, 1}));
    EXPECT_TRUE(flat.count({0, 4}));

    // Corners that are not numbers draw nothing.
    EXPECT_TRUE(convert({vertex(NAN, 1), vertex(5, 5), vertex(1, 5)}, 1).empty());
}

TEST(ScanConvert, ConfigurationAndValueCount) {
    VelkScanConvert sc(4);
    EXPECT_EQ(sc.nValues, 4);
    EXPECT_EQ(sc.width, 100);
    EXPECT_EQ(sc.height, 100);
    EXPECT_EQ(sc.callback, nullptr);
    EXPECT_EQ(sc.userData, nullptr);

    const Vertex tri[3] = {vertex(0, 0, 1, 2), vertex(8, 0, 1, 2), vertex(0, 8, 1, 2)};
    sc.scanConvert(3, tri);  // no pixel function: walks, reports nothing

    Recorder r;
    sc.setPixelCallback(record, &r);
    EXPECT_EQ(sc.userData, &r);
    sc.setCanvas(4, 4);
    sc.nValues = 0;  // positions only; the pixel function still sees every pixel
    sc.scanConvert(3, tri);
    EXPECT_EQ(coverageOf(r.pixels), bruteForce(std::vector<Vertex>(tri, tri + 3), 4, 4));

    // More values than a vertex holds are never touched beyond its six.
    r.pixels.clear();
    r.nValues = 2;
    sc.nValues = 1000;
    sc.scanConvert(3, tri);
    ASSERT_FALSE(r.pixels.empty());
    EXPECT_FLOAT_EQ(r.pixels[0].values[0], 1.0f);
    EXPECT_FLOAT_EQ(r.pixels[0].values[1], 2.0f);
}
