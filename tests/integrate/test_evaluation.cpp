#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

}  // namespace

TEST(FieldEvaluation, DomainEndsAtXMaxAndYMax) {
    Grid grid(10, 10, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    Euler e;
    grid.attach(e);
    ASSERT_EQ(e.xMax, 10.0f - 1.001f);
    ASSERT_EQ(e.yMax, 10.0f - 1.001f);
    struct Case {
        Vec2f p;
        int status;
    } cases[] = {{{e.xMax, 5.0f}, 0}, {{e.xMax + 0.0001f, 5.0f}, 1},
                 {{5.0f, e.yMax}, 0}, {{5.0f, e.yMax + 0.0001f}, 1},
                 {{-0.0f, -0.0f}, 0}, {{-1e-6f, 5.0f}, 1},
                 {{5.0f, -1e-6f}, 1}, {{9.0f, 5.0f}, 1},
                 {{kNaN, 5.0f}, 1},   {{5.0f, kNaN}, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "(" << c.p.x << ", " << c.p.y << ")");
        e.status = 0;
        e.magnitude = -1.0f;
        Vec2f d = {7.0f, 7.0f};
        e.derivs(c.p, d);
        EXPECT_EQ(e.status, c.status);
        if (c.status == 0) {
            EXPECT_EQ(d.x, 1.0f);
            EXPECT_EQ(d.y, 0.0f);
            EXPECT_EQ(e.magnitude, 1.0f);
        } else {  // d and magnitude untouched
            EXPECT_EQ(d.x, 7.0f);
            EXPECT_EQ(e.magnitude, -1.0f);
        }
    }
}

TEST(FieldEvaluation, BilinearInterpolationIsExactForBilinearNodes) {
    // Nodes (i + 2j, i * j): bilinear interpolation reproduces x + 2y and x * y,
    // and with these quarter fractions every operation is exact in float.
    Grid grid(6, 5, [](int i, int j) { return Vec2f{float(i + 2 * j), float(i * j)}; });
    Euler e;
    grid.attach(e);
    const Vec2f points[] = {{2.5f, 3.25f}, {0.0f, 0.0f}, {4.75f, 0.5f}, {1.0f, 3.75f}};
    for (const Vec2f& p : points) {
        e.status = 0;
        Vec2f d;
        e.derivs(p, d);
        const float vx = p.x + 2.0f * p.y, vy = p.x * p.y;
        const float m = std::sqrt(vx * vx + vy * vy);
        if (m == 0.0f) {
            EXPECT_EQ(e.status, 2);
            continue;
        }
        ASSERT_EQ(e.status, 0) << p.x << ", " << p.y;
        EXPECT_EQ(e.magnitude, m);
        EXPECT_FLOAT_EQ(d.x, vx / m);
        EXPECT_FLOAT_EQ(d.y, vy / m);
    }
}

TEST(FieldEvaluation, DerivativeIsDirectionSignedAndNormalizedAboveThreshold) {
    // Uniform field of length 2 (vector (1.2, 1.6)).
    Grid grid(4, 4, [](int, int) { return Vec2f{1.2f, 1.6f}; });
    struct Case {
        int direction;
        float normalization;
        float length;  // expected length of the derivative
    } cases[] = {
        {1, 0.0f, 1.0f}, {-1, 0.0f, 1.0f}, {1, 1.0f, 1.0f}, {-1, 4.0f, 0.5f}, {1, 8.0f, 0.25f}};
    for (const Case& c : cases) {
        Euler e(c.direction);
        e.normalization = c.normalization;
        grid.attach(e);
        Vec2f d;
        e.derivs({1.5f, 1.5f}, d);
        ASSERT_EQ(e.status, 0);
        EXPECT_FLOAT_EQ(d.x, c.direction * c.length * 0.6f);
        EXPECT_FLOAT_EQ(d.y, c.direction * c.length * 0.8f);
        EXPECT_FLOAT_EQ(e.magnitude, 2.0f);
    }
}

TEST(FieldEvaluation, CriticalPointsAndInvalidValuesGiveStatus2) {
    struct Case {
        Vec2f node;
        int status;
    } cases[] = {{{0.0f, 0.0f}, 2}, {{1e-11f, 0.0f}, 2}, {{kNaN, 1.0f}, 2}, {{1e-9f, 0.0f}, 0}};
    for (const Case& c : cases) {
        Grid grid(3, 3, [&](int, int) { return c.node; });
        Euler e;
        grid.attach(e);
        Vec2f d = {7.0f, 7.0f};
        e.derivs({1.0f, 1.0f}, d);
        EXPECT_EQ(e.status, c.status) << c.node.x;
        // The magnitude is the raw length even when it fails (NaN for a NaN node).
        const float m = std::sqrt(c.node.x * c.node.x + c.node.y * c.node.y);
        EXPECT_TRUE(std::isnan(m) ? std::isnan(e.magnitude) : e.magnitude == m) << e.magnitude;
        EXPECT_EQ(d.x, c.status != 0 ? 7.0f : 1.0f);
    }
}

// Before setField, on grids narrower than two nodes, and once the status is
// set, no point is evaluated (and no node read).
TEST(FieldEvaluation, NothingIsEvaluatedWithoutAFieldOrOnceStatusIsSet) {
    Grid grid(4, 4, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    Vec2f d = {7.0f, 7.0f};
    Euler unset;
    unset.derivs({0.0f, 0.0f}, d);
    EXPECT_EQ(unset.status, 1);
    for (int w : {1, 0, -3}) {
        Euler e;
        e.setField(w, 2, grid.nodes.data());
        e.derivs({0.0f, 0.0f}, d);
        EXPECT_EQ(e.status, 1) << w;
    }
    Euler e;
    grid.attach(e);
    e.status = 2;
    e.derivs({1.0f, 1.0f}, d);
    EXPECT_EQ(e.status, 2);
    EXPECT_EQ(d.x, 7.0f);
}

TEST(FieldEvaluation, VeryWideGridsNeverReadPastTheLastNode) {
    // At this width width - 1.001 rounds to width - 1 in float; a point on the
    // last column must still not read the node to its right (beyond the buffer
    // on the top row, which the sanitizer build would catch).
    const int w = 40000;
    std::vector<Vec2f> nodes(static_cast<std::size_t>(w) * 2, Vec2f{1.0f, 0.0f});
    Euler e;
    e.setField(w, 2, nodes.data());
    EXPECT_LT(e.xMax, static_cast<float>(w - 1));
    EXPECT_EQ(e.yMax, 2.0f - 1.001f);
    Vec2f d;
    e.derivs({static_cast<float>(w - 1), 0.5f}, d);
    EXPECT_EQ(e.status, 1);
    e.status = 0;
    e.derivs({e.xMax, 0.5f}, d);
    EXPECT_EQ(e.status, 0);
    EXPECT_EQ(d.x, 1.0f);
}
