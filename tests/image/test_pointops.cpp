#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "ImageTestSupport.h"
#include "velk/velk.h"

using imagetest::bytesOf;
using imagetest::makeImage;

namespace {

// Runs `operation` and returns what it wrote to the standard error stream.
template <typename F>
std::string stderrOf(F operation) {
    testing::internal::CaptureStderr();
    operation();
    return testing::internal::GetCapturedStderr();
}

}  // namespace

TEST(PointOps, Statistics) {
    VelkImage image = makeImage(2, 2, 1, {1, 2, 3, 4});
    float mean, sigma;
    image.getStatistics(mean, sigma);
    EXPECT_FLOAT_EQ(mean, 2.5f);
    EXPECT_FLOAT_EQ(sigma, std::sqrt(5.0f / 3.0f));  // (30 - 4 * 6.25) / 3

    VelkImage one = makeImage(1, 1, 1, {9});
    one.getStatistics(mean, sigma);
    EXPECT_EQ(mean, 9.0f);
    EXPECT_TRUE(std::isnan(sigma));
    VelkImage empty;
    empty.getStatistics(mean, sigma);
    EXPECT_TRUE(std::isnan(mean) && std::isnan(sigma));
}

TEST(PointOps, AutoAdjustStretchesNonZeroBytesAndClamps) {
    // Non-zero bytes all 77: no deviation, so only the shift to the mean.
    VelkImage flat = makeImage(3, 1, 1, {0, 77, 77});
    flat.autoAdjust(128, 40, nullptr);
    EXPECT_EQ(bytesOf(flat), (std::vector<int>{0, 128, 128}));

    // Non-zero 100 and 200: centre 150, deviation sqrt(5000) = 70.71.
    struct Case {
        float mean, sigma;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {128, 40, {0, 100, 156}},   // 128 -+ 28.28, plus 0.5, truncated
        {250, 100, {0, 179, 255}},  // 250 + 141.4 clamps to 255
        {10, 100, {0, 0, 81}},      // 10 - 70.7 clamps to 0
    };
    for (const Case& c : cases) {
        VelkImage image = makeImage(3, 1, 1, {0, 100, 200});
        image.autoAdjust(c.mean, c.sigma, nullptr);
        EXPECT_EQ(bytesOf(image), c.expected) << c.mean << " " << c.sigma;
    }

    // With a dst, dst's own bytes are mapped with the source's statistics.
    VelkImage source = makeImage(3, 1, 1, {0, 100, 200});
    VelkImage dst = makeImage(3, 1, 1, {50, 0, 150});
    source.autoAdjust(128, 40, &dst);
    EXPECT_EQ(bytesOf(dst), (std::vector<int>{71, 0, 128}));  // 50: 128 - 56.57
    EXPECT_EQ(bytesOf(source), (std::vector<int>{0, 100, 200}));
}

TEST(PointOps, BrightenMapsTheWindowAndClamps) {
    VelkImage image = makeImage(5, 1, 1, {50, 75, 100, 30, 200});
    VelkImage dst;
    image.brighten(50, 100, &dst);
    EXPECT_EQ(bytesOf(dst), (std::vector<int>{0, 127, 255, 0, 255}));
    EXPECT_EQ(bytesOf(image), (std::vector<int>{50, 75, 100, 30, 200}));
    image.brighten(50, 100, nullptr);
    EXPECT_EQ(bytesOf(image), bytesOf(dst));

    // An empty window changes nothing, neither the image nor dst.
    VelkImage other = makeImage(1, 1, 1, {9});
    image.brighten(60, 60, &other);
    image.brighten(60, 60, nullptr);
    EXPECT_EQ(bytesOf(image), bytesOf(dst));
    EXPECT_EQ(other.width, 1);
    EXPECT_EQ(other.data[0], 9);
}

