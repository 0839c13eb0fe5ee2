#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <velk/velk.h>

namespace {

typedef VelkScanConvert::Vertex Vertex;
typedef std::vector<Vertex> Polygon;

Vertex vertex(float x, float y, float v0 = 0, float v1 = 0) {
    return {x, y, {v0, v1}};
}

struct Pixel {
    int x, y;
    float v0, v1;
};

void record(int x, int y, float* values, void* pixels) {
    static_cast<std::vector<Pixel>*>(pixels)->push_back({x, y, values[0], values[1]});
}

std::vector<Pixel> convert(const Polygon& polygon, int width = 100, int height = 100) {
    VelkScanConvert sc(2);
    sc.setCanvas(width, height);
    std::vector<Pixel> pixels;
    sc.setPixelCallback(record, &pixels);
    sc.scanConvert(static_cast<int>(polygon.size()), polygon.data());
    return pixels;
}

typedef std::map<std::pair<int, int>, int> Coverage;  // pixel -> times reported

Coverage coverageOf(const std::vector<Pixel>& pixels) {
    Coverage c;
    for (const Pixel& p : pixels) c[{p.x, p.y}]++;
    return c;
}

// Smallest signed distance of (px, py) from the edges of a convex polygon,
// positive inside whatever the orientation.
double insideMargin(const Polygon& poly, double px, double py) {
    double area = 0, margin = INFINITY;
    size_t n = poly.size();
    for (size_t i = 0; i < n; i++)
        area += double(poly[i].x) * poly[(i + 1) % n].y - double(poly[(i + 1) % n].x) * poly[i].y;
    for (size_t i = 0; i < n; i++) {
        const Vertex &a = poly[i], &b = poly[(i + 1) % n];
        double ex = b.x - a.x, ey = b.y - a.y;
        margin = std::min(
            margin, (area > 0 ? 1 : -1) * (ex * (py - a.y) - ey * (px - a.x)) / std::hypot(ex, ey));
    }
    return margin;
}

// Every pixel whose centre lies inside the polygon or on its boundary.
Coverage bruteForce(const Polygon& poly, int width, int height) {
    Coverage c;
    for (int y = 0; y < height; y++)
        for (int x = 0; x <= width; x++)
            if (insideMargin(poly, x + 0.5, y + 0.5) >= 0) c[{x, y}] = 1;
    return c;
}

}  // namespace

TEST(ScanConvert, CornersOnPixelCentresAreCoveredOnEverySide) {
    // Slopes are exact in binary, so the edge positions are exact too.
    const Polygon polygons[] = {
        {vertex(2.5f, 0.5f), vertex(6.5f, 4.5f), vertex(0.5f, 4.5f)},
        {vertex(2.5f, 0.5f), vertex(4.5f, 2.5f), vertex(2.5f, 4.5f),
         vertex(0.5f, 2.5f)},  // 13 pixels
        {vertex(1.5f, 0.5f), vertex(5.5f, 4.5f), vertex(1.5f, 6.5f)},
    };
    for (const Polygon& poly : polygons) {
        for (const Polygon& p : {poly, Polygon(poly.rbegin(), poly.rend())}) {
            Coverage got = coverageOf(convert(p, 10, 10));
            EXPECT_EQ(got, bruteForce(p, 10, 10));
            for (const Vertex& v : p)
                EXPECT_EQ(got.count({int(v.x), int(v.y)}), 1u) << v.x << "," << v.y;
        }
    }
    EXPECT_EQ(convert(polygons[1], 10, 10).size(), 13u);
}

