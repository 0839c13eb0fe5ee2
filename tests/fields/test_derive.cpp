// Fields derived from scalar fields and images, resampling, magnitude and
// direction colours.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "velk/velk.h"

namespace {

const float kHalfPi = 1.57079632679489661923f;

std::vector<float> nodes(const VelkVectorField& f) {
    return std::vector<float>(f.data, f.data + 2 * f.width * f.height);
}

std::vector<int> bytesOf(const VelkImage& image) {
    return std::vector<int>(image.data, image.data + image.width * image.height * image.nChannels);
}

}  // namespace

TEST(DerivedField, GradientIsDoubledAtTheBordersAndTurned) {
    // Values i along x, then i * i: central differences 2 (not halved), the
    // one-sided ones at the borders doubled.
    VelkScalarField s(4, 2, nullptr);
    const float linear[] = {0, 1, 2, 3, 0, 1, 2, 3};
    std::copy(linear, linear + 8, s.data);
    VelkVectorField f;
    f.fromScalarField(s, kHalfPi);  // the gradient itself
    ASSERT_EQ(f.width, 4);
    ASSERT_EQ(f.height, 2);
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(f.data[2 * n], 2.0f) << n;
        EXPECT_EQ(f.data[2 * n + 1], 2.0f * std::cos(kHalfPi)) << n;
    }
    f.fromScalarField(s, 0.0f);  // along the iso-lines: (-gy, gx)
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(f.data[2 * n], 0.0f) << n;
        EXPECT_EQ(f.data[2 * n + 1], 2.0f) << n;
    }

    const float squares[] = {0, 1, 4, 9, 0, 1, 4, 9};
    std::copy(squares, squares + 8, s.data);
    f.fromScalarField(s, 0.0f);
    const float gx[] = {2, 4, 8, 10};  // 2 (1 - 0), 4 - 0, 9 - 1, 2 (9 - 4)
    for (int n = 0; n < 8; n++) EXPECT_EQ(f.data[2 * n + 1], gx[n % 4]) << n;

    // Along y on the transposed grid: angle 0 gives (-gy, gx).
    VelkScalarField t(2, 4, nullptr);
    const float columns[] = {0, 0, 1, 1, 4, 4, 9, 9};
    std::copy(columns, columns + 8, t.data);
    f.fromScalarField(t, 0.0f);
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(f.data[2 * n], -gx[n / 2]) << n;
        EXPECT_EQ(f.data[2 * n + 1], 0.0f) << n;
    }
}

TEST(DerivedField, FromImageDifferencesBytesAsIntegers) {
    VelkImage grey(4, 2, 1);
    const unsigned char bytes[] = {0, 10, 200, 255, 255, 200, 10, 0};
    std::copy(bytes, bytes + 8, grey.data);
    VelkVectorField f;
    f.fromImage(grey, kHalfPi);
    // gx: 2 * 10, 200, 245, 2 * 55; then -90, -245, -200, -20. gy: 2 * (row 1 - row 0).
    const int gx[] = {20, 200, 245, 110, -110, -245, -200, -20};
    const int gy[] = {510, 380, -380, -510, 510, 380, -380, -510};
    float s = std::sin(kHalfPi), c = std::cos(kHalfPi);
    for (int n = 0; n < 8; n++) {
        EXPECT_EQ(f.data[2 * n], s * static_cast<float>(gx[n]) - c * static_cast<float>(gy[n]));
        EXPECT_EQ(f.data[2 * n + 1], c * static_cast<float>(gx[n]) + s * static_cast<float>(gy[n]));
    }

    // A colour image gives the field of its grey version.
    VelkImage colour(3, 3, 3);
    for (int i = 0; i < 27; i++) colour.data[i] = static_cast<unsigned char>(i * 37 % 256);
    VelkImage greyVersion;
    colour.colorToGrey(&greyVersion);
    VelkVectorField fromColour, fromGrey;
    fromColour.fromImage(colour, 0.3f);
    fromGrey.fromImage(greyVersion, 0.3f);
    EXPECT_EQ(nodes(fromColour), nodes(fromGrey));
    EXPECT_EQ(colour.nChannels, 3);

    // The grey bytes are one block, rows `width` apart, whatever the stride.
    unsigned char padded[8] = {1, 2, 3, 99, 4, 5, 6, 99};
    VelkImage borrowed(3, 2, 4, padded);
    VelkImage block(3, 2, 1);
    const unsigned char firstSix[] = {1, 2, 3, 99, 4, 5};
    std::copy(firstSix, firstSix + 6, block.data);
    VelkVectorField a, b;
    a.fromImage(borrowed, 0.0f);
    b.fromImage(block, 0.0f);
    EXPECT_EQ(nodes(a), nodes(b));
}

