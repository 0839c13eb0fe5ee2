#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "ToolRun.h"

using velktest::Picture;
using velktest::TempDir;
using velktest::ToolResult;

// A uniform flow to the right: each numbered frame is the one before moved
// right by --advect pixels, away from the borders. The grid has one node per
// pixel, so that field and texture units agree.
TEST(ToolAnimation, ThePatternMovesAlongTheFlow) {
    TempDir dir;
    ToolResult r = velktest::runTool(
        dir.path(""),
        {"-o", "f.png", "--frames", "3", "--advect", "3", "-f", "linear", "--matrix", "0,0,0,0",
         "--offset", "1,0", "--grid", "81x25", "--noise-size", "80x24", "-L", "6", "--no-adjust"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(velktest::listDir(dir.path("")),
              (std::vector<std::string>{"f-0000.png", "f-0001.png", "f-0002.png"}));
    for (int frame = 1; frame < 3; frame++) {
        const Picture a = velktest::png(dir.path("f-000" + std::to_string(frame - 1) + ".png"));
        const Picture b = velktest::png(dir.path("f-000" + std::to_string(frame) + ".png"));
        ASSERT_EQ(b.width, 80);
        // Mean absolute difference between b(x, y) and a(x - shift, y).
        auto difference = [&](int shift) {
            double sum = 0;
            for (int y = 0; y < a.height; y++) {
                for (int x = 20; x < 60; x++)
                    sum += std::abs(b.pixels[y * 80 + x] - a.pixels[y * 80 + x - shift]);
            }
            return sum / (a.height * 40);
        };
        const double along = difference(3);
        EXPECT_LT(along, 1.0) << "frame " << frame;
        EXPECT_GT(difference(-3), 4.0 * along + 2.0) << "frame " << frame;
        EXPECT_GT(difference(0), 4.0 * along + 2.0) << "frame " << frame;
    }
}

TEST(ToolAnimation, TheSameSeedGivesTheSameBytes) {
    TempDir dir;
    auto make = [&dir](const std::string& name, const std::string& seed) {
        ToolResult r =
            velktest::runTool(dir.path(""), {"-o", name, "--seed", seed, "--noise-size", "40x40",
                                             "--seeding", "sobol", "--noise", "binary"});
        EXPECT_EQ(r.status, 0) << r.err;
        return velktest::readFile(dir.path(name));
    };
    const std::string first = make("a.png", "7");
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(make("b.png", "7"), first);
    EXPECT_NE(make("c.png", "8"), first);
}
