#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

void expectEntry(const VelkColormap& map, int i, float r, float g, float b) {
    EXPECT_NEAR(map.colors[i][0], r, 1e-6f) << "entry " << i;
    EXPECT_NEAR(map.colors[i][1], g, 1e-6f) << "entry " << i;
    EXPECT_NEAR(map.colors[i][2], b, 1e-6f) << "entry " << i;
}

void expectColor(const float* rgb, const float* want) {
    for (int c = 0; c < 3; c++) EXPECT_EQ(rgb[c], want[c]) << "component " << c;
}

}  // namespace

TEST(Colormap, FreshMapIsAGreyRampOverZeroToOne) {
    VelkColormap map;
    expectEntry(map, 0, 0, 0, 0);
    expectEntry(map, 255, 1, 1, 1);
    float lo, hi;
    map.getMinMax(lo, hi);
    EXPECT_EQ(lo, 0.0f);
    EXPECT_EQ(hi, 1.0f);
    EXPECT_EQ(map.scale, 1.0f);

    map.setMinMax(-2, 6);
    EXPECT_EQ(map.scale, 0.125f);
    VelkColormap copy(map);
    VelkColormap assigned;
    assigned = map;
    for (const VelkColormap* m : {&copy, &assigned}) {
        EXPECT_EQ(m->min, -2.0f);
        EXPECT_EQ(m->max, 6.0f);
        EXPECT_EQ(m->scale, 0.125f);
        expectEntry(*m, 128, 128 / 255.0f, 128 / 255.0f, 128 / 255.0f);
    }
}

TEST(Colormap, PresetsAtTheirEndsAndMiddleKeepTheRange) {
    VelkColormap map;
    map.setMinMax(3, 5);

    map.createGreyRamp();
    expectEntry(map, 0, 0, 0, 0);
    expectEntry(map, 51, 0.2f, 0.2f, 0.2f);
    expectEntry(map, 255, 1, 1, 1);

    map.createHotIron();
    expectEntry(map, 0, 1, 0, 0);
    expectEntry(map, 127, 1, 1, 0);
    expectEntry(map, 128, 1, 1, 0);
    expectEntry(map, 255, 1, 1, 1);

    map.createBlueWhiteRed();
    expectEntry(map, 0, 0, 0, 1);
    expectEntry(map, 127, 1, 1, 1);
    expectEntry(map, 128, 1, 1, 1);
    expectEntry(map, 255, 1, 0, 0);

    // Hue i/255 * 5/6: red, yellow at 1/6 (i = 51), cyan at 1/2 (i = 153), magenta.
    map.createHueRamp();
    expectEntry(map, 0, 1, 0, 0);
    expectEntry(map, 51, 1, 1, 0);
    expectEntry(map, 153, 0, 1, 1);
    expectEntry(map, 255, 1, 0, 1);

    EXPECT_EQ(map.min, 3.0f);
    EXPECT_EQ(map.max, 5.0f);
    EXPECT_EQ(map.scale, 0.5f);
}

TEST(Colormap, GetColor1ClampsAndInterpolates) {
    VelkColormap map;
    map.createHueRamp();
    map.colors[127][0] = 0.2f;
    map.colors[128][0] = 0.6f;
    float rgb[3];

    for (float t : {0.0f, -1.0f, NAN, -INFINITY}) {
        map.getColor1(t, rgb);
        expectColor(rgb, map.colors[0]);
    }
    for (float t : {1.0f, 7.0f, INFINITY}) {
        map.getColor1(t, rgb);
        expectColor(rgb, map.colors[255]);
    }
    map.getColor1(0.5f, rgb);  // f = 127.5: halfway between entries 127 and 128
    EXPECT_FLOAT_EQ(rgb[0], 0.4f);
    EXPECT_FLOAT_EQ(rgb[1], 0.5f * (map.colors[127][1] + map.colors[128][1]));

    map.createGreyRamp();
    for (float t : {0.25f, 0.999f, std::nextafter(1.0f, 0.0f), 1e-30f}) {
        map.getColor1(t, rgb);
        EXPECT_NEAR(rgb[0], t, 1e-6f) << t;  // the grey ramp is the identity
    }
}