// Coverage against exact geometry, values against barycentric interpolation,
// and the same pixels and values bit for bit whatever the orientation and
// starting corner.
TEST(ScanConvert, RandomTrianglesMatchExactCoverageAndInterpolation) {
    std::mt19937 rng(12345);
    std::uniform_real_distribution<float> px(-4.0f, 36.0f), py(-4.0f, 28.0f), pv(-5.0f, 5.0f);
    const int width = 32, height = 24;
    int checkedInside = 0;
    for (int t = 0; t < 300; t++) {
        SCOPED_TRACE(testing::Message() << "triangle " << t);
        Polygon tri;
        for (int k = 0; k < 3; k++)
            tri.push_back({px(rng), py(rng), {pv(rng), pv(rng), 0, 0, 0, 0}});
        std::vector<Pixel> pixels = convert(tri, width, height);
        for (const Polygon& other :
             {Polygon{tri[2], tri[1], tri[0]}, Polygon{tri[1], tri[2], tri[0]}}) {
            std::vector<Pixel> again = convert(other, width, height);
            ASSERT_EQ(again.size(), pixels.size());
            for (size_t i = 0; i < pixels.size(); i++)
                EXPECT_EQ(0, std::memcmp(&again[i], &pixels[i], sizeof(Pixel))) << "pixel " << i;
        }
        Coverage got = coverageOf(pixels);
        for (int y = 0; y < height; y++) {
            for (int x = 0; x <= width; x++) {
                double m = insideMargin(tri, x + 0.5, y + 0.5);
                if (std::fabs(m) < 1e-3) continue;  // too close to an edge to call
                checkedInside += m > 0;
                EXPECT_EQ((got[{x, y}]), m > 0 ? 1 : 0) << x << "," << y;
            }
        }
        const Vertex &a = tri[0], &b = tri[1], &c = tri[2];
        double det = (double)(b.x - a.x) * (c.y - a.y) - (double)(c.x - a.x) * (b.y - a.y);
        if (std::fabs(det) < 1.0) continue;  // slivers: coverage only
        for (const Pixel& p : pixels) {
            double cx = p.x + 0.5, cy = p.y + 0.5;
            double wb = ((cx - a.x) * (c.y - a.y) - (c.x - a.x) * (cy - a.y)) / det;
            double wc = ((b.x - a.x) * (cy - a.y) - (cx - a.x) * (b.y - a.y)) / det;
            EXPECT_NEAR(p.v0, (1 - wb - wc) * a.values[0] + wb * b.values[0] + wc * c.values[0],
                        2e-3);
            EXPECT_NEAR(p.v1, (1 - wb - wc) * a.values[1] + wb * b.values[1] + wc * c.values[1],
                        2e-3);
        }
    }
    EXPECT_GT(checkedInside, 1000);
}

TEST(ScanConvert, ClippingAndDegeneratePolygons) {
    // Default canvas 100 x 100: rows 0..99 and columns 0..100 (inclusive).
    VelkScanConvert sc(1);
    std::vector<Pixel> pixels;
    sc.setPixelCallback(record, &pixels);
    const Vertex big[] = {vertex(-10, -10), vertex(500, -10), vertex(-10, 500)};
    sc.scanConvert(3, big);
    EXPECT_EQ(coverageOf(pixels), bruteForce(Polygon(big, big + 3), 100, 100));
    EXPECT_EQ(pixels.size(), 100u * 101u);
    // Clipped spans start with the value of their first visible column.
    std::vector<Pixel> ramp = convert(
        {vertex(-50, 0, -50), vertex(50, 0, 50), vertex(50, 2, 50), vertex(-50, 2, -50)}, 10, 10);
    ASSERT_FALSE(ramp.empty());
    EXPECT_EQ(ramp[0].x, 0);
    EXPECT_NEAR(ramp[0].v0, 0.5f, 1e-4f);

    // Zero height on the centre line of row 3: only the column whose centre
    // is the top corner's x, if there is one.
    std::vector<Pixel> one = convert({vertex(3.5f, 3.5f), vertex(5.5f, 3.5f), vertex(1.2f, 3.5f)});
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(std::make_pair(one[0].x, one[0].y), std::make_pair(3, 3));
    // A flat top on a centre line is served by the horizontal edge, which
    // gives the top corner's column only; the rows below are full.
    Coverage flat =
        coverageOf(convert({vertex(0.5f, 0.5f), vertex(4.5f, 0.5f), vertex(0.5f, 4.5f)}));
    EXPECT_EQ(flat.count({0, 0}), 1u);
    EXPECT_EQ(flat.count({1, 0}), 0u);
    EXPECT_EQ(flat.count({3, 1}), 1u);
    const Polygon nothing[] = {
        {},
        {vertex(3.5f, 3.5f)},
        {vertex(1.2f, 3.5f), vertex(5.5f, 3.5f), vertex(3.5f, 3.5f)},
        {vertex(1, 3.2f), vertex(6, 3.2f), vertex(3, 3.2f)},  // between centre lines
        {vertex(-9, -9), vertex(-1, -9), vertex(-9, -1)},
        {vertex(10, 101), vertex(20, 101), vertex(15, 120)},
        {vertex(NAN, 1), vertex(5, 5), vertex(1, 5)}};
    for (const Polygon& p : nothing) EXPECT_TRUE(convert(p).empty()) << p.size() << " corners";
}

TEST(ScanConvert, ValueCountAndPixelFunction) {
    const Vertex tri[3] = {vertex(0, 0, 1, 2), vertex(8, 0, 1, 2), vertex(0, 8, 1, 2)};
    VelkScanConvert sc(4);
    sc.scanConvert(3, tri);  // no pixel function: walks, reports nothing
    std::vector<Pixel> pixels;
    sc.setPixelCallback(record, &pixels);
    sc.setCanvas(4, 4);
    // More values than a vertex holds are never touched beyond its six.
    sc.nValues = 1000;
    sc.scanConvert(3, tri);
    EXPECT_EQ(coverageOf(pixels), bruteForce(Polygon(tri, tri + 3), 4, 4));
    EXPECT_EQ(pixels[0].v0, 1.0f);
    EXPECT_EQ(pixels[0].v1, 2.0f);
}
