#include <gtest/gtest.h>

#include <vector>

#include "ImageTestSupport.h"
#include "velk/velk.h"

using imagetest::bytesOf;
using imagetest::makeImage;

TEST(Zoom, SameSizeReproducesTheImage) {
    VelkImage image(7, 5, 3);
    image.createRandom(0, 21);
    VelkImage out;
    image.zoom(7, 5, &out);
    EXPECT_EQ(bytesOf(out), bytesOf(image));
}

TEST(Zoom, DoublingRepeatsTheLastPixelOnTheRight) {
    // Output i sits at source i / 2; index 2 maps back to index 1.
    VelkImage row = makeImage(2, 1, 1, {0, 100});
    row.zoom(4, 1, nullptr);
    EXPECT_EQ(bytesOf(row), (std::vector<int>{0, 50, 100, 100}));

    // Both passes, every channel.
    VelkImage column = makeImage(1, 2, 3, {0, 10, 200, 100, 30, 0});
    VelkImage out;
    column.zoom(2, 4, &out);
    EXPECT_EQ(out.nChannels, 3);
    const std::vector<int> expected = {0,   10, 200, 0,   10, 200, 50,  20, 100, 50,  20, 100,
                                       100, 30, 0,   100, 30, 0,   100, 30, 0,   100, 30, 0};
    EXPECT_EQ(bytesOf(out), expected);
    EXPECT_EQ(column.width, 1);
}

TEST(Zoom, HalvingMixesFivePositionsMirroredOnTheLeft) {
    VelkImage uniform(8, 1);
    uniform.clear(200);
    uniform.zoom(4, 1, nullptr);
    EXPECT_EQ(bytesOf(uniform), std::vector<int>(4, 200));

    // Weights 0, 0.25, 0.5, 0.25, 0: output 0 reads index -1 as index 1 (10),
    // output 1 reads index 4 as index 3 (weight 0 there).
    VelkImage ramp = makeImage(4, 1, 1, {0, 10, 20, 30});
    ramp.zoom(2, 1, nullptr);
    EXPECT_EQ(bytesOf(ramp), (std::vector<int>{5, 20}));
}

TEST(Zoom, EmptySourcesAndTargets) {
    VelkImage image(4, 3);
    image.clear(9);
    VelkImage out;
    image.zoom(0, 5, &out);
    EXPECT_EQ(out.data, nullptr);
    EXPECT_EQ(out.width, 0);

    VelkImage empty(0, 4);
    empty.zoom(3, 2, &out);
    EXPECT_EQ(bytesOf(out), std::vector<int>(6, 0));

    // A one-pixel source enlarged: every output repeats it.
    VelkImage dot = makeImage(1, 1, 1, {77});
    dot.zoom(3, 3, nullptr);
    EXPECT_EQ(bytesOf(dot), std::vector<int>(9, 77));
}
