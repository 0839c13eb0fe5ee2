#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ImageTestSupport.h"
#include "TestSupport.h"
#include "velk/velk.h"

using velktest::dataPath;
using velktest::MessageCapture;
using velktest::readFile;
using velktest::TempDir;
using velktest::writeFile;

using imagetest::bytesOf;
using imagetest::makeImage;

TEST(PnmWrite, BinaryLayoutsStartWithTheTopRow) {
    TempDir dir;
    // Rows 0 (bottom) and 1 (top).
    VelkImage grey = makeImage(2, 2, 1, {1, 2, 3, 4});
    ASSERT_EQ(grey.writePNM(dir.path("g.pgm").c_str(), 0), 1);
    EXPECT_EQ(readFile(dir.path("g.pgm")), std::string("P5\n2 2\n255\n\x03\x04\x01\x02"));

    VelkImage rgb = makeImage(1, 2, 3, {1, 2, 3, 4, 5, 6});
    ASSERT_EQ(rgb.writePNM(dir.path("c.ppm").c_str(), 0), 1);
    EXPECT_EQ(readFile(dir.path("c.ppm")), std::string("P6\n1 2\n255\n\x04\x05\x06\x01\x02\x03"));

    // Two-byte pixels: only the first `width` bytes of each row, unconverted.
    VelkImage pairs = makeImage(2, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_EQ(pairs.writePNM(dir.path("p.pgm").c_str(), 0), 1);
    EXPECT_EQ(readFile(dir.path("p.pgm")), std::string("P5\n2 2\n255\n\x05\x06\x01\x02"));

    // Rows are addressed through bytesPerLine: padding never reaches the file.
    std::vector<unsigned char> padded = {1, 2, 99, 3, 4, 99};
    VelkImage borrowed(2, 2, 3, padded.data());
    ASSERT_EQ(borrowed.writePNM(dir.path("b.pgm").c_str(), 0), 1);
    EXPECT_EQ(readFile(dir.path("b.pgm")), std::string("P5\n2 2\n255\n\x03\x04\x01\x02"));
}

TEST(PnmWrite, AsciiLayoutsBreakEverySixteenPixels) {
    TempDir dir;
    std::vector<int> ramp;
    for (int i = 0; i < 20; i++) ramp.push_back(i);
    VelkImage grey = makeImage(5, 4, 1, ramp);
    ASSERT_EQ(grey.writePNM(dir.path("g.pgm").c_str(), 1), 1);
    // Top row (15..19) first; the 16th sample ends a text line, the 20th a blank.
    EXPECT_EQ(readFile(dir.path("g.pgm")),
              "P2\n5 4\n255\n"
              "015  016  017  018  019  010  011  012  013  014  005  006  007  008  009  000 \n"
              "001  002  003  004  ");

    VelkImage small = makeImage(2, 1, 3, {1, 20, 255, 0, 7, 100});
    ASSERT_EQ(small.writePNM(dir.path("s.ppm").c_str(), 1), 1);
    EXPECT_EQ(readFile(dir.path("s.ppm")), "P3\n2 1\n255\n001 020 255 000 007 100 ");

    // 17 RGB pixels in one row: the counter, not the row, places the newline.
    VelkImage row(17, 1, 3);
    row.clear(9);
    ASSERT_EQ(row.writePNM(dir.path("r.ppm").c_str(), 1), 1);
    std::string pixel = "009 009 009";
    std::string expected = "P3\n17 1\n255\n";
    for (int i = 1; i <= 17; i++) expected += pixel + (i == 16 ? "\n" : " ");
    EXPECT_EQ(readFile(dir.path("r.ppm")), expected);
}

TEST(PnmWrite, HistogramHasAllGreyValuesAndPrintsTheMean) {
    TempDir dir;
    VelkImage image = makeImage(2, 2, 1, {0, 0, 7, 255});
    testing::internal::CaptureStdout();
    ASSERT_EQ(image.writeHistogram(dir.path("h.txt").c_str()), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Mean = 65.5\n");
    std::string expected;
    for (int v = 0; v < 256; v++) {
        int count = v == 0 ? 2 : v == 7 || v == 255 ? 1 : 0;
        expected += std::to_string(v) + " " + std::to_string(count) + "\n";
    }
    EXPECT_EQ(readFile(dir.path("h.txt")), expected);

    VelkImage empty;
    testing::internal::CaptureStdout();
    ASSERT_EQ(empty.writeHistogram(dir.path("e.txt").c_str()), 1);
    testing::internal::GetCapturedStdout();
    std::string text = readFile(dir.path("e.txt"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 256);
    EXPECT_EQ(text.substr(0, 8), "0 0\n1 0\n");
}

TEST(PnmWrite, UnwritableFilesAreReportedOnStandardError) {
    VelkImage image(2, 2);
    image.clear(0);
    const std::string path = "/nonexistent-velk-dir/x.pgm";
    testing::internal::CaptureStderr();
    EXPECT_EQ(image.writePNM(path.c_str(), 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "VelkImage: Can't open file " + path + "\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(image.writeHistogram(path.c_str()), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "VelkImage: Can't write histogram " + path + "\n");
}

TEST(PnmRead, WrittenImagesReadBackExactlyInAllVariants) {
    TempDir dir;
    int files = velktest::openFileCount();
    for (int channels : {1, 3}) {
        for (int ascii : {0, 1}) {
            VelkImage image(7, 5, channels);
            image.createRandom(0, 11 + channels + ascii);
            std::string path = dir.path("roundtrip");
            ASSERT_EQ(image.writePNM(path.c_str(), ascii), 1);
            MessageCapture capture;
            VelkImage back;
            ASSERT_EQ(back.readPNM(path.c_str()), 1) << capture.errorText();
            EXPECT_EQ(back.width, 7);
            EXPECT_EQ(back.height, 5);
            EXPECT_EQ(back.nChannels, channels);
            EXPECT_EQ(bytesOf(back), bytesOf(image)) << channels << " channels, ascii " << ascii;
        }
    }
    EXPECT_EQ(velktest::openFileCount(), files);
}

TEST(PnmRead, FirstFileRowIsTheTopImageRow) {
    TempDir dir;
    writeFile(dir.path("f.pgm"), std::string("P5\n2 3\n255\n\x01\x02\x03\x04\x05\x06"));
    writeFile(dir.path("f.ppm"), "P3\n1 2\n255\n10 20 30\n40 50 60\n");
    MessageCapture capture;
    VelkImage grey, rgb;
    ASSERT_EQ(grey.readPNM(dir.path("f.pgm").c_str()), 1) << capture.errorText();
    EXPECT_EQ(bytesOf(grey), (std::vector<int>{5, 6, 3, 4, 1, 2}));
    ASSERT_EQ(rgb.readPNM(dir.path("f.ppm").c_str()), 1) << capture.errorText();
    EXPECT_EQ(bytesOf(rgb), (std::vector<int>{40, 50, 60, 10, 20, 30}));
}

TEST(PnmRead, CommentLinesAndMaxval) {
    MessageCapture capture;
    VelkImage image;
    // Whole comment lines before the dimensions and before the maxval.
    ASSERT_EQ(image.readPNM(dataPath("image/comment-lines.pgm").c_str()), 1) << capture.errorText();
    EXPECT_EQ(bytesOf(image), (std::vector<int>{'D', 'E', 'F', 'A', 'B', 'C'}));

    // After the maxval line a '#' is pixel data.
    ASSERT_EQ(image.readPNM(dataPath("image/comment-after-maxval.pgm").c_str()), 1)
        << capture.errorText();
    EXPECT_EQ(bytesOf(image), (std::vector<int>{'#', ' ', 'n'}));

    // The maxval is read but never used for scaling.
    ASSERT_EQ(image.readPNM(dataPath("image/maxval-15.pgm").c_str()), 1) << capture.errorText();
    EXPECT_EQ(bytesOf(image), (std::vector<int>{15, 10, 5, 0, 0, 5, 10, 15}));
}

TEST(PnmRead, BadFilesAreReportedAndLeaveNoHandleOpen) {
    TempDir dir;
    struct Case {
        std::string path;
        std::string reason;  // what the report ends with
    };
    const std::vector<Case> cases = {
        {dir.path("missing.pgm"), "(No such file or directory)"},
        {dir.path(""), "(Is a directory)"},
        {dataPath("image/empty.pgm"), "(couldn't read dimensions)"},
        {dataPath("image/garbage-after-magic.pgm"), "(couldn't read dimensions)"},
        {dataPath("image/negative-width.pgm"), "(couldn't read dimensions)"},
        {dataPath("image/overflowing-size.ppm"), "(couldn't read dimensions)"},
        {dataPath("image/out-of-range-number.pgm"), "(couldn't read dimensions)"},
        {dataPath("image/missing-maxval.pgm"), "(couldn't read dimensions)"},
        {dataPath("image/header-of-comments.pgm"), "(couldn't read dimensions)"},
    };
    for (const Case& c : cases) {
        VelkImage image(2, 1);
        image.clear(42);
        unsigned char* before = image.data;
        int files = velktest::openFileCount();
        MessageCapture capture;
        EXPECT_EQ(image.readPNM(c.path.c_str()), 0) << c.path;
        ASSERT_EQ(capture.errors().size(), 1u) << c.path;
        EXPECT_EQ(capture.errors()[0], "VELK error: can't open " + c.path + " " + c.reason);
        EXPECT_EQ(velktest::openFileCount(), files) << c.path;
        // Header failures leave the image as it was.
        EXPECT_EQ(image.data, before);
        EXPECT_EQ(image.width, 2);
        EXPECT_EQ(image.data[1], 42);
    }
}

TEST(PnmRead, UnknownMagicShowsTheFileNameAsTheFormat) {
    TempDir dir;
    std::string bytes = readFile(dataPath("image/unknown-magic.pbm"));
    struct Case {
        std::string name;
        std::string message;
    };
    // A "%s" in the name shows the reason; other conversions are shown as written.
    const std::vector<Case> cases = {
        {"plain.pbm", "plain.pbm"},         {"why-%s.pbm", "why-no PNM header found.pbm"},
        {"100%%.pbm", "100%.pbm"},          {"bad-%n%d%s.pbm", "bad-%n%d%s.pbm"},
        {"two-%s-%s.pbm", "two-%s-%s.pbm"},
    };
    for (const Case& c : cases) {
        std::string path = dir.path(c.name);
        writeFile(path, bytes);
        int files = velktest::openFileCount();
        MessageCapture capture;
        VelkImage image;
        EXPECT_EQ(image.readPNM(path.c_str()), 0);
        ASSERT_EQ(capture.errors().size(), 1u);
        EXPECT_EQ(capture.errors()[0], "VELK error: " + dir.path(c.message));
        EXPECT_EQ(velktest::openFileCount(), files);
    }
}

TEST(PnmRead, ShortPixelDataIsNotDetected) {
    MessageCapture capture;
    VelkImage image;
    // Binary: the rows that are there arrive, top row first.
    ASSERT_EQ(image.readPNM(dataPath("image/truncated-pixels.pgm").c_str()), 1)
        << capture.errorText();
    EXPECT_EQ(image.width, 4);
    EXPECT_EQ(image.height, 3);
    EXPECT_EQ(std::vector<int>(image.data + 8, image.data + 12),
              (std::vector<int>{'A', 'B', 'C', 'D'}));
    EXPECT_EQ(image.data[4], 'E');

    // ASCII: failing scans store what the scan last held.
    ASSERT_EQ(image.readPNM(dataPath("image/truncated-values.pgm").c_str()), 1)
        << capture.errorText();
    EXPECT_EQ(bytesOf(image), (std::vector<int>{4, 4, 4, 1, 2, 3}));
    ASSERT_EQ(image.readPNM(dataPath("image/garbage-in-values.ppm").c_str()), 1)
        << capture.errorText();
    EXPECT_EQ(bytesOf(image), (std::vector<int>{1, 2, 3, 1, 2, 3, 1, 2, 3}));
    ASSERT_EQ(image.readPNM(dataPath("image/huge-size-one-value.pgm").c_str()), 1)
        << capture.errorText();
    ASSERT_EQ(image.width * image.height, 3000000);
    EXPECT_EQ(std::count(image.data, image.data + 3000000, 7), 3000000);
    EXPECT_TRUE(capture.errors().empty());
}
