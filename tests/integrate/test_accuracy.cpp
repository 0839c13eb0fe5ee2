#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>

#include "IntegrateSupport.h"
#include "TestSupport.h"

using velktest::Grid;

namespace {

const double kPi = 3.14159265358979323846;

}  // namespace

// setCircle(0) on 65 x 65 is the rotation about node (32, 32), and bilinear
// interpolation reproduces a linear field exactly, so the streamline through
// (52, 32) is the circle of radius R = 20. N points at spacing 2 pi R / N go
// once round. Expected error of each scheme after one turn, h the spacing:
// - Euler moves along the tangent: the radius grows by h^2 / 2r per step,
//   pi h per turn, and the angle lags by about pi^2 h of arc, together
//   pi h sqrt(1 + pi^2) = 10.4 h; bound 11 h, and the radius must have grown
//   by pi h within 10 percent (first-order drift outward).
// - Midpoint: the radius is kept to O(h^4) per step and the angle runs ahead
//   by h^3 / 24 r^3 per step, pi h^2 / 12 R of arc per turn; bound twice that
//   plus 5e-4 for float rounding over N steps at coordinates near 50.
// - Adaptive schemes: each accepted step's estimated error is below the
//   tolerance 0.001, and between step ends the cubic Hermite curve deviates
//   from the circle by at most D^4 / 384 R^3 for a step of length D; bound the
//   number of steps taken times the tolerance plus that for the longest step,
//   plus the same 5e-4. This bound holds at every returned point, so it is
//   checked on the distance from the circle too.
TEST(NumericalAccuracy, CircleTracedOnceRoundReturnsToItsStart) {
    VelkVectorField field(65, 65, nullptr);
    field.setCircle(0.0f);
    const double radius = 20.0;
    const int n = 400;
    const float h = static_cast<float>(2.0 * kPi * radius / n);
    for (const char* scheme : velktest::kAllSchemes) {
        for (int direction : {1, -1}) {
            SCOPED_TRACE(testing::Message() << scheme << " direction " << direction);
            auto it = velktest::makeScheme(scheme, direction);
            AdaptiveIntegrator* a = velktest::adaptive(it);
            it->setField(65, 65, reinterpret_cast<Vec2f*>(field.data));
            it->stepSize = h;
            const Vec2f start = {static_cast<float>(32.0 + radius), 32.0f};
            it->init(start, {0.0f, 1.0f});
            Vec2f p = start;
            double offCircle = 0.0, longest = 0.0;
            int steps = 0;
            float front = 0.0f;
            for (int k = 0; k < n; k++) {
                int status = -1;
                p = it->next(status);
                ASSERT_EQ(status, 0) << "point " << k + 1;
                const double r = std::hypot(p.x - 32.0, p.y - 32.0);
                offCircle = std::max(offCircle, std::fabs(r - radius));
                if (a && a->s != front) {
                    steps++;
                    front = a->s;
                    longest = std::max(longest, static_cast<double>(a->s - a->s0));
                }
            }
            const double back = std::hypot(p.x - start.x, p.y - start.y);
            const double drift = std::hypot(p.x - 32.0, p.y - 32.0) - radius;
            const std::string name = scheme;
            if (name == "euler") {
                EXPECT_LT(back, 11.0 * h);
                EXPECT_NEAR(drift, kPi * h, 0.1 * kPi * h);
            } else if (name == "midpoint") {
                EXPECT_LT(back, 2.0 * kPi * h * h / (12.0 * radius) + 5e-4);
            } else {
                ASSERT_GT(steps, 0);
                const double bound =
                    steps * 0.001 + std::pow(longest, 4) / (384.0 * std::pow(radius, 3)) + 5e-4;
                EXPECT_LT(back, bound);
                EXPECT_LT(offCircle, bound);
            }
        }
    }
}

