#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Point {
    float x;
    int status;
    bool magnitudeWritten;
};

// Calls next(magnitude, status) and checks x, the status, and whether the
// magnitude argument was written (it is preset to -1).
void expectLine(VelkIntegrator& it, int firstCall, const std::vector<Point>& want, float y) {
    for (std::size_t k = 0; k < want.size(); k++) {
        float magnitude = -1.0f;
        int status = -1;
        const Vec2f& p = it.next(magnitude, status);
        const int call = firstCall + static_cast<int>(k);
        EXPECT_NEAR(p.x, want[k].x, 2e-5f) << "call " << call;
        EXPECT_NEAR(p.y, y, 2e-5f) << "call " << call;
        EXPECT_EQ(status, want[k].status) << "call " << call;
        EXPECT_EQ(magnitude != -1.0f, want[k].magnitudeWritten) << "call " << call;
    }
}

void skipCalls(VelkIntegrator& it, int n) {
    int status;
    for (int k = 0; k < n; k++) {
        it.next(status);
        ASSERT_EQ(status, 0);
    }
}

}  // namespace

// Uniform field on a 20-wide grid from x = 1, unit spacing: steps of 4 and 8
// bring the front to x = 13; the step of 15 that call 13 needs has stage points
// beyond xMax = 18.999. The step is not shrunk: the line goes on with Euler
// steps from the last returned point (x = 13) and ends at x = 19.
TEST(AdaptiveLineEnd, StagePastTheBorderSwitchesToEulerSteps) {
    Grid grid(20, 16, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        SCOPED_TRACE(scheme);
        auto it = velktest::makeScheme(scheme, 1);
        AdaptiveIntegrator* a = velktest::asAdaptive(it.get());
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({1.0f, 8.0f}, {1.0f, 0.0f});
        skipCalls(*it, 12);
        EXPECT_EQ(a->fallback, 0);
        expectLine(*it, 13,
                   {{14, 0, true},
                    {15, 0, true},
                    {16, 0, true},
                    {17, 0, true},
                    {18, 0, true},
                    {19, 1, true},
                    {20, 1, false},
                    {21, 1, false}},
                   8.0f);
        EXPECT_EQ(a->fallback, 1);
    }
}

// Zero field from column 10 on: the step of 8 from x = 5 meets it at a stage,
// Euler steps take the line to x = 10, which reports 2; unlike the fixed-step
// schemes, the calls after that report 1.
TEST(AdaptiveLineEnd, CriticalPointInEulerModeThenStatus1) {
    Grid grid(30, 16, [](int i, int) { return i < 10 ? Vec2f{1.0f, 0.0f} : Vec2f{0.0f, 0.0f}; });
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        SCOPED_TRACE(scheme);
        auto it = velktest::makeScheme(scheme, 1);
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({1.0f, 8.0f}, {1.0f, 0.0f});
        skipCalls(*it, 4);
        expectLine(*it, 5,
                   {{6, 0, true},
                    {7, 0, true},
                    {8, 0, true},
                    {9, 0, true},
                    {10, 2, true},
                    {11, 1, false},
                    {12, 1, false}},
                   8.0f);
        EXPECT_EQ(it->magnitude, 0.0f);
        EXPECT_EQ(it->status, 2);
    }
}

// Tolerance 0 rejects every trial: 4, 2, 1, 0.5 and, since the minimum is
// tested before halving, 0.25; the rejection of that one ends the line. The
// last trial's end point stays in pos, and the line ends along deriv as the
// trial left it: the end-point slope (1, 0) for RK43 and RKDP, which evaluate
// it in every trial, the initial (0, 1) for RKCK, which evaluates it only
// after acceptance. A trial's end point is y + h * (sum of weights) with the
// weight w1 on k1 = (0, 1) and 1 - w1 on the other stages, which are (1, 0).
TEST(AdaptiveLineEnd, RejectionBelowMinStepEndsTheLine) {
    Grid grid(40, 40, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    struct Case {
        const char* scheme;
        double w1;
        Vec2f slope;
    } cases[] = {{"rk43", 1.0 / 6.0, {1.0f, 0.0f}},
                 {"rkck", 37.0 / 378.0, {0.0f, 1.0f}},
                 {"rkdp", 35.0 / 384.0, {1.0f, 0.0f}}};
    velktest::AdaptiveSettings settings;
    settings.tolerance = 0.0f;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.scheme);
        auto it = velktest::makeScheme(c.scheme, 1, settings);
        AdaptiveIntegrator* a = velktest::asAdaptive(it.get());
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({20.0f, 20.0f}, {0.0f, 1.0f});
        for (int call = 1; call <= 3; call++) {
            float magnitude = -1.0f;
            int status = -1;
            const Vec2f& p = it->next(magnitude, status);
            EXPECT_EQ(status, 1);
            EXPECT_EQ(magnitude, -1.0f);
            EXPECT_EQ(p.x, 20.0f + call * c.slope.x);
            EXPECT_EQ(p.y, 20.0f + call * c.slope.y);
        }
        EXPECT_EQ(a->stepTry, 0.25f);
        EXPECT_NEAR(a->pos.x, 20.0 + 0.25 * (1.0 - c.w1), 1e-5);
        EXPECT_NEAR(a->pos.y, 20.0 + 0.25 * c.w1, 1e-5);
        EXPECT_EQ(a->fallback, 0);
    }
}

// RK43 from (2, 2) with a slope (0, 1) that disagrees with the field (1, 0):
// with h = 6 the stages sit at (2, 5), (5, 2), (8, 2) and the end point at
// about (7, 3). A bad node decides which evaluation fails and therefore the
// slope the first Euler step takes: a failed stage leaves deriv alone, a NaN
// end point zeroes it (and the trial end point is left in pos).
TEST(AdaptiveLineEnd, EulerFallbackStartsAlongTheSlopeTheFailedStepLeft) {
    struct Case {
        int i, j;
        Vec2f node;
        Vec2f firstPoint;
        Vec2f pos;
    } cases[] = {{7, 3, {kNaN, 0.0f}, {2.0f, 2.0f}, {7.0f, 3.0f}},
                 {8, 2, {kNaN, 0.0f}, {2.0f, 3.0f}, {2.0f, 2.0f}},
                 {8, 2, {0.0f, 0.0f}, {2.0f, 3.0f}, {2.0f, 2.0f}}};
    velktest::AdaptiveSettings settings;
    settings.tolerance = 1e9f;
    settings.initialStep = 6.0f;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "node (" << c.i << ", " << c.j << ") " << c.node.x);
        Grid grid(16, 16, [](int, int) { return Vec2f{1.0f, 0.0f}; });
        grid.at(c.i, c.j) = c.node;
        auto it = velktest::makeScheme("rk43", 1, settings);
        AdaptiveIntegrator* a = velktest::asAdaptive(it.get());
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({2.0f, 2.0f}, {0.0f, 1.0f});
        int status = -1;
        const Vec2f& p = it->next(status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(a->fallback, 1);
        EXPECT_EQ(p.x, c.firstPoint.x);
        EXPECT_EQ(p.y, c.firstPoint.y);
        EXPECT_NEAR(a->pos.x, c.pos.x, 1e-5f);
        EXPECT_NEAR(a->pos.y, c.pos.y, 1e-5f);
        it->next(status);  // Euler from here on, along the field
        EXPECT_EQ(p.x, c.firstPoint.x + 1.0f);
        EXPECT_EQ(p.y, c.firstPoint.y);
    }
}
