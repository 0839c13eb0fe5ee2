// Triangle meshes drawn from UCD files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GraphicsTestSupport.h"

using gfxtest::blank;
using gfxtest::picture;
using Rows = std::vector<std::string>;

// The rectangle (0, 0) .. (4, 3), split along its diagonal into two triangles.
TEST(DrawUCD, MeshFittedIntoTheImage) {
    struct Case {
        int width, height;
        Rows expected;
    };
    const Case cases[] = {
        // Wider than the mesh: scale 6 / 3, centred with xOrigin -0.25, so x
        // maps to ceil(2x) and y to ceil(2y - 0.5). The corners land on
        // columns 0 and 8 and rows 0 and 6 (above the image).
        {9, 6, {"#......##", "#....##.#", "#...#...#", "#..#....#", "###.....#", "#########"}},
        // Taller: scale 9 / 4, yOrigin -(10 / 2.25 - 3) / 2; the corners land
        // on columns 0 and 9 (beyond the image) and rows 2 and 8.
        {9,
         10,
         {".........", "#########", "#......##", "#.....#..", "#...##...", "#..#.....", "###......",
          "#########", ".........", "........."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.height);
        VelkImage image = blank(c.width, c.height);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        velktest::MessageCapture capture;
        ASSERT_EQ(g.drawUCD(image, gfxtest::dataFile("ucd-rectangle.inp").c_str()), 1)
            << capture.errorText();
        EXPECT_EQ(picture(image), c.expected);
    }
}

TEST(DrawUCD, BadMeshes) {
    struct Case {
        const char* file;
        const char* message;  // after "VELK error: "; %s is the path; null: success
    };
    const Case cases[] = {
        {"ucd-header-without-numbers.inp", "can't open %s (this is not an UCD file)"},
        {"ucd-too-few-nodes.inp", "file %s contains insufficient data (2 vertices, 1 triangles"},
        {"ucd-node-line-one-number.inp", "expected to read 2 floats, got 1"},
        {"ucd-triangle-short.inp", "expected to read 3 ints, got 2"},
        {"ucd-node-number-out-of-range.inp",
         "file %s: triangle 1 uses node 4, but the nodes are 1 to 3"},
        // Node 0 starts the box as (x0, y0, x0, y0) for xmin, xmax, ymin, ymax.
        {"ucd-nodes-on-one-vertical-line.inp", "degenerate grid (width=0, height=1)"},
        // Coordinates that are no numbers map far off the image.
        {"ucd-nodes-not-numbers.inp", nullptr},
        {"missing.inp", "can't open %s (No such file or directory)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::string path = gfxtest::dataFile(c.file);
        VelkImage image = blank(6, 4);
        VelkGraphics g;
        g.setColor(255, 255, 255);
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        int result = g.drawUCD(image, path.c_str());
        EXPECT_EQ(velktest::openFileCount(), files);
        if (c.message) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(capture.errors(), std::vector<std::string>{
                                            "VELK error: " + gfxtest::withPath(c.message, path)});
        } else {
            EXPECT_EQ(result, 1) << capture.errorText();
        }
        EXPECT_EQ(picture(image), Rows(4, "......"));
    }

    VelkImage empty;
    VelkGraphics g;
    velktest::MessageCapture capture;
    EXPECT_EQ(g.drawUCD(empty, gfxtest::dataFile("ucd-rectangle.inp").c_str()), 0);
    EXPECT_EQ(capture.errors(),
              std::vector<std::string>{"VELK error: degenerate image (width=0, height=0)"});
}
