#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <velk/velk.h>

#include "TestSupport.h"
#include "ToolRun.h"

using velktest::Picture;
using velktest::TempDir;
using velktest::ToolResult;

namespace {

ToolResult run(const TempDir& dir, std::vector<std::string> args) {
    return velktest::runTool(dir.path(""), args);
}

Picture png(const TempDir& dir, const std::string& name) {
    return velktest::png(dir.path(name));
}

}  // namespace

TEST(ToolOutput, TheBareCommandMakesA512SquareGreyLicQuietly) {
    TempDir dir;
    ToolResult r = run(dir, {"-o", "out.png"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "") << "quiet without -v";
    Picture p = png(dir, "out.png");
    EXPECT_EQ(p.width, 512);
    EXPECT_EQ(p.height, 512);
    EXPECT_EQ(p.channels, 1);
    // The contrast adjustment aims at mean 128.
    double sum = 0;
    for (unsigned char v : p.pixels) sum += v;
    EXPECT_NEAR(sum / static_cast<double>(p.pixels.size()), 128.0, 12.0);

    // -v shows the library's report.
    r = run(dir, {"-v", "-o", "out.png", "--noise-size", "20x20"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("total number of field lines"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("average number of hits per pixel"), std::string::npos) << r.err;
}

TEST(ToolOutput, EveryFormatHasItsTypeAndTheSamePixels) {
    TempDir dir;
    struct Case {
        const char* file;
        bool colour;
        bool ascii;
        const char* magic;  // null for PNG
    };
    const std::vector<Case> cases = {
        {"grey.png", false, false, nullptr}, {"colour.png", true, false, nullptr},
        {"grey.pgm", false, false, "P5"},    {"colour.ppm", true, false, "P6"},
        {"grey-a.pgm", false, true, "P2"},   {"colour-a.pnm", true, true, "P3"},
    };
    std::vector<unsigned char> reference[2];  // grey and colour pixels, top row first
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::vector<std::string> args = {"-o", c.file, "--noise-size", "33x21", "--seed", "4"};
        if (c.colour) args.insert(args.end(), {"--noise", "colour"});
        if (c.ascii) args.push_back("--ascii");
        ToolResult r = run(dir, args);
        ASSERT_EQ(r.status, 0) << r.err;

        Picture p;
        if (!c.magic) {
            p = png(dir, c.file);
        } else {
            EXPECT_EQ(velktest::readFile(dir.path(c.file)).compare(0, 2, c.magic), 0);
            VelkImage image;
            ASSERT_EQ(image.readPNM(dir.path(c.file).c_str()), 1);
            p = {image.width, image.height, image.nChannels, {}};
            for (int y = image.height - 1; y >= 0; y--) {
                const unsigned char* row = image.data + y * image.bytesPerLine;
                p.pixels.insert(p.pixels.end(), row, row + image.width * image.nChannels);
            }
        }
        EXPECT_EQ((std::vector<int>{p.width, p.height, p.channels}),
                  (std::vector<int>{33, 21, c.colour ? 3 : 1}));
        std::vector<unsigned char>& ref = reference[c.colour ? 1 : 0];
        if (ref.empty()) ref = p.pixels;
        EXPECT_EQ(p.pixels, ref) << "every format holds the same picture, top row first";
    }
}

TEST(ToolOutput, PostProcessingKeepsSizeAndSetsTheChannels) {
    TempDir dir;
    velktest::writeFile(dir.path("ramp.sca"), "VELK SCALAR ASCII\n2 2\n0\n1\n2\n3\n");
    struct Case {
        std::vector<std::string> args;
        int width, height, channels;
    };
    const std::vector<Case> cases = {
        {{"--size", "64x20"}, 64, 20, 1},
        {{"--blur", "3"}, 40, 30, 1},
        {{"--blur", "2", "--noise", "colour"}, 40, 30, 3},
        {{"--brighten", "60,200"}, 40, 30, 1},
        {{"--emboss", "light", "--light", "30,60", "--relief", "2"}, 40, 30, 1},
        {{"--emboss", "flow", "--size", "50x50"}, 50, 50, 1},
        {{"--color", "direction"}, 40, 30, 3},
        {{"--color", "magnitude", "--colormap", "hot", "--flip"}, 40, 30, 3},
        {{"--color-scalar", "ramp.sca", "--colormap", "bwr", "--gamma", "0.5"}, 40, 30, 3},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args = {"-o", "out.png", "--noise-size", "40x30"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        SCOPED_TRACE(c.args[0] + " " + c.args[1]);
        ToolResult r = run(dir, args);
        ASSERT_EQ(r.status, 0) << r.err;
        Picture p = png(dir, "out.png");
        EXPECT_EQ((std::vector<int>{p.width, p.height, p.channels}),
                  (std::vector<int>{c.width, c.height, c.channels}));
    }
}

// The colour layer lets the LIC show through: a grey map keeps the picture
// grey, an all-red map gives reds of the LIC's lightness, the direction
// colouring gives hues.
TEST(ToolOutput, ColouringKeepsTheLicVisible) {
    TempDir dir;
    std::string redMap;
    for (int i = 0; i < 256; i++) redMap += "255 0 0\n";
    velktest::writeFile(dir.path("red.icol"), redMap);
    enum Expect { kGrey, kRed, kHues };
    const std::vector<std::pair<std::vector<std::string>, Expect>> cases = {
        {{"--color", "magnitude", "--colormap", "grey"}, kGrey},
        {{"--color", "magnitude", "--colormap", "red.icol"}, kRed},
        {{"--color", "direction"}, kHues},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args = {"-o", "out.png", "--noise-size", "30x30"};
        args.insert(args.end(), c.first.begin(), c.first.end());
        SCOPED_TRACE(args.back());
        ToolResult r = run(dir, args);
        ASSERT_EQ(r.status, 0) << r.err;
        Picture p = png(dir, "out.png");
        ASSERT_EQ(p.channels, 3);
        int coloured = 0, weakRed = 0, lo = 255, hi = 0;
        for (std::size_t i = 0; i + 2 < p.pixels.size(); i += 3) {
            const int red = p.pixels[i], green = p.pixels[i + 1], blue = p.pixels[i + 2];
            coloured += red != green || red != blue;
            weakRed += red < green;
            lo = std::min(lo, red);
            hi = std::max(hi, red);
        }
        const bool ok = c.second == kGrey  ? coloured == 0
                        : c.second == kRed ? weakRed == 0 && lo + 100 < hi
                                           : coloured > 450;
        EXPECT_TRUE(ok) << coloured << " coloured pixels, " << weakRed
                        << " with red below green, red from " << lo << " to " << hi;
    }
}

TEST(ToolOutput, TheHistogramCountsTheWrittenPicture) {
    TempDir dir;
    ToolResult r = run(dir, {"-o", "out.pgm", "--noise-size", "25x16", "--histogram", "hist.txt"});
    ASSERT_EQ(r.status, 0) << r.err;
    VelkImage image;
    ASSERT_EQ(image.readPNM(dir.path("out.pgm").c_str()), 1);
    long expected[256] = {};
    for (int i = 0; i < 25 * 16; i++) expected[image.data[i]]++;

    std::istringstream lines(velktest::readFile(dir.path("hist.txt")));
    int value, n = 0;
    long count;
    while (lines >> value >> count) {
        ASSERT_EQ(value, n);
        EXPECT_EQ(count, expected[n]) << "grey value " << n;
        n++;
    }
    EXPECT_EQ(n, 256);
}

TEST(ToolOutput, HelpListsTheOptionsWithDefaults) {
    TempDir dir;
    ToolResult r = run(dir, {"--help"});
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* option : {"--output", "--field", "--noise", "--kernel", "--seeding",
                               "--emboss", "--colormap", "--overlay", "--frames"})
        EXPECT_NE(r.out.find(option), std::string::npos) << option;
    EXPECT_NE(r.out.find("(default: 20)"), std::string::npos);
    EXPECT_TRUE(velktest::listDir(dir.path("")).empty());
}

TEST(ToolOutput, TheOverlayIsDrawnFromTheLowerLeftCorner) {
    TempDir dir;
    velktest::writeFile(dir.path("mark.vg"), "VELK GRAPHICS\ncolor 1 0 0\nline 0 5 39 5\n");
    ToolResult r = run(dir, {"-o", "out.png", "--noise-size", "40x30", "--overlay", "mark.vg"});
    ASSERT_EQ(r.status, 0) << r.err;
    Picture p = png(dir, "out.png");
    ASSERT_EQ(p.channels, 3) << "a coloured pen makes the picture colour";
    // Row 5 from the bottom is row 24 from the top.
    for (int y = 0; y < 30; y++) {
        for (int x = 0; x < 40; x++) {
            const unsigned char* px = &p.pixels[(y * 40 + x) * 3];
            bool red = px[0] == 255 && px[1] == 0 && px[2] == 0;
            if (y == 24) {
                EXPECT_TRUE(red) << "at " << x;
            } else {
                EXPECT_TRUE(px[0] == px[1] && px[1] == px[2])
                    << "grey off the line at " << x << "," << y;
            }
        }
    }
}

TEST(ToolOutput, RawLicsMatchTheEngineReferenceImages) {
    // The engine's reference images (tests/data/lic), made with the same
    // fields, noise and settings through the library calls.
    TempDir dir;
    struct Case {
        const char* reference;
        std::vector<std::string> args;
    };
    const std::vector<Case> cases = {
        {"circle-default.pgm", {"--grid", "33x33", "--seed", "7"}},
        {"circle-cubic-sobol-midpoint-sub2.pgm",
         {"--grid", "33x33", "--seed", "7", "-k", "cubic", "--subpixels", "2", "--seeding", "sobol",
          "--integrator", "midpoint"}},
        {"brusselator-binary-sub3.pgm",
         {"-f", "brusselator", "--grid", "64x64", "--noise", "binary", "--seed", "3", "--subpixels",
          "3"}},
        {"linear-rgb-box-scan-nearest-L5.ppm",
         {"-f", "linear", "--grid", "50x50", "--noise", "colour", "--seed", "11", "-k", "box", "-L",
          "5", "--seeding", "scan", "--lookup", "nearest"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reference);
        std::vector<std::string> args = {"-o", c.reference, "--noise-size", "96x80", "--no-adjust"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        ToolResult r = run(dir, args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(velktest::readFile(dir.path(c.reference)),
                  velktest::readFile(velktest::dataPath(std::string("lic/") + c.reference)));
    }
}
