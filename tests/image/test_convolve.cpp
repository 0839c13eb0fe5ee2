#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "ImageTestSupport.h"
#include "velk/velk.h"

using imagetest::bytesOf;

namespace {

std::vector<int> fastLine(std::vector<float> kernel, const std::vector<int>& line) {
    std::vector<unsigned char> in(line.begin(), line.end()), out(line.size(), 0);
    velk_initPackedLuts(kernel.data(), static_cast<int>(kernel.size()));
    velk_fastconv(in.data(), static_cast<int>(in.size()), 1, out.data());
    return std::vector<int>(out.begin(), out.end());
}

int clampByte(long long v) {
    return v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(v);
}

// Direct convolution with replicated ends, each tap's product rounded to
// quarter units as the tables hold it (the centre as two halves), plus the
// documented rounding constant of 2 quarters per group of three taps.
std::vector<int> quantisedLine(const std::vector<float>& kernel, const std::vector<int>& line) {
    int n = static_cast<int>(kernel.size());
    int groups = (n + 2) / 3;
    int size = static_cast<int>(line.size());
    auto quarters = [](float w, int v) {
        return static_cast<int>(w * static_cast<float>(v) * 262144.0f + 32768.0f) >> 16;
    };
    std::vector<int> out(size);
    for (int j = 0; j < size; j++) {
        long long sum = 2 * groups;
        for (int d = -(n - 1); d <= n - 1; d++) {
            int v = line[std::min(std::max(j + d, 0), size - 1)];
            sum += d == 0 ? 2 * quarters(kernel[0] * 0.5f, v) : quarters(kernel[std::abs(d)], v);
        }
        out[j] = clampByte(sum >> 2);
    }
    return out;
}

// The same in floating point: exact products, one rounding at the end
// (to nearest for one group, half a unit higher per further group).
std::vector<double> exactLine(const std::vector<float>& kernel, const std::vector<int>& line) {
    int n = static_cast<int>(kernel.size());
    int size = static_cast<int>(line.size());
    std::vector<double> out(size);
    for (int j = 0; j < size; j++) {
        double sum = 0.0;
        for (int d = -(n - 1); d <= n - 1; d++) {
            sum += kernel[std::abs(d)] * double(line[std::min(std::max(j + d, 0), size - 1)]);
        }
        out[j] = sum;
    }
    return out;
}

// A random kernel of n half-taps summing to 1, some taps negative.
std::vector<float> randomKernel(std::mt19937& rng, int n) {
    std::uniform_real_distribution<float> tap(-0.05f, 1.0f);
    std::vector<float> k(n);
    float sum = 0.0f;
    for (int i = 0; i < n; i++) {
        k[i] = tap(rng);
        sum += i == 0 ? k[i] : 2.0f * k[i];
    }
    for (float& v : k) v /= sum;
    // Make the sum exactly 1 in the engine's own order (no warning).
    float sides = 0.0f;
    for (int i = 1; i < n; i++) sides += k[i];
    k[0] = 1.0f - 2.0f * sides;
    return k;
}

}  // namespace

