// "VELK GRAPHICS" command files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GraphicsTestSupport.h"

using gfxtest::blank;
using gfxtest::picture;
using Rows = std::vector<std::string>;

namespace {

// Runs `commands` (after the header line) on a black 8 x 6 grey image with
// a white pen.
struct FileRun {
    VelkImage image = blank(8, 6);
    VelkGraphics g;
    int result = -1;
    std::vector<std::string> errors;

    explicit FileRun(const std::string& commands, const std::string& header = "VELK GRAPHICS\n") {
        velktest::TempDir dir;
        std::string path = dir.path("commands.vgr");
        velktest::writeFile(path, header + commands);
        g.setColor(255, 255, 255);
        velktest::MessageCapture capture;
        result = g.drawFile(image, path.c_str());
        errors = capture.errors();
    }
};

}  // namespace

TEST(CommandFile, WordsAbbreviateCommandsInTableOrder) {
    struct Case {
        const char* commands;
        Rows expected;
    };
    const Case cases[] = {
        {"l 0 0 2 0\nlin 0 1 2 1\nlines 0 2 2 2\nlineup 0 3 2 3\nLINE 0 4 2 4\n",
         {"........", "........", "###.....", "###.....", "###.....", "###....."}},
        // "c" is colour, never canvas; "ca" is canvas (the scale 2 doubles
        // the point's coordinates).
        {"c 0 0 0\npoints 1 1\nc 1 1 1\nca 0 0 4 3\np 1 1\n",
         {"........", "........", "........", "..#.....", "........", "........"}},
        {"w 3\np 1 1\n", {"........", "........", "........", "###.....", "###.....", "###....."}},
        {"colour 0 0 0\nline 0 0 1 0\n",  // not a prefix either way: ignored
         {"........", "........", "........", "........", "........", "##......"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commands);
        FileRun run(c.commands);
        EXPECT_EQ(run.result, 1);
        EXPECT_EQ(picture(run.image), c.expected);
    }
}

TEST(CommandFile, LinesOfTheFile) {
    struct Case {
        const char* commands;
        Rows expected;
    };
    const Case cases[] = {
        // Backslash-newline joins lines, also inside a word.
        {"line 0 0 \\\n7 0\nli\\\nne 0 2 \\\n\\\n3 2\n",
         {"........", "........", "........", "####....", "........", "########"}},
        // A line end in CR-LF is no line end: the polyline goes on.
        {"line 0 0 3 0\r\n3 3\r\n",
         {"........", "........", "...#....", "...#....", "...#....", "####...."}},
        {"line 0 0 3 0\n3 3\n",
         {"........", "........", "........", "........", "........", "####...."}},
        // Six numbers, two segments; five, one segment and the next command.
        {"line 0 0 5 0 5 5\n",
         {".....#..", ".....#..", ".....#..", ".....#..", ".....#..", "######.."}},
        {"line 0 0 5 0 5\nline 0 5 2 5\n",
         {"###.....", "........", "........", "........", "........", "######.."}},
        // Only the word starting with '#' is skipped, the rest of its line is read.
        {"# line 0 0 5 0\n#line 0 1 5 1\n",
         {"........", "........", "........", "........", "........", "######.."}},
        // Only the first point of a points command is marked.
        {"points 1 1 3 3 5 5\npoints 6 1\n",
         {"........", "........", "........", "........", ".#....#.", "........"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commands);
        FileRun run(c.commands);
        EXPECT_EQ(run.result, 1);
        EXPECT_EQ(picture(run.image), c.expected);
    }
}

TEST(CommandFile, CanvasAndPenWidth) {
    struct Case {
        const char* commands;
        Rows expected;
    };
    const Case cases[] = {
        // Scales 8/2 and 6/1: (1, 0.5) is pixel (4.5, 3.5), truncated.
        {"canvas 0 0 2 1\npoints 1 0.5\n",
         {"........", "........", "....#...", "........", "........", "........"}},
        // y0 > y1 turns the picture upside down: row (1 - 6) * -1 + 0.5.
        {"canvas 0 6 8 0\npoints 1 1\n",
         {".#......", "........", "........", "........", "........", "........"}},
        // An empty canvas counts as 1 x 1.
        {"canvas 2 2 2 2\npoints 2.5 2.25\n",
         {"........", "........", "........", "....#...", "........", "........"}},
        {"width 2.5\npoints 3 3\n",
         {"........", "..###...", "..###...", "..###...", "........", "........"}},
        {"width 2.4\npoints 3 3\n",
         {"........", "........", "..##....", "..##....", "........", "........"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commands);
        FileRun run(c.commands);
        EXPECT_EQ(run.result, 1);
        EXPECT_EQ(picture(run.image), c.expected);
    }
}

TEST(CommandFile, ColourPromotesAGreyImage) {
    FileRun grey("color 0.5 0.5 0.5\npoints 0 0\n");
    EXPECT_EQ(grey.image.nChannels, 1);
    EXPECT_EQ(grey.image.data[0], 127);  // (int)(0.5 * 255) in every component

    VelkImage image = blank(3, 2);
    image.data[1] = 200;
    velktest::TempDir dir;
    std::string path = dir.path("red.vgr");
    velktest::writeFile(path, "VELK GRAPHICS\ncolor 1 0 0\npoints 2 1\n");
    VelkGraphics g;
    velktest::MessageCapture capture;
    ASSERT_EQ(g.drawFile(image, path.c_str()), 1) << capture.errorText();
    ASSERT_EQ(image.nChannels, 3);
    EXPECT_EQ(std::vector<int>(image.data, image.data + 18),
              (std::vector<int>{0, 0, 0, 200, 200, 200, 0, 0, 0,  //
                                0, 0, 0, 0, 0, 0, 255, 0, 0}));
    // The pen stays with the object.
    EXPECT_EQ(g.rgb[0], 255);
    EXPECT_EQ(g.grey, 77);
}

TEST(CommandFile, HeaderLine) {
    // The header may stand anywhere in the first line, which ends after 1022 characters.
    EXPECT_EQ(FileRun("line 0 0 1 0\n", "# VELK GRAPHICS file\n").result, 1);
    EXPECT_EQ(FileRun("line 0 0 1 0\n", std::string(1010, ' ') + "VELK GRAPHICS\n").result, 0);
    // What the first line holds beyond that is read as commands.
    FileRun longHeader("line 0 0 1 0\n",
                       "VELK GRAPHICS" + std::string(1009, ' ') + "line 0 5 1 5\n");
    EXPECT_EQ(longHeader.result, 1);
    EXPECT_EQ(picture(longHeader.image)[0], "##......");

    VelkGraphics g;
    VelkImage image = blank(2, 2);
    velktest::MessageCapture capture;
    EXPECT_EQ(g.drawFile(image, "/nonexistent/overlay.vgr"), 0);
    EXPECT_EQ(capture.errors(),
              std::vector<std::string>{
                  "VELK error: can't open /nonexistent/overlay.vgr (No such file or directory)"});
}

TEST(CommandFile, BadFilesReplayed) {
    struct Case {
        const char* file;
        int result;
        const char* message;  // after "VELK error: "; %s is the path; null: none
        Rows expected;
    };
    const Rows nothing = {"........", "........", "........", "........", "........", "........"};
    const Case cases[] = {
        {"empty.vgr", 0, "can't open %s (header string 'VELK GRAPHICS' not found)", nothing},
        {"header-missing.vgr", 0, "can't open %s (header string 'VELK GRAPHICS' not found)",
         nothing},
        {"unknown-words.vgr",
         1,
         nullptr,
         {"........", "........", "........", "........", "........", "####...."}},
        {"line-numbers-split-across-lines.vgr",
         0,
         "expecting 'line x0 y0 x1 y1 [x2 y2 ...]'",
         {"........", "........", "........", "........", "####....", "........"}},
        {"color-numbers-split-across-lines.vgr",
         0,
         "expecting 'color r g b'",
         {"........", "........", "........", "........", "........", "##......"}},
        {"width-number-missing.vgr", 0, "expecting 'width n'", nothing},
        {"canvas-numbers-missing.vgr", 0, "expecting 'canvas x0 y0 x1 y1'", nothing},
        {"points-number-missing.vgr", 0, "expecting 'points x1 y1 [x2 y2 ...]'", nothing},
        // The long word is read in pieces and ignored; the 200-digit number
        // becomes two numbers too large for a float, far off the image.
        {"huge-word.vgr",
         1,
         nullptr,
         {".....#..", "....#...", "...#....", "..#.....", ".#......", "#......."}},
        // Words of binary bytes are no commands, except one that starts
        // with a NUL byte: as an empty word it abbreviates "color".
        {"binary-garbage.vgr",
         1,
         nullptr,
         {"........", ".+......", ".+......", ".+......", ".+......", "........"}},
        {"crlf-line-ends.vgr",
         1,
         nullptr,
         {"........", "........", "...#....", "...#....", "...#....", "####...."}},
        // Coordinates beyond int go to its ends, one that is no number to the
        // lower end: a line from (0, far below) to (5, 5) arrives in column 5.
        {"coordinates-huge-and-nan.vgr",
         1,
         nullptr,
         {".....#..", ".....#..", "########", ".....#..", ".....#..", ".....#.."}},
        {"pen-wider-than-everything.vgr",
         1,
         nullptr,
         {"########", "########", "########", "########", "########", "########"}},
        {"pen-width-negative.vgr", 1, nullptr, nothing},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::string path = gfxtest::dataFile(c.file);
        VelkImage image = blank(8, 6);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        EXPECT_EQ(g.drawFile(image, path.c_str()), c.result) << capture.errorText();
        EXPECT_EQ(velktest::openFileCount(), files);
        if (c.message) {
            EXPECT_EQ(capture.errors(), std::vector<std::string>{
                                            "VELK error: " + gfxtest::withPath(c.message, path)});
        } else {
            EXPECT_TRUE(capture.errors().empty()) << capture.errorText();
        }
        EXPECT_EQ(image.nChannels, 1);
        EXPECT_EQ(picture(image), c.expected);
    }
}
