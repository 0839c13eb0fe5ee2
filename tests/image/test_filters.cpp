// The packed convolution and the median filter against their plain arithmetic.
#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "TestSupport.h"

using namespace velktest;

namespace {

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

// Lines of every length class through velk_fastconv at strides 1 and 2 (the
// bytes between stay), and images of any shape through convolve: rows, then
// columns, each pass rounded.
TEST(PackedConvolution, MatchesTheDirectArithmeticOnRandomInputs) {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int n = 1; n <= 9; n++) {
        for (int length : {1, 2, 5, 64, 1100, 3000}) {
            std::vector<float> kernel = randomKernel(rng, n);
            Bytes line(length);
            for (int& v : line) v = byte(rng);
            std::vector<unsigned char> in(2 * length), out(2 * length, 7);
            for (int i = 0; i < length; i++) in[2 * i] = static_cast<unsigned char>(line[i]);
            velk_initPackedLuts(kernel.data(), n);
            velk_fastconv(in.data(), length, 2, out.data());
            Bytes expected = quantisedLine(kernel, line), got;
            for (int i = 0; i < 2 * length; i++) got.push_back(i % 2 ? out[i] - 7 : out[i]);
            for (int i = 0; i < length; i++) expected.insert(expected.begin() + 2 * i + 1, 0);
            ASSERT_EQ(got, expected) << n << " taps, " << length;
        }
    }
    rng.seed(7);
    const int sizes[][2] = {{1, 1}, {9, 4}, {1200, 3}, {3, 1100}};
    for (const auto& size : sizes) {
        int w = size[0], h = size[1];
        VelkImage image(w, h), out;
        image.createRandom(0, w + h);
        std::vector<float> kernel = randomKernel(rng, 1 + (w + h) % 9);
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
    }
}

// The sum warning and the tap bound are the contract of the packed tables.
TEST(PackedConvolution, SumWarningAndTapBound) {
    float loud[] = {1.1f}, bad[] = {0.2f, 0.9f, 0.1f};
    EXPECT_EQ(stderrOf([&] { velk_initPackedLuts(loud, 1); }),
              "Warning: filter sum != 1 (=1.100000)\n");
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(velk_initPackedLuts(bad, 3), testing::ExitedWithCode(1),
                "^Warning: filter sum != 1 \\(=2\\.200000\\)\n"
                "\\|0\\.100000\\|\\+\\|0\\.900000\\|\\+\\|0\\.100000\\| > 1\n$");
}

TEST(MedianFilter, IsTheFifthOfTheNineClampedNeighbours) {
    for (int seed : {8, 14}) {
        const int w = 41 - seed, h = 29;
        VelkImage image(w, h), out;
        image.createRandom(0, seed);
        // Few values, many ties.
        for (int i = 0; seed == 14 && i < w * h; i++) image.data[i] >>= 6;
        image.medianFilter(&out);
        for (int y = 0; y < h; y++) {
            for (int x = 0; x < w; x++) {
                Bytes v;
                for (int dy = -1; dy <= 1; dy++)
                    for (int dx = -1; dx <= 1; dx++)
                        v.push_back(image.data[std::clamp(y + dy, 0, h - 1) * w +
                                               std::clamp(x + dx, 0, w - 1)]);
                std::nth_element(v.begin(), v.begin() + 4, v.end());
                ASSERT_EQ(out.data[y * w + x], v[4]) << w << "x" << h << " at " << x << "," << y;
            }
        }
    }
}

// Rows wider than 16-bit coordinates: a wall near the far end of the top row.
TEST(FloodFill, RowsWiderThanSixteenBits) {
    VelkImage image(40000, 2);
    image.clear(0);
    image.data[40000 + 39990] = 255;
    int box[4];
    EXPECT_EQ(image.floodFill(39999, 1, 7, box, nullptr), 79999);
    EXPECT_EQ(std::vector<int>(box, box + 4), (std::vector<int>{0, 0, 39999, 2}));
}
