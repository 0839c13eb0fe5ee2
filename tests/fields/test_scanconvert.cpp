#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "TestSupport.h"

using namespace velktest;

namespace {

typedef VelkScanConvert::Vertex Vertex;
typedef std::vector<Vertex> Polygon;

struct Pixel {
    int x, y;
    float v[6];
};

void record(int x, int y, float* values, void* pixels) {
    Pixel p = {x, y, {}};
    std::memcpy(p.v, values, sizeof p.v);
    static_cast<std::vector<Pixel>*>(pixels)->push_back(p);
}

std::vector<Pixel> convert(const Polygon& polygon, int width, int height, int nValues = 6) {
    VelkScanConvert sc(nValues);
    if (width >= 0) sc.setCanvas(width, height);
    std::vector<Pixel> pixels;
    sc.setPixelCallback(record, &pixels);
    sc.scanConvert(static_cast<int>(polygon.size()), polygon.data());
    return pixels;
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

}  // namespace

// Coverage against exact geometry (columns 0 to width, rows 0 to height - 1),
// values against barycentric interpolation, and the same pixels and values
// bit for bit whatever the orientation and starting corner.
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
        std::vector<Pixel> pixels = convert(tri, width, height, 2);
        for (const Polygon& other :
             {Polygon{tri[2], tri[1], tri[0]}, Polygon{tri[1], tri[2], tri[0]}}) {
            std::vector<Pixel> again = convert(other, width, height, 2);
            ASSERT_EQ(again.size(), pixels.size());
            for (size_t i = 0; i < pixels.size(); i++)
                EXPECT_EQ(0, std::memcmp(&again[i], &pixels[i], 16)) << "pixel " << i;
        }
        std::map<std::pair<int, int>, int> got;
        for (const Pixel& p : pixels) got[{p.x, p.y}]++;
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
            for (int k : {0, 1})
                EXPECT_NEAR(p.v[k],
                            (1 - wb - wc) * a.values[k] + wb * b.values[k] + wc * c.values[k],
                            2e-3);
        }
    }
    EXPECT_GT(checkedInside, 1000);
}

// Pixel streams of random convex polygons of 3 to 6 corners with 0 to 6
// values, many corners on pixel centres, on canvases from none to the default;
// and polygons that are degenerate, far out or not numbers. Against the
// hashes in tests/data/recorded/fields-scanconvert.txt.
TEST(ScanConvert, PixelStreamsMatchTheRecordedHashes) {
    std::mt19937 rng(2024);
    Hashes hashes;
    const auto add = [&](const std::string& name, const Polygon& poly, int w, int h, int nValues) {
        Hash hash;
        for (const Pixel& p : convert(poly, w, h, nValues)) hash.add(p.x).add(p.y).bytes(p.v, 24);
        hashes.push_back({name, hash.hex()});
    };
    for (int t = 0; t < 120; t++) {
        // Corners at increasing angles round an ellipse: convex either way round.
        const int n = 3 + t % 4;
        const float cx = static_cast<float>(rng() % 40) - 5,
                    cy = static_cast<float>(rng() % 30) - 5;
        const float rx = 0.5f + static_cast<float>(rng() % 40) / 4,
                    ry = 0.5f + static_cast<float>(rng() % 30) / 4;
        Polygon poly;
        for (int k = 0; k < n; k++) {
            float a =
                6.2831853f * (k + static_cast<float>(rng() % 100) / 200.0f) / n * (t % 2 ? 1 : -1);
            Vertex v = {cx + rx * std::cos(a), cy + ry * std::sin(a), {}};
            if (t % 3 == 0) v.x = std::floor(v.x) + 0.5f, v.y = std::floor(v.y) + 0.5f;
            for (float& value : v.values) value = static_cast<float>(rng() % 1000) / 100.0f - 5.0f;
            poly.push_back(v);
        }
        add("random-" + std::to_string(t), poly, t % 5 == 0 ? -1 : 32, 24, t % 7);
    }
    const Polygon special[] = {{{-10, -10, {1}}, {500, -10, {2}}, {-10, 500, {3}}},
                               {{-50, 0, {-50}}, {50, 0, {50}}, {50, 2, {50}}, {-50, 2, {-50}}},
                               {{3.5f, 3.5f, {}}, {5.5f, 3.5f, {}}, {1.2f, 3.5f, {}}},
                               {{0.5f, 0.5f, {}}, {4.5f, 0.5f, {}}, {0.5f, 4.5f, {}}},
                               {{1, 3.2f, {}}, {6, 3.2f, {}}, {3, 3.2f, {}}},
                               {{NAN, 1, {}}, {5, 5, {}}, {1, 5, {}}},
                               {{50, -1e30f, {}}, {1e30f, 1e30f, {}}, {-1e30f, 1e30f, {}}},
                               {{3.5f, 3.5f, {}}},
                               {}};
    for (const Polygon& p : special)
        add("special-" + std::to_string(hashes.size() - 120), p, -1, 0, 1);
    expectRecorded("recorded/fields-scanconvert.txt", hashes);
}
