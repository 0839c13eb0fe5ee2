// Writes the generated part of the seed corpora: files made by the library's
// own writers, the awkward cases of each format written out by hand, and
// recipes for the two engine targets. Cases already in the tests/data folders
// a target reads (targets.txt) are not repeated here. Usage: velk_fuzz_seeds
// <corpus-dir> (the per-target directories must exist).

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include <velk/VelkColormap.h>
#include <velk/VelkImage.h>
#include <velk/VelkScalarField.h>
#include <velk/VelkVectorField.h>

namespace {

std::string gRoot;
int gFailures = 0;

std::string pathOf(const std::string& target, const std::string& name) {
    return gRoot + "/" + target + "/seed-" + name;
}

void put(const std::string& target, const std::string& name, const std::string& bytes) {
    std::string path = pathOf(target, name);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        std::fprintf(stderr, "can't write %s\n", path.c_str());
        gFailures++;
    }
    if (file) std::fclose(file);
}

void check(int ok, const std::string& what) {
    if (!ok) {
        std::fprintf(stderr, "writer failed: %s\n", what.c_str());
        gFailures++;
    }
}

// --- PNM ---

void pnmSeeds() {
    const char* t = "readPNM";
    struct Shape {
        int w, h, c, ascii;
        const char* name;
    };
    const Shape shapes[] = {{3, 2, 1, 0, "p5-3x2.pgm"}, {4, 3, 3, 0, "p6-4x3.ppm"},
                            {5, 4, 1, 1, "p2-5x4.pgm"}, {2, 3, 3, 1, "p3-2x3.ppm"},
                            {1, 1, 1, 0, "p5-1x1.pgm"}, {17, 1, 1, 1, "p2-17x1.pgm"}};
    for (const Shape& s : shapes) {
        VelkImage image(s.w, s.h, s.c);
        for (int i = 0; i < s.w * s.h * s.c; i++)
            image.data[i] = static_cast<unsigned char>(37 * i);
        check(image.writePNM(pathOf(t, s.name).c_str(), s.ascii), s.name);
    }
    VelkImage empty;
    check(empty.writePNM(pathOf(t, "p5-0x0.pgm").c_str(), 0), "empty PNM");

    put(t, "comments.pgm", "P5\n# made by hand\n2 2\n# maxval next\n255\nabcd");
    put(t, "comment-after-maxval.pgm", "P5\n2 1\n255\n# ab\n");
    put(t, "one-line-header.pgm", "P5 2 2 255\nabcd");
    put(t, "maxval-15.pgm", "P2\n3 1\n15\n0 7 15\n");
    put(t, "maxval-65535.pgm", "P5\n2 1\n65535\n\x01\x02\x03\x04");
    put(t, "short-data.ppm", "P6\n4 4\n255\nxyz");
    put(t, "negative-size.pgm", "P5\n-3 4\n255\n");
    put(t, "zero-width.pgm", "P2\n0 5\n255\n");
    put(t, "int-overflow.pgm", "P5\n65536 65536\n255\n");
    put(t, "huge-ascii.pgm", "P2\n9000 9000\n255\n1 2 3\n");
    put(t, "largest-int.pgm", "P5\n2147483647 1\n255\n");
    put(t, "unknown-magic.pbm", "P4\n2 2\n255\n\x00\x00");
    put(t, "p7.pam", "P7\nWIDTH 2\n");
    put(t, "ascii-garbage.pgm", "P2\n3 2\n255\n1 x 3\n4 5 6\n");
    put(t, "ascii-large-values.ppm", "P3\n2 1\n255\n256 -1 99999999999 4 5\n");
    put(t, "crlf.pgm", "P2\r\n2 1\r\n255\r\n1 2\r\n");
    put(t, "dimensions-missing.pgm", "P5\n# only comments\n# and more\n");
    put(t, "tabs.pgm", "P2\n2\t2\n255\n1\t2\t3\t4\n");
    put(t, "only-magic.pgm", "P6");
}

// --- Vector and scalar field files ---

