// Pen, pixels and lines drawn by calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "GraphicsTestSupport.h"

using gfxtest::blank;
using gfxtest::picture;
using Rows = std::vector<std::string>;

TEST(Graphics, DefaultPenAndColours) {
    VelkGraphics g;
    EXPECT_EQ(g.pixelWidth, 1);
    EXPECT_EQ(g.halfWidth, 0);
    EXPECT_EQ(g.grey, 0);

    struct Case {
        int r, g, b;
        int red, green, blue, grey;
    };
    const Case cases[] = {
        {255, 0, 0, 255, 0, 0, 77},              // 76.5 + 0.5
        {300, 0, 0, 44, 0, 0, 90},               // low 8 bits; grey from the full 300
        {1000, 1000, 1000, 232, 232, 232, 255},  // grey clamped above
        {-5, -5, -5, 251, 251, 251, 0},          // and below
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.r);
        g.setColor(c.r, c.g, c.b);
        EXPECT_EQ(g.rgb[0], c.red);
        EXPECT_EQ(g.rgb[1], c.green);
        EXPECT_EQ(g.rgb[2], c.blue);
        EXPECT_EQ(g.grey, c.grey);
    }
}

TEST(Graphics, PixelSquaresAreClippedAtTheBorder) {
    struct Case {
        int width, x, y;
        Rows expected;
    };
    const Case cases[] = {
        {3, 0, 0, {"....", "....", "##..", "##.."}},  // rows and columns -1 .. 1
        {2, 0, 0, {"....", "....", "....", "#..."}},  // x-1 .. x and y-1 .. y
        {4, 3, 3, {".###", ".###", ".###", "...."}},  // 1 .. 4, clipped at 3
        {0, 1, 1, {"....", "....", "....", "...."}}, {-2, 1, 1, {"....", "....", "....", "...."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.width);
        VelkImage image = blank(4, 4);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        g.setPixelWidth(c.width);
        EXPECT_EQ(g.halfWidth, c.width / 2);
        g.drawPixel(image, c.x, c.y);
        EXPECT_EQ(picture(image), c.expected);
    }
}

TEST(Graphics, PixelsTakeTheColourOrTheGreyOfThePen) {
    VelkGraphics g;
    g.setColor(255, 10, 20);  // grey (76.5 + 5.9 + 2.2 + 0.5) = 85
    VelkImage rgb = blank(2, 1, 3);
    VelkImage grey = blank(2, 1, 1);
    VelkImage two = blank(2, 1, 2);
    g.drawPixel(rgb, 1, 0);
    g.drawPixel(grey, 1, 0);
    g.drawPixel(two, 1, 0);
    EXPECT_EQ(std::vector<int>(rgb.data, rgb.data + 6), (std::vector<int>{0, 0, 0, 255, 10, 20}));
    EXPECT_EQ(std::vector<int>(grey.data, grey.data + 2), (std::vector<int>{0, 85}));
    EXPECT_EQ(std::vector<int>(two.data, two.data + 4), (std::vector<int>{0, 0, 85, 85}));

    // Rows of a borrowed image are bytesPerLine apart; the padding stays.
    unsigned char buffer[12] = {};
    VelkImage padded(3, 2, 1, 6, buffer);
    g.drawLine(padded, 0, 1, 2, 1);
    EXPECT_EQ(std::vector<int>(buffer, buffer + 12),
              (std::vector<int>{0, 0, 0, 0, 0, 0, 85, 85, 85, 0, 0, 0}));
}

TEST(Graphics, BresenhamLines) {
    struct Case {
        int line[4];
        Rows expected;
    };
    const Case cases[] = {
        // dx 8, dy 6: error 4, 0, 12, 8, 4, 0, 12, 8 before the steps.
        {{0, 0, 8, 6},
         {"........#", ".......#.", ".....##..", "....#....", "...#.....", ".##......",
          "#........"}},
        // Steep: y every step, x on the diagonal steps; the same either way round.
        {{0, 0, 2, 5},
         {".........", "..#......", "..#......", ".#.......", ".#.......", "#........",
          "#........"}},
        {{2, 5, 0, 0},
         {".........", "..#......", "..#......", ".#.......", ".#.......", "#........",
          "#........"}},
        // Falling line, drawn from its left end.
        {{8, 0, 0, 3},
         {".........", ".........", ".........", "##.......", "..###....", ".....##..",
          ".......##"}},
        {{3, 3, 3, 3},
         {".........", ".........", ".........", "...#.....", ".........", ".........",
          "........."}},
    };
    for (const Case& c : cases) {
        const int* l = c.line;
        SCOPED_TRACE(testing::Message() << l[0] << "," << l[1] << " " << l[2] << "," << l[3]);
        VelkImage image = blank(9, 7);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        g.drawLine(image, l[0], l[1], l[2], l[3]);
        EXPECT_EQ(picture(image), c.expected);
    }
}

namespace {

// The line walk step by step from end to end, every square clipped.
void fullWalk(VelkImage& image, int pen, std::int64_t x0, std::int64_t y0, std::int64_t x1,
              std::int64_t y1) {
    if (x1 < x0) {
        std::swap(x0, x1);
        std::swap(y0, y1);
    }
    std::int64_t dx = x1 - x0, dy = y1 - y0;
    int sy = dy >= 0 ? 1 : -1;
    std::int64_t a = dy >= 0 ? dy : -dy, major = dx;
    bool steep = a > dx;
    if (steep) std::swap(a, major);
    std::int64_t e = 2 * a - major, x = x0, y = y0;
    auto draw = [&] {
        if (x < -pen || x > image.width + pen || y < -pen || y > image.height + pen) return;
        for (std::int64_t py = y - pen / 2; py < y - pen / 2 + pen; py++) {
            for (std::int64_t px = x - pen / 2; px < x - pen / 2 + pen; px++) {
                if (px >= 0 && px < image.width && py >= 0 && py < image.height) {
                    image.data[py * image.width + px] = 255;
                }
            }
        }
    };
    draw();
    while ((!steep && x < x1) || (steep && y != y1)) {
        if (e > 0) {
            x++;
            y += sy;
            e += 2 * (a - major);
        } else {
            if (steep) {
                y += sy;
            } else {
                x++;
            }
            e += 2 * a;
        }
        draw();
    }
}

}  // namespace

TEST(Graphics, ClippedLinesDrawWhatTheFullWalkDraws) {
    std::mt19937 random(20240611);
    const int ranges[] = {12, 40, 300, 5000, 2000000};
    const int pens[] = {1, 1, 2, 3, 4, 7, 16, 30, 41};
    int lines = 0;
    for (int range : ranges) {
        int count = range > 10000 ? 12 : 150;
        std::uniform_int_distribution<int> coordinate(-range, range);
        for (int i = 0; i < count; i++, lines++) {
            int pen = pens[random() % 9];
            int c[4];
            for (int& v : c) v = coordinate(random);
            // Half of the lines pass through a pixel of the image, the rest anywhere.
            if (i % 2 == 0) {
                int px = static_cast<int>(random() % 23), py = static_cast<int>(random() % 17);
                c[2] = 2 * px - c[0];
                c[3] = 2 * py - c[1];
            }
            SCOPED_TRACE(testing::Message() << "pen " << pen << " line " << c[0] << "," << c[1]
                                            << " " << c[2] << "," << c[3]);
            VelkImage drawn = blank(23, 17), walked = blank(23, 17);
            VelkGraphics g;
            g.setColor(255, 255, 255);
            g.setPixelWidth(pen);
            g.drawLine(drawn, c[0], c[1], c[2], c[3]);
            fullWalk(walked, pen, c[0], c[1], c[2], c[3]);
            ASSERT_EQ(picture(drawn), picture(walked));
        }
    }
    EXPECT_GT(lines, 600);
}

namespace {

// Row of column x on a line from (x0, y0) to (x1, y1) with |slope| <= 1: the
// row nearest to the ideal line, halves going back toward y0.
std::int64_t idealRow(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1,
                      std::int64_t x) {
    __int128 dx = x1 - x0, dy = y1 - y0, k = x - x0;
    __int128 num = 2 * (dy < 0 ? -dy : dy) * k - dx, den = 2 * dx;
    __int128 d = num >= 0 ? (num + den - 1) / den : -((-num) / den);
    return y0 + (dy < 0 ? -d : d);
}

}  // namespace

TEST(Graphics, LinesBetweenTheEndsOfTheIntRange) {
    struct Case {
        int x0, y0, x1, y1;
    };
    const Case cases[] = {
        {INT_MIN, 3, INT_MAX, 3},
        {INT_MIN, INT_MIN / 2, INT_MAX, INT_MAX / 2 + 7},
        {INT_MIN, 1000000000, INT_MAX, -1000000000},
        {INT_MIN + 5, 17, INT_MAX - 3, 2},
        {-1234567891, -1234567, 2045678901, 1234567},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.x0 << "," << c.y0 << " " << c.x1 << "," << c.y1);
        VelkImage image = blank(40, 30);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        g.drawLine(image, c.x0, c.y0, c.x1, c.y1);
        VelkImage expected = blank(40, 30);
        for (int x = 0; x < 40; x++) {
            std::int64_t y = idealRow(c.x0, c.y0, c.x1, c.y1, x);
            if (y >= 0 && y < 30) expected.data[y * 40 + x] = 255;
        }
        EXPECT_EQ(picture(image), picture(expected));
    }

    // The steep counterpart by symmetry: columns of a line through the rows.
    VelkImage steep = blank(30, 40), flat = blank(40, 30);
    VelkGraphics g;
    g.setColor(255, 255, 255);
    g.drawLine(steep, INT_MIN / 2 + 11, INT_MIN, INT_MAX / 2, INT_MAX);
    g.drawLine(flat, INT_MIN, INT_MIN / 2 + 11, INT_MAX, INT_MAX / 2);
    for (int y = 0; y < 40; y++) {
        for (int x = 0; x < 30; x++) {
            ASSERT_EQ(steep.data[y * 30 + x], flat.data[x * 40 + y]) << x << "," << y;
        }
    }
}
