#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "velk/velk.h"

namespace {

// Rows given top row first, as drawn; '#' is 255, '.' is 0.
VelkImage draw(const std::vector<std::string>& rows) {
    int h = static_cast<int>(rows.size());
    int w = static_cast<int>(rows[0].size());
    VelkImage image(w, h);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) image.data[y * w + x] = rows[h - 1 - y][x] == '#' ? 255 : 0;
    return image;
}

std::vector<int> box(const int* b) {
    return std::vector<int>(b, b + 4);
}

}  // namespace

TEST(FloodFill, CountsAndBoxes) {
    int b[4];
    VelkImage dot(1, 1);
    dot.clear(0);
    EXPECT_EQ(dot.floodFill(0, 0, 5, b, nullptr), 1);
    EXPECT_EQ(box(b), (std::vector<int>{0, 0, 0, 1}));  // the row above the seed counts
    EXPECT_EQ(dot.data[0], 5);

    VelkImage uniform(10, 10);
    uniform.clear(3);
    EXPECT_EQ(uniform.floodFill(3, 4, 200, b, nullptr), 100);
    EXPECT_EQ(box(b), (std::vector<int>{0, 0, 9, 9}));

    // Already holding the value, or outside: nothing, box at the seed.
    EXPECT_EQ(uniform.floodFill(3, 4, 200, b, nullptr), 0);
    EXPECT_EQ(box(b), (std::vector<int>{3, 4, 3, 4}));
    const int outside[][2] = {{-1, 0}, {10, 0}, {0, -1}, {0, 10}};
    for (const auto& p : outside) {
        EXPECT_EQ(uniform.floodFill(p[0], p[1], 1, b, nullptr), 0);
        EXPECT_EQ(box(b), (std::vector<int>{p[0], p[1], p[0], p[1]}));
    }
    // Without a box pointer the box is simply not reported.
    EXPECT_EQ(uniform.floodFill(0, 0, 7, nullptr, nullptr), 100);

    // A value whose low byte is the old value would never finish.
    EXPECT_EQ(uniform.floodFill(0, 0, 7 + 256, b, nullptr), 0);
    // Other values beyond a byte are stored as their low byte.
    EXPECT_EQ(uniform.floodFill(0, 0, 300, b, nullptr), 100);
    EXPECT_EQ(uniform.data[99], 44);
}

TEST(FloodFill, RegionsAreFourConnectedAroundObstacles) {
    // A diagonal of '#' separates the two triangles; the U shape needs
    // segments pushed back down (leaks) to be filled completely.
    VelkImage diagonal = draw({"...#", "..#.", ".#..", "#..."});
    int b[4];
    EXPECT_EQ(diagonal.floodFill(0, 3, 9, b, nullptr), 6);
    EXPECT_EQ(box(b), (std::vector<int>{0, 1, 2, 4}));
    EXPECT_EQ(diagonal.data[3 * 4 + 0], 9);  // top-left corner
    EXPECT_EQ(diagonal.data[0 * 4 + 3], 0);  // the other triangle is untouched

    VelkImage cup = draw({".#.#.", ".#.#.", ".###.", "....."});
    EXPECT_EQ(cup.floodFill(0, 3, 9, b, nullptr), 11);
    EXPECT_EQ(box(b), (std::vector<int>{0, 0, 4, 4}));
    EXPECT_EQ(cup.data[3 * 5 + 2], 0);  // inside the cup: not connected
    EXPECT_EQ(cup.data[3 * 5 + 4], 9);  // up the far side
}

TEST(FloodFill, DestinationGetsTheFilledCopy) {
    VelkImage image = draw({"..#", "..#"});
    VelkImage dst;
    int b[4];
    EXPECT_EQ(image.floodFill(0, 0, 50, b, &dst), 4);
    EXPECT_EQ(std::vector<int>(image.data, image.data + 6),
              (std::vector<int>{0, 0, 255, 0, 0, 255}));
    EXPECT_EQ(std::vector<int>(dst.data, dst.data + 6),
              (std::vector<int>{50, 50, 255, 50, 50, 255}));

    // The copy is made before the seed is checked.
    VelkImage other;
    EXPECT_EQ(image.floodFill(-5, 0, 50, b, &other), 0);
    EXPECT_EQ(other.width, 3);
    EXPECT_EQ(std::vector<int>(other.data, other.data + 6),
              (std::vector<int>{0, 0, 255, 0, 0, 255}));
}

TEST(FloodFill, ImagesWiderThanSixteenBitCoordinates) {
    VelkImage strip(40000, 2);
    strip.clear(0);
    strip.data[39990] = 255;  // a wall near the far end of row 0
    int b[4];
    EXPECT_EQ(strip.floodFill(39999, 1, 7, b, nullptr), 79999);
    EXPECT_EQ(box(b), (std::vector<int>{0, 0, 39999, 2}));
    EXPECT_EQ(strip.data[39991], 7);
    EXPECT_EQ(strip.data[39990], 255);
}