TEST(PointOps, GlueAndOneband) {
    VelkImage r = makeImage(2, 1, 1, {1, 2});
    VelkImage g = makeImage(2, 1, 1, {3, 4});
    VelkImage b = makeImage(2, 1, 1, {5, 6});
    VelkImage rgb;
    ASSERT_EQ(rgb.glue(r, g, b), 1);
    EXPECT_EQ(rgb.nChannels, 3);
    EXPECT_EQ(bytesOf(rgb), (std::vector<int>{1, 3, 5, 2, 4, 6}));

    // The image itself may be an operand.
    ASSERT_EQ(g.glue(r, g, b), 1);
    EXPECT_EQ(bytesOf(g), (std::vector<int>{1, 3, 5, 2, 4, 6}));

    VelkImage wide(3, 1);
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(rgb.glue(r, wide, b), 0); }),
              "Images must have equal size.\n");
    EXPECT_EQ(bytesOf(rgb), (std::vector<int>{1, 3, 5, 2, 4, 6}));

    struct Case {
        int channel;
        std::vector<int> expected;
    };
    const Case cases[] = {{1, {3, 4}}, {7, {5, 6}}, {-2, {1, 2}}};  // clamped both ways
    for (const Case& c : cases) {
        VelkImage band;
        rgb.oneband(c.channel, &band);
        EXPECT_EQ(band.nChannels, 1);
        EXPECT_EQ(bytesOf(band), c.expected) << c.channel;
    }
    EXPECT_EQ(rgb.nChannels, 3);
    rgb.oneband(2, nullptr);
    EXPECT_EQ(rgb.nChannels, 1);
    EXPECT_EQ(bytesOf(rgb), (std::vector<int>{5, 6}));
}

TEST(PointOps, ColorToGreyWeightsAndPackedTriples) {
    // (0.59 G + 0.3 R) + 0.11 B, truncated: 18.1, 76.5, 150.45, 28.05.
    VelkImage rgb = makeImage(4, 1, 3, {10, 20, 30, 255, 0, 0, 0, 255, 0, 0, 0, 255});
    VelkImage grey;
    rgb.colorToGrey(&grey);
    EXPECT_EQ(grey.nChannels, 1);
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{18, 76, 150, 28}));
    rgb.colorToGrey(nullptr);
    EXPECT_EQ(rgb.nChannels, 1);
    EXPECT_EQ(bytesOf(rgb), bytesOf(grey));

    // Four channels are still read as packed triples from the start.
    VelkImage rgba = makeImage(2, 1, 4, {10, 20, 30, 99, 1, 2, 3, 4});
    rgba.colorToGrey(nullptr);
    EXPECT_EQ(bytesOf(rgba), (std::vector<int>{18, 30}));  // (99, 1, 2): 30.51

    // A grey image is copied into dst, or left alone.
    VelkImage copy;
    grey.colorToGrey(&copy);
    EXPECT_EQ(bytesOf(copy), bytesOf(grey));
    grey.colorToGrey(nullptr);
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{18, 76, 150, 28}));
}

TEST(PointOps, CropIsInclusiveAndRepeatsOneByteOnRgb) {
    VelkImage grey = makeImage(3, 2, 1, {1, 2, 3, 4, 5, 6});
    VelkImage out;
    ASSERT_EQ(grey.crop(1, 0, 2, 1, &out), 1);
    EXPECT_EQ(out.width, 2);
    EXPECT_EQ(bytesOf(out), (std::vector<int>{2, 3, 5, 6}));
    ASSERT_EQ(grey.crop(-1, -1, 0, 0, &out), 1);
    EXPECT_EQ(bytesOf(out), (std::vector<int>{0, 0, 0, 1}));

    // RGB: each output pixel repeats byte x of the row in all channels.
    VelkImage rgb = makeImage(2, 1, 3, {10, 20, 30, 40, 50, 60});
    ASSERT_EQ(rgb.crop(0, 0, 2, 0, nullptr), 1);
    EXPECT_EQ(bytesOf(rgb), (std::vector<int>{10, 10, 10, 20, 20, 20, 0, 0, 0}));

    ASSERT_EQ(grey.crop(2, 0, 1, 1, nullptr), 1);
    EXPECT_EQ(grey.data, nullptr);
}

TEST(PointOps, SubtractAndMultiply) {
    VelkImage a = makeImage(3, 1, 1, {250, 10, 77});
    VelkImage b = makeImage(3, 1, 1, {10, 250, 77});
    VelkImage out;
    ASSERT_EQ(a.subtract(b, &out), 1);
    EXPECT_EQ(bytesOf(out), (std::vector<int>{255, 0, 128}));
    ASSERT_EQ(a.subtract(a, nullptr), 1);
    EXPECT_EQ(bytesOf(a), (std::vector<int>{128, 128, 128}));

    VelkImage grey = makeImage(2, 1, 1, {255, 128});
    VelkImage rgb = makeImage(2, 1, 3, {7, 100, 255, 128, 255, 0});
    ASSERT_EQ(grey.multiply(rgb, &out), 1);
    EXPECT_EQ(out.nChannels, 3);
    EXPECT_EQ(bytesOf(out), (std::vector<int>{7, 100, 255, 64, 128, 0}));
    ASSERT_EQ(rgb.multiply(grey, nullptr), 1);
    EXPECT_EQ(bytesOf(rgb), bytesOf(out));
}

