#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"

namespace {

// Runs `op` into a fresh dst (the source stays as it is), then in place.
template <typename Op>
void expectResult(const VelkImage& source, Op op, int channels, const Bytes& expected) {
    VelkImage image = source, dst;
    op(image, &dst);
    EXPECT_EQ(bytesOf(image), bytesOf(source));
    EXPECT_EQ(dst.nChannels, channels);
    EXPECT_EQ(bytesOf(dst), expected);
    op(image, nullptr);
    EXPECT_EQ(image.nChannels, channels);
    EXPECT_EQ(bytesOf(image), expected);
}

}  // namespace

TEST(PointOps, ResultsGoToTheDestinationOrInPlace) {
    VelkImage grey = makeImage(2, 1, 1, {255, 128}),
              rgb = makeImage(2, 1, 3, {7, 100, 255, 128, 255, 0});
    VelkImage six = makeImage(3, 2, 1, {1, 2, 3, 4, 5, 6}),
              other = makeImage(3, 1, 1, {10, 250, 77});
    expectResult(makeImage(5, 1, 1, {50, 75, 100, 30, 200}),
                 [](auto& i, auto d) { i.brighten(50, 100, d); }, 1, {0, 127, 255, 0, 255});
    // oneband clamps the channel both ways.
    expectResult(rgb, [](auto& i, auto d) { i.oneband(1, d); }, 1, {100, 255});
    expectResult(rgb, [](auto& i, auto d) { i.oneband(7, d); }, 1, {255, 0});
    expectResult(rgb, [](auto& i, auto d) { i.oneband(-2, d); }, 1, {7, 128});
    // (0.59 G + 0.3 R) + 0.11 B truncated: 18.1, 76.5, 150.45, 28.05; four
    // channels are read as packed triples ((99, 1, 2) gives 30.51); grey is copied.
    const VelkImage colours = makeImage(4, 1, 3, {10, 20, 30, 255, 0, 0, 0, 255, 0, 0, 0, 255});
    expectResult(colours, [](auto& i, auto d) { i.colorToGrey(d); }, 1, {18, 76, 150, 28});
    expectResult(makeImage(2, 1, 4, {10, 20, 30, 99, 1, 2, 3, 4}),
                 [](auto& i, auto d) { i.colorToGrey(d); }, 1, {18, 30});
    expectResult(grey, [](auto& i, auto d) { i.colorToGrey(d); }, 1, {255, 128});
    // crop is inclusive, pads with 0, and on RGB repeats byte x of the row.
    expectResult(six, [](auto& i, auto d) { i.crop(1, 0, 2, 1, d); }, 1, {2, 3, 5, 6});
    expectResult(six, [](auto& i, auto d) { i.crop(-1, -1, 0, 0, d); }, 1, {0, 0, 0, 1});
    expectResult(makeImage(2, 1, 3, {10, 20, 30, 40, 50, 60}),
                 [](auto& i, auto d) { i.crop(0, 0, 2, 0, d); }, 3,
                 {10, 10, 10, 20, 20, 20, 0, 0, 0});
    expectResult(six, [](auto& i, auto d) { i.crop(1, 0, 0, 0, d); }, 1, {});
    expectResult(makeImage(3, 1, 1, {250, 10, 77}), [&](auto& i, auto d) { i.subtract(other, d); },
                 1, {255, 0, 128});
    expectResult(other, [](auto& i, auto d) { i.subtract(i, d); }, 1, {128, 128, 128});
    expectResult(grey, [&](auto& i, auto d) { i.multiply(rgb, d); }, 3, {7, 100, 255, 64, 128, 0});
    expectResult(rgb, [&](auto& i, auto d) { i.multiply(grey, d); }, 3, {7, 100, 255, 64, 128, 0});
    // Hand-computed through HSL: (51, 102, 153) is h 7/12, s 0.5, l 0.4, so
    // with l 0.6 it is (102, 153, 204); green with l 64/255 is (0, 128, 0);
    // black has no hue and gives grey; red has hue 1.0, outside the sextants,
    // so its colour stays. Either operand order.
    VelkImage colour =
        makeImage(5, 1, 3, {51, 102, 153, 51, 102, 153, 0, 255, 0, 0, 0, 0, 255, 0, 0});
    VelkImage lightness = makeImage(5, 1, 1, {102, 153, 64, 200, 30});
    const Bytes mixed = {51, 102, 153, 102, 153, 204, 0, 128, 0, 200, 200, 200, 255, 0, 0};
    expectResult(
        colour, [&](auto& i, auto d) { i.mix(lightness, d); }, 3, mixed);
    expectResult(
        lightness, [&](auto& i, auto d) { i.mix(colour, d); }, 3, mixed);
}

