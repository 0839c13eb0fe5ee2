#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "TestSupport.h"
#include "gridsample.h"
#include "velk/velk.h"

namespace {

float at(const VelkScalarField& f, int i, int j) {
    return f.data[j * f.width + i];
}

std::string bigEndian(float v) {
    unsigned char b[4];
    std::memcpy(b, &v, 4);
    return std::string{static_cast<char>(b[3]), static_cast<char>(b[2]), static_cast<char>(b[1]),
                       static_cast<char>(b[0])};
}

}  // namespace

TEST(ScalarField, ConstructionAndResizing) {
    VelkScalarField empty;
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(empty.ownedData, nullptr);
    EXPECT_EQ(empty.width, 0);

    float values[4] = {1, 2, 3, 4};
    VelkScalarField onArray(2, 2, values);  // neither adopted nor copied
    EXPECT_EQ(onArray.data, nullptr);
    EXPECT_EQ(onArray.ownedData, nullptr);
    EXPECT_EQ(onArray.width, 2);
    EXPECT_EQ(onArray.height, 2);

    VelkScalarField owned(3, 2, nullptr);
    ASSERT_NE(owned.data, nullptr);
    EXPECT_EQ(owned.data, owned.ownedData);
    for (int k = 0; k < 6; k++) owned.data[k] = static_cast<float>(k);
    owned.setSize(4, 4);  // leading values kept in memory order
    for (int k = 0; k < 6; k++) EXPECT_EQ(owned.data[k], k);
    owned.setSize(0, 7);
    EXPECT_EQ(owned.data, nullptr);
    EXPECT_EQ(owned.height, 7);
}

TEST(ScalarField, CircleDipoleAndRange) {
    VelkScalarField f(3, 3, nullptr);
    f.createCircle();
    const float circle[9] = {0.5f, 0.25f, 0.5f, 0.25f, 0, 0.25f, 0.5f, 0.25f, 0.5f};
    for (int k = 0; k < 9; k++) EXPECT_FLOAT_EQ(f.data[k], circle[k]) << k;
    float lo, hi;
    f.getRange(lo, hi);
    EXPECT_EQ(lo, 0.0f);
    EXPECT_EQ(hi, 0.5f);

    // On a 5 x 5 grid with scale 2 node (0, 2) lies at X = -2, Y = 0: r = 2 and
    // the angle from +y is -pi/2, so the value is cos(a) - sin(a) / 2 with
    // a = 2 - 2 pi phase. The centre node has r = 0, taken as 1, and angle 0.
    VelkScalarField d(5, 5, nullptr);
    d.createDipole(2, 0.25f);
    double a = 2 - 2 * M_PI * 0.25;
    EXPECT_NEAR(at(d, 0, 2), std::cos(a) - std::sin(a) / 2, 1e-6);
    EXPECT_NEAR(at(d, 4, 2), std::cos(a) - std::sin(a) / 2, 1e-6);  // sin^2 is symmetric
    EXPECT_EQ(at(d, 2, 2), 0.0f);
    EXPECT_NEAR(at(d, 2, 0), 0.0, 1e-6);  // straight below: sin(pi) = 0

    float seq[3] = {3, 1, 2};
    VelkScalarField r(3, 1, nullptr);
    std::memcpy(r.data, seq, sizeof seq);
    r.getRange(lo, hi);
    EXPECT_EQ(lo, 1.0f);
    EXPECT_EQ(hi, 3.0f);
    for (int k = 0; k < 3; k++) r.data[k] = -7;
    r.getRange(lo, hi);
    EXPECT_EQ(lo, -7.0f);
    EXPECT_EQ(hi, -7.0f);
    VelkScalarField none;
    none.getRange(lo, hi);  // nothing to read
    EXPECT_EQ(lo, 0.0f);
    EXPECT_EQ(hi, 0.0f);
}

TEST(ScalarField, PseudoColorOnePixelPerValue) {
    VelkScalarField f(3, 2, nullptr);
    const float values[6] = {0, 2, 4, -1, 5, NAN};
    std::memcpy(f.data, values, sizeof values);
    VelkColormap grey;
    grey.setMinMax(0, 4);
    VelkImage image;
    f.pseudoColor(grey, image, 1);
    ASSERT_EQ(image.width, 3);
    ASSERT_EQ(image.height, 2);
    ASSERT_EQ(image.nChannels, 3);
    // 2 maps to t = 0.5: halfway between entries 127 and 128, 127.5 truncated.
    const int want[6] = {0, 127, 255, 0, 255, 0};
    for (int k = 0; k < 6; k++) {
        for (int c = 0; c < 3; c++) EXPECT_EQ(image.data[3 * k + c], want[k]) << k;
    }
}

TEST(ScalarField, PseudoColorSamplesOntoTheImageSize) {
    // v = i + 10 j on 5 x 5; a 2 x 2 image samples positions 0 and 3.999.
    VelkScalarField f(5, 5, nullptr);
    for (int j = 0; j < 5; j++) {
        for (int i = 0; i < 5; i++) f.data[j * 5 + i] = static_cast<float>(i + 10 * j);
    }
    VelkColormap map;
    map.setMinMax(0, 255.0f / 4);  // byte = 4 v, truncated
    VelkImage image(2, 2, 1);      // not RGB: becomes 3 channels, same size
    f.pseudoColor(map, image, 0);
    ASSERT_EQ(image.nChannels, 3);
    ASSERT_EQ(image.width, 2);
    const int want[4] = {0, 15, 159, 175};  // 4 * (3.999 i + 39.99 j), truncated
    for (int k = 0; k < 4; k++) EXPECT_NEAR(image.data[3 * k], want[k], 1) << k;
    EXPECT_EQ(image.data[3 * 3 + 1], image.data[3 * 3]);
}

