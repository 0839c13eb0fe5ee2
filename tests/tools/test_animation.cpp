#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "ToolRun.h"

using velktest::Picture;
using velktest::TempDir;
using velktest::ToolResult;

namespace {

Picture png(const TempDir& dir, const std::string& name) {
    Picture p;
    std::string error;
    EXPECT_TRUE(velktest::readPng(dir.path(name), p, error)) << name << ": " << error;
    return p;
}

// Mean absolute difference between b(x, y) and a(x - shift, y) over the
// columns [x0, x1) of grey pictures.
double shiftedDifference(const Picture& a, const Picture& b, int shift, int x0, int x1) {
    double sum = 0;
    int n = 0;
    for (int y = 0; y < a.height; y++) {
        for (int x = x0; x < x1; x++) {
            sum += std::abs(b.pixels[y * b.width + x] - a.pixels[y * a.width + x - shift]);
            n++;
        }
    }
    return sum / n;
}

}  // namespace

TEST(ToolAnimation, FramesAreNumberedAndDiffer) {
    TempDir dir;
    ToolResult r = velktest::runTool(dir.path(""),
                                     {"-o", "spin.png", "--frames", "3", "--noise-size", "32x32"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(velktest::listDir(dir.path("")),
              (std::vector<std::string>{"spin-0000.png", "spin-0001.png", "spin-0002.png"}));
    Picture f0 = png(dir, "spin-0000.png"), f1 = png(dir, "spin-0001.png"),
            f2 = png(dir, "spin-0002.png");
    EXPECT_EQ(f1.width, 32);
    EXPECT_NE(f0.pixels, f1.pixels);
    EXPECT_NE(f1.pixels, f2.pixels);
}

TEST(ToolAnimation, ThePatternMovesAlongTheFlow) {
    // A uniform flow to the right: each frame is the one before moved right by
    // --advect pixels, away from the borders. The grid has one node per pixel,
    // so that field and texture units agree.
    TempDir dir;
    ToolResult r = velktest::runTool(
        dir.path(""),
        {"-o", "f.png", "--frames", "2", "--advect", "3", "-f", "linear", "--matrix", "0,0,0,0",
         "--offset", "1,0", "--grid", "81x25", "--noise-size", "80x24", "-L", "6", "--no-adjust"});
    ASSERT_EQ(r.status, 0) << r.err;
    Picture a = png(dir, "f-0000.png"), b = png(dir, "f-0001.png");
    double along = shiftedDifference(a, b, 3, 20, 60);
    double against = shiftedDifference(a, b, -3, 20, 60);
    double still = shiftedDifference(a, b, 0, 20, 60);
    EXPECT_LT(along, 1.0);
    EXPECT_GT(against, 4.0 * along + 2.0);
    EXPECT_GT(still, 4.0 * along + 2.0);
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
    std::string first = make("a.png", "7");
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(make("b.png", "7"), first);
    EXPECT_NE(make("c.png", "8"), first);
}
