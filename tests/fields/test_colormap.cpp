#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"

namespace {

void expectEntry(const VelkColormap& map, int i, float r, float g, float b) {
    EXPECT_NEAR(map.colors[i][0], r, 1e-6f) << "entry " << i;
    EXPECT_NEAR(map.colors[i][1], g, 1e-6f) << "entry " << i;
    EXPECT_NEAR(map.colors[i][2], b, 1e-6f) << "entry " << i;
}

}  // namespace

TEST(Colormap, PresetsAtTheirEndsAndMiddleKeepTheRange) {
    VelkColormap fresh;  // a grey ramp over 0 .. 1
    EXPECT_EQ(std::make_tuple(fresh.min, fresh.max, fresh.scale),
              std::make_tuple(0.0f, 1.0f, 1.0f));
    expectEntry(fresh, 255, 1, 1, 1);
    // Groups of entry, red, green, blue. Hue i/255 * 5/6: yellow at 1/6
    // (i = 51), cyan at 1/2 (i = 153).
    const std::pair<void (VelkColormap::*)(), std::vector<float>> presets[] = {
        {&VelkColormap::createGreyRamp, {0, 0, 0, 0, 51, 0.2f, 0.2f, 0.2f, 255, 1, 1, 1}},
        {&VelkColormap::createHotIron, {0, 1, 0, 0, 127, 1, 1, 0, 128, 1, 1, 0, 255, 1, 1, 1}},
        {&VelkColormap::createBlueWhiteRed, {0, 0, 0, 1, 127, 1, 1, 1, 128, 1, 1, 1, 255, 1, 0, 0}},
        {&VelkColormap::createHueRamp, {0, 1, 0, 0, 51, 1, 1, 0, 153, 0, 1, 1, 255, 1, 0, 1}}};
    for (const auto& preset : presets) {
        VelkColormap map;
        map.setMinMax(3, 5);
        (map.*preset.first)();
        for (size_t k = 0; k < preset.second.size(); k += 4) {
            const float* e = &preset.second[k];
            expectEntry(map, static_cast<int>(e[0]), e[1], e[2], e[3]);
        }
        EXPECT_EQ(std::make_tuple(map.min, map.max, map.scale), std::make_tuple(3.0f, 5.0f, 0.5f));
    }
}

TEST(Colormap, GetColor1ClampsAndInterpolates) {
    VelkColormap map;
    map.createHueRamp();
    map.colors[127][0] = 0.2f;
    map.colors[128][0] = 0.6f;
    float rgb[3];
    for (float t : {0.0f, -1.0f, NAN, -INFINITY, 1.0f, 7.0f, INFINITY}) {
        map.getColor1(t, rgb);
        const float* want = map.colors[t > 0.5f ? 255 : 0];
        EXPECT_EQ(std::vector<float>(rgb, rgb + 3), std::vector<float>(want, want + 3)) << t;
    }
    map.getColor1(0.5f, rgb);  // f = 127.5: halfway between entries 127 and 128
    EXPECT_FLOAT_EQ(rgb[0], 0.4f);
    EXPECT_FLOAT_EQ(rgb[1], 0.5f * (map.colors[127][1] + map.colors[128][1]));
    map.createGreyRamp();  // the identity
    for (float t : {0.25f, 0.999f, std::nextafter(1.0f, 0.0f), 1e-30f}) {
        map.getColor1(t, rgb);
        EXPECT_NEAR(rgb[0], t, 1e-6f) << t;
    }
}

TEST(Colormap, FlipMultiplyAndGammaWriteToDestinationOrSelf) {
    VelkColormap src, dst, m;
    src.createHotIron();
    src.setMinMax(-1, 1);
    src.flip(&dst);
    EXPECT_EQ(dst.scale, 0.5f);  // the destination takes the source's range
    for (int i = 0; i < 256; i++)
        expectEntry(dst, i, src.colors[255 - i][0], src.colors[255 - i][1], src.colors[255 - i][2]);
    dst.flip(nullptr);
    for (int i = 0; i < 256; i++)
        expectEntry(dst, i, src.colors[i][0], src.colors[i][1], src.colors[i][2]);

    m.colors[10][0] = 0.6f;
    m.colors[10][1] = 0.3f;
    m.colors[10][2] = 0.5f;
    m.multiply(2, &dst);
    expectEntry(dst, 10, 1.0f, 0.6f, 1.0f);  // clamped above
    m.multiply(-1, nullptr);
    expectEntry(m, 10, -0.6f, -0.3f, -0.5f);  // not below

    m.createGreyRamp();
    m.gamma(2, nullptr);
    expectEntry(m, 51, 0.04f, 0.04f, 0.04f);  // 0.2 squared
    m.gamma(0.5f, &m);                        // the map itself as destination
    expectEntry(m, 51, 0.2f, 0.2f, 0.2f);
}

TEST(ColormapFile, WriteIcolLayout) {
    velktest::TempDir dir;
    VelkColormap map;
    map.setMinMax(-1.5f, 2);
    ASSERT_EQ(map.writeIcol(dir.path("grey.icol").c_str()), 1);
    std::string text = velktest::readFile(dir.path("grey.icol"));
    // 64 lines of four groups, entries j, j + 64, j + 128, j + 192, three
    // blanks apart; components truncated; then the range.
    ASSERT_EQ(text.size(), 64u * 74 + 7);
    EXPECT_EQ(text.substr(64 * 74), "-1.5 2\n");
    for (int j = 0; j < 64; j++) {
        std::string line = text.substr(74 * j, 74);
        EXPECT_EQ(line.substr(16, 3) + line.substr(35, 3) + line.substr(54, 3) + line.substr(73),
                  "         \n");
        for (int k = 0; k < 4; k++) {
            int e = j + 64 * k, idx, r, g, b;
            ASSERT_EQ(
                std::sscanf(line.substr(19 * k, 16).c_str(), "%4d%4d%4d%4d", &idx, &r, &g, &b), 4);
            EXPECT_EQ(idx, e);
            EXPECT_TRUE(r == g && g == b && (r == e || r == e - 1)) << line;
        }
    }
}

