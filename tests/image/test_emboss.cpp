// Relief shading lit from a fixed direction and along a vector field.
#include <gtest/gtest.h>

#include <vector>

#include "velk/velk.h"

namespace {

const double kPi = 3.14159265358979323846;

std::vector<int> bytesOf(const VelkImage& image) {
    return std::vector<int>(image.data, image.data + image.width * image.height * image.nChannels);
}

// Interior pixel (x, y) of a one-channel image.
int at(const VelkImage& image, int x, int y) {
    return image.data[y * image.width + x];
}

// width x height grey image with value(x, y).
template <typename F>
VelkImage greyImage(int width, int height, F value) {
    VelkImage image(width, height, 1);
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) image.data[y * width + x] = value(x, y);
    }
    return image;
}

bool isBorder(const VelkImage& image, int x, int y) {
    return x == 0 || y == 0 || x == image.width - 1 || y == image.height - 1;
}

}  // namespace

TEST(Emboss, UniformImageIsFlatGround) {
    // Lz = trunc(255.9 sin(pi/4)) = 180 inside, 128 on the border.
    VelkImage image = greyImage(5, 4, [](int, int) { return 77; });
    VelkImage dst;
    image.emboss(0.3f, static_cast<float>(kPi / 4), 3, &dst);
    EXPECT_EQ(image.data[0], 77);
    image.emboss(0.3f, static_cast<float>(kPi / 4), 3, nullptr);
    EXPECT_EQ(bytesOf(dst), bytesOf(image));
    for (int y = 0; y < 4; y++) {
        for (int x = 0; x < 5; x++) EXPECT_EQ(at(image, x, y), isBorder(image, x, y) ? 128 : 180);
    }

    // Two rows: both are border.
    VelkImage low = greyImage(3, 2, [](int, int) { return 5; });
    low.emboss(0, 1, 3, nullptr);
    EXPECT_EQ(bytesOf(low), std::vector<int>(6, 128));

    // Narrower or lower than 2 pixels, or a relief width of 0: left as it is.
    VelkImage thin = greyImage(1, 4, [](int, int) { return 5; });
    VelkImage untouched = greyImage(2, 2, [](int, int) { return 9; });
    thin.emboss(0, 1, 3, &untouched);
    thin.emboss(0, 1, 3, nullptr);
    EXPECT_EQ(bytesOf(thin), std::vector<int>(4, 5));
    EXPECT_EQ(bytesOf(untouched), std::vector<int>(4, 9));
    image.emboss(0, 1, 0, &untouched);
    EXPECT_EQ(bytesOf(untouched), std::vector<int>(4, 9));
}

TEST(Emboss, RampsLitFromEachSide) {
    // Rising by 10 per column (or row): Nx = -60 (or Ny = 60), Nz = 1530 / 3 =
    // 510, |N| = sqrt(3600 + 260100). With elevation pi/4 the light is
    // (180 cos a, 180 sin a, 180) truncated, so d = 91800 -+ 10800 and the shade
    // is trunc(d / 513.517): 157 lit from where the ramp falls, 199 from where
    // it rises, 178 from the sides.
    const float elevation = static_cast<float>(kPi / 4);
    struct Case {
        double azimuth;
        int alongX, alongY;
    };
    const Case cases[] = {
        {0, 157, 178},
        {kPi / 2, 178, 199},
        {kPi, 199, 178},
        {-kPi / 2, 178, 157},
    };
    VelkImage alongX = greyImage(5, 5, [](int x, int) { return 10 * x; });
    VelkImage alongY = greyImage(5, 5, [](int, int y) { return 10 * y; });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.azimuth);
        VelkImage outX, outY;
        alongX.emboss(static_cast<float>(c.azimuth), elevation, 3, &outX);
        alongY.emboss(static_cast<float>(c.azimuth), elevation, 3, &outY);
        for (int y = 1; y < 4; y++) {
            for (int x = 1; x < 4; x++) {
                EXPECT_EQ(at(outX, x, y), c.alongX);
                EXPECT_EQ(at(outY, x, y), c.alongY);
            }
        }
    }

    // A wider relief flattens the normal less: Nz = 1530 / 6 = 255, so the
    // light from where the ramp rises gives (10800 + 45900) / sqrt(3600 + 65025).
    VelkImage wide;
    alongX.emboss(static_cast<float>(kPi), elevation, 6, &wide);
    EXPECT_EQ(at(wide, 2, 2), 216);
}

TEST(Emboss, ColourImagesDarkenTheirColours) {
    // A colour ramp is lit through its grey version; each colour byte is
    // multiplied by the shade and shifted down by 8 bits.
    VelkImage colour(5, 4, 3);
    for (int i = 0; i < 60; i++) colour.data[i] = static_cast<unsigned char>(40 + 11 * i);
    VelkImage grey;
    colour.colorToGrey(&grey);
    VelkImage shade, out;
    grey.emboss(2.0f, 0.6f, 3, &shade);
    colour.emboss(2.0f, 0.6f, 3, &out);
    ASSERT_EQ(out.nChannels, 3);
    for (int y = 0; y < 4; y++) {
        for (int x = 0; x < 5; x++) {
            for (int c = 0; c < 3; c++) {
                int i = (y * 5 + x) * 3 + c;
                int expected =
                    isBorder(shade, x, y) ? 128 : (colour.data[i] * at(shade, x, y)) >> 8;
                EXPECT_EQ(out.data[i], expected) << x << "," << y << "," << c;
            }
        }
    }

    // Straight down, Lz = 255: a white byte becomes 254.
    VelkImage white(3, 3, 3);
    white.clear(255);
    white.emboss(0, static_cast<float>(kPi / 2), 3, nullptr);
    EXPECT_EQ(white.data[12], 254);
    EXPECT_EQ(white.data[0], 128);
}

TEST(Emboss, LitAlongTheFlow) {
    const float elevation = static_cast<float>(0.2 * kPi);

    // (1, 0) everywhere is the default light, that of azimuth pi/2; (0, 1),
    // steering the other term, that of azimuth 0. A field of another size is
    // resampled first.
    struct Case {
        float vx, vy;
        int fieldWidth, fieldHeight;
        double azimuth;
    };
    const Case cases[] = {
        {1, 0, 9, 7, kPi / 2},
        {3, 0, 4, 3, kPi / 2},
        {0, 1, 9, 7, 0},
        {0, -2, 9, 7, kPi},
    };
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
            image.emboss(static_cast<float>(c.azimuth), elevation, 3, &fixed);
            EXPECT_EQ(bytesOf(alongFlow), bytesOf(fixed));
        }
    }

    // Grey pixels without flow are cleared; colour pixels are not.
    VelkVectorField field(9, 7, nullptr);
    for (int n = 0; n < 63; n++) {
        field.data[2 * n] = n % 4 == 0 ? 0.0f : 1.0f;
        field.data[2 * n + 1] = 0;
    }
    // Flat ground: 150 = trunc(255.9 sin(0.2 pi)) inside, 128 on the border.
    VelkImage grey = greyImage(9, 7, [](int, int) { return 100; });
    grey.emboss(field, nullptr);
    VelkImage colour(9, 7, 3);
    colour.clear(200);
    colour.emboss(field, nullptr);
    for (int n = 0; n < 63; n++) {
        int flat = isBorder(grey, n % 9, n / 9) ? 128 : 150;
        EXPECT_EQ(grey.data[n], n % 4 == 0 ? 0 : flat) << n;
        EXPECT_EQ(colour.data[3 * n], flat == 128 ? 128 : (200 * 150) >> 8) << n;
    }
}
