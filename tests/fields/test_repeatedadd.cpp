#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include <velk/velk.h>
#include "repeatedadd.h"

namespace {

float stepByStep(float x, float d, long long k) {
    volatile float v = x;  // one rounding per addition, as in the scan loop
    for (long long i = 0; i < k; i++) v = v + d;
    return v;
}

std::uint32_t bitsOf(float v) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

void expectSameAsStepByStep(float x, float d, long long k) {
    float expected = stepByStep(x, d, k);
    float got = velk::addRepeatedly(x, d, k);
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(got)) << "x=" << x << " d=" << d << " k=" << k;
    } else {
        EXPECT_EQ(bitsOf(expected), bitsOf(got))
            << std::hexfloat << "x=" << x << " d=" << d << " k=" << k << " expected " << expected
            << " got " << got;
    }
}

TEST(RepeatedAdd, MatchesStepByStepOnAwkwardCases) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float tiny = std::numeric_limits<float>::denorm_min();
    struct Case {
        float x, d;
        long long k;
    } cases[] = {
        {0.0f, 0.1f, 1000000},        // grows through many binades
        {16777216.0f, 1.0f, 100000},  // d is half a unit: ties to even, absorbed
        {16777218.0f, 1.0f, 100000},  // same, from an odd significand
        {16777216.0f, 3.0f, 100000},  // 1.5 units: ties alternate once, then settle
        {16777218.0f, 3.0f, 100000},
        {1e6f, -0.7f, 3000000},           // towards zero, across it and out again
        {-1e-38f, 3.0f * tiny, 5000000},  // through the subnormals
        {1e-45f, -tiny, 10},
        {3e38f, 1e37f, 100},  // overflows to infinity
        {1.0f, inf, 5},
        {inf, -inf, 5},
        {nan, 1.0f, 5},
        {-0.0f, 0.0f, 3},
        {-0.0f, -0.0f, 3},
        {5.0f, 1e-8f, 1000000},  // absorbed at once
        {-2.5f, 0.3333333f, 2000000},
        {123.456f, -1e-3f, 1000000},
        {1.0f, 1.0f, 0},
    };
    for (const Case& c : cases) expectSameAsStepByStep(c.x, c.d, c.k);
}

TEST(RepeatedAdd, MatchesStepByStepOnRandomSums) {
    std::mt19937 rng(20261122);
    for (int i = 0; i < 3000; i++) {
        int e = static_cast<int>(rng() % 200) - 100;
        float x = std::ldexp(static_cast<float>(static_cast<int>(rng() % 2000001) - 1000000), e);
        float d = std::ldexp(static_cast<float>(static_cast<int>(rng() % 20001) - 10000),
                             e - 3 - static_cast<int>(rng() % 24));
        if (rng() % 4 == 0) d = std::ldexp(static_cast<float>(rng() % 64) + 0.5f, e);  // ties
        expectSameAsStepByStep(x, d, static_cast<long long>(rng() % 20000));
    }
}

}  // namespace