TEST(PackedConvolution, StepEdgeAndConstantForOneTwoAndThreeGroups) {
    const std::vector<int> step = {0, 0, 0, 0, 255, 255, 255, 255};
    // One group: rounded to nearest (63.75 -> 64, 191.25 -> 191).
    EXPECT_EQ(fastLine({0.5f, 0.25f}, step), (std::vector<int>{0, 0, 0, 64, 191, 255, 255, 255}));
    // A negative tap: 127.5 - 63.75 and 127.5 + 127.5 - 63.75; the dips
    // beside the edge clamp to 0 and 255.
    EXPECT_EQ(fastLine({0.5f, 0.5f, -0.25f}, step),
              (std::vector<int>{0, 0, 0, 64, 191, 255, 255, 255}));
    // Two groups, {0.4, 0.1, 0.1, 0.1}: half a unit above rounding to nearest,
    // so 25.5 -> 26, 51 -> 52, 204 -> 205 and even black -> 1.
    EXPECT_EQ(fastLine({0.4f, 0.1f, 0.1f, 0.1f}, step),
              (std::vector<int>{1, 26, 52, 77, 179, 205, 230, 255}));
    // Three groups: one whole unit above rounding to nearest.
    std::vector<float> three = {0.2f, 0.1f, 0.1f, 0.05f, 0.05f, 0.05f, 0.025f, 0.0125f, 0.0125f};
    EXPECT_EQ(fastLine(three, std::vector<int>(6, 100)), std::vector<int>(6, 101));
    EXPECT_EQ(fastLine(three, std::vector<int>(6, 0)), std::vector<int>(6, 1));
    EXPECT_EQ(fastLine({0.4f, 0.1f, 0.1f, 0.1f}, std::vector<int>(5, 100)),
              std::vector<int>(5, 101));
    EXPECT_EQ(fastLine({0.5f, 0.25f}, std::vector<int>(5, 100)), std::vector<int>(5, 100));
    // {1} is the identity.
    const std::vector<int> mixed = {3, 250, 0, 17, 128, 255, 1};
    EXPECT_EQ(fastLine({1.0f}, mixed), mixed);
}

TEST(PackedConvolution, MatchesADirectConvolutionOnRandomLines) {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> byte(0, 255);
    const int lengths[] = {1, 2, 5, 64, 1100, 3000};
    for (int n = 1; n <= 9; n++) {
        for (int length : lengths) {
            std::vector<float> kernel = randomKernel(rng, n);
            std::vector<int> line(length);
            for (int& v : line) v = byte(rng);
            std::vector<int> fast = fastLine(kernel, line);
            ASSERT_EQ(fast, quantisedLine(kernel, line)) << "n " << n << " length " << length;
            // Against exact products: each of the 2n rounded products (the
            // centre is two halves) is off by at most an eighth of a unit.
            int groups = (n + 2) / 3;
            double slack = n / 4.0;
            std::vector<double> exact = exactLine(kernel, line);
            for (int j = 0; j < length; j++) {
                double lo = std::floor(exact[j] + groups * 0.5 - slack);
                double hi = std::floor(exact[j] + groups * 0.5 + slack);
                ASSERT_GE(fast[j], std::min(std::max(lo, 0.0), 255.0)) << j;
                ASSERT_LE(fast[j], std::min(std::max(hi, 0.0), 255.0)) << j;
            }
        }
    }
}

TEST(PackedConvolution, StridedLinesReadAndWriteEveryStepBytes) {
    std::vector<unsigned char> column = {0, 9, 0, 9, 0, 9, 255, 9, 255, 9};
    std::vector<unsigned char> out(10, 7);
    float kernel[] = {0.5f, 0.25f};
    velk_initPackedLuts(kernel, 2);
    velk_fastconv(column.data(), 5, 2, out.data());
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 7, 0, 7, 64, 7, 191, 7, 255, 7}));
}

TEST(PackedConvolution, SumWarningAndTapBound) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fastLine({1.1f}, {100, 200}), (std::vector<int>{110, 220}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning: filter sum != 1 (=1.100000)\n");

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
        VelkImage image(w, h);
        image.createRandom(0, w + h);
        std::vector<float> kernel = randomKernel(rng, 1 + (w + h) % 9);
        // Rows, then columns, each pass rounded.
        std::vector<int> expected(w * h);
        for (int y = 0; y < h; y++) {
            std::vector<int> row(image.data + y * w, image.data + (y + 1) * w);
            std::vector<int> done = quantisedLine(kernel, row);
            std::copy(done.begin(), done.end(), expected.begin() + y * w);
        }
        for (int x = 0; x < w; x++) {
            std::vector<int> column(h);
            for (int y = 0; y < h; y++) column[y] = expected[y * w + x];
            std::vector<int> done = quantisedLine(kernel, column);
            for (int y = 0; y < h; y++) expected[y * w + x] = done[y];
        }
        VelkImage out;
        image.convolve(static_cast<int>(kernel.size()), kernel.data(), &out);
        EXPECT_EQ(bytesOf(out), expected) << w << "x" << h;
        image.convolve(static_cast<int>(kernel.size()), kernel.data(), nullptr);
        EXPECT_EQ(bytesOf(image), expected) << w << "x" << h;
    }
}

