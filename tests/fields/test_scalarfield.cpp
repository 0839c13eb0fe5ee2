#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"
#include "gridsample.h"

namespace {

std::string bigEndian(float v) {
    unsigned char b[4];
    std::memcpy(b, &v, 4);
    return {static_cast<char>(b[3]), static_cast<char>(b[2]), static_cast<char>(b[1]),
            static_cast<char>(b[0])};
}

}  // namespace

TEST(ScalarField, ConstructionPatternsAndRange) {
    float values[4] = {1, 2, 3, 4};
    VelkScalarField onArray(2, 2, values), f(3, 3, nullptr), none;
    EXPECT_EQ(onArray.data, nullptr);  // neither adopted nor copied
    EXPECT_EQ(onArray.width * onArray.height, 4);

    f.createCircle();
    const std::vector<float> circle = {0.5f, 0.25f, 0.5f, 0.25f, 0, 0.25f, 0.5f, 0.25f, 0.5f};
    EXPECT_EQ(std::vector<float>(f.data, f.data + 9), circle);
    float lo = -1, hi = -1;
    f.getRange(lo, hi);
    EXPECT_EQ(std::make_pair(lo, hi), std::make_pair(0.0f, 0.5f));
    for (int k = 0; k < 9; k++) f.data[k] = -7.0f - k % 2;  // the first value counts too
    f.getRange(lo, hi);
    EXPECT_EQ(std::make_pair(lo, hi), std::make_pair(-8.0f, -7.0f));
    f.setSize(5, 5);  // leading values kept in memory order
    EXPECT_EQ(f.data[7], -8.0f);
    none.getRange(lo, hi);  // nothing to read
    EXPECT_EQ(std::make_pair(lo, hi), std::make_pair(0.0f, 0.0f));

    // On 5 x 5 with scale 2, node (0, 2) lies at X = -2, Y = 0: r = 2 and the
    // angle from +y is -pi/2, so the value is cos(a) - sin(a) / 2 with
    // a = 2 - 2 pi phase; (4, 2) mirrors it. The centre has r = 0, taken as
    // 1, and angle 0; straight below, sin(pi) = 0.
    f.createDipole(2, 0.25f);
    double a = 2 - 2 * M_PI * 0.25;
    EXPECT_NEAR(f.data[10], std::cos(a) - std::sin(a) / 2, 1e-6);
    EXPECT_NEAR(f.data[14], std::cos(a) - std::sin(a) / 2, 1e-6);
    EXPECT_EQ(f.data[12], 0.0f);
    EXPECT_NEAR(f.data[2], 0.0, 1e-6);
}

TEST(ScalarField, PseudoColorPerValueOrSampledOntoTheImage) {
    VelkScalarField f(3, 2, nullptr), ramp(5, 5, nullptr);
    const float values[6] = {0, 2, 4, -1, 5, NAN};
    std::memcpy(f.data, values, sizeof values);
    VelkColormap grey;
    grey.setMinMax(0, 4);
    VelkImage image, small(2, 2, 1);
    f.pseudoColor(grey, image, 1);
    // 2 maps to t = 0.5: halfway between entries 127 and 128, 127.5 truncated.
    const std::vector<int> want = {0, 127, 255, 0, 255, 0};
    ASSERT_EQ(image.width * image.height * image.nChannels, 18);
    for (int k = 0; k < 18; k++) EXPECT_EQ(image.data[k], want[k / 3]) << k;

    // v = i + 10 j, sampled at positions 0 and 3.999 onto a 2 x 2 image that
    // is not RGB (it becomes so, same size): byte 4 v, truncated.
    for (int k = 0; k < 25; k++) ramp.data[k] = static_cast<float>(k % 5 + 10 * (k / 5));
    grey.setMinMax(0, 255.0f / 4);
    ramp.pseudoColor(grey, small, 0);
    ASSERT_EQ(small.width * small.height * small.nChannels, 12);
    const int sampled[4] = {0, 15, 159, 175};  // 4 * (3.999 i + 39.99 j)
    for (int k = 0; k < 12; k++) EXPECT_NEAR(small.data[k], sampled[k / 3], 1) << k;
}

