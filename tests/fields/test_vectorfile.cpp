#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

Vec2f node(const VelkVectorField& f, int i, int j) {
    const float* p = f.data + 2 * (j * f.width + i);
    return {p[0], p[1]};
}

std::string floatBytes(const float* values, int n) {
    return std::string(reinterpret_cast<const char*>(values), 4 * n);
}

std::string reversedWords(std::string bytes) {
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        std::swap(bytes[i], bytes[i + 3]);
        std::swap(bytes[i + 1], bytes[i + 2]);
    }
    return bytes;
}

// Unit square [0, 1]^2 as two triangles, every node carrying the vector (a, b).
std::string squareMesh(const std::string& header, float a, float b) {
    char text[512];
    std::snprintf(text, sizeof text,
                  "%s\nnode data follow\n"
                  "0 0 %g %g\n1 0 %g %g\n1 1 %g %g\n0 1 %g %g\n"
                  "triangles\n1 2 3\n1 3 4\n",
                  header.c_str(), a, b, a, b, a, b, a, b);
    return text;
}

}  // namespace

TEST(VectorFile, WritesTheExactHeaderAndValueBytes) {
    velktest::TempDir dir;
    float nodes[8] = {1, -2, 0.5f, 3, 1e10f, 0.25f, -0.0f, 1.0f / 3};
    VelkVectorField field(2, 2, nodes);

    std::string ascii = dir.path("a.vec");
    ASSERT_EQ(field.write(ascii.c_str(), 1), 1);
    EXPECT_EQ(velktest::readFile(ascii),
              "VELK VECTOR ASCII\n2 2\n1 -2\n0.5 3\n1e+10 0.25\n-0 0.333333\n");

    std::string binary = dir.path("b.vec");
    ASSERT_EQ(field.write(binary.c_str(), 0), 1);
    EXPECT_EQ(velktest::readFile(binary), "VELK VECTOR BINARY\n2 2\n" + floatBytes(nodes, 8));
}

TEST(VectorFile, AsciiRoundTripsToSixDigitsBinaryComesBackByteReversed) {
    velktest::TempDir dir;
    VelkVectorField field(7, 5, nullptr);
    field.setCircle(0.3f);
    field.data[0] = 3.14159265f;
    field.data[1] = -1.2345678e-7f;

    std::string ascii = dir.path("a.vec");
    ASSERT_EQ(field.write(ascii.c_str(), 1), 1);
    VelkVectorField back;
    velktest::MessageCapture capture;
    ASSERT_EQ(back.read(ascii.c_str()), 1) << capture.errorText();
    ASSERT_EQ(back.width, 7);
    ASSERT_EQ(back.height, 5);
    for (int k = 0; k < 70; k++) {
        EXPECT_NEAR(back.data[k], field.data[k], 5e-6 * std::fabs(field.data[k])) << k;
    }

    // The writer keeps host order, the reader takes big-endian.
    std::string binary = dir.path("b.vec");
    ASSERT_EQ(field.write(binary.c_str(), 0), 1);
    ASSERT_EQ(back.read(binary.c_str()), 1) << capture.errorText();
    EXPECT_EQ(floatBytes(back.data, 70), reversedWords(floatBytes(field.data, 70)));
}

TEST(VectorFile, HeaderLinesAcceptWordsAndSizesTwoToTenThousand) {
    velktest::TempDir dir;
    std::string path = dir.path("h.vec");
    const float one = 1.0f;
    std::string be = reversedWords(floatBytes(&one, 1));  // 1.0 big-endian

    struct Case {
        std::string head;
        int width, height;
    };
    const Case accepted[] = {
        {"some words VELK VECTOR and BINARY after it\n2 2\n", 2, 2},
        {"BINARY VELK VECTOR\n10000 2\n", 10000, 2},
        {"VELK VECTOR BINARY\n2 10000 trailing\n", 2, 10000},
    };
    for (const Case& c : accepted) {
        std::string data;
        for (int k = 0; k < 2 * c.width * c.height; k++) data += be;
        velktest::writeFile(path, c.head + data);
        VelkVectorField field;
        velktest::MessageCapture capture;
        ASSERT_EQ(field.read(path.c_str()), 1) << c.head << capture.errorText();
        EXPECT_EQ(field.width, c.width);
        EXPECT_EQ(field.height, c.height);
        EXPECT_EQ(field.data[2 * c.width * c.height - 1], 1.0f);
    }

    // The word ASCII is not needed; anything without BINARY is text.
    velktest::writeFile(path, "VELK VECTOR\n2 2\n1 2 3 4\n5 6\n7\n8 and more");
    VelkVectorField field;
    ASSERT_EQ(field.read(path.c_str()), 1);
    EXPECT_EQ(node(field, 1, 1).x, 7.0f);
    EXPECT_EQ(node(field, 1, 1).y, 8.0f);
}

