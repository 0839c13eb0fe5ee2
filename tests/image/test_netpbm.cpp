// Interoperability with Netpbm, a PNM implementation written elsewhere. The
// tools must be installed (scripts/deps.sh): a missing tool fails the test.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

using velktest::MessageCapture;
using velktest::TempDir;
using velktest::writeFile;

namespace {

// Standard output of a shell command; a failing command fails the test.
std::string run(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) {
        ADD_FAILURE() << "cannot run " << command;
        return output;
    }
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
    int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        ADD_FAILURE() << command << " failed:\n" << output;
    }
    return output;
}

// Samples as Netpbm's pamtable lists them: rows top first, channels interleaved.
std::vector<int> netpbmSamples(const std::string& path) {
    std::string table = run("pamtable " + path);
    for (char& c : table) {
        if (c == '|') c = ' ';
    }
    std::istringstream in(table);
    std::vector<int> samples;
    int v;
    while (in >> v) samples.push_back(v);
    return samples;
}

// The image's samples in file order: top row (row height - 1) first.
std::vector<int> topDown(const VelkImage& image) {
    std::vector<int> samples;
    int rowBytes = image.width * image.nChannels;
    for (int y = image.height - 1; y >= 0; y--) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        samples.insert(samples.end(), row, row + rowBytes);
    }
    return samples;
}

struct Variant {
    int channels;
    int ascii;
    const char* description;  // as pamfile names the type
};

const Variant kVariants[] = {
    {1, 0, "PGM raw"}, {3, 0, "PPM raw"}, {1, 1, "PGM plain"}, {3, 1, "PPM plain"}};

}  // namespace

TEST(NetpbmInterop, NetpbmAcceptsEveryWrittenVariantWithItsSizeAndPixels) {
    TempDir dir;
    const int sizes[][2] = {{7, 5}, {1, 1}, {17, 3}, {3, 11}};
    int seed = 1;
    for (const Variant& v : kVariants) {
        for (const auto& size : sizes) {
            VelkImage image(size[0], size[1], v.channels);
            image.createRandom(0, seed++);
            std::string path = dir.path("out.pnm");
            ASSERT_EQ(image.writePNM(path.c_str(), v.ascii), 1);
            std::string expected = path + ":\t" + v.description + ", " + std::to_string(size[0]) +
                                   " by " + std::to_string(size[1]) + "  maxval 255\n";
            EXPECT_EQ(run("pamfile " + path), expected);
            EXPECT_EQ(netpbmSamples(path), topDown(image)) << v.description;
        }
    }
}

TEST(NetpbmInterop, PixelsSurviveAConversionThroughNetpbm) {
    TempDir dir;
    for (const Variant& v : kVariants) {
        VelkImage image(9, 4, v.channels);
        image.createRandom(0, 30 + v.channels + v.ascii);
        std::string written = dir.path("written.pnm");
        std::string converted = dir.path("converted.pnm");
        ASSERT_EQ(image.writePNM(written.c_str(), v.ascii), 1);
        // Plain files come back raw and raw files plain, in Netpbm's own layout.
        run(std::string(v.ascii ? "pamtopnm " : "pamtopnm -plain ") + written + " > " + converted);
        MessageCapture capture;
        VelkImage back;
        ASSERT_EQ(back.readPNM(converted.c_str()), 1) << capture.errorText();
        EXPECT_EQ(back.nChannels, v.channels);
        EXPECT_EQ(topDown(back), topDown(image)) << v.description;
    }
}