TEST(PointOps, StatisticsAndAutoAdjust) {
    float mean, sigma;
    makeImage(2, 2, 1, {1, 2, 3, 4}).getStatistics(mean, sigma);
    EXPECT_FLOAT_EQ(mean, 2.5f);
    EXPECT_FLOAT_EQ(sigma, std::sqrt(5.0f / 3.0f));  // (30 - 4 * 6.25) / 3

    // Zero bytes stay and take no part; 100 and 200 have centre 150 and
    // deviation 70.71; equal bytes have none and are only shifted.
    struct Case {
        Bytes source;
        float mean, sigma;
        Bytes expected;
    } cases[] = {
        {{0, 77, 77}, 128, 40, {0, 128, 128}},
        {{0, 100, 200}, 128, 40, {0, 100, 156}},   // 128 -+ 28.28, plus 0.5, truncated
        {{0, 100, 200}, 250, 100, {0, 179, 255}},  // 250 + 141.4 clamps to 255
        {{0, 100, 200}, 10, 100, {0, 0, 81}},      // 10 - 70.7 clamps to 0
    };
    for (const Case& c : cases) {
        VelkImage image = makeImage(3, 1, 1, c.source);
        image.autoAdjust(c.mean, c.sigma, nullptr);
        EXPECT_EQ(bytesOf(image), c.expected) << c.mean << " " << c.sigma;
    }
    // With a dst, dst's own bytes are mapped with the source's statistics.
    VelkImage source = makeImage(3, 1, 1, {0, 100, 200}), dst = makeImage(3, 1, 1, {50, 0, 150});
    source.autoAdjust(128, 40, &dst);
    EXPECT_EQ(bytesOf(dst), (Bytes{71, 0, 128}));  // 50: 128 - 56.57
    EXPECT_EQ(bytesOf(source), (Bytes{0, 100, 200}));
}

TEST(PointOps, GlueTakesItselfAsAnOperand) {
    VelkImage r = makeImage(2, 1, 1, {1, 2}), g = makeImage(2, 1, 1, {3, 4});
    VelkImage b = makeImage(2, 1, 1, {5, 6});
    ASSERT_EQ(g.glue(r, g, b), 1);
    EXPECT_EQ(g.nChannels, 3);
    EXPECT_EQ(bytesOf(g), (Bytes{1, 3, 5, 2, 4, 6}));
}

TEST(PointOps, ApplyMaskAppendsAlphaAndRaisesTheSourceChannels) {
    VelkImage mask = makeImage(2, 1, 1, {0, 9}), rgb = makeImage(2, 1, 3, {1, 2, 3, 4, 5, 6}), out;
    unsigned char* buffer = rgb.data;
    ASSERT_EQ(rgb.applyMask(mask, &out), 1);
    EXPECT_EQ(bytesOf(out), (Bytes{1, 2, 3, 0, 4, 5, 6, 255}));
    // The source claims four channels now; its buffer and stride are unchanged.
    EXPECT_EQ(rgb.nChannels, 4);
    EXPECT_EQ(rgb.data, buffer);
    EXPECT_EQ(rgb.bytesPerLine, 6);
    VelkImage grey = makeImage(2, 1, 1, {7, 8});
    ASSERT_EQ(grey.applyMask(mask, nullptr), 1);
    EXPECT_EQ(grey.nChannels, 2);
    EXPECT_EQ(bytesOf(grey), (Bytes{7, 0, 8, 255}));
}

// Mismatches are reported; they, an empty brighten window and a mask on two
// channels (which cannot take another) change nothing.
TEST(PointOps, RejectedCallsChangeNothing) {
    VelkImage grey = makeImage(2, 1, 1, {1, 2}), rgb = makeImage(2, 1, 3, {1, 2, 3, 4, 5, 6});
    VelkImage tall(2, 2), pairs = makeImage(2, 1, 2, {7, 0, 8, 255}),
                          dst = makeImage(1, 1, 1, {42});
    const std::string size = "Images must have same size.\n";
    const std::string channels = "Illegal number of channels (1 and 3 required).\n";
    const std::pair<std::string, std::function<int()>> cases[] = {
        {size, [&] { return grey.subtract(tall, &dst); }},
        {"Images must have same number of channels.\n", [&] { return grey.subtract(rgb, &dst); }},
        {size, [&] { return grey.mix(tall, &dst); }},
        {channels, [&] { return rgb.mix(rgb, &dst); }},
        {channels, [&] { return grey.mix(pairs, &dst); }},
        {size, [&] { return grey.applyMask(tall, &dst); }},
        {"mask must only have one component.\n", [&] { return grey.applyMask(pairs, &dst); }},
        {"", [&] { return pairs.applyMask(grey, &dst) + pairs.applyMask(grey, nullptr); }},
        {"",
         [&] {
             grey.brighten(60, 60, &dst);
             grey.brighten(60, 60, nullptr);
             return 0;
         }},
        {size, [&] { return grey.multiply(tall, &dst); }},
        {"Images must have equal size.\n", [&] { return dst.glue(grey, tall, grey); }},
    };
    for (const auto& c : cases) {
        int result = -1;
        EXPECT_EQ(stderrOf([&] { result = c.second(); }), c.first);
        EXPECT_EQ(result, 0) << c.first;
        EXPECT_EQ(bytesOf(grey), (Bytes{1, 2}));
        EXPECT_EQ(bytesOf(pairs), (Bytes{7, 0, 8, 255}));
        EXPECT_EQ(bytesOf(dst), (Bytes{42}));
    }
}