// Field (1, a (x - 120)) has the parabolas y = y0 + a ((x - 120)^2 - (x0 - 120)^2) / 2
// as streamlines; its curvature radius is at least 1 / a = 250 grid units, so
// the local error of even a 15-unit RK step is of order (15 / 250)^5 * 250 / 120,
// about 1e-9, and the adaptive step must grow to maxStep. While the line is
// traced adaptively every returned point must lie within the tolerance 0.001
// of the parabola, and consecutive points must be stepSize apart: the Hermite
// parameter follows arc length to O(theta^2) for a turn theta = 15 / 250 per
// step, a relative 2e-4 at most.
TEST(NumericalAccuracy, SmoothFieldStepsGrowToMaxStepAndStayOnTheStreamline) {
    const float slope = 0.004f, centre = 120.0f;
    Grid grid(241, 101, [&](int i, int) { return Vec2f{1.0f, slope * (i - centre)}; });
    const float x0 = 5.0f, y0 = 80.0f;
    const float sy = slope * (x0 - centre);
    const float len = std::sqrt(1.0f + sy * sy);
    auto parabola = [&](double x) {
        return y0 + slope / 2.0 * ((x - centre) * (x - centre) - (x0 - centre) * (x0 - centre));
    };
    for (const char* scheme : velktest::kAdaptiveSchemes) {
        SCOPED_TRACE(scheme);
        auto it = velktest::makeScheme(scheme, 1);
        AdaptiveIntegrator* a = velktest::adaptive(it);
        grid.attach(*it);
        it->stepSize = 0.7f;
        it->init({x0, y0}, {1.0f / len, sy / len});
        Vec2f prev = {x0, y0};
        double longest = 0.0, offLine = 0.0, spacing = 0.0;
        int points = 0, status = 0;
        while (points < 1000) {
            const Vec2f& p = it->next(status);
            if (status != 0 || a->fallback) break;
            points++;
            longest = std::max(longest, static_cast<double>(a->s - a->s0));
            offLine = std::max(offLine, std::fabs(p.y - parabola(p.x)));
            spacing = std::max(
                spacing, std::fabs(std::hypot(double(p.x) - prev.x, double(p.y) - prev.y) - 0.7));
            prev = p;
        }
        EXPECT_GT(prev.x, 230.0f);  // traced nearly to the right border
        EXPECT_EQ(longest, 15.0);
        EXPECT_EQ(a->stepTry, 15.0f);
        EXPECT_LT(offLine, 0.001);
        EXPECT_LT(spacing, 2e-4 * 0.7);
    }
}

// Each file holds 60 calls of next(magnitude, status) on a 33 x 33 setCircle(0.3)
// field with stepSize 0.7 after init((20, 12), (0, 1), 0.25), computed by an
// independent implementation; x, y and the magnitude are hex floats, compared
// bit for bit. The magnitude argument is preset to -1 before every call, which
// shows where it is left unwritten.
TEST(TraceReplay, PointStreamsMatchRecordedTracesBitForBit) {
    const struct {
        const char* scheme;
        int direction;
    } cases[] = {{"euler", -1}, {"midpoint", 1}, {"rk43", 1}, {"rkck", 1}, {"rkdp", -1}};
    VelkVectorField field(33, 33, nullptr);
    field.setCircle(0.3f);
    const auto hex = [](float v) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%a", static_cast<double>(v));
        return std::string(buf);
    };
    for (const auto& c : cases) {
        const std::string file =
            std::string("trace-") + c.scheme + (c.direction > 0 ? "-forward.txt" : "-backward.txt");
        SCOPED_TRACE(file);
        std::istringstream lines(velktest::readFile(velktest::dataPath("integrate/" + file)));
        auto it = velktest::makeScheme(c.scheme, c.direction);
        it->setField(33, 33, reinterpret_cast<Vec2f*>(field.data));
        it->stepSize = 0.7f;
        it->init({20.0f, 12.0f}, {0.0f, 1.0f}, 0.25f);
        int calls = 0;
        for (std::string line; std::getline(lines, line);) {
            if (line.empty() || line[0] == '#') continue;
            std::istringstream words(line);
            int call, status;
            std::string x, y, mag;
            ASSERT_TRUE(words >> call >> x >> y >> status >> mag) << line;
            ASSERT_EQ(call, ++calls);
            float magnitude = -1.0f;
            int gotStatus = -1;
            const Vec2f& p = it->next(magnitude, gotStatus);
            const auto exact = [&](const std::string& v) {
                return hex(std::strtof(v.c_str(), nullptr));
            };
            ASSERT_EQ(
                hex(p.x) + " " + hex(p.y) + " " + std::to_string(gotStatus) + " " + hex(magnitude),
                exact(x) + " " + exact(y) + " " + std::to_string(status) + " " + exact(mag))
                << "call " << call;
        }
        EXPECT_EQ(calls, 60);
    }
}
