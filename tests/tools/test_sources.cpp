#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <velk/velk.h>

#include "TestSupport.h"
#include "ToolRun.h"

using velktest::Picture;
using velktest::TempDir;

namespace {

// A square mesh of two triangles carrying a rotation, in the UCD layout.
const char* kUcdSquare =
    "4 2 0 0 0\n"
    "nodes\n"
    "0 0 1 -1\n"
    "1 0 1 1\n"
    "1 1 -1 1\n"
    "0 1 -1 -1\n"
    "triangles\n"
    "1 2 3\n"
    "1 3 4\n";

// Field inputs made with the library itself.
void writeInputs(const TempDir& dir) {
    VelkVectorField field(8, 6, nullptr);
    field.setCircle(0.4f);
    ASSERT_EQ(field.write(dir.path("circle.vec").c_str(), 1), 1);

    VelkScalarField scalar(9, 7, nullptr);
    scalar.createCircle();
    ASSERT_EQ(scalar.write(dir.path("bowl.sca").c_str(), 0), 1);

    VelkImage bump(20, 16);
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 20; x++) bump.data[y * 20 + x] = static_cast<unsigned char>(x * y);
    ASSERT_EQ(bump.writePNM(dir.path("bump.pgm").c_str(), 0), 1);

    velktest::writeFile(dir.path("square.inp"), kUcdSquare);
}

}  // namespace

TEST(ToolSources, EverySourceGivesALicOfTheTextureSize) {
    TempDir dir;
    writeInputs(dir);
    struct Case {
        const char* name;
        std::vector<std::string> args;
    };
    const std::vector<Case> cases = {
        {"circle", {"-f", "circle", "--angle", "0.5", "--grid", "20x10"}},
        {"saddle", {"-f", "saddle"}},
        {"linear", {"-f", "linear", "--matrix", "0,1,-1,0", "--offset", "0.5,0"}},
        {"brusselator", {"-f", "brusselator", "--brusselator", "3,5,1,2.5"}},
        {"file", {"--field-file", "circle.vec"}},
        {"ucd", {"--ucd", "square.inp", "--grid", "16x16"}},
        {"ucd-bbox", {"--ucd", "square.inp", "--bbox", "0,0.5,0,0.5"}},
        {"picture", {"--image-field", "bump.pgm"}},
        {"scalar", {"--scalar-field", "bowl.sca", "--gradient-angle", "0.3"}},
    };
    std::vector<std::vector<unsigned char>> seen;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> args = {"-o", std::string(c.name) + ".png", "--noise-size",
                                         "40x30"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        velktest::ToolResult r = velktest::runTool(dir.path(""), args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");

        const Picture p = velktest::png(dir.path(std::string(c.name) + ".png"));
        EXPECT_EQ(p.width, 40);
        EXPECT_EQ(p.height, 30);
        EXPECT_EQ(p.channels, 1);
        const auto range = std::minmax_element(p.pixels.begin(), p.pixels.end());
        EXPECT_LT(*range.first + 100, *range.second) << "a LIC of noise has contrast";
        // The same noise through another field is another picture.
        for (const auto& other : seen) EXPECT_NE(p.pixels, other);
        seen.push_back(p.pixels);
    }
}

TEST(ToolSources, AFieldWithoutFlowWarnsAndGivesBlack) {
    TempDir dir;
    VelkImage flat(12, 12);
    flat.clear(90);
    ASSERT_EQ(flat.writePNM(dir.path("flat.pgm").c_str(), 0), 1);
    velktest::ToolResult r = velktest::runTool(
        dir.path(""), {"-o", "out.png", "--image-field", "flat.pgm", "--noise-size", "24x24"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("zero everywhere"), std::string::npos) << r.err;
    const Picture p = velktest::png(dir.path("out.png"));
    ASSERT_FALSE(p.pixels.empty());
    EXPECT_EQ(*std::max_element(p.pixels.begin(), p.pixels.end()), 0);
}

TEST(ToolSources, TheMaskBlanksThePixelsOverItsZeros) {
    TempDir dir;
    // Left half of a 16 x 16 grid masked out.
    VelkImage mask(16, 16);
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++) mask.data[y * 16 + x] = x < 8 ? 0 : 255;
    ASSERT_EQ(mask.writePNM(dir.path("mask.pgm").c_str(), 0), 1);
    velktest::ToolResult r = velktest::runTool(
        dir.path(""),
        {"-o", "out.pgm", "--grid", "16x16", "--mask", "mask.pgm", "--noise-size", "60x40"});
    ASSERT_EQ(r.status, 0) << r.err;

    VelkImage out;
    ASSERT_EQ(out.readPNM(dir.path("out.pgm").c_str()), 1);
    ASSERT_EQ(out.width, 60);
    long rightSum = 0;
    for (int y = 0; y < 40; y++) {
        for (int x = 0; x < 60; x++) {
            // Pixel centre in field units: 15 grid cells over 60 pixels.
            float fx = (x + 0.5f) * 15.0f / 60.0f;
            int v = out.data[y * 60 + x];
            if (fx < 8.0f) {
                EXPECT_EQ(v, 0) << "at " << x << "," << y;
            } else {
                rightSum += v;
            }
        }
    }
    EXPECT_GT(rightSum, 0);
}
