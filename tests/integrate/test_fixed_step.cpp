#include <gtest/gtest.h>

#include <vector>

#include "IntegrateSupport.h"

using velktest::Grid;

namespace {

struct Point {
    float x, y;
    int status;
};

void expectSequence(VelkIntegrator& it, const std::vector<Point>& want) {
    for (std::size_t k = 0; k < want.size(); k++) {
        int status = -1;
        const Vec2f& p = it.next(status);
        EXPECT_EQ(p.x, want[k].x) << "call " << k + 1;
        EXPECT_EQ(p.y, want[k].y) << "call " << k + 1;
        EXPECT_EQ(status, want[k].status) << "call " << k + 1;
    }
}

}  // namespace

// Uniform field (1, 0) on 10 x 10 from (1, 5), unit steps: the call that reaches
// x = 9 leaves the domain (9 > 8.999) and later calls extrapolate straight on.
TEST(FixedStepSequence, UniformFieldBothDirectionsUpToTheBorder) {
    Grid grid(10, 10, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    std::vector<Point> forward;
    for (int x = 2; x <= 8; x++) forward.push_back({float(x), 5.0f, 0});
    for (int x = 9; x <= 11; x++) forward.push_back({float(x), 5.0f, 1});
    const std::vector<Point> backward = {{0.0f, 5.0f, 0}, {-1.0f, 5.0f, 1}, {-2.0f, 5.0f, 1}};
    for (const char* scheme : {"euler", "midpoint"}) {
        for (int direction : {1, -1}) {
            SCOPED_TRACE(testing::Message() << scheme << " direction " << direction);
            auto it = velktest::makeScheme(scheme, direction);
            grid.attach(*it);
            it->stepSize = 1.0f;
            it->init({1.0f, 5.0f}, {1.0f, 0.0f});
            expectSequence(*it, direction > 0 ? forward : backward);
        }
    }
}

// Zero field from column 5 on: the point x = 5 is a critical point, and the
// fixed-step schemes keep reporting 2 (not 1) while extrapolating.
TEST(FixedStepSequence, CriticalPointStatusPersists) {
    Grid grid(12, 10, [](int i, int) { return i < 5 ? Vec2f{1.0f, 0.0f} : Vec2f{0.0f, 0.0f}; });
    const std::vector<Point> want = {{2, 5, 0}, {3, 5, 0}, {4, 5, 0}, {5, 5, 2},
                                     {6, 5, 2}, {7, 5, 2}, {8, 5, 2}};
    for (const char* scheme : {"euler", "midpoint"}) {
        SCOPED_TRACE(scheme);
        auto it = velktest::makeScheme(scheme, 1);
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({1.0f, 5.0f}, {1.0f, 0.0f});
        expectSequence(*it, want);
        EXPECT_EQ(it->magnitude, 0.0f);
    }
}

TEST(FixedStepSequence, NormalizationSlowsStepsBelowTheThreshold) {
    // Field length 1, threshold 2: slopes have length 0.5 except the one init gave.
    Grid grid(20, 10, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    Euler e;
    e.normalization = 2.0f;
    grid.attach(e);
    e.stepSize = 2.0f;
    e.init({1.0f, 5.0f}, {1.0f, 0.0f});
    expectSequence(e, {{3, 5, 0}, {4, 5, 0}, {5, 5, 0}, {6, 5, 0}});
}

// Magnitude overload: field length 1 + x / 2 along y = 5. Euler reports the
// length at the new point; Midpoint at the end point, or at the midpoint when
// the end point failed its domain test; after the end nothing new is evaluated.
TEST(FixedStepMagnitude, ReportsTheLastEvaluationInsideTheDomain) {
    Grid grid(10, 10, [](int i, int) { return Vec2f{1.0f + 0.5f * i, 0.0f}; });
    struct Case {
        const char* scheme;
        std::vector<float> magnitudes;
    } cases[] = {{"euler", {4.5f, 5.0f, 5.0f, 5.0f}}, {"midpoint", {4.5f, 5.0f, 5.25f, 5.25f}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.scheme);
        auto it = velktest::makeScheme(c.scheme, 1);
        grid.attach(*it);
        it->stepSize = 1.0f;
        it->init({6.0f, 5.0f}, {1.0f, 0.0f}, 4.0f);
        for (std::size_t k = 0; k < c.magnitudes.size(); k++) {
            float magnitude = -1.0f;
            int status = -1;
            const Vec2f& p = it->next(magnitude, status);
            EXPECT_EQ(p.x, 7.0f + k);
            EXPECT_EQ(magnitude, c.magnitudes[k]) << "call " << k + 1;
            EXPECT_EQ(status, k < 2 ? 0 : 1) << "call " << k + 1;
        }
    }
}
