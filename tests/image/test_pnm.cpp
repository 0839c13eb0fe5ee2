#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velk/velk.h>
#include "ImageTestSupport.h"
#include "TestSupport.h"

using velktest::dataPath;
using velktest::readFile;

TEST(PnmWrite, AllFourLayoutsStartWithTheTopRow) {
    velktest::TempDir dir;
    std::vector<unsigned char> padded = {1, 2, 99, 3, 4, 99};
    Bytes ramp(20);
    for (int i = 0; i < 20; i++) ramp[i] = i;
    VelkImage nines(17, 1, 3);
    nines.clear(9);
    // P3 counts pixels, not rows or samples: the 16th of 17 ends a text line.
    std::string p3 = "P3\n17 1\n255\n";
    for (int i = 1; i <= 17; i++) p3 += std::string("009 009 009") + (i == 16 ? "\n" : " ");
    struct Case {
        VelkImage image;
        std::string expected;
    } cases[] = {
        {makeImage(2, 2, 1, {1, 2, 3, 4}), std::string("P5\n2 2\n255\n\x03\x04\x01\x02")},
        {makeImage(1, 2, 3, {1, 2, 3, 4, 5, 6}), "P6\n1 2\n255\n\x04\x05\x06\x01\x02\x03"},
        // Two channels: the first `width` bytes of each row, unconverted.
        {makeImage(2, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8}), "P5\n2 2\n255\n\x05\x06\x01\x02"},
        // Rows through bytesPerLine: padding never reaches the file.
        {VelkImage(2, 2, 3, padded.data()), "P5\n2 2\n255\n\x03\x04\x01\x02"},
        // The counter runs on across rows; 20 samples end with a blank.
        {makeImage(5, 4, 1, ramp),
         "P2\n5 4\n255\n015  016  017  018  019  010  011  012  013  014  "
         "005  006  007  008  009  000 \n001  002  003  004  "},
        {nines, p3},
    };
    for (Case& c : cases) {
        ASSERT_EQ(c.image.writePNM(dir.path("f").c_str(), c.expected[1] < '5'), 1);
        EXPECT_EQ(readFile(dir.path("f")), c.expected);
    }
}

TEST(PnmWrite, HistogramAndUnwritableFiles) {
    velktest::TempDir dir;
    VelkImage image = makeImage(2, 2, 1, {0, 0, 7, 255});
    testing::internal::CaptureStdout();
    ASSERT_EQ(image.writeHistogram(dir.path("h").c_str()), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Mean = 65.5\n");
    std::string expected;
    for (int v = 0; v < 256; v++)
        expected += std::to_string(v) + (v == 0 ? " 2\n" : v == 7 || v == 255 ? " 1\n" : " 0\n");
    EXPECT_EQ(readFile(dir.path("h")), expected);

    const std::string path = "/nonexistent-velk-dir/x.pgm";
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(image.writePNM(path.c_str(), 0), 0); }),
              "VelkImage: Can't open file " + path + "\n");
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(image.writeHistogram(path.c_str()), 0); }),
              "VelkImage: Can't write histogram " + path + "\n");
}

// Comment lines only before the sizes and the maxval; the maxval never scales;
// short data is not detected (binary rows that are there arrive, failing ASCII
// scans store what the scan last held).
TEST(PnmRead, AcceptedFilesGiveTheirPixelsBottomRowFirst) {
    struct Case {
        const char* file;
        size_t size, first;
        Bytes expected;  // bytes from `first` on
    } cases[] = {
        {"comment-lines.pgm", 6, 0, {'D', 'E', 'F', 'A', 'B', 'C'}},
        {"comment-after-maxval.pgm", 3, 0, {'#', ' ', 'n'}},
        {"maxval-15.pgm", 8, 0, {15, 10, 5, 0, 0, 5, 10, 15}},
        {"truncated-pixels.pgm", 12, 8, {'A', 'B', 'C', 'D'}},
        {"truncated-values.pgm", 6, 0, {4, 4, 4, 1, 2, 3}},
        {"garbage-in-values.ppm", 9, 0, {1, 2, 3, 1, 2, 3, 1, 2, 3}},
        {"huge-size-one-value.pgm", 3000000, 0, Bytes(3000000, 7)},
    };
    for (const Case& c : cases) {
        velktest::MessageCapture capture;
        VelkImage image;
        ASSERT_EQ(image.readPNM(dataPath(std::string("image/") + c.file).c_str()), 1)
            << capture.errorText();
        Bytes got = bytesOf(image);
        ASSERT_EQ(got.size(), c.size) << c.file;
        EXPECT_EQ(Bytes(got.begin() + c.first, got.begin() + c.first + c.expected.size()),
                  c.expected)
            << c.file;
    }
}

TEST(PnmRead, BadFilesAreReportedAndLeaveImageAndHandlesAlone) {
    auto expectRejected = [](const std::string& path, const std::string& report) {
        VelkImage image = makeImage(2, 1, 1, {42, 42});
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        EXPECT_EQ(image.readPNM(path.c_str()), 0) << path;
        EXPECT_EQ(capture.errorText(), "VELK error: " + report + "\n");
        EXPECT_EQ(velktest::openFileCount(), files) << path;
        EXPECT_EQ(bytesOf(image), (Bytes{42, 42}));
    };
    velktest::TempDir dir;
    std::string missing = dir.path("missing.pgm"), directory = dir.path("");
    expectRejected(missing, "can't open " + missing + " (No such file or directory)");
    expectRejected(directory, "can't open " + directory + " (Is a directory)");
    for (const char* file :
         {"empty.pgm", "garbage-after-magic.pgm", "negative-width.pgm", "overflowing-size.ppm",
          "out-of-range-number.pgm", "missing-maxval.pgm", "header-of-comments.pgm"}) {
        std::string path = dataPath(std::string("image/") + file);
        expectRejected(path, "can't open " + path + " (couldn't read dimensions)");
    }
    // An unknown magic shows the file name as the format: a "%s" shows the
    // reason, other conversions are shown as written.
    const char* names[][2] = {{"why-%s.pbm", "why-no PNM header found.pbm"},
                              {"100%%.pbm", "100%.pbm"},
                              {"bad-%n%d%s.pbm", "bad-%n%d%s.pbm"},
                              {"two-%s-%s.pbm", "two-%s-%s.pbm"}};
    for (const auto& name : names) {
        velktest::writeFile(dir.path(name[0]), readFile(dataPath("image/unknown-magic.pbm")));
        expectRejected(dir.path(name[0]), dir.path(name[1]));
    }
}
