#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"

namespace {

Bytes fastLine(std::vector<float> kernel, const Bytes& line) {
    std::vector<unsigned char> in(line.begin(), line.end()), out(line.size(), 0);
    velk_initPackedLuts(kernel.data(), static_cast<int>(kernel.size()));
    velk_fastconv(in.data(), static_cast<int>(in.size()), 1, out.data());
    return Bytes(out.begin(), out.end());
}

// The engine's arithmetic written out: each tap's product rounded to quarter
// units (the centre as two halves), plus the rounding constant of 2 quarters
// per group of three taps, shifted to units and clamped; ends replicated.
Bytes quantisedLine(const std::vector<float>& kernel, const Bytes& line) {
    int n = static_cast<int>(kernel.size()), size = static_cast<int>(line.size());
    auto quarters = [](float w, int v) {
        return static_cast<int>(w * static_cast<float>(v) * 262144.0f + 32768.0f) >> 16;
    };
    Bytes out(size);
    for (int j = 0; j < size; j++) {
        int sum = 2 * ((n + 2) / 3);
        for (int d = 1 - n; d < n; d++) {
            int v = line[std::clamp(j + d, 0, size - 1)];
            sum += d == 0 ? 2 * quarters(kernel[0] * 0.5f, v) : quarters(kernel[std::abs(d)], v);
        }
        out[j] = std::clamp(sum >> 2, 0, 255);
    }
    return out;
}

// n half-taps summing to 1 (no warning), some of them negative.
std::vector<float> randomKernel(std::mt19937& rng, int n) {
    std::uniform_real_distribution<float> tap(-0.02f, 0.5f / static_cast<float>(n));
    std::vector<float> k(n);
    float sides = 0.0f;
    for (int i = 1; i < n; i++) sides += k[i] = tap(rng);
    k[0] = 1.0f - 2.0f * sides;
    return k;
}

}  // namespace

TEST(PackedConvolution, StepEdgeAndConstantLinesForOneTwoAndThreeGroups) {
    const Bytes step = {0, 0, 0, 0, 255, 255, 255, 255}, mixed = {3, 250, 0, 17, 128, 255, 1};
    const std::vector<float> two = {0.4f, 0.1f, 0.1f, 0.1f};
    const std::vector<float> three = {0.2f,  0.1f,   0.1f,    0.05f,  0.05f,
                                      0.05f, 0.025f, 0.0125f, 0.0125f};
    EXPECT_EQ(fastLine({1.0f}, mixed), mixed);
    // One group rounds to nearest (63.75 -> 64, 191.25 -> 191), also with a
    // negative tap, whose dips beside the edge clamp to 0 and 255.
    EXPECT_EQ(fastLine({0.5f, 0.25f}, step), (Bytes{0, 0, 0, 64, 191, 255, 255, 255}));
    EXPECT_EQ(fastLine({0.5f, 0.5f, -0.25f}, step), (Bytes{0, 0, 0, 64, 191, 255, 255, 255}));
    EXPECT_EQ(fastLine({0.5f, 0.25f}, Bytes(5, 100)), Bytes(5, 100));
    // Two groups: half a unit above rounding to nearest, so even black -> 1.
    EXPECT_EQ(fastLine(two, step), (Bytes{1, 26, 52, 77, 179, 205, 230, 255}));
    EXPECT_EQ(fastLine(two, Bytes(5, 100)), Bytes(5, 101));
    // Three groups: a whole unit above.
    EXPECT_EQ(fastLine(three, Bytes(6, 100)), Bytes(6, 101));
    EXPECT_EQ(fastLine(three, Bytes(6, 0)), Bytes(6, 1));
}

TEST(PackedConvolution, MatchesTheDirectArithmeticOnRandomLines) {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int n = 1; n <= 9; n++) {
        for (int length : {1, 2, 5, 64, 1100, 3000}) {
            std::vector<float> kernel = randomKernel(rng, n);
            Bytes line(length);
            for (int& v : line) v = byte(rng);
            ASSERT_EQ(fastLine(kernel, line), quantisedLine(kernel, line))
                << n << " taps, " << length;
        }
    }
}

TEST(PackedConvolution, StridedLinesSumWarningAndTapBound) {
    std::vector<unsigned char> column = {0, 9, 0, 9, 0, 9, 255, 9, 255, 9}, out(10, 7);
    float kernel[] = {0.5f, 0.25f};
    velk_initPackedLuts(kernel, 2);
    velk_fastconv(column.data(), 5, 2, out.data());
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 7, 0, 7, 64, 7, 191, 7, 255, 7}));

    EXPECT_EQ(stderrOf([] {
                  EXPECT_EQ(fastLine({1.1f}, {100, 200}), (Bytes{110, 220}));
              }),
              "Warning: filter sum != 1 (=1.100000)\n");
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    float bad[] = {0.2f, 0.9f, 0.1f};
    EXPECT_EXIT(velk_initPackedLuts(bad, 3), testing::ExitedWithCode(1),
                "^Warning: filter sum != 1 \\(=2\\.200000\\)\n"
                "\\|0\\.100000\\|\\+\\|0\\.900000\\|\\+\\|0\\.100000\\| > 1\n$");
}