void fieldSeeds() {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    {
        const char* t = "vectorRead";
        VelkVectorField field(3, 2, nullptr);
        const float values[] = {0.5f, -1.0f, 3e38f, 1e-45f, nan,  inf,
                                -inf, 0.0f,  -0.0f, 7.25f,  1.0f, 2.0f};
        for (int i = 0; i < 12; i++) field.data[i] = values[i];
        check(field.write(pathOf(t, "ascii-3x2.vec").c_str(), 1), "vector ascii");
        check(field.write(pathOf(t, "binary-3x2.vec").c_str(), 0), "vector binary");
        VelkVectorField circle(8, 8, nullptr);
        circle.setCircle(0.0f);
        check(circle.write(pathOf(t, "circle-8x8.vec").c_str(), 1), "circle ascii");

        put(t, "words-around-magic.vec",
            "a VELK VECTOR file, BINARY\n2 2\n0123456789abcdefghijklmnopqrstuv");
        put(t, "ascii-free-format.vec", "VELK VECTOR\n2 2\n1\n2 3\n\n4 5 6\t7\n8 trailing words");
        put(t, "ascii-nonfinite.vec",
            "VELK VECTOR ASCII\n2 2\nnan inf -inf 1e39 1e-46 0x1p3 -0 infinity\n");
        put(t, "size-large-data-short.vec", "VELK VECTOR BINARY\n4000 4000\nshort");
        put(t, "size-one-number.vec", "VELK VECTOR ASCII\n5\n");
        put(t, "values-missing.vec", "VELK VECTOR ASCII\n3 3\n1 2 3 4 5\n");
        put(t, "values-garbage.vec", "VELK VECTOR ASCII\n2 2\n1 2 x 4\n");
        put(t, "magic-on-line-two.vec", "\nVELK VECTOR\n2 2\n");
        put(t, "long-first-line.vec", std::string(70, 'x') + "VELK VECTOR\n2 2\n1 2 3 4 5 6 7 8\n");
        put(t, "scalar-magic.vec", "VELK SCALAR ASCII\n2 2\n1 2 3 4\n");
    }
    {
        const char* t = "scalarRead";
        VelkScalarField field(3, 2, nullptr);
        const float values[] = {0.5f, -1.0f, 3e38f, 1e-45f, nan, inf};
        for (int i = 0; i < 6; i++) field.data[i] = values[i];
        check(field.write(pathOf(t, "ascii-3x2.sca").c_str(), 1), "scalar ascii");
        check(field.write(pathOf(t, "binary-3x2.sca").c_str(), 0), "scalar binary");
        VelkScalarField circle(6, 5, nullptr);
        circle.createCircle();
        check(circle.write(pathOf(t, "circle-6x5.sca").c_str(), 0), "circle binary");

        put(t, "words-around-magic.sca", "VELK SCALAR in BINARY form\n2 2\n0123456789abcdef");
        put(t, "ascii-free-format.sca", "VELK SCALAR\n2 2\n1\n\n2 3\t4 trailing");
        put(t, "ascii-nonfinite.sca", "VELK SCALAR ASCII\n2 2\nnan -inf 1e39 1e-46\n");
        put(t, "size-two-rows-of-one.sca", "VELK SCALAR ASCII\n1 2\n1 2\n");
        put(t, "size-large-data-short.sca", "VELK SCALAR BINARY\n4000 4000\nab");
        put(t, "values-missing.sca", "VELK SCALAR ASCII\n2 2\n1 2 3\n");
    }
}

// --- UCD meshes: the same files for all three readers (each takes the
// numbers it needs from a node line and ignores the rest). ---

