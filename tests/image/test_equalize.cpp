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

// Mostly dark noise (v = 255 r^2), repeating every `period` pixels each way.
VelkImage skewed(int w, int h, int channels, int period = 1 << 20) {
    VelkImage noise(w, h, channels), image(w, h, channels);
    noise.createRandom(0, 7);
    for (int y = 0; y < h; y++)
        for (int i = 0; i < w * channels; i++) {
            int v = noise.data[(y % period) * w * channels + i % (period * channels)];
            image.data[y * w * channels + i] = static_cast<unsigned char>(v * v / 255);
        }
    return image;
}

double deviation(VelkImage image) {
    float mean, sigma;
    image.getStatistics(mean, sigma);
    return sigma;
}

}  // namespace

TEST(Equalize, FlattensTheHistogramKeepsTheOrderPerChannel) {
    VelkImage image = skewed(64, 64, 1), out;
    ASSERT_EQ(image.equalize(&out), 1);
    // Each quarter of the range holds a quarter of the pixels, give or take
    // the largest input bin, which cannot be split.
    std::vector<int> bins(256, 0), quarters(4, 0), order(64 * 64);
    for (int i = 0; i < 64 * 64; i++)
        bins[image.data[i]]++, quarters[out.data[i] / 64]++, order[i] = i;
    for (int q : quarters) EXPECT_NEAR(q, 1024, *std::max_element(bins.begin(), bins.end()));
    std::sort(order.begin(), order.end(),
              [&](int a, int b) { return image.data[a] < image.data[b]; });
    for (int i = 1; i < 64 * 64; i++) EXPECT_LE(out.data[order[i - 1]], out.data[order[i]]);
    VelkImage rgb = skewed(16, 8, 3), plane, alone;
    ASSERT_EQ(rgb.equalize(), 1);
    for (int c = 0; c < 3; c++) {
        skewed(16, 8, 3).oneband(c, &plane);
        plane.equalize(&alone);
        rgb.oneband(c, &plane);
        EXPECT_EQ(bytesOf(plane), bytesOf(alone)) << "channel " << c;
    }
}

// Tiles that all see the same histogram, unclipped, blend to the global result.
TEST(Equalize, TilesOfOneHistogramGiveTheGlobalResult) {
    const int tiles[][2] = {{1, 1}, {4, 4}, {4, 1}, {2, 4}};
    for (int channels : {1, 3}) {
        VelkImage image = skewed(32, 32, channels, 8), global, adaptive;
        image.equalize(&global);
        for (auto t : tiles) {
            ASSERT_EQ(image.equalizeAdaptive(t[0], t[1], INFINITY, &adaptive), 1);
            EXPECT_EQ(bytesOf(adaptive), bytesOf(global)) << t[0] << " x " << t[1];
        }
        ASSERT_EQ(image.equalizeAdaptive(1, 1, 256.0f), 1);
        EXPECT_EQ(bytesOf(image), bytesOf(global));
    }
}

TEST(Equalize, TilesMapLocallyAndClipLimitBoundsTheGain) {
    // A dark and a bright half, alike but for the offset, come out alike
    // outside the band where their tiles blend.
    VelkImage halves(64, 16, 1), out, left, right;
    for (int i = 0; i < 64 * 16; i++)
        halves.data[i] = (i % 16 * 7 + i / 64 * 3) % 40 + i % 64 / 32 * 200;
    ASSERT_EQ(halves.equalizeAdaptive(2, 1, INFINITY, &out), 1);
    out.crop(0, 0, 15, 15, &left);
    out.crop(48, 0, 63, 15, &right);
    EXPECT_EQ(bytesOf(left), bytesOf(right));
    // Between the centres 15.5 and 47.5 a dark pixel fades from its own
    // tile's mapping to the bright tile's, which sends it to 0.
    for (int y = 0; y < 16; y++)
        for (int x = 16; x < 32; x++)
            EXPECT_NEAR(out.data[64 * y + x], (47.5 - x) / 32 * out.data[64 * y + x - 16], 1);
    VelkImage flat(64, 64, 1);
    for (int i = 0; i < 64 * 64; i++) flat.data[i] = 120 + (i * 13 + i / 64 * 7) % 16;
    double previous = deviation(flat);
    for (float clip : {1.0f, 2.0f, 4.0f, 256.0f}) {
        ASSERT_EQ(flat.equalizeAdaptive(4, 4, clip, &out), 1);
        EXPECT_GT(deviation(out), previous) << "clip " << clip;
        previous = deviation(out);
    }
}

TEST(Equalize, BadInputFailsAndWritesNothing) {
    VelkImage grey = skewed(8, 8, 1), row = skewed(9, 1, 1), column = skewed(1, 9, 1), two(4, 4, 2),
              empty, dst(3, 3, 1);
    dst.clear(9);
    EXPECT_EQ(empty.equalize(&dst) + two.equalize(&dst), 0);
    EXPECT_EQ(empty.equalizeAdaptive(1, 1, 2, &dst) + two.equalizeAdaptive(1, 1, 2, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(0, 1, 2, &dst) + grey.equalizeAdaptive(1, 0, 2, &dst), 0);
    EXPECT_EQ(grey.equalizeAdaptive(1, 1, 0.5f, &dst) + grey.equalizeAdaptive(1, 1, NAN, &dst), 0);
    EXPECT_EQ(bytesOf(dst), Bytes(9, 9));
    // More tiles than pixels count as one per pixel; a row or a column is an image.
    EXPECT_EQ(grey.equalizeAdaptive(100, 100, 2, &dst) + row.equalize(&dst) + column.equalize(&dst),
              3);
}

// A colour LIC is the grey LIC of each channel, enhanced or not.
TEST(EnhancedLic, OnePassIsComputeAndColourGoesByChannel) {
    VelkVectorField field(16, 16, nullptr);
    field.setCircle(0.0f);
    VelkImage texture(32, 32, 3), plain, once, twice, plane, grey;
    texture.createRandom(0, 3);
    VelkCompute engine;
    engine.setFilterLength(5.0f);
    ASSERT_EQ(engine.compute(&field, &texture, &plain), 1);
    for (bool enhance : {false, true}) {
        ASSERT_EQ(velk_enhancedLic(engine, &field, &texture, &once, 1, enhance), 1);
        EXPECT_EQ(bytesOf(once), bytesOf(plain));
        ASSERT_EQ(velk_enhancedLic(engine, &field, &texture, &twice, 2, enhance), 1);
        EXPECT_NE(bytesOf(twice), bytesOf(plain));
        for (int c = 0; c < 3; c++) {
            texture.oneband(c, &plane);
            ASSERT_EQ(velk_enhancedLic(engine, &field, &plane, &grey, 2, enhance), 1);
            twice.oneband(c, &plane);
            EXPECT_EQ(bytesOf(plane), bytesOf(grey)) << "channel " << c << " enhance " << enhance;
        }
    }
    EXPECT_EQ(velk_enhancedLic(engine, &field, &texture, &once, 0, false), 0);
}