TEST(NetpbmInterop, NetpbmGeneratedFilesLoadWithRowZeroAtTheBottom) {
    TempDir dir;
    struct Case {
        std::string command;
        int width, height, channels;
    };
    const std::vector<Case> cases = {
        {"pgmramp -tb 3 6", 3, 6, 1},
        {"pgmramp -lr 7 2 -plain", 7, 2, 1},
        {"pamgradient red blue green white 5 4 | pamtopnm", 5, 4, 3},
        {"pamgradient red blue green white 5 4 | pamtopnm -plain", 5, 4, 3},
        {"pgmnoise 13 9", 13, 9, 1},
    };
    for (const Case& c : cases) {
        std::string path = dir.path("generated.pnm");
        run(c.command + " > " + path);
        MessageCapture capture;
        VelkImage image;
        ASSERT_EQ(image.readPNM(path.c_str()), 1) << c.command << "\n" << capture.errorText();
        EXPECT_EQ(image.width, c.width);
        EXPECT_EQ(image.height, c.height);
        EXPECT_EQ(image.nChannels, c.channels);
        EXPECT_EQ(topDown(image), netpbmSamples(path)) << c.command;
    }

    // A top-to-bottom ramp: black at the top of the picture, white at the bottom,
    // so image row 0 (the bottom) is white.
    std::string ramp = dir.path("ramp.pgm");
    run("pgmramp -tb 2 5 > " + ramp);
    VelkImage image;
    ASSERT_EQ(image.readPNM(ramp.c_str()), 1);
    EXPECT_EQ(image.data[0], 255);
    EXPECT_EQ(image.data[4 * 2], 0);

    // Netpbm's levels stay as they are: a maxval of 15 is not rescaled.
    run("pgmramp -lr -maxval 15 -plain 4 1 > " + ramp);
    ASSERT_EQ(image.readPNM(ramp.c_str()), 1);
    EXPECT_EQ(std::vector<int>(image.data, image.data + 4), (std::vector<int>{0, 5, 10, 15}));
}

// Header layouts that Netpbm reads but the reader deliberately does not
// understand: it wants the dimensions and the maxval each on a line of their
// own, with comments only as whole lines before them.
TEST(NetpbmInterop, HeaderLayoutsBeyondTheReader) {
    TempDir dir;
    std::string path = dir.path("limit.pnm");
    MessageCapture capture;
    VelkImage image;

    // Dimensions and maxval on one line: Netpbm sees ABC, the reader finds no maxval.
    writeFile(path, "P5\n3 1 255\nABC");
    EXPECT_EQ(netpbmSamples(path), (std::vector<int>{'A', 'B', 'C'}));
    EXPECT_EQ(image.readPNM(path.c_str()), 0);
    EXPECT_EQ(capture.errors().back(),
              "VELK error: can't open " + path + " (couldn't read dimensions)");

    // The same in plain form: the maxval scan eats the first pixel line, and
    // the pixel scans that find nothing leave 0.
    writeFile(path, "P2\n3 1 255\n1 2 3\n");
    EXPECT_EQ(netpbmSamples(path), (std::vector<int>{1, 2, 3}));
    ASSERT_EQ(image.readPNM(path.c_str()), 1) << capture.errorText();
    EXPECT_EQ(std::vector<int>(image.data, image.data + 3), (std::vector<int>{0, 0, 0}));

    // A comment after the maxval on its line: Netpbm's raster starts right
    // behind the one blank that ends the maxval, the reader's on the next line.
    writeFile(path, "P5\n3 1\n255 # c\nABC");
    EXPECT_EQ(netpbmSamples(path), (std::vector<int>{'#', ' ', 'c'}));
    ASSERT_EQ(image.readPNM(path.c_str()), 1) << capture.errorText();
    EXPECT_EQ(std::vector<int>(image.data, image.data + 3), (std::vector<int>{'A', 'B', 'C'}));

    // A comment line after the maxval line is pixel data for both.
    writeFile(path, "P5\n3 1\n255\n# c\n");
    EXPECT_EQ(netpbmSamples(path), (std::vector<int>{'#', ' ', 'c'}));
    ASSERT_EQ(image.readPNM(path.c_str()), 1) << capture.errorText();
    EXPECT_EQ(std::vector<int>(image.data, image.data + 3), (std::vector<int>{'#', ' ', 'c'}));

    // A comment inside the dimensions line.
    writeFile(path, "P5\n3 # width\n1\n255\nABC");
    EXPECT_EQ(netpbmSamples(path), (std::vector<int>{'A', 'B', 'C'}));
    EXPECT_EQ(image.readPNM(path.c_str()), 0);
}
