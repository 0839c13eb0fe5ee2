// Interoperability with Netpbm, a PNM implementation written elsewhere. The
// tools must be installed (scripts/deps.sh): a missing tool fails the test.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"
#include "TestSupport.h"

namespace {

// Standard output of a shell command; a failing command fails the test.
std::string run(const std::string& command) {
    velktest::TempDir dir;
    EXPECT_EQ(std::system((command + " > " + dir.path("out")).c_str()), 0) << command;
    return velktest::readFile(dir.path("out"));
}

// Samples as Netpbm's pamtable lists them: rows top first, channels interleaved.
Bytes netpbmSamples(const std::string& path) {
    std::string table = run("pamtable " + path);
    for (char& c : table) c = c == '|' ? ' ' : c;
    std::istringstream in(table);
    Bytes samples;
    for (int v; in >> v;) samples.push_back(v);
    return samples;
}

// The image's samples in file order: top row (row height - 1) first.
Bytes topDown(const VelkImage& image) {
    Bytes samples;
    for (int y = image.height - 1; y >= 0; y--) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        samples.insert(samples.end(), row, row + image.width * image.nChannels);
    }
    return samples;
}

// Reads `path`, failing the test with the report if that fails.
VelkImage load(const std::string& path) {
    velktest::MessageCapture capture;
    VelkImage image;
    EXPECT_EQ(image.readPNM(path.c_str()), 1) << capture.errorText();
    return image;
}

}  // namespace

// Each written variant is what Netpbm reads, reads back exactly, and survives
// a conversion by Netpbm into the other layout (plain to raw, raw to plain).
TEST(NetpbmInterop, WrittenVariantsAreReadByNetpbmAndReadBack) {
    velktest::TempDir dir;
    const char* types[] = {"PGM raw", "PGM plain", "PPM raw", "PPM plain"};  // as pamfile says
    const int sizes[][2] = {{7, 5}, {1, 1}, {17, 3}, {3, 11}};
    std::string path = dir.path("written.pnm"), converted = dir.path("converted.pnm");
    int seed = 1, files = velktest::openFileCount();
    for (int variant = 0; variant < 4; variant++) {
        for (const auto& size : sizes) {
            SCOPED_TRACE(testing::Message() << types[variant] << " " << size[0] << "x" << size[1]);
            VelkImage image(size[0], size[1], variant < 2 ? 1 : 3);
            image.createRandom(0, seed++);
            ASSERT_EQ(image.writePNM(path.c_str(), variant % 2), 1);
            EXPECT_EQ(run("pamfile " + path), path + ":\t" + types[variant] + ", " +
                                                  std::to_string(size[0]) + " by " +
                                                  std::to_string(size[1]) + "  maxval 255\n");
            EXPECT_EQ(netpbmSamples(path), topDown(image));
            EXPECT_EQ(bytesOf(load(path)), bytesOf(image));
            velktest::writeFile(converted,
                                run((variant % 2 ? "pamtopnm " : "pamtopnm -plain ") + path));
            VelkImage back = load(converted);
            EXPECT_EQ(back.nChannels, image.nChannels);
            EXPECT_EQ(topDown(back), topDown(image));
        }
    }
    EXPECT_EQ(velktest::openFileCount(), files);
}

TEST(NetpbmInterop, NetpbmGeneratedFilesLoadWithRowZeroAtTheBottom) {
    velktest::TempDir dir;
    std::string path = dir.path("generated.pnm");
    for (const char* command : {"pgmramp -tb 3 6", "pgmramp -lr 7 2 -plain", "pgmnoise 13 9",
                                "pamgradient red blue green white 5 4 | pamtopnm",
                                "pamgradient red blue green white 5 4 | pamtopnm -plain"}) {
        velktest::writeFile(path, run(command));
        EXPECT_EQ(topDown(load(path)), netpbmSamples(path)) << command;
    }
}

// Header layouts that Netpbm reads but the reader deliberately does not
// understand: it wants the dimensions and the maxval each on a line of their
// own, with comments only as whole lines before them.
TEST(NetpbmInterop, HeaderLayoutsBeyondTheReader) {
    struct Case {
        std::string bytes;
        Bytes netpbm, ours;  // ours empty: rejected
    } cases[] = {
        // Dimensions and maxval on one line: binary finds no maxval; plain
        // takes the first pixel line as the maxval and reads nothing after it.
        {"P5\n3 1 255\nABC", {'A', 'B', 'C'}, {}},
        {"P2\n3 1 255\n1 2 3\n", {1, 2, 3}, {0, 0, 0}},
        // A comment after the maxval: Netpbm's raster starts right behind the
        // blank ending the maxval, the reader's on the next line.
        {"P5\n3 1\n255 # c\nABC", {'#', ' ', 'c'}, {'A', 'B', 'C'}},
        {"P5\n3 1\n255\n# c\n", {'#', ' ', 'c'}, {'#', ' ', 'c'}},
        {"P5\n3 # width\n1\n255\nABC", {'A', 'B', 'C'}, {}},
    };
    velktest::TempDir dir;
    std::string path = dir.path("limit.pnm");
    for (const Case& c : cases) {
        velktest::writeFile(path, c.bytes);
        EXPECT_EQ(netpbmSamples(path), c.netpbm) << c.bytes;
        velktest::MessageCapture capture;  // keeps the expected reports quiet
        VelkImage image;
        EXPECT_EQ(image.readPNM(path.c_str()), c.ours.empty() ? 0 : 1) << c.bytes;
        EXPECT_EQ(bytesOf(image), c.ours) << c.bytes;
    }
}
