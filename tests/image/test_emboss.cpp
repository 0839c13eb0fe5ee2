// Relief shading lit from a fixed direction and along a vector field.
#include <gtest/gtest.h>

#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"

namespace {

const float kPi = 3.14159265358979323846f;
const float kFlowElevation = static_cast<float>(0.2 * 3.14159265358979323846);

// What a uniform grey image shades to: 128 on the border, `inside` elsewhere.
Bytes flat(int w, int h, int inside) {
    return bytesOf(greyImage(w, h, [&](int x, int y) {
        return x == 0 || y == 0 || x == w - 1 || y == h - 1 ? 128 : inside;
    }));
}

VelkImage uniform(int w, int h, int value) {
    return greyImage(w, h, [&](int, int) { return value; });
}

}  // namespace

TEST(Emboss, UniformImagesAreFlatGroundAndTinyImagesAreLeftAlone) {
    // Lz = trunc(255.9 sin(pi/4)) = 180; with two rows everything is border.
    VelkImage image = uniform(5, 4, 77), dst, low = uniform(3, 2, 5);
    image.emboss(0.3f, kPi / 4, 3, &dst);
    image.emboss(0.3f, kPi / 4, 3, nullptr);
    low.emboss(0, 1, 3, nullptr);
    EXPECT_EQ(bytesOf(dst), flat(5, 4, 180));
    EXPECT_EQ(bytesOf(image), flat(5, 4, 180));
    EXPECT_EQ(bytesOf(low), Bytes(6, 128));
    // Narrower or lower than 2 pixels, or a relief width of 0: left as it is.
    VelkImage thin = uniform(1, 4, 5), untouched = uniform(2, 2, 9);
    thin.emboss(0, 1, 3, &untouched);
    thin.emboss(0, 1, 3, nullptr);
    image.emboss(0, 1, 0, &untouched);
    EXPECT_EQ(bytesOf(thin), Bytes(4, 5));
    EXPECT_EQ(bytesOf(untouched), Bytes(4, 9));
}

TEST(Emboss, RampsLitFromEachSideWithAndWithoutTexture) {
    // Rising by 10 per column (or row): Nx = -60 (or Ny = 60), Nz = 1530 / 3 =
    // 510, |N| = sqrt(3600 + 260100). With elevation pi/4 the light is
    // (180 cos a, 180 sin a, 180) truncated, so d = 91800 -+ 10800 and the
    // shade trunc(d / 513.517): 157 lit from where the ramp falls, 199 from
    // where it rises, 178 from the sides. A relief width of 6 gives Nz = 255:
    // (10800 + 45900) / sqrt(3600 + 65025) = 216, from the side 175.
    struct Case {
        float azimuth;
        int width, alongX, alongY;
    } cases[] = {{0, 3, 157, 178},
                 {kPi / 2, 3, 178, 199},
                 {kPi, 3, 199, 178},
                 {-kPi / 2, 3, 178, 157},
                 {kPi, 6, 216, 175}};
    VelkImage alongX = greyImage(5, 5, [](int x, int) { return 10 * x; });
    VelkImage alongY = greyImage(5, 5, [](int, int y) { return 10 * y; });
    // A colour image is lit through its grey version, and each colour byte is
    // multiplied by the shade and shifted down by 8 bits.
    VelkImage colour(5, 5, 3), grey;
    for (int i = 0; i < 75; i++) colour.data[i] = static_cast<unsigned char>(40 + 3 * i);
    colour.colorToGrey(&grey);
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.azimuth << " width " << c.width);
        VelkImage outX, outY, shade, out;
        alongX.emboss(c.azimuth, kPi / 4, c.width, &outX);
        alongY.emboss(c.azimuth, kPi / 4, c.width, &outY);
        grey.emboss(c.azimuth, kPi / 4, c.width, &shade);
        colour.emboss(c.azimuth, kPi / 4, c.width, &out);
        EXPECT_EQ(bytesOf(outX), flat(5, 5, c.alongX));
        EXPECT_EQ(bytesOf(outY), flat(5, 5, c.alongY));
        Bytes border = flat(5, 5, 0);
        for (int i = 0; i < 75; i++)
            EXPECT_EQ(out.data[i], border[i / 3] ? 128 : (colour.data[i] * shade.data[i / 3]) >> 8);
    }
    // Straight down, Lz = 255: a white byte becomes 254.
    VelkImage white(3, 3, 3);
    white.clear(255);
    white.emboss(0, kPi / 2, 3, nullptr);
    EXPECT_EQ(white.data[12], 254);
}

TEST(Emboss, LitAlongTheFlow) {
    // (1, 0) everywhere is the default light, that of azimuth pi/2; (0, 1),
    // steering the other term, that of azimuth 0. A field of another size is
    // resampled first.
    struct Case {
        float vx, vy;
        int fieldWidth, fieldHeight;
        float azimuth;
    } cases[] = {{1, 0, 9, 7, kPi / 2}, {3, 0, 4, 3, kPi / 2}, {0, 1, 9, 7, 0}, {0, -2, 9, 7, kPi}};
    for (int channels : {1, 3}) {
        VelkImage image(9, 7, channels);
        image.createRandom(0, 11);
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << channels << " channels, " << c.vx << "," << c.vy);
            VelkVectorField field(c.fieldWidth, c.fieldHeight, nullptr);
            for (int n = 0; n < c.fieldWidth * c.fieldHeight; n++) {
                field.data[2 * n] = c.vx;
                field.data[2 * n + 1] = c.vy;
            }
            VelkImage alongFlow, fixed;
            image.emboss(field, &alongFlow);
            image.emboss(c.azimuth, kFlowElevation, 3, &fixed);
            EXPECT_EQ(bytesOf(alongFlow), bytesOf(fixed));
        }
    }
    // Grey pixels without flow are cleared, colour pixels are not. Flat
    // ground: 150 = trunc(255.9 sin(0.2 pi)).
    VelkVectorField field(9, 7, nullptr);
    for (int n = 0; n < 63; n++) {
        field.data[2 * n] = n % 4 == 0 ? 0.0f : 1.0f;
        field.data[2 * n + 1] = 0;
    }
    VelkImage grey = uniform(9, 7, 100), colour(9, 7, 3);
    colour.clear(200);
    grey.emboss(field, nullptr);
    colour.emboss(field, nullptr);
    Bytes shade = flat(9, 7, 150);
    for (int n = 0; n < 63; n++) {
        EXPECT_EQ(grey.data[n], n % 4 == 0 ? 0 : shade[n]) << n;
        EXPECT_EQ(colour.data[3 * n], shade[n] == 128 ? 128 : (200 * 150) >> 8) << n;
    }
}