TEST(PointOps, MismatchesAreReportedAndChangeNothing) {
    VelkImage grey = makeImage(2, 1, 1, {1, 2});
    VelkImage rgb = makeImage(2, 1, 3, {1, 2, 3, 4, 5, 6});
    VelkImage tall(2, 2);
    VelkImage pairs(2, 1, 2);
    VelkImage dst = makeImage(1, 1, 1, {42});
    const std::string size = "Images must have same size.\n";
    struct Case {
        std::string message;
        std::function<int()> call;
    };
    const std::vector<Case> cases = {
        {size, [&] { return grey.subtract(tall, &dst); }},
        {"Images must have same number of channels.\n", [&] { return grey.subtract(rgb, &dst); }},
        {size, [&] { return grey.mix(tall, &dst); }},
        {"Illegal number of channels (1 and 3 required).\n", [&] { return rgb.mix(rgb, &dst); }},
        {"Illegal number of channels (1 and 3 required).\n", [&] { return grey.mix(pairs, &dst); }},
        {size, [&] { return grey.applyMask(tall, &dst); }},
        {"mask must only have one component.\n", [&] { return grey.applyMask(pairs, &dst); }},
        {size, [&] { return grey.multiply(tall, &dst); }},
    };
    for (const Case& c : cases) {
        int result = -1;
        EXPECT_EQ(stderrOf([&] { result = c.call(); }), c.message);
        EXPECT_EQ(result, 0) << c.message;
        EXPECT_EQ(bytesOf(grey), (std::vector<int>{1, 2}));
        EXPECT_EQ(grey.nChannels, 1);
        EXPECT_EQ(bytesOf(dst), (std::vector<int>{42}));
    }
}

TEST(PointOps, ApplyMaskAppendsAlphaAndRaisesTheSourceChannels) {
    VelkImage mask = makeImage(2, 1, 1, {0, 9});
    VelkImage rgb = makeImage(2, 1, 3, {1, 2, 3, 4, 5, 6});
    VelkImage out;
    unsigned char* buffer = rgb.data;
    ASSERT_EQ(rgb.applyMask(mask, &out), 1);
    EXPECT_EQ(bytesOf(out), (std::vector<int>{1, 2, 3, 0, 4, 5, 6, 255}));
    // The source claims four channels now; its buffer and stride are unchanged.
    EXPECT_EQ(rgb.nChannels, 4);
    EXPECT_EQ(rgb.data, buffer);
    EXPECT_EQ(rgb.bytesPerLine, 6);

    VelkImage grey = makeImage(2, 1, 1, {7, 8});
    ASSERT_EQ(grey.applyMask(mask, nullptr), 1);
    EXPECT_EQ(grey.nChannels, 2);
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{7, 0, 8, 255}));

    // Two (or four) channels cannot take another: nothing changes.
    EXPECT_EQ(grey.applyMask(mask, nullptr), 0);
    EXPECT_EQ(grey.nChannels, 2);
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{7, 0, 8, 255}));
}

TEST(PointOps, MixKeepsHueAndSaturationAndTakesTheGreyLightness) {
    // Hand-computed through HSL:
    //  (51, 102, 153) is h 7/12, s 0.5, l 0.4; with l 0.4 it comes back, with
    //  l 0.6: v = 0.8, m = 0.4, sextant 3, f 0.5 -> (0.4, 0.6, 0.8).
    //  Pure green is h 1/3, s 1; with l 64/255: v = 2l, m = 0 -> (0, 128, 0).
    //  Black has no hue: lightness 200/255 gives grey 200.
    //  Pure red comes out as hue 1.0, outside the sextants: the colour stays.
    VelkImage colour =
        makeImage(5, 1, 3, {51, 102, 153, 51, 102, 153, 0, 255, 0, 0, 0, 0, 255, 0, 0});
    VelkImage grey = makeImage(5, 1, 1, {102, 153, 64, 200, 30});
    const std::vector<int> expected = {51, 102, 153, 102, 153, 204, 0, 128,
                                       0,  200, 200, 200, 255, 0,   0};
    VelkImage out;
    ASSERT_EQ(colour.mix(grey, &out), 1);
    EXPECT_EQ(out.nChannels, 3);
    EXPECT_EQ(bytesOf(out), expected);
    // Either operand order; in place the grey operand becomes colour.
    ASSERT_EQ(grey.mix(colour, nullptr), 1);
    EXPECT_EQ(grey.nChannels, 3);
    EXPECT_EQ(bytesOf(grey), expected);
}