TEST(ImageConvolution, InPlaceOnABorrowedBufferLeavesThePaddingAlone) {
    // 3 x 2 grey in rows of 5 bytes: a vertical step under {0.5, 0.25}.
    std::vector<unsigned char> buffer = {0, 0, 0, 99, 99, 255, 255, 255, 99, 99};
    VelkImage image(3, 2, 5, buffer.data());
    float kernel[] = {0.5f, 0.25f};
    image.convolve(2, kernel, nullptr);
    EXPECT_EQ(buffer, (std::vector<unsigned char>{64, 64, 64, 99, 99, 191, 191, 191, 99, 99}));
}

TEST(ImageConvolution, GaussBlurKernelAndItsLimit) {
    // n = 3: taps 1, e^(-1/18), e^(-4/18), divided by their two-sided sum.
    VelkImage image(12, 10);
    image.createRandom(0, 3);
    VelkImage blurred, reference;
    image.gaussBlur(3, &blurred);
    double e1 = std::exp(-1.0 / 18), e2 = std::exp(-4.0 / 18), sum = 1 + 2 * (e1 + e2);
    std::vector<float> kernel = {float(1 / sum), float(e1 / sum), float(e2 / sum)};
    image.convolve(3, kernel.data(), &reference);
    for (int i = 0; i < 120; i++) EXPECT_NEAR(blurred.data[i], reference.data[i], 1) << i;

    // Ten half-taps are beyond the engine: nothing is written, nothing said.
    std::vector<int> before = bytesOf(image);
    testing::internal::CaptureStderr();
    image.gaussBlur(10, nullptr);
    VelkImage dst;
    image.gaussBlur(10, &dst);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(bytesOf(image), before);
    EXPECT_EQ(dst.width, 12);
    EXPECT_EQ(dst.height, 10);
    EXPECT_EQ(dst.nChannels, 1);
}

TEST(MedianFilter, RemovesImpulsesKeepsEdgesAndIsTheFifthOfNine) {
    VelkImage impulse(5, 5);
    impulse.clear(0);
    impulse.data[2 * 5 + 2] = 255;
    impulse.medianFilter(nullptr);
    EXPECT_EQ(bytesOf(impulse), std::vector<int>(25, 0));

    VelkImage edge(6, 4);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 6; x++) edge.data[y * 6 + x] = x < 3 ? 10 : 200;
    VelkImage out;
    edge.medianFilter(&out);
    EXPECT_EQ(bytesOf(out), bytesOf(edge));

    // Random images, with many ties and without, against sorting the clamped
    // 3x3 neighbourhood.
    const int w = 41, h = 29;
    for (int shift : {0, 6}) {
        VelkImage noise(w, h);
        noise.createRandom(0, 8 + shift);
        for (int i = 0; i < w * h; i++) noise.data[i] >>= shift;
        noise.medianFilter(&out);
        for (int y = 0; y < h; y++) {
            for (int x = 0; x < w; x++) {
                std::vector<int> v;
                for (int dy = -1; dy <= 1; dy++)
                    for (int dx = -1; dx <= 1; dx++)
                        v.push_back(noise.data[std::clamp(y + dy, 0, h - 1) * w +
                                               std::clamp(x + dx, 0, w - 1)]);
                std::sort(v.begin(), v.end());
                ASSERT_EQ(out.data[y * w + x], v[4]) << x << "," << y << " shift " << shift;
            }
        }
    }
}
