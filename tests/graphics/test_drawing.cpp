// Pen, pixels and lines drawn by calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <random>
#include <vector>

#include "GraphicsTestSupport.h"

using gfxtest::blank;
using gfxtest::picture;

TEST(Graphics, PenColourOnRgbAndGreyOnGreyImages) {
    const struct {
        int r, g, b;
        int red, green, blue, grey;
    } cases[] = {
        {255, 10, 20, 255, 10, 20, 85},          // 76.5 + 5.9 + 2.2 + 0.5
        {300, 0, 0, 44, 0, 0, 90},               // low 8 bits; grey from the full 300
        {1000, 1000, 1000, 232, 232, 232, 255},  // grey clamped above
        {-5, -5, -5, 251, 251, 251, 0},          // and below
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.r);
        VelkGraphics g;
        g.setColor(c.r, c.g, c.b);
        VelkImage rgb = blank(2, 1, 3);
        unsigned char buffer[12] = {};
        VelkImage padded(3, 2, 1, 6, buffer);  // rows 6 bytes apart; the padding stays
        g.drawPixel(rgb, 1, 0);
        g.drawLine(padded, 0, 1, 2, 1);
        const int k = c.grey;
        EXPECT_EQ(std::vector<int>(rgb.data, rgb.data + 6),
                  (std::vector<int>{0, 0, 0, c.red, c.green, c.blue}));
        EXPECT_EQ(std::vector<int>(buffer, buffer + 12),
                  (std::vector<int>{0, 0, 0, 0, 0, 0, k, k, k, 0, 0, 0}));
    }
}

namespace {

// The line walk step by step from its left end, with the pen's square
// (clipped) at every point.
VelkImage fullWalk(int width, int height, int pen, std::int64_t x0, std::int64_t y0,
                   std::int64_t x1, std::int64_t y1) {
    VelkImage image = blank(width, height);
    if (x1 < x0) {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    const std::int64_t dx = x1 - x0, sy = y1 < y0 ? -1 : 1, ady = (y1 - y0) * sy;
    const bool steep = ady > dx;
    const std::int64_t a = steep ? dx : ady, major = steep ? ady : dx;
    std::int64_t x = x0, y = y0, e = 2 * a - major;
    for (std::int64_t k = 0;; k++) {
        for (std::int64_t py = std::max<std::int64_t>(y - pen / 2, 0);
             py < std::min<std::int64_t>(y - pen / 2 + pen, height); py++) {
            for (std::int64_t px = std::max<std::int64_t>(x - pen / 2, 0);
                 px < std::min<std::int64_t>(x - pen / 2 + pen, width); px++) {
                image.data[py * width + px] = 255;
            }
        }
        if (k == major) return image;
        if (e > 0 || !steep) x++;
        if (e > 0 || steep) y += sy;
        e += e > 0 ? 2 * (a - major) : 2 * a;
    }
}

}  // namespace

// Random lines, half of them through a pixel of the image and the rest
// anywhere, from short ones to ones far longer than the image, with pens from
// none to wider than the image.
TEST(Graphics, ClippedLinesDrawWhatTheFullWalkDraws) {
    std::mt19937 random(20240611);
    const int pens[] = {1, 1, 2, 3, 4, 7, 16, 30, 41, 0, -2};
    for (int range : {12, 40, 300, 5000, 2000000}) {
        std::uniform_int_distribution<int> coordinate(-range, range);
        for (int i = 0; i < (range > 10000 ? 12 : 150); i++) {
            const int pen = pens[random() % 11];
            int c[4];
            for (int& v : c) v = coordinate(random);
            if (i % 2 == 0) {
                c[2] = 2 * static_cast<int>(random() % 23) - c[0];
                c[3] = 2 * static_cast<int>(random() % 17) - c[1];
            }
            SCOPED_TRACE(testing::Message() << "pen " << pen << " line " << c[0] << "," << c[1]
                                            << " " << c[2] << "," << c[3]);
            VelkImage drawn = blank(23, 17);
            gfxtest::whitePen(pen).drawLine(drawn, c[0], c[1], c[2], c[3]);
            ASSERT_EQ(picture(drawn), picture(fullWalk(23, 17, pen, c[0], c[1], c[2], c[3])));
        }
    }
}

// Lines between the ends of the int range, too long to walk: the walk marks
// in each column the row nearest to the ideal line, halves going back toward
// the start. Each is also drawn transposed, which must give the steep
// counterpart.
TEST(Graphics, LinesBetweenTheEndsOfTheIntRange) {
    const struct {
        int x0, y0, x1, y1;
    } cases[] = {{INT_MIN, 3, INT_MAX, 3},
                 {INT_MIN, INT_MIN / 2, INT_MAX, INT_MAX / 2 + 7},
                 {INT_MIN, 1000000000, INT_MAX, -1000000000},
                 {INT_MIN + 5, 17, INT_MAX - 3, 2},
                 {-1234567891, -1234567, 2045678901, 1234567}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.x0 << "," << c.y0 << " " << c.x1 << "," << c.y1);
        VelkImage flat = blank(40, 30), steep = blank(30, 40), expected = blank(40, 30);
        gfxtest::whitePen().drawLine(flat, c.x0, c.y0, c.x1, c.y1);
        gfxtest::whitePen().drawLine(steep, c.y0, c.x0, c.y1, c.x1);
        const __int128 dx = std::int64_t(c.x1) - c.x0, ady = std::llabs(std::int64_t(c.y1) - c.y0);
        for (int x = 0; x < 40; x++) {
            const __int128 num = 2 * ady * (x - std::int64_t(c.x0)) - dx, den = 2 * dx;
            const __int128 d = num >= 0 ? (num + den - 1) / den : -((-num) / den);
            const std::int64_t y = c.y0 + static_cast<std::int64_t>(c.y1 < c.y0 ? -d : d);
            if (y >= 0 && y < 30) expected.data[y * 40 + x] = 255;
        }
        EXPECT_EQ(picture(flat), picture(expected));
        for (int y = 0; y < 40; y++) {
            for (int x = 0; x < 30; x++) {
                ASSERT_EQ(steep.data[y * 30 + x], flat.data[x * 40 + y]) << x << "," << y;
            }
        }
    }
}
