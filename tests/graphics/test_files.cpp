// "VELK GRAPHICS" command files and UCD meshes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GraphicsTestSupport.h"

using gfxtest::blank;
using gfxtest::picture;
using Lines = std::vector<std::string>;

namespace {

const char* const kNothing = "......../......../......../......../......../........";

struct Drawn {
    int result;
    Lines errors;
    std::string picture;
    int channels;
};

// Draws the file at `path` onto `image` with a white pen, through drawUCD for
// a ".inp" file and drawFile otherwise, and checks that no file is left open.
Drawn draw(const std::string& path, VelkImage image) {
    const bool ucd = path.size() > 4 && path.compare(path.size() - 4, 4, ".inp") == 0;
    VelkGraphics g = gfxtest::whitePen();
    velktest::MessageCapture capture;
    const int files = velktest::openFileCount();
    const int result = ucd ? g.drawUCD(image, path.c_str()) : g.drawFile(image, path.c_str());
    EXPECT_EQ(velktest::openFileCount(), files) << path;
    return {result, capture.errors(), picture(image), image.nChannels};
}

// Draws a command file with these contents on a black 8 x 6 grey image.
Drawn drawText(const std::string& text) {
    velktest::TempDir dir;
    velktest::writeFile(dir.path("commands.vgr"), text);
    return draw(dir.path("commands.vgr"), blank(8, 6));
}

// "VELK error: " and the message, with each "%s" replaced by the path; none
// for an empty message.
Lines errorFor(std::string message, const std::string& path) {
    if (message.empty()) return {};
    for (size_t at; (at = message.find("%s")) != std::string::npos;) message.replace(at, 2, path);
    return {"VELK error: " + message};
}

std::string dataFile(const std::string& name) {
    return velktest::dataPath("graphics/" + name);
}

}  // namespace

// Words abbreviate commands (either may be a prefix of the other, first match
// in table order: "c" is colour, never canvas); backslash-newline joins lines,
// also inside a word; a newline ends a polyline, and an odd value out ends it
// too; only the word that starts with '#' is skipped; a points command marks
// only its first point; canvas scales map file coordinates onto pixels (an
// empty canvas counts as 1 x 1, y0 > y1 turns the picture upside down); pen
// widths round to the nearest whole pixel.
TEST(CommandFile, CommandsDrawWhatTheyName) {
    const struct {
        const char* commands;
        const char* expected;
    } cases[] = {
        {"l 0 0 2 0\nlin 0 1 2 1\nlines 0 2 2 2\nlineup 0 3 2 3\nLINE 0 4 2 4\n",
         "......../......../###...../###...../###...../###....."},
        {"c 0 0 0\npoints 1 1\nc 1 1 1\nca 0 0 4 3\np 1 1\n",
         "......../......../......../..#...../......../........"},
        {"w 3\np 1 1\n", "......../......../......../###...../###...../###....."},
        {"colour 0 0 0\nline 0 0 1 0\n", "......../......../......../......../......../##......"},
        {"line 0 0 \\\n7 0\nli\\\nne 0 2 \\\n\\\n3 2\n",
         "......../......../......../####..../......../########"},
        {"line 0 0 3 0\n3 3\n", "......../......../......../......../......../####...."},
        {"line 0 0 5 0 5 5\n", ".....#../.....#../.....#../.....#../.....#../######.."},
        {"line 0 0 5 0 5\nline 0 5 2 5\n", "###...../......../......../......../......../######.."},
        {"# line 0 0 5 0\n#line 0 1 5 1\n",
         "......../......../......../......../......../######.."},
        {"points 1 1 3 3 5 5\npoints 6 1\n",
         "......../......../......../......../.#....#./........"},
        {"canvas 0 0 2 1\npoints 1 0.5\n", "......../......../....#.../......../......../........"},
        {"canvas 0 6 8 0\npoints 1 1\n", ".#....../......../......../......../......../........"},
        {"canvas 2 2 2 2\npoints 2.5 2.25\n",
         "......../......../......../....#.../......../........"},
        {"width 2.5\npoints 3 3\n", "......../..###.../..###.../..###.../......../........"},
        {"width 2.4\npoints 3 3\n", "......../......../..##..../..##..../......../........"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.commands);
        Drawn run = drawText(std::string("VELK GRAPHICS\n") + c.commands);
        EXPECT_EQ(run.result, 1) << testing::PrintToString(run.errors);
        EXPECT_EQ(run.picture, c.expected);
    }
}

TEST(CommandFile, HeaderStandsInTheFirstLineOf1022Characters) {
    EXPECT_EQ(drawText("# VELK GRAPHICS file\nline 0 0 1 0\n").result, 1);
    EXPECT_EQ(drawText(std::string(1010, ' ') + "VELK GRAPHICS\n").result, 0);
    // What the first line holds beyond that is read as commands.
    Drawn longHeader = drawText("VELK GRAPHICS" + std::string(1009, ' ') + "line 0 5 1 5\n");
    EXPECT_EQ(longHeader.result, 1);
    EXPECT_EQ(longHeader.picture.substr(0, 9), "##....../");
}

// A grey pen keeps a grey image grey ((int)(0.5 * 255) = 127); a coloured one
// turns it into RGB.
TEST(CommandFile, ColourPromotesAGreyImage) {
    VelkImage image = blank(3, 2);
    image.data[1] = 200;
    velktest::TempDir dir;
    velktest::writeFile(dir.path("red.vgr"),
                        "VELK GRAPHICS\ncolor 0.5 0.5 0.5\npoints 0 0\ncolor 1 0 0\npoints 2 1\n");
    VelkGraphics g;
    velktest::MessageCapture capture;
    ASSERT_EQ(g.drawFile(image, dir.path("red.vgr").c_str()), 1) << capture.errorText();
    ASSERT_EQ(image.nChannels, 3);
    EXPECT_EQ(
        std::vector<int>(image.data, image.data + 18),
        (std::vector<int>{127, 127, 127, 200, 200, 200, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0}));
    EXPECT_EQ(g.grey, 77);  // the pen stays with the object
}