// A single column or row is its own neighbour, and a position beyond the
// grid takes its last node, rather than a read outside.
TEST(GridSample, StaysInsideThinGrids) {
    float column[3] = {1, 2, 3}, out;
    velk::sampleBilinear<1>(column, 1, 3, 0, 1.5f, &out);
    EXPECT_FLOAT_EQ(out, 2.5f);
    velk::sampleBilinear<1>(column, 3, 1, 7.0f, 0, &out);
    EXPECT_FLOAT_EQ(out, 3.0f);
}

// Binary is big-endian both ways and exact; ASCII keeps 6 digits.
TEST(ScalarFile, ExactBytesAndRoundTrips) {
    velktest::TempDir dir;
    VelkScalarField f(2, 2, nullptr), big(13, 7, nullptr), back;
    const float values[4] = {1, 0.5f, -2, 1e10f};
    std::memcpy(f.data, values, sizeof values);
    std::string ascii = dir.path("a.sca"), binary = dir.path("b.sca");
    ASSERT_EQ(f.write(ascii.c_str(), 1), 1);
    EXPECT_EQ(velktest::readFile(ascii), "VELK SCALAR ASCII\n2 2\n1\n0.5\n-2\n1e+10\n");
    ASSERT_EQ(f.write(binary.c_str(), 0), 1);
    EXPECT_EQ(velktest::readFile(binary), "VELK SCALAR BINARY\n2 2\n" + bigEndian(1) +
                                              bigEndian(0.5f) + bigEndian(-2) + bigEndian(1e10f));
    EXPECT_EQ(0, std::memcmp(f.data, values, sizeof values));  // swapped back

    big.createDipole(3, 0.3f);
    big.data[5] = -0.0f;
    big.data[6] = 1.0f / 3;
    big.data[7] = 3.0e38f;
    velktest::MessageCapture capture;
    ASSERT_EQ(big.write(binary.c_str(), 0), 1);
    ASSERT_EQ(back.read(binary.c_str()), 1) << capture.errorText();
    ASSERT_EQ(back.width * back.height, 13 * 7);
    EXPECT_EQ(0, std::memcmp(back.data, big.data, 13 * 7 * 4));  // sign of zero too
    ASSERT_EQ(big.write(ascii.c_str(), 1), 1);
    ASSERT_EQ(back.read(ascii.c_str()), 1) << capture.errorText();
    for (int k = 0; k < 13 * 7; k++)
        EXPECT_NEAR(back.data[k], big.data[k], 5e-6 * std::fabs(big.data[k])) << k;
}

TEST(ScalarUcd, RasterisesOneValuePerNode) {
    // s = 2x - y on the unit square, fitted onto 8 x 4: scale 4, x0 = -0.5,
    // so columns 2 .. 5 are covered and node (i, j) samples file position
    // ((i + 0.5) / 4 - 0.5, (j + 0.5) / 4).
    velktest::TempDir dir;
    velktest::writeFile(dir.path("s.inp"), "4 2\n\n0 0 0\n1 0 2\n1 1 1\n0 1 -1\n\n1 2 3\n1 3 4\n");
    VelkScalarField f;
    velktest::MessageCapture capture;
    ASSERT_EQ(f.readUCD(dir.path("s.inp").c_str(), 8, 4), 1) << capture.errorText();
    ASSERT_EQ(f.width * f.height, 32);
    for (int n = 0; n < 32; n++) {
        float x = (n % 8 + 0.5f) / 4 - 0.5f, y = (n / 8 + 0.5f) / 4;
        EXPECT_NEAR(f.data[n], n % 8 >= 2 && n % 8 <= 5 ? 2 * x - y : 0.0f, 1e-6f) << n;
    }
    // Column `width` from the scan converter, or any other outside position,
    // is dropped rather than written past the grid.
    float v = 42;
    for (auto xy :
         {std::make_pair(8, 0), std::make_pair(0, 4), std::make_pair(-1, 2), std::make_pair(7, 3)})
        VelkScalarField::pixelCallback(xy.first, xy.second, &v, &f);
    EXPECT_EQ(f.data[8], 0.0f);  // where (8, 0) would have landed
    EXPECT_EQ(f.data[31], 42.0f);
}
