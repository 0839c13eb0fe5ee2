#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

struct Point {
    float x;
    int status;
    float magnitude;
};

}  // namespace

// Lines along y = 5 from x0 with unit slope, through fields (f(i), 0):
// - uniform on 10 x 10: the call that reaches x = 9 leaves the domain
//   (9 > 8.999), later calls extrapolate straight on;
// - zero from column 5: x = 5 is a critical point, and the status stays 2;
// - uniform, threshold 2: steps after the first (whose slope init gave) are
//   halved;
// - length 1 + i / 2: Euler reports the length at the new point, Midpoint at
//   the end point, or at the midpoint when the end point failed its domain
//   test; after the end nothing new is evaluated.
TEST(FixedStepSequence, PointsStatusAndMagnitude) {
    const auto uniform = [](int) { return 1.0f; };
    const auto stop5 = [](int i) { return i < 5 ? 1.0f : 0.0f; };
    const auto ramp = [](int i) { return 1.0f + 0.5f * i; };
    std::vector<Point> forward;
    for (int x = 2; x <= 11; x++) forward.push_back({float(x), x < 9 ? 0 : 1, 1});
    const struct {
        const char* scheme;
        int direction;
        float (*f)(int);
        float x0, stepSize, normalization, initMagnitude;
        std::vector<Point> want;
    } cases[] = {
        {"euler", 1, uniform, 1, 1, 0, 1, forward},
        {"midpoint", 1, uniform, 1, 1, 0, 1, forward},
        {"euler", -1, uniform, 1, 1, 0, 1, {{0, 0, 1}, {-1, 1, 1}, {-2, 1, 1}}},
        {"midpoint", -1, uniform, 1, 1, 0, 1, {{0, 0, 1}, {-1, 1, 1}, {-2, 1, 1}}},
        {"euler", 1, stop5, 3, 1, 0, 1, {{4, 0, 1}, {5, 2, 0}, {6, 2, 0}, {7, 2, 0}}},
        {"midpoint", 1, stop5, 3, 1, 0, 1, {{4, 0, 1}, {5, 2, 0}, {6, 2, 0}, {7, 2, 0}}},
        {"euler", 1, uniform, 1, 2, 2, 1, {{3, 0, 1}, {4, 0, 1}, {5, 0, 1}, {6, 0, 1}}},
        {"euler", 1, ramp, 6, 1, 0, 4, {{7, 0, 4.5f}, {8, 0, 5}, {9, 1, 5}, {10, 1, 5}}},
        {"midpoint", 1, ramp, 6, 1, 0, 4, {{7, 0, 4.5f}, {8, 0, 5}, {9, 1, 5.25f}, {10, 1, 5.25f}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.scheme << " direction " << c.direction << " from "
                                        << c.x0 << " step " << c.stepSize);
        Grid grid(10, 10, [&](int i, int) { return Vec2f{c.f(i), 0.0f}; });
        auto it = velktest::makeScheme(c.scheme, c.direction);
        it->normalization = c.normalization;
        grid.attach(*it);
        it->stepSize = c.stepSize;
        it->init({c.x0, 5.0f}, {1.0f, 0.0f}, c.initMagnitude);
        float x = c.x0;
        for (const Point& want : c.want) {
            float magnitude = -1.0f;
            int status = -1;
            const Vec2f& p = it->next(magnitude, status);
            ASSERT_EQ(p.x, want.x) << "after " << x;
            EXPECT_EQ(p.y, 5.0f) << "at " << p.x;
            EXPECT_EQ(status, want.status) << "at " << p.x;
            EXPECT_EQ(magnitude, want.magnitude) << "at " << p.x;
            x = p.x;
        }
    }
}

// Field (1 + x / 20, 0): the direction is uniform, so every trial step is
// accepted (all stages agree, the error estimate is 0) and the step sizes
// follow the doubling rule alone: 4, 8, 15, 15 from initialStep 4 up to
// maxStep 15, which puts the step ends at 4, 12, 27, 42 and 57. At spacing 1
// the calls 1, 5, 13 and 28 take a step and the calls between them only
// forward-difference; at spacing 10 one call may take several steps and
// interpolates the last. The magnitude is interpolated linearly over each step
// from the length at its start (init's value for the first step) to the one at
// its end; the field length is linear along the line, so that is exact.
TEST(AdaptiveSampling, StepsDoubleUpToMaxStepWithPointsAtTheSpacing) {
    Grid grid(64, 16, [](int i, int) { return Vec2f{1.0f + 0.05f * i, 0.0f}; });
    const float ends[] = {0, 4, 12, 27, 42, 57};
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        for (int direction : {1, -1}) {
            for (float spacing : {1.0f, 10.0f}) {
                SCOPED_TRACE(testing::Message()
                             << scheme << " direction " << direction << " spacing " << spacing);
                auto it = velktest::makeScheme(scheme, direction);
                AdaptiveIntegrator* a = velktest::adaptive(it);
                grid.attach(*it);
                it->stepSize = spacing;
                const float x0 = direction > 0 ? 1.0f : 61.0f, initMagnitude = 3.0f;
                const float firstEnd = 1.0f + 0.05f * (x0 + 4.0f * direction);
                it->init({x0, 8.0f}, {1.0f, 0.0f}, initMagnitude);
                for (int call = 1; call * spacing <= 50; call++) {
                    float magnitude = -1.0f;
                    int status = -1;
                    const Vec2f& p = it->next(magnitude, status);
                    const float t = call * spacing;
                    int k = 1;
                    while (ends[k] < t) k++;
                    ASSERT_EQ(status, 0) << "call " << call;
                    ASSERT_EQ(a->s0, ends[k - 1]) << "call " << call;
                    ASSERT_EQ(a->s, ends[k]) << "call " << call;
                    EXPECT_NEAR(a->pos.x, x0 + direction * ends[k], 2e-5f) << "call " << call;
                    EXPECT_NEAR(p.x, x0 + direction * t, 2e-5f) << "call " << call;
                    EXPECT_EQ(p.y, 8.0f) << "call " << call;
                    const float want = t <= 4 ? initMagnitude + (firstEnd - initMagnitude) * (t / 4)
                                              : 1.0f + 0.05f * p.x;
                    EXPECT_NEAR(magnitude, want, 4e-6f) << "call " << call;
                }
                EXPECT_EQ(a->stepTry, 15.0f);
                EXPECT_EQ(a->fallback, 0);
            }
        }
    }
}

