// Fields derived from scalar fields and images, resampling, magnitude and
// direction colours.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include <velk/velk.h>

namespace {

const float kHalfPi = 1.57079632679489661923f;

std::vector<float> nodes(const VelkVectorField& f) {
    return std::vector<float>(f.data, f.data + 2 * f.width * f.height);
}

// A w x h field with node (i, j) = value(i, j).
template <typename F>
void fill(VelkVectorField& field, int w, int h, F value) {
    field.setSize(w, h);
    for (int n = 0; n < w * h; n++) {
        std::pair<float, float> v = value(n % w, n / w);
        field.data[2 * n] = v.first;
        field.data[2 * n + 1] = v.second;
    }
}

}  // namespace

// Differences are not halved; one-sided ones at the borders are doubled.
// Angle pi/2 gives the gradient itself, 0 gives (-gy, gx).
TEST(DerivedField, GradientIsDoubledAtTheBordersAndTurned) {
    VelkScalarField s(4, 2, nullptr), t(2, 4, nullptr);
    VelkVectorField f;
    for (int n = 0; n < 8; n++) s.data[n] = static_cast<float>(n % 4);
    f.fromScalarField(s, kHalfPi);
    ASSERT_EQ(f.width * f.height, 8);
    for (int n = 0; n < 8; n++) EXPECT_EQ(f.data[2 * n], 2.0f) << n;
    for (int n = 0; n < 8; n++) EXPECT_EQ(f.data[2 * n + 1], 2.0f * std::cos(kHalfPi)) << n;
    // Squares along x: 2 (1 - 0), 4 - 0, 9 - 1, 2 (9 - 4); the same along y
    // on the transposed grid.
    const float gx[] = {2, 4, 8, 10};
    for (int n = 0; n < 8; n++) s.data[n] = static_cast<float>((n % 4) * (n % 4));
    for (int n = 0; n < 8; n++) t.data[n] = static_cast<float>((n / 2) * (n / 2));
    f.fromScalarField(s, 0.0f);
    for (int n = 0; n < 8; n++)
        EXPECT_EQ(std::make_pair(f.data[2 * n], f.data[2 * n + 1]), std::make_pair(0.0f, gx[n % 4]))
            << n;
    f.fromScalarField(t, 0.0f);
    for (int n = 0; n < 8; n++)
        EXPECT_EQ(std::make_pair(f.data[2 * n], f.data[2 * n + 1]),
                  std::make_pair(-gx[n / 2], 0.0f))
            << n;
}

TEST(DerivedField, FromImageDifferencesBytesAsIntegers) {
    const unsigned char bytes[] = {0, 10, 200, 255, 255, 200, 10, 0};
    VelkImage grey(4, 2, 1);
    std::copy(bytes, bytes + 8, grey.data);
    VelkVectorField f, a, b;
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
    VelkImage colour(3, 3, 3), greyVersion;
    for (int i = 0; i < 27; i++) colour.data[i] = static_cast<unsigned char>(i * 37 % 256);
    colour.colorToGrey(&greyVersion);
    a.fromImage(colour, 0.3f);
    b.fromImage(greyVersion, 0.3f);
    EXPECT_EQ(nodes(a), nodes(b));
    EXPECT_EQ(colour.nChannels, 3);
    // The grey bytes are one block, rows `width` apart, whatever the stride.
    unsigned char padded[8] = {1, 2, 3, 99, 4, 5, 6, 99};
    VelkImage block(3, 2, 1);
    std::copy(padded, padded + 6, block.data);
    a.fromImage(VelkImage(3, 2, 4, padded), 0.0f);
    b.fromImage(block, 0.0f);
    EXPECT_EQ(nodes(a), nodes(b));
}

