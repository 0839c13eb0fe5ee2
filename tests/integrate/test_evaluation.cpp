#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

bool same(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace

// Nodes (1 + i + 2j, i * j) on a grid that is not square: bilinear
// interpolation reproduces 1 + x + 2y and x * y. The domain is [0, xMax] x
// [0, yMax]; a point outside it leaves d and the magnitude alone.
TEST(FieldEvaluation, BilinearInsideTheDomainUpToXMaxAndYMax) {
    Grid grid(10, 8, [](int i, int j) { return Vec2f{float(1 + i + 2 * j), float(i * j)}; });
    Euler e;
    grid.attach(e);
    const float xMax = 10.0f - 1.001f, yMax = 8.0f - 1.001f;
    ASSERT_EQ(e.xMax, xMax);
    ASSERT_EQ(e.yMax, yMax);
    const struct {
        float x, y;
        int status;
    } cases[] = {{2.5f, 3.25f, 0}, {4.75f, 0.5f, 0},     {1, 3.75f, 0}, {-0.0f, -0.0f, 0},
                 {xMax, 5, 0},     {xMax + 1e-4f, 5, 1}, {5, yMax, 0},  {5, yMax + 1e-4f, 1},
                 {-1e-6f, 5, 1},   {5, -1e-6f, 1},       {kNaN, 5, 1},  {5, kNaN, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "(" << c.x << ", " << c.y << ")");
        e.status = 0;
        e.magnitude = -1.0f;
        Vec2f d = {7.0f, 7.0f};
        e.derivs({c.x, c.y}, d);
        ASSERT_EQ(e.status, c.status);
        const double vx = 1.0 + c.x + 2.0 * c.y, vy = double(c.x) * c.y, m = std::hypot(vx, vy);
        EXPECT_NEAR(e.magnitude, c.status ? -1.0 : m, 3e-5);  // float rounding below 30
        EXPECT_NEAR(d.x, c.status ? 7.0 : vx / m, 1e-6);
        EXPECT_NEAR(d.y, c.status ? 7.0 : vy / m, 1e-6);
    }
}

// At a uniform node (vx, vy): the derivative has unit length above the
// normalization threshold and length / threshold below it, signed by the
// direction; a length below 1e-10 or not a number is a critical point, which
// leaves d alone but keeps the raw length (NaN for a NaN node).
TEST(FieldEvaluation, NormalizationAndCriticalPoints) {
    const struct {
        float vx, vy;
        int direction;
        float normalization;
        int status;
        float dx, dy, magnitude;
    } cases[] = {{1.2f, 1.6f, 1, 0, 0, 0.6f, 0.8f, 2},  {1.2f, 1.6f, -1, 0, 0, -0.6f, -0.8f, 2},
                 {1.2f, 1.6f, 1, 1, 0, 0.6f, 0.8f, 2},  {1.2f, 1.6f, -1, 4, 0, -0.3f, -0.4f, 2},
                 {1.2f, 1.6f, 1, 8, 0, 0.15f, 0.2f, 2}, {0, 0, 1, 0, 2, 7, 7, 0},
                 {1e-11f, 0, 1, 0, 2, 7, 7, 1e-11f},    {kNaN, 1, 1, 0, 2, 7, 7, kNaN},
                 {1e-9f, 0, 1, 0, 0, 1, 0, 1e-9f}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "node (" << c.vx << ", " << c.vy << "), direction "
                                        << c.direction << ", threshold " << c.normalization);
        Grid grid(3, 3, [&](int, int) { return Vec2f{c.vx, c.vy}; });
        Euler e(c.direction);
        e.normalization = c.normalization;
        grid.attach(e);
        Vec2f d = {7.0f, 7.0f};
        e.derivs({1.5f, 0.5f}, d);
        EXPECT_EQ(e.status, c.status);
        EXPECT_FLOAT_EQ(d.x, c.dx);
        EXPECT_FLOAT_EQ(d.y, c.dy);
        EXPECT_TRUE(same(e.magnitude, c.magnitude)) << e.magnitude;
    }
}

// Before setField and on grids narrower than two nodes nothing is evaluated
// (and no node read). At width 40000, width - 1.001
// rounds to width - 1 in float; a point on the last column must still not read
// the node to its right (beyond the buffer on the top row, which the sanitizer
// build would catch).
TEST(FieldEvaluation, NothingIsReadOutsideTheGrid) {
    const int wide = 40000;
    std::vector<Vec2f> nodes(2 * wide, Vec2f{1.0f, 0.0f});
    Vec2f d = {7.0f, 7.0f};
    Euler unset;
    unset.derivs({0.0f, 0.0f}, d);
    EXPECT_EQ(unset.status, 1);
    for (int w : {1, 0, -3}) {
        Euler e;
        e.setField(w, 2, nodes.data());
        e.derivs({0.0f, 0.0f}, d);
        EXPECT_EQ(e.status, 1) << w;
    }
    Euler e;
    e.setField(wide, 2, nodes.data());
    e.derivs({static_cast<float>(wide - 1), 0.5f}, d);
    EXPECT_EQ(e.status, 1);
    e.status = 0;
    e.derivs({e.xMax, 0.5f}, d);
    EXPECT_EQ(e.status, 0);
    EXPECT_EQ(d.x, 1.0f);
}
