#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"

namespace {

// Rows given top row first, as drawn; '#' is 255, '.' is 0.
VelkImage draw(const std::vector<std::string>& rows) {
    int h = static_cast<int>(rows.size());
    return imagetest::greyImage(static_cast<int>(rows[0].size()), h,
                                [&](int x, int y) { return rows[h - 1 - y][x] == '#' ? 255 : 0; });
}

}  // namespace

TEST(FloodFill, CountsAndBoxes) {
    const std::vector<std::string> uniform(10, std::string(10, '.'));
    // A wall near the far end of a row wider than 16-bit coordinates.
    const std::vector<std::string> strip = {std::string(40000, '.'),
                                            std::string(39990, '.') + "#" + std::string(9, '.')};
    struct Case {
        std::vector<std::string> rows;
        int x, y, value, count;
        std::vector<int> box;
    };
    const Case cases[] = {
        {{"."}, 0, 0, 5, 1, {0, 0, 0, 1}},  // the row above the seed counts
        {uniform, 3, 4, 200, 100, {0, 0, 9, 9}},
        {uniform, 3, 4, 300, 100, {0, 0, 9, 9}},  // stored as its low byte
        // Already holding the value, or outside: nothing, box at the seed.
        {uniform, 3, 4, 0, 0, {3, 4, 3, 4}},
        {uniform, -1, 0, 1, 0, {-1, 0, -1, 0}},
        {uniform, 10, 0, 1, 0, {10, 0, 10, 0}},
        {uniform, 0, -1, 1, 0, {0, -1, 0, -1}},
        {uniform, 0, 10, 1, 0, {0, 10, 0, 10}},
        // A value whose low byte is the old value would never finish.
        {uniform, 0, 0, 256, 0, {0, 0, 0, 0}},
        // 4-connected: a diagonal separates two triangles; the cup needs
        // segments pushed back down, left or right, to fill up its far side.
        {{"...#", "..#.", ".#..", "#..."}, 0, 3, 9, 6, {0, 1, 2, 4}},
        {{".#.#.", ".#.#.", ".###.", "....."}, 0, 3, 9, 11, {0, 0, 4, 4}},
        {{".#.#.", ".#.#.", ".###.", "....."}, 4, 3, 9, 11, {0, 0, 4, 4}},
        {strip, 39999, 1, 7, 79999, {0, 0, 39999, 2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.rows[0].substr(0, 5) << " from " << c.x << "," << c.y);
        VelkImage image = draw(c.rows);
        int box[4];
        EXPECT_EQ(image.floodFill(c.x, c.y, c.value, box, nullptr), c.count);
        EXPECT_EQ(std::vector<int>(box, box + 4), c.box);
        if (c.count > 0) {
            EXPECT_EQ(image.data[c.y * image.width + c.x], c.value & 255);
        }
    }
}

TEST(FloodFill, DestinationGetsTheFilledCopy) {
    VelkImage image = draw({"..#", "..#"}), dst, other;
    EXPECT_EQ(image.floodFill(0, 0, 50, nullptr, &dst), 4);
    EXPECT_EQ(imagetest::bytesOf(image), (std::vector<int>{0, 0, 255, 0, 0, 255}));
    EXPECT_EQ(imagetest::bytesOf(dst), (std::vector<int>{50, 50, 255, 50, 50, 255}));
    // The copy is made before the seed is checked.
    EXPECT_EQ(image.floodFill(-5, 0, 50, nullptr, &other), 0);
    EXPECT_EQ(imagetest::bytesOf(other), imagetest::bytesOf(image));
}