void ucdSeeds() {
    struct Mesh {
        const char* name;
        const char* text;
    };
    const Mesh meshes[] = {
        {"square.inp",
         "4 2\nnodes\n0 0 1 0\n1 0 0 1\n1 1 -1 0\n0 1 0 -1\ntriangles\n1 2 3\n1 3 4\n"},
        {"header-words.inp",
         "nodes: 4, triangles: 2\n\n0 0 1 0\n1 0 0 1\n1 1 -1 0\n0 1 0 -1\n\n1 2 3 1 3 4\n"},
        {"header-minus.inp", "-3 1\n\n0 0 1 1\n2 0 1 1\n0 2 1 1\n\n1 2 3\n"},
        {"header-decimal.inp", "3.1\n\n0 0 1 1\n2 0 1 1\n0 2 1 1\n\n3\n2\n1\n"},
        {"triangles-split.inp", "3 1\n\n0 5 1 2\n1 0 3 4\n1 10 5 6\n\n1\n2 3 trailing text\n"},
        {"nodes-missing.inp", "5 1\n\n0 0 1 1\n1 0 1 1\n"},
        {"node-short.inp", "3 1\n\n0 0 1 1\n1\n0 1 1 1\n\n1 2 3\n"},
        {"degenerate.inp", "3 1\n\n2 0 1 1\n2 1 1 1\n2 5 1 1\n\n1 2 3\n"},
        {"nan-nodes.inp", "4 2\n\nnan 0 1 1\n1 nan 1 1\n1 1 inf 1\n0 1 1 -inf\n\n1 2 3 1 3 4\n"},
        {"huge-nodes.inp", "3 1\n\n-1e30 -1e30 1 1\n1e30 0 2 2\n0 1e30 3 3\n\n1 2 3\n"},
        {"tiny-box.inp", "3 1\n\n0 0 1 1\n1e-38 0 2 2\n0 1e-38 3 3\n\n1 2 3\n"},
        {"huge-counts.inp", "99999999 99999999\n\n0 0 1 1\n1 0 1 1\n0 1 1 1\n\n1 2 3\n"},
        {"too-few.inp", "2 1\n\n0 0 1 1\n1 1 1 1\n\n1 2 1\n"},
        {"crlf.inp", "3 1\r\n\r\n0 0 1 1\r\n1 0 1 1\r\n0 1 1 1\r\n\r\n1 2 3\r\n"},
    };
    const char* targets[] = {"vectorReadUCD", "scalarReadUCD", "drawUCD"};
    for (const char* t : targets) {
        for (const Mesh& m : meshes) put(t, m.name, m.text);
        // A node line longer than the line buffer continues as the next line.
        put(t, "long-node-line.inp",
            "3 1\n\n0 0 1 1 " + std::string(200, '7') + "\n1 0 1 1\n0 1 1 1\n\n1 2 3\n");
        // A fan of triangles around a centre.
        std::string fan = "13 12\n\n0 0 0 0\n";
        for (int i = 0; i < 12; i++) {
            char line[96];
            double a = i * 3.14159265358979 / 6;
            std::snprintf(line, sizeof line, "%g %g %g %g\n", std::cos(a), std::sin(a),
                          -std::sin(a), std::cos(a));
            fan += line;
        }
        fan += "\n";
        for (int i = 0; i < 12; i++) {
            fan += "1 " + std::to_string(i + 2) + " " + std::to_string((i + 1) % 12 + 2) + "\n";
        }
        put(t, "fan.inp", fan);
    }
}

// --- Colour maps ---

void icolSeeds() {
    const char* t = "readIcol";
    VelkColormap map;
    map.createGreyRamp();
    check(map.writeIcol(pathOf(t, "grey.icol").c_str()), "grey icol");
    map.createHueRamp();
    map.setMinMax(-2.5f, 7.0f);
    check(map.writeIcol(pathOf(t, "hue-range.icol").c_str()), "hue icol");

    std::string three;
    for (int i = 0; i < 256; i++) {
        three +=
            std::to_string(i) + " " + std::to_string(255 - i) + " " + std::to_string(i / 2) + "\n";
    }
    put(t, "three-columns.icol", three);
    put(t, "three-columns-range.icol", three + "-1 1\n");
    put(t, "three-columns-short.icol", "1 2 3\n4 5 6\n7 8\n");
    put(t, "three-columns-truncated.icol", "1 2 3\n4 5 6\n");
    std::string groups;
    for (int j = 0; j < 64; j++) {
        for (int k = 0; k < 4; k++) {
            // Indices out of order, some outside the table.
            int e = k == 3 && j % 7 == 0 ? 300 + j : (j * 5 + k * 64) % 256;
            groups += std::to_string(e) + " 999 -5 " + std::to_string(j) + "   ";
        }
        groups += "\n";
    }
    put(t, "four-groups-shuffled.icol", groups + "nan inf\n");
    put(t, "four-groups-short-line.icol",
        "0 1 2 3 64 1 2 3 128 1 2 3 192 1 2 3\n1 1 2 3 65 1 2 3\n");
    put(t, "four-numbers.icol", "1 2 3 4\n");
    put(t, "big-numbers.icol", "99999999999 -2147483648 2147483647\n");
}

// --- Overlay command files ---

