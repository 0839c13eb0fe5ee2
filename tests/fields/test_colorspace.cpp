#include <gtest/gtest.h>

#include <cmath>

#include "velk/velk.h"

namespace {

struct HslCase {
    float rgb[3];
    float hsl[3];
};

// Sextant borders at several lightnesses; hue in sixths, saturation and
// lightness from the usual HSL definitions.
const HslCase kBorders[] = {
    {{1, 1, 0}, {1.0f / 6, 1, 0.5f}},  // yellow
    {{0, 1, 0}, {2.0f / 6, 1, 0.5f}},  // green
    {{0, 1, 1}, {3.0f / 6, 1, 0.5f}},  // cyan
    {{0, 0, 1}, {4.0f / 6, 1, 0.5f}},  // blue
    {{1, 0, 1}, {5.0f / 6, 1, 0.5f}},  // magenta
    {{0.5f, 0.5f, 0}, {1.0f / 6, 1, 0.25f}},
    {{0, 0.5f, 0.5f}, {3.0f / 6, 1, 0.25f}},
    {{1, 1, 0.5f}, {1.0f / 6, 1, 0.75f}},
    {{0.5f, 0.5f, 1}, {4.0f / 6, 1, 0.75f}},
    {{1, 0.5f, 0}, {1.0f / 12, 1, 0.5f}},  // orange, mid-sextant
    {{0.25f, 0.5f, 0.75f}, {7.0f / 12, 0.5f, 0.5f}},
    {{0.75f, 0.25f, 0.5f}, {11.0f / 12, 0.5f, 0.5f}},
};

}  // namespace

TEST(ColorSpace, SextantBordersConvertAndRoundTrip) {
    for (const HslCase& c : kBorders) {
        SCOPED_TRACE(testing::Message() << c.rgb[0] << " " << c.rgb[1] << " " << c.rgb[2]);
        float hsl[3] = {-9, -9, -9};
        RGB_to_HSL(c.rgb, hsl);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(hsl[k], c.hsl[k], 1e-6f);
        float rgb[3] = {-9, -9, -9};
        HSL_to_RGB(hsl, rgb);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(rgb[k], c.rgb[k], 1e-6f);
    }
}

TEST(ColorSpace, RedTakesHueOneWhichHasNoSextant) {
    // Whenever green equals blue below red, the hue comes out as 6/6.
    const float reds[][3] = {{1, 0, 0}, {1, 0.75f, 0.75f}, {0.5f, 0, 0}};
    for (const auto& rgbIn : reds) {
        float hsl[3];
        RGB_to_HSL(rgbIn, hsl);
        EXPECT_EQ(hsl[0], 1.0f);
    }
    const float hues[] = {1.0f, 1.5f, -0.5f, NAN};
    for (float h : hues) {
        float hsl[3] = {h, 1, 0.5f};
        float rgb[3] = {0.1f, 0.2f, 0.3f};
        HSL_to_RGB(hsl, rgb);
        EXPECT_EQ(rgb[0], 0.1f) << "hue " << h;
        EXPECT_EQ(rgb[1], 0.2f) << "hue " << h;
        EXPECT_EQ(rgb[2], 0.3f) << "hue " << h;
    }
}

TEST(ColorSpace, BlackAndGreysLeaveTheHue) {
    float hsl[3] = {0.3f, 0.4f, 0.6f};
    const float black[3] = {0, 0, 0};
    RGB_to_HSL(black, hsl);
    EXPECT_EQ(hsl[0], 0.3f);
    EXPECT_EQ(hsl[1], 0.4f);
    EXPECT_EQ(hsl[2], 0.0f);

    const float grey[3] = {0.6f, 0.6f, 0.6f};
    RGB_to_HSL(grey, hsl);
    EXPECT_EQ(hsl[0], 0.3f);
    EXPECT_EQ(hsl[1], 0.0f);
    EXPECT_FLOAT_EQ(hsl[2], 0.6f);

    // Zero lightness is black whatever the hue.
    float dark[3] = {0.5f, 1, 0};
    float rgb[3] = {1, 1, 1};
    HSL_to_RGB(dark, rgb);
    EXPECT_EQ(rgb[0], 0.0f);
    EXPECT_EQ(rgb[1], 0.0f);
    EXPECT_EQ(rgb[2], 0.0f);
}