TEST(GridSample, ReproducesLinearFieldsUpToTheLastNode) {
    // 2-component nodes (x + 2y, 3 - x) on a 4 x 3 grid.
    float grid[4 * 3 * 2];
    for (int j = 0; j < 3; j++) {
        for (int i = 0; i < 4; i++) {
            grid[2 * (j * 4 + i)] = static_cast<float>(i + 2 * j);
            grid[2 * (j * 4 + i) + 1] = static_cast<float>(3 - i);
        }
    }
    const float positions[][2] = {{0, 0}, {0.5f, 0.25f}, {2.75f, 1.5f}, {3, 2}, {2.999f, 1.999f}};
    for (const auto& p : positions) {
        float out[2];
        velk::sampleBilinear<2>(grid, 4, 3, p[0], p[1], out);
        EXPECT_NEAR(out[0], p[0] + 2 * p[1], 1e-5f) << p[0] << "," << p[1];
        EXPECT_NEAR(out[1], 3 - p[0], 1e-5f) << p[0] << "," << p[1];
    }
    // A single column or row is its own neighbour rather than a read outside.
    float column[3] = {1, 2, 3};
    float out;
    velk::sampleBilinear<1>(column, 1, 3, 0, 1.5f, &out);
    EXPECT_FLOAT_EQ(out, 2.5f);
    velk::sampleBilinear<1>(column, 3, 1, 7.0f, 0, &out);
    EXPECT_TRUE(std::isfinite(out));
}

TEST(ScalarFile, ExactBytesAndRoundTrips) {
    velktest::TempDir dir;
    VelkScalarField f(2, 2, nullptr);
    const float values[4] = {1, 0.5f, -2, 1e10f};
    std::memcpy(f.data, values, sizeof values);

    std::string ascii = dir.path("a.sca");
    ASSERT_EQ(f.write(ascii.c_str(), 1), 1);
    EXPECT_EQ(velktest::readFile(ascii), "VELK SCALAR ASCII\n2 2\n1\n0.5\n-2\n1e+10\n");

    std::string binary = dir.path("b.sca");
    ASSERT_EQ(f.write(binary.c_str(), 0), 1);
    EXPECT_EQ(velktest::readFile(binary), "VELK SCALAR BINARY\n2 2\n" + bigEndian(1) +
                                              bigEndian(0.5f) + bigEndian(-2) + bigEndian(1e10f));
    EXPECT_EQ(0, std::memcmp(f.data, values, sizeof values));  // swapped back

    VelkScalarField big(13, 7, nullptr);
    big.createDipole(3, 0.3f);
    big.data[5] = -0.0f;
    big.data[6] = 1.0f / 3;
    big.data[7] = 3.0e38f;
    velktest::MessageCapture capture;
    ASSERT_EQ(big.write(binary.c_str(), 0), 1);
    VelkScalarField back;
    ASSERT_EQ(back.read(binary.c_str()), 1) << capture.errorText();
    ASSERT_EQ(back.width, 13);
    ASSERT_EQ(back.height, 7);
    EXPECT_EQ(0, std::memcmp(back.data, big.data, 13 * 7 * 4));  // exact, sign of zero too

    ASSERT_EQ(big.write(ascii.c_str(), 1), 1);
    ASSERT_EQ(back.read(ascii.c_str()), 1) << capture.errorText();
    for (int k = 0; k < 13 * 7; k++) {
        EXPECT_NEAR(back.data[k], big.data[k], 5e-6 * std::fabs(big.data[k])) << k;
    }
}

TEST(ScalarUcd, RasterisesOneValuePerNode) {
    velktest::TempDir dir;
    std::string path = dir.path("s.inp");
    // s = 2x - y on the unit square, fitted onto 8 x 4: scale 4, x0 = -0.5,
    // so columns 2 .. 5 are covered and node (i, j) samples file position
    // ((i + 0.5) / 4 - 0.5, (j + 0.5) / 4).
    velktest::writeFile(path, "4 2\n\n0 0 0\n1 0 2\n1 1 1\n0 1 -1\n\n1 2 3\n1 3 4\n");
    VelkScalarField f;
    velktest::MessageCapture capture;
    ASSERT_EQ(f.readUCD(path.c_str(), 8, 4), 1) << capture.errorText();
    ASSERT_EQ(f.width, 8);
    for (int j = 0; j < 4; j++) {
        for (int i = 0; i < 8; i++) {
            float x = (i + 0.5f) / 4 - 0.5f, y = (j + 0.5f) / 4;
            float want = i >= 2 && i <= 5 ? 2 * x - y : 0.0f;
            EXPECT_NEAR(at(f, i, j), want, 1e-6f) << i << "," << j;
        }
    }

    // Column `width` from the scan converter, or any other outside position,
    // is dropped rather than written past the grid.
    float v = 42;
    for (auto xy : {std::make_pair(8, 0), std::make_pair(0, 4), std::make_pair(-1, 2)}) {
        VelkScalarField::pixelCallback(xy.first, xy.second, &v, &f);
    }
    EXPECT_EQ(at(f, 0, 1), 0.0f);  // where (8, 0) would have landed
    VelkScalarField::pixelCallback(7, 3, &v, &f);
    EXPECT_EQ(at(f, 7, 3), 42.0f);
}