TEST(DerivedField, ResampleSamplesCellCentres) {
    // Node (i, j) holds (i, j), so a bilinear sample returns its position:
    // steps (5 - 1) / 2 and 4 / 3 from half a step, by repeated addition.
    VelkVectorField f, dst, borrowed;
    fill(f, 5, 5, [](int i, int j) { return std::make_pair(float(i), float(j)); });
    f.resample(2, 2, &dst);
    EXPECT_EQ(nodes(dst), (std::vector<float>{1, 1, 3, 1, 1, 3, 3, 3}));
    f.resample(3, 2, &dst);
    float dx = 4.0f / 3.0f, x[3] = {dx * 0.5f, dx * 0.5f + dx, dx * 0.5f + dx + dx};
    for (int n = 0; n < 6; n++) {
        EXPECT_FLOAT_EQ(dst.data[2 * n], x[n % 3]);
        EXPECT_EQ(dst.data[2 * n + 1], 1.0f + 2.0f * (n / 3));
    }
    EXPECT_EQ(f.width, 5);
    // Without a destination the field takes the new grid; a borrowed buffer
    // is left alone. Row position 0.5, columns 0.125 + 0.25 k: 2 fx + 4 fy.
    float buffer[8] = {0, 0, 2, 2, 4, 4, 6, 6};
    VelkVectorField onBuffer(2, 2, buffer);
    onBuffer.resample(4, 1, nullptr);
    EXPECT_EQ(onBuffer.data, onBuffer.ownedData);
    EXPECT_EQ(nodes(onBuffer),
              (std::vector<float>{2.25f, 2.25f, 2.75f, 2.75f, 3.25f, 3.25f, 3.75f, 3.75f}));
    EXPECT_EQ(buffer[2], 2.0f);
    f.resample(2, 2, nullptr);
    EXPECT_EQ(nodes(f), (std::vector<float>{1, 1, 3, 1, 1, 3, 3, 3}));
    f.resample(3, 3, &f);  // the field itself as destination
    EXPECT_EQ(f.width, 3);
}

TEST(DerivedField, MagnitudePerNodeOrSampledOntoTheOutput) {
    VelkVectorField f;
    VelkScalarField out, small(2, 2, nullptr);
    fill(f, 3, 2, [](int, int) { return std::make_pair(3.0f, 4.0f); });
    f.magnitude(out, 1);
    EXPECT_EQ(std::vector<float>(out.data, out.data + out.width * out.height),
              std::vector<float>(6, 5.0f));
    // Positions 0 and 3.999 of a 5 x 5 field whose node (i, j) holds (i, 0).
    fill(f, 5, 5, [](int i, int) { return std::make_pair(float(i), 0.0f); });
    f.magnitude(small, 0);
    EXPECT_EQ(small.width, 2);
    for (int n = 0; n < 4; n++) EXPECT_FLOAT_EQ(small.data[n], n % 2 ? 3.999f : 0.0f) << n;
}

TEST(DerivedField, DirectionsAsHues) {
    // Hues 0.5 (cyan), 0.25, 0 (red), 0.75, and 1.0 for (-1, +0), which
    // HSL_to_RGB does not write: that pixel repeats the one before it.
    float vectors[] = {1, 0, 0, -1, -1, -0.0f, 0, 1, -1, 0}, right[] = {1, 0, 1, 0, 1, 0, 1, 0};
    VelkVectorField f(5, 1, vectors), flow(2, 2, right);
    VelkImage image, rgb(3, 2, 3), grey(4, 2, 1);
    f.vecToColor(image, 1);
    ASSERT_EQ(image.width * image.height * image.nChannels, 15);
    EXPECT_EQ(std::vector<int>(image.data, image.data + 15),
              (std::vector<int>{0, 255, 255, 127, 255, 0, 255, 0, 0, 127, 0, 255, 127, 0, 255}));
    // Onto the image's own size, 3 bytes per pixel from each row's start,
    // and for a grey image as far as its buffer goes.
    rgb.clear(9);
    grey.clear(9);
    flow.vecToColor(rgb, 0);
    flow.vecToColor(grey, 0);
    EXPECT_EQ(rgb.width, 3);
    for (int i = 0; i < 18; i++) EXPECT_EQ(rgb.data[i], i % 3 == 0 ? 0 : 255) << i;
    EXPECT_EQ(grey.nChannels, 1);
    EXPECT_EQ(std::vector<int>(grey.data, grey.data + 8),
              (std::vector<int>{0, 255, 255, 0, 0, 255, 255, 0}));
}