// Uniform field (1, 0) from x = 1 at unit spacing; the line ends at x = end.
// On a 20-wide grid the step of 15 that call 13 needs has stage points beyond
// xMax = 18.999: the step is not shrunk, the line goes on with Euler steps from
// the last returned point (x = 13) and ends at x = 19 with status 1. With the
// field zero from column 10 on, the step of 8 that call 5 takes meets it at a
// stage, and Euler steps take the line to x = 10, which reports 2; unlike the
// fixed-step schemes, the calls after that report 1. Once the line has ended
// the magnitude argument is no longer written.
TEST(AdaptiveLineEnd, FailedStepGoesOnWithEulerStepsToTheEnd) {
    const struct {
        int width, zeroFrom, firstEulerCall;
        float end;
        int endStatus;
    } cases[] = {{20, 20, 13, 19, 1}, {30, 10, 5, 10, 2}};
    for (const auto& c : cases) {
        Grid grid(c.width, 16, [&](int i, int) {
            return Vec2f{i < c.zeroFrom ? 1.0f : 0.0f, 0.0f};
        });
        for (const char* scheme : velktest::kAdaptiveSchemes) {
            SCOPED_TRACE(testing::Message() << scheme << " ending at " << c.end);
            auto it = velktest::makeScheme(scheme, 1);
            AdaptiveIntegrator* a = velktest::adaptive(it);
            grid.attach(*it);
            it->stepSize = 1.0f;
            it->init({1.0f, 8.0f}, {1.0f, 0.0f});
            for (int call = 1; call <= c.end + 2; call++) {
                float magnitude = -1.0f;
                int status = -1;
                const Vec2f& p = it->next(magnitude, status);
                const float x = 1.0f + call;
                EXPECT_NEAR(p.x, x, 2e-5f) << "call " << call;
                EXPECT_NEAR(p.y, 8.0f, 2e-5f) << "call " << call;
                EXPECT_EQ(status, x < c.end ? 0 : x == c.end ? c.endStatus : 1) << "call " << call;
                EXPECT_EQ(magnitude != -1.0f, x <= c.end) << "call " << call;
                EXPECT_EQ(a->fallback, call >= c.firstEulerCall ? 1 : 0) << "call " << call;
            }
            EXPECT_EQ(it->status, c.endStatus);
        }
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
    const struct {
        const char* scheme;
        double w1;
        float slopeX, slopeY;
    } cases[] = {
        {"rk43", 1.0 / 6.0, 1, 0}, {"rkck", 37.0 / 378.0, 0, 1}, {"rkdp", 35.0 / 384.0, 1, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.scheme);
        auto it = velktest::makeScheme(c.scheme, 1, 0.0f);
        AdaptiveIntegrator* a = velktest::adaptive(it);
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({20.0f, 20.0f}, {0.0f, 1.0f});
        for (int call = 1; call <= 3; call++) {
            float magnitude = -1.0f;
            int status = -1;
            const Vec2f& p = it->next(magnitude, status);
            EXPECT_EQ(status, 1);
            EXPECT_EQ(magnitude, -1.0f);
            EXPECT_EQ(p.x, 20.0f + call * c.slopeX);
            EXPECT_EQ(p.y, 20.0f + call * c.slopeY);
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
    const float kNaN = std::numeric_limits<float>::quiet_NaN();
    const struct {
        int i, j;
        float node, firstX, firstY, posX, posY;
    } cases[] = {{7, 3, kNaN, 2, 2, 7, 3}, {8, 2, kNaN, 2, 3, 2, 2}, {8, 2, 0, 2, 3, 2, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "node (" << c.i << ", " << c.j << ") " << c.node);
        Grid grid(16, 16, [&](int i, int j) {
            return i == c.i && j == c.j ? Vec2f{c.node, 0.0f} : Vec2f{1.0f, 0.0f};
        });
        RK43 it(1e9f, 6.0f, 0.5f, 15.0f, 1);
        grid.attach(it);
        it.stepSize = 1.0f;
        it.init({2.0f, 2.0f}, {0.0f, 1.0f});
        int status = -1;
        const Vec2f& p = it.next(status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(it.fallback, 1);
        EXPECT_EQ(p.x, c.firstX);
        EXPECT_EQ(p.y, c.firstY);
        EXPECT_NEAR(it.pos.x, c.posX, 1e-5f);
        EXPECT_NEAR(it.pos.y, c.posY, 1e-5f);
        it.next(status);  // Euler from here on, along the field
        EXPECT_EQ(p.x, c.firstX + 1.0f);
        EXPECT_EQ(p.y, c.firstY);
    }
}