// The four-group variant keeps the range; the three-column one, which has no
// range line, gets 0 .. 1.
TEST(ColormapFile, RoundTripsWithinOneStepInBothVariants) {
    velktest::TempDir dir;
    VelkColormap map, four, three;
    map.createHueRamp();
    map.multiply(0.9f, nullptr);
    map.setMinMax(-2, 3.5f);
    ASSERT_EQ(map.writeIcol(dir.path("four.icol").c_str()), 1);
    four.createBlueWhiteRed();
    ASSERT_EQ(four.readIcol(dir.path("four.icol").c_str()), 1);
    EXPECT_EQ(four.min, -2.0f);
    EXPECT_EQ(four.max, 3.5f);

    std::string text;
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++)
            text += std::to_string(static_cast<int>(255 * map.colors[i][c])) + " ";
        text += "\n";
    }
    velktest::writeFile(dir.path("three.icol"), text);
    three.setMinMax(7, 9);
    ASSERT_EQ(three.readIcol(dir.path("three.icol").c_str()), 1);
    EXPECT_EQ(std::make_tuple(three.min, three.max, three.scale),
              std::make_tuple(0.0f, 1.0f, 1.0f));
    for (const VelkColormap* back : {&four, &three}) {
        for (int i = 0; i < 256; i++) {
            for (int c = 0; c < 3; c++) {
                float d = map.colors[i][c] - back->colors[i][c];
                EXPECT_TRUE(d >= -1e-6f && d < 1.0f / 255 + 1e-6f) << i << "," << c << ": " << d;
            }
        }
    }
}

// Sextant borders at several lightnesses, and mid-sextant colours: r, g, b
// then h, s, l from the usual HSL definitions.
TEST(ColorSpace, SextantBordersRoundTrip) {
    const float cases[][6] = {{1, 1, 0, 1.0f / 6, 1, 0.5f},
                              {0, 1, 0, 2.0f / 6, 1, 0.5f},
                              {0, 1, 1, 3.0f / 6, 1, 0.5f},
                              {0, 0, 1, 4.0f / 6, 1, 0.5f},
                              {1, 0, 1, 5.0f / 6, 1, 0.5f},
                              {0.5f, 0.5f, 0, 1.0f / 6, 1, 0.25f},
                              {0, 0.5f, 0.5f, 0.5f, 1, 0.25f},
                              {1, 1, 0.5f, 1.0f / 6, 1, 0.75f},
                              {0.5f, 0.5f, 1, 4.0f / 6, 1, 0.75f},
                              {1, 0.5f, 0, 1.0f / 12, 1, 0.5f},
                              {0.25f, 0.5f, 0.75f, 7.0f / 12, 0.5f, 0.5f},
                              {0.75f, 0.25f, 0.5f, 11.0f / 12, 0.5f, 0.5f}};
    for (const auto& c : cases) {
        float hsl[3] = {-9, -9, -9}, rgb[3] = {-9, -9, -9};
        RGB_to_HSL(c, hsl);
        HSL_to_RGB(hsl, rgb);
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR(hsl[k], c[3 + k], 1e-6f) << c[0] << " " << c[1] << " " << c[2];
            EXPECT_NEAR(rgb[k], c[k], 1e-6f) << c[0] << " " << c[1] << " " << c[2];
        }
    }
}

// Red (green equal to blue below it) takes hue 6/6, which has no sextant:
// HSL_to_RGB then writes nothing, as for any hue outside [0, 1). Black keeps
// hue and saturation, a grey its hue; zero lightness is black.
TEST(ColorSpace, UnwrittenResultsAndKeptHues) {
    const float reds[][3] = {{1, 0, 0}, {1, 0.75f, 0.75f}, {0.5f, 0, 0}};
    for (const auto& red : reds) {
        float hsl[3];
        RGB_to_HSL(red, hsl);
        EXPECT_EQ(hsl[0], 1.0f);
    }
    for (float h : {1.0f, 1.5f, -0.5f, NAN}) {
        float hsl[3] = {h, 1, 0.5f}, rgb[3] = {0.1f, 0.2f, 0.3f};
        HSL_to_RGB(hsl, rgb);
        EXPECT_EQ(std::vector<float>(rgb, rgb + 3), (std::vector<float>{0.1f, 0.2f, 0.3f})) << h;
    }
    const float black[3] = {0, 0, 0}, grey[3] = {0.6f, 0.6f, 0.6f};
    float hsl[3] = {0.3f, 0.4f, 0.6f}, dark[3] = {0.5f, 1, 0}, rgb[3] = {1, 1, 1};
    RGB_to_HSL(black, hsl);
    EXPECT_EQ(std::vector<float>(hsl, hsl + 3), (std::vector<float>{0.3f, 0.4f, 0.0f}));
    RGB_to_HSL(grey, hsl);
    EXPECT_EQ(std::vector<float>(hsl, hsl + 3), (std::vector<float>{0.3f, 0.0f, 0.6f}));
    HSL_to_RGB(dark, rgb);
    EXPECT_EQ(std::vector<float>(rgb, rgb + 3), (std::vector<float>{0, 0, 0}));
}