TEST(VectorFile, BadInputsAreReportedAndLeaveTheFieldAsDocumented) {
    struct Case {
        const char* file;
        const char* reason;  // null: the read succeeds
        bool resized;
    };
    const Case cases[] = {
        {"vector-empty.vec", "header string 'VELK VECTOR' not found", false},
        {"vector-magic-missing.vec", "header string 'VELK VECTOR' not found", false},
        {"vector-size-line-missing.vec", "illegal vector field dimensions", false},
        {"vector-size-words.vec", "illegal vector field dimensions", false},
        {"vector-size-one-number.vec", "illegal vector field dimensions", false},
        {"vector-size-one-column.vec", "illegal vector field dimensions", false},
        {"vector-size-too-wide.vec", "illegal vector field dimensions", false},
        {"vector-size-negative.vec", "illegal vector field dimensions", false},
        {"vector-ascii-values-missing.vec", "illegal or missing vector values", true},
        {"vector-ascii-values-garbage.vec", "illegal or missing vector values", true},
        {"vector-binary-data-short.vec", nullptr, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::string path = velktest::dataPath(std::string("fields/") + c.file);
        float nodes[8] = {9, 9, 9, 9, 9, 9, 9, 9};
        VelkVectorField field(2, 2, nodes);
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        int result = field.read(path.c_str());
        EXPECT_EQ(velktest::openFileCount(), files);
        if (c.reason == nullptr) {
            EXPECT_EQ(result, 1) << capture.errorText();
            EXPECT_TRUE(capture.errors().empty());
        } else {
            EXPECT_EQ(result, 0);
            ASSERT_EQ(capture.errors().size(), 1u);
            EXPECT_EQ(capture.errors()[0],
                      "VELK error: can't open " + path + " (" + c.reason + ")");
        }
        EXPECT_EQ(field.data != nodes, c.resized);
        if (!c.resized) {
            EXPECT_EQ(field.width, 2);
        }
    }

    // Values read before the failure stay in the resized field.
    VelkVectorField field;
    velktest::MessageCapture capture;
    ASSERT_EQ(field.read(velktest::dataPath("fields/vector-ascii-values-missing.vec").c_str()), 0);
    EXPECT_EQ(field.width, 3);
    EXPECT_EQ(node(field, 1, 0).x, 3.0f);

    EXPECT_EQ(field.read("/nonexistent/dir/f.vec"), 0);
    EXPECT_EQ(capture.errors().back(),
              "VELK error: can't open /nonexistent/dir/f.vec (No such file or directory)");
    EXPECT_EQ(field.write("/nonexistent/dir/f.vec", 1), 0);
}

TEST(UcdReader, HeaderWordsMinusSignsAndDecimalPoints) {
    velktest::TempDir dir;
    std::string path = dir.path("m.inp");
    const char* headers[] = {"4 2", "nodes: 4, triangles: 2", "-4 2", "4.2", "#4 x 2;"};
    VelkVectorField reference;
    velktest::writeFile(path, squareMesh("4 2", 1, 2));
    ASSERT_EQ(reference.readUCD(path.c_str(), 6, 6), 1);
    for (const char* header : headers) {
        velktest::writeFile(path, squareMesh(header, 1, 2));
        VelkVectorField field;
        velktest::MessageCapture capture;
        ASSERT_EQ(field.readUCD(path.c_str(), 6, 6), 1) << header << capture.errorText();
        EXPECT_EQ(0, std::memcmp(field.data, reference.data, 6 * 6 * 8)) << header;
    }
}

TEST(UcdReader, BoxScanStartsFromNodeZerosCoordinatesCrossed) {
    velktest::TempDir dir;
    std::string path = dir.path("box.inp");
    velktest::MessageCapture capture;

    // Nodes (0, 5), (1, 0), (1, 10): node 0's y enters the x maximum, so the
    // box is [0, 5] x [0, 10] (not [0, 1] x [0, 10]). On 10 x 10 that gives
    // scale 1 and x0 = -2.5: the mesh lies on column 3 (it would be column 5
    // with the nodes' own box).
    velktest::writeFile(path, "3 1\n\n0 5 1 1\n1 0 1 1\n1 10 1 1\n\n1 2 3\n");
    VelkVectorField field;
    ASSERT_EQ(field.readUCD(path.c_str(), 10, 10), 1) << capture.errorText();
    for (int j = 0; j < 10; j++) {
        for (int i = 0; i < 10; i++) EXPECT_EQ(node(field, i, j).x, i == 3 ? 1.0f : 0.0f) << i;
    }

    // Nodes (3, 7), (5, 8), (4, 9): node 0's x becomes the y minimum, so the
    // box is [3, 7] x [3, 9]; on 12 x 12, scale 2 and the triangle has corners
    // (2, 8), (6, 10), (4, 12): rows 8 .. 11 only. The nodes' own box would
    // spread it over the whole grid.
    velktest::writeFile(path, "3 1\n\n3 7 1 1\n5 8 1 1\n4 9 1 1\n\n1 2 3\n");
    ASSERT_EQ(field.readUCD(path.c_str(), 12, 12), 1) << capture.errorText();
    for (int j = 0; j < 12; j++) {
        bool any = false;
        for (int i = 0; i < 12; i++) any = any || node(field, i, j).x != 0.0f;
        EXPECT_EQ(any, j >= 8) << "row " << j;
    }
}

TEST(UcdReader, FitsTheMeshCentredIntoANonSquareGrid) {
    velktest::TempDir dir;
    std::string path = dir.path("sq.inp");
    velktest::writeFile(path, squareMesh("4 2", 1, 2));
    velktest::MessageCapture capture;

    // 100 x 50: scale 50, x0 = -0.5, the mesh spans columns 25 .. 74.
    VelkVectorField wide;
    ASSERT_EQ(wide.readUCD(path.c_str(), 100, 50), 1) << capture.errorText();
    for (int j = 0; j < 50; j++) {
        for (int i = 0; i < 100; i++) {
            bool inside = i >= 25 && i <= 74;
            EXPECT_EQ(node(wide, i, j).x, inside ? 1.0f : 0.0f) << i << "," << j;
            EXPECT_EQ(node(wide, i, j).y, inside ? 2.0f : 0.0f) << i << "," << j;
        }
    }
    // 50 x 100: centred vertically instead.
    VelkVectorField tall;
    ASSERT_EQ(tall.readUCD(path.c_str(), 50, 100), 1);
    for (int j = 0; j < 100; j++) {
        EXPECT_EQ(node(tall, 7, j).x, j >= 25 && j <= 74 ? 1.0f : 0.0f) << j;
    }
    // An explicit box twice as wide as the mesh: left half only.
    float bbox[4] = {0, 2, 0, 1};
    VelkVectorField boxed;
    ASSERT_EQ(boxed.readUCD(path.c_str(), 20, 10, bbox), 1);
    for (int i = 0; i < 20; i++) EXPECT_EQ(node(boxed, i, 4).x, i < 10 ? 1.0f : 0.0f) << i;
}

TEST(UcdReader, InterpolatesLinearlyAndLaterTrianglesWin) {
    velktest::TempDir dir;
    std::string path = dir.path("lin.inp");
    // v = (x, y) on the unit square; every node of an 8 x 8 grid gets the
    // value at its centre, ((i + 0.5) / 8, (j + 0.5) / 8).
    velktest::writeFile(path, "4 2\n\n0 0 0 0\n1 0 1 0\n1 1 1 1\n0 1 0 1\n\n1 2 3 1 3 4\n");
    VelkVectorField field;
    velktest::MessageCapture capture;
    ASSERT_EQ(field.readUCD(path.c_str(), 8, 8), 1) << capture.errorText();
    for (int j = 0; j < 8; j++) {
        for (int i = 0; i < 8; i++) {
            EXPECT_NEAR(node(field, i, j).x, (i + 0.5f) / 8, 1e-6f);
            EXPECT_NEAR(node(field, i, j).y, (j + 0.5f) / 8, 1e-6f);
        }
    }

    // Two triangles over the same area with different vectors.
    for (int order = 0; order < 2; order++) {
        velktest::writeFile(path, std::string("6 2\n\n0 0 1 1\n1 0 1 1\n0 1 1 1\n"
                                              "0 0 5 5\n1 0 5 5\n0 1 5 5\n\n") +
                                      (order ? "4 5 6\n1 2 3\n" : "1 2 3\n4 5 6\n"));
        ASSERT_EQ(field.readUCD(path.c_str(), 4, 4), 1) << capture.errorText();
        EXPECT_EQ(node(field, 0, 0).x, order ? 1.0f : 5.0f);
        EXPECT_EQ(node(field, 3, 3).x, 0.0f);  // beyond the diagonal: no triangle
    }
}

TEST(UcdReader, PixelCallbackIgnoresPositionsOutsideTheGrid) {
    float nodes[8] = {};
    VelkVectorField field(2, 2, nodes);
    float values[2] = {7, 8};
    for (auto xy : {std::make_pair(2, 0), std::make_pair(-1, 1), std::make_pair(0, 2)}) {
        VelkVectorField::pixelCallback(xy.first, xy.second, values, &field);
    }
    for (float v : nodes) EXPECT_EQ(v, 0.0f);
    VelkVectorField::pixelCallback(1, 1, values, &field);
    EXPECT_EQ(nodes[6], 7.0f);
    EXPECT_EQ(nodes[7], 8.0f);
}

TEST(ByteOrder, SwapsEachWordInPlace) {
    unsigned char bytes[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    swapByteOrder(2, bytes);
    const unsigned char want[9] = {4, 3, 2, 1, 8, 7, 6, 5, 9};
    EXPECT_EQ(0, std::memcmp(bytes, want, 9));
    swapByteOrder(0, bytes);
    swapByteOrder(-3, bytes);
    EXPECT_EQ(0, std::memcmp(bytes, want, 9));
}