void graphicsSeeds() {
    const char* t = "drawFile";
    put(t, "all-commands.vgr",
        "VELK GRAPHICS\ncolor 1 0 0\nwidth 3\ncanvas 0 0 10 10\nline 0 0 10 10 0 10\n"
        "points 5 5 6 6 7 7\n");
    put(t, "abbreviations.vgr",
        "VELK GRAPHICS\nc 0.5 0.5 0.5\nw 2\nca -1 -1 1 1\nl 0 0 1 1\np 0 0\n");
    put(t, "continuation.vgr", "VELK GRAPHICS\nline 0 0 \\\n5 5 \\\n9 1\n");
    put(t, "comment-words.vgr",
        "VELK GRAPHICS\n# a comment with line 0 0 3 3 in it\n#x points 1 1\n");
    put(t, "odd-count.vgr", "VELK GRAPHICS\nline 0 0 10 0 10\nline 1 1 2 2\n");
    put(t, "split-numbers.vgr", "VELK GRAPHICS\nline 0 0\n10 10\n");
    put(t, "degenerate-canvas.vgr",
        "VELK GRAPHICS\ncanvas 5 5 5 5\nline 0 0 10 10\ncanvas 10 10 0 0\nline 0 0 10 10\n");
    put(t, "huge-numbers.vgr",
        "VELK GRAPHICS\nline -1e30 0 1e30 5\nline nan nan inf -inf\npoints 3e9 -3e9\n");
    put(t, "huge-width.vgr", "VELK GRAPHICS\nwidth 1e9\npoints 0 0\nwidth -1e9\nline 0 0 5 5\n");
    put(t, "not-numbers.vgr", "VELK GRAPHICS\nline a b c d\ncolor x y z\n");
    put(t, "cr-only.vgr", "VELK GRAPHICS\rline 0 0 1 1\rpoints 1 1\r");
    put(t, "crlf.vgr", "VELK GRAPHICS\r\nline 0 0 4 4\r\n5 5\r\npoints 1 1\r\n");
    put(t, "backslash-alone.vgr", "VELK GRAPHICS\nline \\ 0 0 1 1\\");
    put(t, "grey-colour.vgr", "VELK GRAPHICS\ncolor 0.2 0.2 0.2\nline 0 0 3 0\n");
    put(t, "header-late.vgr", "\nVELK GRAPHICS\nline 0 0 1 1\n");
    put(t, "long-word.vgr", "VELK GRAPHICS\n" + std::string(3000, 'l') + " 0 0 1 1\n");
}

// --- Engine recipes (see compute.cpp and scanConvert.cpp for the layout) ---

std::string randomBytes(std::uint32_t seed, int n) {
    std::string bytes;
    for (int i = 0; i < n; i++) {
        seed = seed * 1664525u + 1013904223u;
        bytes += static_cast<char>(seed >> 24);
    }
    return bytes;
}

void engineSeeds() {
    for (int i = 0; i < 6; i++) {
        put("compute", "random-" + std::to_string(i), randomBytes(11u + i, 120 + 60 * i));
        put("scanConvert", "random-" + std::to_string(i), randomBytes(101u + i, 40 + 30 * i));
    }
    put("compute", "zeros", std::string(64, '\0'));
    put("compute", "ones", std::string(200, '\xff'));
    // Triangle kernel, L = 20, one sub-pixel, offset seeding, bilinear, RK43,
    // normalisation 0, a 4 x 4 field of ordinary values over an 8 x 8 grey
    // texture: noise, or the constant 77.
    std::string recipe = {1, 0, static_cast<char>(200), 0, 1, 1, 0, 0, 2, 2};
    for (int i = 0; i < 32; i++) recipe += static_cast<char>(100 + 3 * i);
    recipe += std::string{7, 7, 0};
    put("compute", "ordinary", recipe + std::string{1} + randomBytes(5, 80));
    put("compute", "ordinary-constant", recipe + std::string{0, 77} + std::string(40, '\0'));
    put("scanConvert", "zeros", std::string(48, '\0'));
    put("scanConvert", "ones", std::string(48, '\xff'));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s corpus-dir\n", argv[0]);
        return 2;
    }
    gRoot = argv[1];
    pnmSeeds();
    fieldSeeds();
    ucdSeeds();
    icolSeeds();
    graphicsSeeds();
    engineSeeds();
    return gFailures == 0 ? 0 : 1;
}