TEST(ImageConvolution, ImagesOfAnySizeMatchTheSeparableReference) {
    std::mt19937 rng(7);
    const int sizes[][2] = {{1, 1}, {9, 4}, {1200, 3}, {3, 1100}};
    for (const auto& size : sizes) {
        int w = size[0], h = size[1];
        VelkImage image(w, h), out;
        image.createRandom(0, w + h);
        std::vector<float> kernel = randomKernel(rng, 1 + (w + h) % 9);
        // Rows, then columns, each pass rounded.
        Bytes expected = bytesOf(image), column(h);
        for (int y = 0; y < h; y++) {
            Bytes row = quantisedLine(kernel, Bytes(&expected[y * w], &expected[y * w] + w));
            std::copy(row.begin(), row.end(), expected.begin() + y * w);
        }
        for (int x = 0; x < w; x++) {
            for (int y = 0; y < h; y++) column[y] = expected[y * w + x];
            column = quantisedLine(kernel, column);
            for (int y = 0; y < h; y++) expected[y * w + x] = column[y];
        }
        image.convolve(static_cast<int>(kernel.size()), kernel.data(), &out);
        EXPECT_EQ(bytesOf(out), expected) << w << "x" << h;
        image.convolve(static_cast<int>(kernel.size()), kernel.data(), nullptr);
        EXPECT_EQ(bytesOf(image), expected) << w << "x" << h;
    }
    // In place on a borrowed 3 x 2 buffer with rows of 5: the padding stays.
    std::vector<unsigned char> buffer = {0, 0, 0, 99, 99, 255, 255, 255, 99, 99};
    float kernel[] = {0.5f, 0.25f};
    VelkImage(3, 2, 5, buffer.data()).convolve(2, kernel, nullptr);
    EXPECT_EQ(buffer, (std::vector<unsigned char>{64, 64, 64, 99, 99, 191, 191, 191, 99, 99}));
}

TEST(ImageConvolution, GaussBlurKernelAndItsLimit) {
    VelkImage image(12, 10), blurred, reference, dst;
    image.createRandom(0, 3);
    image.gaussBlur(3, &blurred);
    // n = 3: taps 1, e^(-1/18), e^(-4/18), divided by their two-sided sum.
    double e1 = std::exp(-1.0 / 18), e2 = std::exp(-4.0 / 18), sum = 1 + 2 * (e1 + e2);
    std::vector<float> kernel = {float(1 / sum), float(e1 / sum), float(e2 / sum)};
    image.convolve(3, kernel.data(), &reference);
    for (int i = 0; i < 120; i++) EXPECT_NEAR(blurred.data[i], reference.data[i], 1) << i;

    // Ten half-taps are beyond the engine: nothing is written, nothing said.
    Bytes before = bytesOf(image);
    EXPECT_EQ(stderrOf([&] {
                  image.gaussBlur(10, nullptr);
                  image.gaussBlur(10, &dst);
              }),
              "");
    EXPECT_EQ(bytesOf(image), before);
    EXPECT_EQ(dst.width * dst.height * dst.nChannels, 120);
}

TEST(MedianFilter, IsTheFifthOfTheNineClampedNeighbours) {
    // An impulse, an edge, and noise with many ties and without.
    std::vector<VelkImage> images = {
        greyImage(5, 5, [](int x, int y) { return x == 2 && y == 2 ? 255 : 0; }),
        greyImage(6, 4, [](int x, int) { return x < 3 ? 10 : 200; }), VelkImage(41, 29),
        VelkImage(41, 29)};
    images[2].createRandom(0, 8);
    images[3].createRandom(0, 14);
    for (int i = 0; i < 41 * 29; i++) images[3].data[i] >>= 6;
    for (VelkImage& image : images) {
        int w = image.width, h = image.height;
        VelkImage out, inPlace = image;
        image.medianFilter(&out);
        inPlace.medianFilter(nullptr);
        EXPECT_EQ(bytesOf(inPlace), bytesOf(out));
        for (int y = 0; y < h; y++) {
            for (int x = 0; x < w; x++) {
                Bytes v;
                for (int dy = -1; dy <= 1; dy++)
                    for (int dx = -1; dx <= 1; dx++)
                        v.push_back(image.data[std::clamp(y + dy, 0, h - 1) * w +
                                               std::clamp(x + dx, 0, w - 1)]);
                std::sort(v.begin(), v.end());
                ASSERT_EQ(out.data[y * w + x], v[4]) << w << "x" << h << " at " << x << "," << y;
            }
        }
    }
}

TEST(Zoom, TentFilterWithAMirroredLeftAndARepeatedRightEdge) {
    VelkImage random(7, 5, 3);
    random.createRandom(0, 21);
    struct Case {
        VelkImage source;
        int width, height;
        Bytes expected;
    } cases[] = {
        {random, 7, 5, bytesOf(random)},
        // Output i sits at source i / 2; index 2 maps back to index 1.
        {makeImage(2, 1, 1, {0, 100}), 4, 1, {0, 50, 100, 100}},
        {makeImage(1, 2, 3, {0, 10, 200, 100, 30, 0}), 2, 4, {0,   10, 200, 0,   10,  200, 50, 20,
                                                              100, 50, 20,  100, 100, 30,  0,  100,
                                                              30,  0,  100, 30,  0,   100, 30, 0}},
        // Weights 0, 0.25, 0.5, 0.25, 0: output 0 reads index -1 as index 1,
        // output 1 reads index 4 as index 3 (weight 0 there).
        {makeImage(4, 1, 1, {0, 10, 20, 30}), 2, 1, {5, 20}},
        {greyImage(8, 1, [](int, int) { return 200; }), 4, 1, Bytes(4, 200)},
        {makeImage(1, 1, 1, {77}), 3, 3, Bytes(9, 77)},
        {VelkImage(0, 4), 3, 2, Bytes(6, 0)},
        {random, 0, 5, {}},
    };
    for (Case& c : cases) {
        VelkImage out;
        c.source.zoom(c.width, c.height, &out);
        EXPECT_EQ(out.width, c.width);
        EXPECT_EQ(bytesOf(out), c.expected) << c.width << "x" << c.height;
        c.source.zoom(c.width, c.height, nullptr);
        EXPECT_EQ(bytesOf(c.source), c.expected) << c.width << "x" << c.height;
    }
}
