#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <velk/velk.h>

namespace {

typedef std::vector<unsigned char> Bytes;

Bytes bytesOf(const VelkImage& image) {
    return Bytes(image.data, image.data + image.width * image.height * image.nChannels);
}

template <typename F>
VelkImage greyImage(int w, int h, F value) {
    VelkImage image(w, h, 1);
    for (int i = 0; i < w * h; i++) image.data[i] = static_cast<unsigned char>(value(i % w, i / w));
    return image;
}

// Noise with most bytes dark: v = 255 r^2 for r uniform.
VelkImage skewed(int w, int h, int channels) {
    VelkImage image(w, h, channels);
    image.createRandom(0, 7);
    for (int i = 0; i < w * h * channels; i++)
        image.data[i] = static_cast<unsigned char>(image.data[i] * image.data[i] / 255);
    return image;
}

double deviation(const VelkImage& image) {
    float mean, sigma;
    const_cast<VelkImage&>(image).getStatistics(mean, sigma);
    return sigma;
}

}  // namespace

TEST(Equalize, FlattensTheHistogramAndKeepsTheOrder) {
    VelkImage image = skewed(64, 64, 1), out;
    ASSERT_EQ(image.equalize(&out), 1);
    // Each quarter of the range holds a quarter of the pixels, give or take
    // the largest input bin, which cannot be split.
    std::vector<int> bins(256, 0), quarters(4, 0);
    for (int i = 0; i < 64 * 64; i++) bins[image.data[i]]++, quarters[out.data[i] / 64]++;
    for (int q : quarters) EXPECT_NEAR(q, 1024, *std::max_element(bins.begin(), bins.end()));
    std::vector<int> order(64 * 64);
    for (int i = 0; i < 64 * 64; i++) order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](int a, int b) { return image.data[a] < image.data[b]; });
    for (int i = 1; i < 64 * 64; i++) EXPECT_LE(out.data[order[i - 1]], out.data[order[i]]);
    // RGB: each channel as if it were alone.
    VelkImage rgb = skewed(16, 8, 3), plane, alone;
    ASSERT_EQ(rgb.equalize(&out), 1);
    for (int c = 0; c < 3; c++) {
        rgb.oneband(c, &plane);
        plane.equalize(&alone);
        out.oneband(c, &plane);
        EXPECT_EQ(bytesOf(plane), bytesOf(alone)) << "channel " << c;
    }
}

TEST(Equalize, OneUnclippedTileIsGlobal) {
    for (int channels : {1, 3}) {
        VelkImage image = skewed(37, 23, channels), global, adaptive;
        image.equalize(&global);
        ASSERT_EQ(image.equalizeAdaptive(1, 1, INFINITY, &adaptive), 1);
        EXPECT_EQ(bytesOf(adaptive), bytesOf(global));
        ASSERT_EQ(image.equalizeAdaptive(1, 1, 256.0f), 1);
        EXPECT_EQ(bytesOf(image), bytesOf(global));
    }
}

TEST(Equalize, AdaptiveTilesAndClipLimit) {
    // A dark and a bright half each spread over the whole range by their own tile.
    VelkImage halves = greyImage(
        64, 16, [](int x, int y) { return (x % 16 * 7 + y * 3) % 40 + (x < 32 ? 0 : 200); });
    VelkImage out, left, right;
    ASSERT_EQ(halves.equalizeAdaptive(2, 1, INFINITY, &out), 1);
    out.crop(0, 0, 15, 15, &left);
    out.crop(48, 0, 63, 15, &right);
    EXPECT_EQ(bytesOf(left), bytesOf(right));
    // A low-contrast image gains less contrast the lower the clip limit.
    VelkImage flat = greyImage(64, 64, [](int x, int y) { return 120 + (x * 13 + y * 7) % 16; });
    double previous = deviation(flat);
    for (float clip : {1.0f, 2.0f, 4.0f, 256.0f}) {
        ASSERT_EQ(flat.equalizeAdaptive(4, 4, clip, &out), 1);
        EXPECT_GE(deviation(out), previous) << "clip " << clip;
        previous = deviation(out);
    }
}

TEST(Equalize, RejectsBadInputUntouched) {
    VelkImage grey = skewed(8, 8, 1), two(4, 4, 2), empty, dst(3, 3, 1);
    dst.clear(9);
    EXPECT_EQ(empty.equalize(&dst), 0);
    EXPECT_EQ(two.equalize(&dst), 0);
    EXPECT_EQ(empty.equalizeAdaptive(1, 1, 2.0f, &dst), 0);
    EXPECT_EQ(two.equalizeAdaptive(1, 1, 2.0f, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(0, 1, 2.0f, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(1, -3, 2.0f, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(1, 1, 0.5f, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(1, 1, NAN, &dst), 0);
    EXPECT_EQ(bytesOf(dst), Bytes(9, 9));
    // More tiles than pixels: one per pixel.
    EXPECT_EQ(grey.equalizeAdaptive(100, 100, 2.0f, &dst), 1);
}

TEST(EnhancedLic, OnePassIsComputeAndMorePassesDiffer) {
    VelkVectorField field(16, 16, nullptr);
    field.setCircle(0.0f);
    for (int channels : {1, 3}) {
        VelkImage texture(32, 32, channels), plain, once, twice;
        texture.createRandom(0, 3);
        VelkCompute engine;
        engine.setFilterLength(5.0f);
        ASSERT_EQ(engine.compute(&field, &texture, &plain), 1);
        for (bool enhance : {false, true}) {
            ASSERT_EQ(velk_enhancedLic(engine, &field, &texture, &once, 1, enhance), 1);
            EXPECT_EQ(bytesOf(once), bytesOf(plain));
            ASSERT_EQ(velk_enhancedLic(engine, &field, &texture, &twice, 2, enhance), 1);
            EXPECT_NE(bytesOf(twice), bytesOf(plain));
        }
        EXPECT_EQ(velk_enhancedLic(engine, &field, &texture, &once, 0, false), 0);
    }
}
