#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

// In a uniform field every trial step is accepted (all stages agree, the error
// estimate is 0), so the step sizes follow the doubling rule alone.
Grid uniformRow(int width) {
    return Grid(width, 16, [](int, int) { return Vec2f{1.0f, 0.0f}; });
}

}  // namespace

// initialStep 4, maxStep 15, stepSize 1: steps of 4, 8, 15, 15 are taken by
// calls 1, 5, 13 and 28; the calls between them only forward-difference.
TEST(AdaptiveSampling, StepsDoubleUpToMaxStepWithPointsAtUnitSpacing) {
    Grid grid = uniformRow(64);
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        for (int direction : {1, -1}) {
            SCOPED_TRACE(testing::Message() << scheme << " direction " << direction);
            auto it = velktest::makeScheme(scheme, direction);
            AdaptiveIntegrator* a = velktest::asAdaptive(it.get());
            grid.attach(*it);
            it->stepSize = 1.0f;
            const float x0 = direction > 0 ? 1.0f : 61.0f;
            it->init({x0, 8.0f}, {1.0f, 0.0f});
            for (int call = 1; call <= 42; call++) {
                int status = -1;
                const Vec2f& p = it->next(status);
                ASSERT_EQ(status, 0) << "call " << call;
                const float front = call <= 4 ? 4 : call <= 12 ? 12 : call <= 27 ? 27 : 42;
                const float start = call <= 4 ? 0 : call <= 12 ? 4 : call <= 27 ? 12 : 27;
                ASSERT_EQ(a->s, front) << "call " << call;
                ASSERT_EQ(a->s0, start) << "call " << call;
                EXPECT_NEAR(p.x, x0 + direction * call, 2e-5f) << "call " << call;
                EXPECT_EQ(p.y, 8.0f) << "call " << call;
                EXPECT_NEAR(a->pos.x, x0 + direction * front, 2e-5f);
            }
            EXPECT_EQ(a->stepTry, 15.0f);
            EXPECT_EQ(a->fallback, 0);
        }
    }
}

TEST(AdaptiveSampling, OneCallMayTakeSeveralStepsAndInterpolatesTheLast) {
    Grid grid = uniformRow(64);
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        SCOPED_TRACE(scheme);
        auto it = velktest::makeScheme(scheme, 1);
        AdaptiveIntegrator* a = velktest::asAdaptive(it.get());
        grid.attach(*it);
        it->stepSize = 10.0f;
        it->init({1.0f, 8.0f}, {1.0f, 0.0f});
        int status = -1;
        const Vec2f& p = it->next(status);  // steps 4 and 8 in one call
        EXPECT_EQ(status, 0);
        EXPECT_EQ(a->s0, 4.0f);
        EXPECT_EQ(a->s, 12.0f);
        EXPECT_NEAR(p.x, 11.0f, 1e-5f);
        it->next(status);  // t = 20: steps of 15 from 12 to 27
        EXPECT_EQ(a->s, 27.0f);
        EXPECT_NEAR(p.x, 21.0f, 1e-5f);
    }
}

// The magnitude overload interpolates the field length linearly over each
// step, from the length at its start (mag0) to the one at its end. The field
// length here is 1 + x / 20, linear along the line, so the interpolation is
// exact once mag0 is right; init's magnitude is mag0 of the first step.
TEST(AdaptiveSampling, MagnitudeIsInterpolatedLinearlyAlongEachStep) {
    Grid grid(64, 16, [](int i, int) { return Vec2f{1.0f + 0.05f * i, 0.0f}; });
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        for (float initMagnitude : {1.05f, 3.0f}) {
            SCOPED_TRACE(testing::Message() << scheme << " init magnitude " << initMagnitude);
            auto it = velktest::makeScheme(scheme, 1);
            grid.attach(*it);
            it->stepSize = 1.0f;
            it->init({1.0f, 8.0f}, {1.0f, 0.0f}, initMagnitude);
            for (int call = 1; call <= 30; call++) {
                float magnitude = -1.0f;
                int status = -1;
                const Vec2f& p = it->next(magnitude, status);
                ASSERT_EQ(status, 0);
                float want = 1.0f + 0.05f * p.x;
                // First step runs from x = 1 to x = 5: mag0 is init's value.
                if (call <= 4) want = initMagnitude + (1.25f - initMagnitude) * (call / 4.0f);
                EXPECT_NEAR(magnitude, want, 2e-6f) << "call " << call;
            }
        }
    }
}