TEST(DerivedField, ResampleSamplesCellCentres) {
    // Node (i, j) holds (i, j), so a bilinear sample returns its position.
    VelkVectorField f(5, 5, nullptr);
    for (int j = 0; j < 5; j++) {
        for (int i = 0; i < 5; i++) {
            f.data[2 * (j * 5 + i)] = static_cast<float>(i);
            f.data[2 * (j * 5 + i) + 1] = static_cast<float>(j);
        }
    }
    VelkVectorField dst;
    f.resample(2, 2, &dst);
    EXPECT_EQ(nodes(dst), (std::vector<float>{1, 1, 3, 1, 1, 3, 3, 3}));

    // Steps 4/3 and 4/2; positions by repeated addition from half a step.
    f.resample(3, 2, &dst);
    float dx = 4.0f / 3.0f;
    float x[3] = {dx * 0.5f, dx * 0.5f + dx, dx * 0.5f + dx + dx};
    for (int j = 0; j < 2; j++) {
        for (int i = 0; i < 3; i++) {
            EXPECT_FLOAT_EQ(dst.data[2 * (j * 3 + i)], x[i]);
            EXPECT_EQ(dst.data[2 * (j * 3 + i) + 1], 1.0f + 2.0f * j);
        }
    }
    EXPECT_EQ(f.width, 5);

    // Without a destination the field takes the new grid; a borrowed buffer
    // is left alone.
    float buffer[8] = {0, 0, 2, 2, 4, 4, 6, 6};
    VelkVectorField borrowed(2, 2, buffer);
    borrowed.resample(4, 1, nullptr);
    EXPECT_EQ(borrowed.width, 4);
    EXPECT_EQ(borrowed.height, 1);
    EXPECT_EQ(borrowed.data, borrowed.ownedData);
    // Row position 0.5, columns 0.125 + 0.25 k: 2 fx + 4 fy.
    EXPECT_EQ(nodes(borrowed),
              (std::vector<float>{2.25f, 2.25f, 2.75f, 2.75f, 3.25f, 3.25f, 3.75f, 3.75f}));
    EXPECT_EQ(buffer[2], 2.0f);
    f.resample(2, 2, nullptr);
    EXPECT_EQ(nodes(f), (std::vector<float>{1, 1, 3, 1, 1, 3, 3, 3}));
    f.resample(3, 3, &f);  // the field itself as destination
    EXPECT_EQ(f.width, 3);
}

TEST(DerivedField, Magnitude) {
    VelkVectorField f(3, 2, nullptr);
    for (int n = 0; n < 6; n++) {
        f.data[2 * n] = 3;
        f.data[2 * n + 1] = 4;
    }
    VelkScalarField out;
    f.magnitude(out, 1);
    ASSERT_EQ(out.width, 3);
    ASSERT_EQ(out.height, 2);
    for (int n = 0; n < 6; n++) EXPECT_EQ(out.data[n], 5.0f);

    // Onto the output's own 2 x 2 grid: positions 0 and 3.999 of a 5 x 5 field
    // whose node (i, j) holds (i, 0).
    VelkVectorField ramp(5, 5, nullptr);
    for (int n = 0; n < 25; n++) {
        ramp.data[2 * n] = static_cast<float>(n % 5);
        ramp.data[2 * n + 1] = 0;
    }
    VelkScalarField small(2, 2, nullptr);
    ramp.magnitude(small, 0);
    EXPECT_EQ(small.width, 2);
    EXPECT_EQ(small.data[0], 0.0f);
    EXPECT_FLOAT_EQ(small.data[1], 3.999f);
    EXPECT_EQ(small.data[2], 0.0f);
    EXPECT_FLOAT_EQ(small.data[3], 3.999f);
}

TEST(DerivedField, DirectionsAsHues) {
    // Hues 0.5 (cyan), 0.25, 0 (red), 0.75, and 1.0 for (-1, +0), which
    // HSL_to_RGB does not write: that pixel repeats the one before it.
    float vectors[] = {1, 0, 0, -1, -1, -0.0f, 0, 1, -1, 0};
    VelkVectorField f(5, 1, vectors);
    VelkImage image;
    f.vecToColor(image, 1);
    ASSERT_EQ(image.nChannels, 3);
    EXPECT_EQ(bytesOf(image),
              (std::vector<int>{0, 255, 255, 127, 255, 0, 255, 0, 0, 127, 0, 255, 127, 0, 255}));

    // Onto the image's own size: 3 bytes per pixel from each row's start.
    float right[] = {1, 0, 1, 0, 1, 0, 1, 0};
    VelkVectorField flow(2, 2, right);
    VelkImage rgb(3, 2, 3);
    rgb.clear(9);
    flow.vecToColor(rgb, 0);
    EXPECT_EQ(rgb.width, 3);
    for (int i = 0; i < 18; i++) EXPECT_EQ(rgb.data[i], i % 3 == 0 ? 0 : 255) << i;

    // A grey image is written as if it had 3 channels, as far as its buffer goes.
    VelkImage grey(4, 2, 1);
    grey.clear(9);
    flow.vecToColor(grey, 0);
    EXPECT_EQ(grey.nChannels, 1);
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{0, 255, 255, 0, 0, 255, 255, 0}));
}