// Command files and UCD meshes that are wrong in the way their names say.
TEST(DrawFiles, BadFilesReplayed) {
    const struct {
        const char* file;
        int result;
        const char* message;  // after "VELK error: ", %s the path
        const char* expected;
    } cases[] = {
        {"empty.vgr", 0, "can't open %s (header string 'VELK GRAPHICS' not found)", kNothing},
        {"header-missing.vgr", 0, "can't open %s (header string 'VELK GRAPHICS' not found)",
         kNothing},
        {"missing.vgr", 0, "can't open %s (No such file or directory)", kNothing},
        {"unknown-words.vgr", 1, "", "......../......../......../......../......../####...."},
        {"line-numbers-split-across-lines.vgr", 0, "expecting 'line x0 y0 x1 y1 [x2 y2 ...]'",
         "......../......../......../......../####..../........"},
        {"color-numbers-split-across-lines.vgr", 0, "expecting 'color r g b'",
         "......../......../......../......../......../##......"},
        {"width-number-missing.vgr", 0, "expecting 'width n'", kNothing},
        {"canvas-numbers-missing.vgr", 0, "expecting 'canvas x0 y0 x1 y1'", kNothing},
        {"points-number-missing.vgr", 0, "expecting 'points x1 y1 [x2 y2 ...]'", kNothing},
        // The long word is read in pieces and ignored; the 200-digit number
        // becomes two numbers too large for a float, far off the image.
        {"huge-word.vgr", 1, "", ".....#../....#.../...#..../..#...../.#....../#......."},
        // Words of binary bytes are no commands, except one that starts
        // with a NUL byte: as an empty word it abbreviates "color".
        {"binary-garbage.vgr", 1, "", "......../.+....../.+....../.+....../.+....../........"},
        // A line end in CR-LF is no line end: the polyline goes on.
        {"crlf-line-ends.vgr", 1, "", "......../......../...#..../...#..../...#..../####...."},
        // Coordinates beyond int go to its ends, one that is no number to the
        // lower end: a line from (0, far below) to (5, 5) arrives in column 5.
        {"coordinates-huge-and-nan.vgr", 1, "",
         ".....#../.....#../########/.....#../.....#../.....#.."},
        {"pen-wider-than-everything.vgr", 1, "",
         "########/########/########/########/########/########"},
        {"pen-width-negative.vgr", 1, "", kNothing},
        {"ucd-header-without-numbers.inp", 0, "can't open %s (this is not an UCD file)", kNothing},
        {"ucd-too-few-nodes.inp", 0, "file %s contains insufficient data (2 vertices, 1 triangles",
         kNothing},
        {"ucd-node-line-one-number.inp", 0, "expected to read 2 floats, got 1", kNothing},
        {"ucd-triangle-short.inp", 0, "expected to read 3 ints, got 2", kNothing},
        {"ucd-node-number-out-of-range.inp", 0,
         "file %s: triangle 1 uses node 4, but the nodes are 1 to 3", kNothing},
        // Node 0 starts the box as (x0, y0, x0, y0) for xmin, xmax, ymin, ymax.
        {"ucd-nodes-on-one-vertical-line.inp", 0, "degenerate grid (width=0, height=1)", kNothing},
        // Mesh coordinates that are no numbers map far off the image.
        {"ucd-nodes-not-numbers.inp", 1, "", kNothing},
        {"missing.inp", 0, "can't open %s (No such file or directory)", kNothing},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        Drawn run = draw(dataFile(c.file), blank(8, 6));
        EXPECT_EQ(run.result, c.result);
        EXPECT_EQ(run.errors, errorFor(c.message, dataFile(c.file)));
        EXPECT_EQ(run.channels, 1);
        EXPECT_EQ(run.picture, c.expected);
    }
}

// The rectangle (0, 0) .. (4, 3), split along its diagonal into two
// triangles. On 9 x 6, wider than the mesh: scale 6 / 3, centred with xOrigin
// -0.25, so x maps to ceil(2x) and y to ceil(2y - 0.5); the corners land on
// columns 0 and 8 and rows 0 and 6 (above the image). On 9 x 10, taller:
// scale 9 / 4, yOrigin -(10 / 2.25 - 3) / 2; the corners land on columns 0
// and 9 (beyond the image) and rows 2 and 8. An empty image has no room.
TEST(DrawUCD, MeshFittedIntoTheImage) {
    const struct {
        int width, height;
        const char* expected;
    } cases[] = {{9, 6, "#......##/#....##.#/#...#...#/#..#....#/###.....#/#########"},
                 {9, 10,
                  "........./#########/#......##/#.....#../#...##.../#..#...../###....../"
                  "#########/........./........."}};
    for (const auto& c : cases) {
        Drawn run = draw(dataFile("ucd-rectangle.inp"), blank(c.width, c.height));
        EXPECT_EQ(run.result, 1) << testing::PrintToString(run.errors);
        EXPECT_EQ(run.picture, c.expected);
    }
    Drawn empty = draw(dataFile("ucd-rectangle.inp"), VelkImage());
    EXPECT_EQ(empty.result, 0);
    EXPECT_EQ(empty.errors, Lines{"VELK error: degenerate image (width=0, height=0)"});
}
