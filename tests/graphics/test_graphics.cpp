#include <algorithm>
#include <climits>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"

using namespace velktest;

namespace {

VelkImage blank(int width, int height, int channels = 1) {
    VelkImage image(width, height, channels);
    image.clear(0);
    return image;
}

VelkGraphics whitePen(int width = 1) {
    VelkGraphics g;
    g.setColor(255, 255, 255);
    g.setPixelWidth(width);
    return g;
}

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
            whitePen(pen).drawLine(drawn, c[0], c[1], c[2], c[3]);
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
        whitePen().drawLine(flat, c.x0, c.y0, c.x1, c.y1);
        whitePen().drawLine(steep, c.y0, c.x0, c.y1, c.x1);
        const __int128 dx = std::int64_t(c.x1) - c.x0, ady = std::llabs(std::int64_t(c.y1) - c.y0);
        for (int x = 0; x < 40; x++) {
            const __int128 num = 2 * ady * (x - std::int64_t(c.x0)) - dx, den = 2 * dx;
            const __int128 d = num >= 0 ? (num + den - 1) / den : -((-num) / den);
            const std::int64_t y = c.y0 + static_cast<std::int64_t>(c.y1 < c.y0 ? -d : d);
            if (y >= 0 && y < 30) expected.data[y * 40 + x] = 255;
        }
        EXPECT_EQ(picture(flat), picture(expected));
        for (int y = 0; y < 40; y++)
            for (int x = 0; x < 30; x++)
                ASSERT_EQ(steep.data[y * 30 + x], flat.data[x * 40 + y]) << x << "," << y;
    }
}

// Every file under tests/data/graphics, command file or mesh, through both
// readers onto a grey, a colour and an empty image; then pen colours on grey
// and colour images, one with padded rows. Result, report (the path as %s),
// pixels and pen against tests/data/recorded/graphics.txt.
TEST(Graphics, DrawingsMatchTheRecordedHashes) {
    Hashes hashes;
    std::vector<std::string> paths = {dataPath("graphics/missing")};
    for (const auto& entry : std::filesystem::directory_iterator(dataPath("graphics")))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths) {
        Hash h;
        for (int reader : {0, 1}) {
            for (VelkImage image : {blank(8, 6), blank(9, 10, 3), VelkImage()}) {
                VelkGraphics g = whitePen();
                const int files = openFileCount();
                MessageCapture capture;
                h.add(reader ? g.drawUCD(image, path.c_str()) : g.drawFile(image, path.c_str()));
                std::string report = capture.errorText();
                for (size_t at; (at = report.find(path)) != std::string::npos;)
                    report.replace(at, path.size(), "%s");
                h.add(report).add(image).bytes(g.rgb, 3).add(g.grey).add(g.pixelWidth);
                EXPECT_EQ(openFileCount(), files) << path;
            }
        }
        hashes.push_back({std::filesystem::path(path).filename(), h.hex()});
    }
    Hash pens;
    for (int c : {255, 300, 1000, -5, 77}) {
        VelkGraphics g;
        g.setColor(c, c / 3, 255 - c);
        unsigned char buffer[12] = {};
        VelkImage rgb = blank(2, 1, 3), padded(3, 2, 1, 6, buffer);
        g.drawPixel(rgb, 1, 0);
        g.drawLine(padded, 0, 1, 2, 1);
        pens.add(rgb).bytes(buffer, 12).bytes(g.rgb, 3).add(g.grey);
    }
    hashes.push_back({"pens", pens.hex()});
    expectRecorded("recorded/graphics.txt", hashes);
}