TEST(Colormap, FlipMultiplyAndGammaWriteToDestinationOrSelf) {
    VelkColormap src;
    src.createHotIron();
    src.setMinMax(-1, 1);

    VelkColormap dst;
    src.flip(&dst);
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) EXPECT_EQ(dst.colors[i][c], src.colors[255 - i][c]);
    }
    EXPECT_EQ(dst.min, -1.0f);  // the destination takes the source's range
    EXPECT_EQ(dst.scale, 0.5f);
    dst.flip(nullptr);
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) EXPECT_EQ(dst.colors[i][c], src.colors[i][c]);
    }

    VelkColormap m;
    m.colors[10][0] = 0.6f;
    m.colors[10][1] = 0.3f;
    m.colors[10][2] = 0.5f;
    VelkColormap doubled;
    m.multiply(2, &doubled);
    expectEntry(doubled, 10, 1.0f, 0.6f, 1.0f);
    expectEntry(m, 10, 0.6f, 0.3f, 0.5f);  // the source is unchanged
    m.multiply(-1, nullptr);
    expectEntry(m, 10, -0.6f, -0.3f, -0.5f);

    VelkColormap g;
    g.gamma(2, nullptr);
    EXPECT_NEAR(g.colors[51][0], 0.04f, 1e-7f);  // 0.2 squared
    EXPECT_EQ(g.colors[255][0], 1.0f);
    g.gamma(0.5f, &g);  // destination may be the map itself
    EXPECT_NEAR(g.colors[51][0], 0.2f, 1e-7f);
}

TEST(ColormapFile, WriteIcolLayout) {
    velktest::TempDir dir;
    VelkColormap map;
    map.setMinMax(-1.5f, 2);
    std::string path = dir.path("grey.icol");
    ASSERT_EQ(map.writeIcol(path.c_str()), 1);
    std::string text = velktest::readFile(path);

    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    ASSERT_EQ(lines.size(), 65u);
    EXPECT_EQ(start, text.size());  // ends with a newline
    EXPECT_EQ(lines[0].substr(0, 16), "   0   0   0   0");
    EXPECT_EQ(lines[64], "-1.5 2");
    for (int j = 0; j < 64; j++) {
        ASSERT_EQ(lines[j].size(), 73u) << lines[j];
        for (int k = 0; k < 4; k++) {
            int e = j + 64 * k;
            std::string group = lines[j].substr(19 * k, 16);
            int idx, r, g, b;
            ASSERT_EQ(std::sscanf(group.c_str(), "%4d%4d%4d%4d", &idx, &r, &g, &b), 4);
            EXPECT_EQ(idx, e);
            EXPECT_TRUE(r == g && g == b && (r == e || r == e - 1)) << group;  // truncated
            if (k < 3) {
                EXPECT_EQ(lines[j].substr(19 * k + 16, 3), "   ");
            }
        }
    }
}

TEST(ColormapFile, RoundTripsWithinOneStepInBothVariants) {
    velktest::TempDir dir;
    VelkColormap map;
    map.createHueRamp();
    map.multiply(0.9f, nullptr);
    map.setMinMax(-2, 3.5f);

    // Four-group variant, written by writeIcol, range included.
    std::string four = dir.path("four.icol");
    ASSERT_EQ(map.writeIcol(four.c_str()), 1);
    VelkColormap back;
    back.createBlueWhiteRed();
    ASSERT_EQ(back.readIcol(four.c_str()), 1);
    EXPECT_EQ(back.min, -2.0f);
    EXPECT_EQ(back.max, 3.5f);

    // Three-column variant, no range line: the range becomes 0 .. 1.
    std::string three = dir.path("three.icol");
    std::string text;
    for (int i = 0; i < 256; i++) {
        char line[64];
        std::snprintf(line, sizeof line, "%d %d %d\n", static_cast<int>(255 * map.colors[i][0]),
                      static_cast<int>(255 * map.colors[i][1]),
                      static_cast<int>(255 * map.colors[i][2]));
        text += line;
    }
    velktest::writeFile(three, text);
    VelkColormap back3;
    back3.setMinMax(7, 9);
    ASSERT_EQ(back3.readIcol(three.c_str()), 1);
    EXPECT_EQ(back3.min, 0.0f);
    EXPECT_EQ(back3.max, 1.0f);
    EXPECT_EQ(back3.scale, 1.0f);

    for (const VelkColormap* b : {&back, &back3}) {
        for (int i = 0; i < 256; i++) {
            for (int c = 0; c < 3; c++) {
                float d = map.colors[i][c] - b->colors[i][c];
                EXPECT_TRUE(d >= -1e-6f && d < 1.0f / 255 + 1e-6f)
                    << "entry " << i << " component " << c << ": " << d;
            }
        }
    }
}
