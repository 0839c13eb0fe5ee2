#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include <velk/velk.h>
#include "TestSupport.h"

namespace {

float nodeX(const VelkVectorField& f, int i, int j) {
    return f.data[2 * (j * f.width + i)];
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

// Unit square [0, 1]^2 as two triangles, every node carrying the vector (1, 2).
std::string squareMesh(const std::string& header) {
    return header + "\nnodes\n0 0 1 2\n1 0 1 2\n1 1 1 2\n0 1 1 2\ntriangles\n1 2 3\n1 3 4\n";
}

// Reads a UCD mesh given as text onto an nx x ny grid.
void readMesh(VelkVectorField& field, const std::string& text, int nx, int ny,
              float* bbox = nullptr) {
    velktest::TempDir dir;
    velktest::writeFile(dir.path("m.inp"), text);
    velktest::MessageCapture capture;
    ASSERT_EQ(field.readUCD(dir.path("m.inp").c_str(), nx, ny, bbox), 1) << capture.errorText();
}

}  // namespace

// ASCII comes back to 6 digits; binary is written in host order but read as
// big-endian, so it comes back byte-reversed, as designed.
TEST(VectorFile, ExactBytesAndRoundTrips) {
    velktest::TempDir dir;
    float nodes[8] = {1, -2, 0.5f, 3, 1e10f, 0.25f, -0.0f, 1.0f / 3};
    VelkVectorField field(2, 2, nodes), back;
    std::string path = dir.path("f.vec");
    velktest::MessageCapture capture;
    ASSERT_EQ(field.write(path.c_str(), 1), 1);
    EXPECT_EQ(velktest::readFile(path),
              "VELK VECTOR ASCII\n2 2\n1 -2\n0.5 3\n1e+10 0.25\n-0 0.333333\n");
    ASSERT_EQ(back.read(path.c_str()), 1) << capture.errorText();
    ASSERT_EQ(back.width * back.height, 4);
    for (int k = 0; k < 8; k++)
        EXPECT_NEAR(back.data[k], nodes[k], 5e-6 * std::fabs(nodes[k])) << k;

    ASSERT_EQ(field.write(path.c_str(), 0), 1);
    EXPECT_EQ(velktest::readFile(path), "VELK VECTOR BINARY\n2 2\n" + floatBytes(nodes, 8));
    ASSERT_EQ(back.read(path.c_str()), 1) << capture.errorText();
    EXPECT_EQ(floatBytes(back.data, 8), reversedWords(floatBytes(nodes, 8)));
}

TEST(VectorFile, HeaderLinesAcceptWordsAndSizesTwoToTenThousand) {
    velktest::TempDir dir;
    const float one = 1.0f;
    struct Case {
        std::string head;
        int width, height;
    } cases[] = {
        {"some words VELK VECTOR and BINARY after it\n2 2\n", 2, 2},
        {"BINARY VELK VECTOR\n10000 2\n", 10000, 2},
        {"VELK VECTOR BINARY\n2 10000 trailing\n", 2, 10000},
    };
    for (const Case& c : cases) {
        std::string data;
        for (int k = 0; k < 2 * c.width * c.height; k++) data += reversedWords(floatBytes(&one, 1));
        velktest::writeFile(dir.path("h.vec"), c.head + data);
        VelkVectorField field;
        velktest::MessageCapture capture;
        ASSERT_EQ(field.read(dir.path("h.vec").c_str()), 1) << c.head << capture.errorText();
        EXPECT_EQ(field.width, c.width);
        EXPECT_EQ(field.height, c.height);
        EXPECT_EQ(field.data[2 * c.width * c.height - 1], 1.0f);
    }
    // The word ASCII is not needed; anything without BINARY is text.
    velktest::writeFile(dir.path("h.vec"), "VELK VECTOR\n2 2\n1 2 3 4\n5 6\n7\n8 and more");
    VelkVectorField field;
    ASSERT_EQ(field.read(dir.path("h.vec").c_str()), 1);
    EXPECT_EQ(field.data[6], 7.0f);
    EXPECT_EQ(field.data[7], 8.0f);
}

TEST(UcdReader, HeaderWordsMinusSignsAndDecimalPoints) {
    VelkVectorField reference, field;
    readMesh(reference, squareMesh("4 2"), 6, 6);
    for (const char* header : {"nodes: 4, triangles: 2", "-4 2", "4.2", "#4 x 2;"}) {
        readMesh(field, squareMesh(header), 6, 6);
        EXPECT_EQ(0, std::memcmp(field.data, reference.data, 6 * 6 * 8)) << header;
    }
    EXPECT_EQ(nodeX(reference, 0, 0), 1.0f);
}

TEST(UcdReader, BoxScanStartsFromNodeZerosCoordinatesCrossed) {
    // Nodes (0, 5), (1, 0), (1, 10): node 0's y enters the x maximum, so the
    // box is [0, 5] x [0, 10] (not [0, 1] x [0, 10]). On 10 x 10 that gives
    // scale 1 and x0 = -2.5: the mesh lies on column 3 (with the nodes' own
    // box it would be column 5).
    VelkVectorField field;
    readMesh(field, "3 1\n\n0 5 1 1\n1 0 1 1\n1 10 1 1\n\n1 2 3\n", 10, 10);
    for (int j = 0; j < 10; j++)
        for (int i = 0; i < 10; i++) EXPECT_EQ(nodeX(field, i, j), i == 3 ? 1.0f : 0.0f) << i;

    // Nodes (3, 7), (5, 8), (4, 9): node 0's x becomes the y minimum, so the
    // box is [3, 7] x [3, 9]; on 12 x 12, scale 2 and the triangle has corners
    // (2, 8), (6, 10), (4, 12): rows 8 .. 11 only (the nodes' own box would
    // spread it over the whole grid).
    readMesh(field, "3 1\n\n3 7 1 1\n5 8 1 1\n4 9 1 1\n\n1 2 3\n", 12, 12);
    for (int j = 0; j < 12; j++) {
        bool any = false;
        for (int i = 0; i < 12; i++) any = any || nodeX(field, i, j) != 0.0f;
        EXPECT_EQ(any, j >= 8) << "row " << j;
    }
}

TEST(UcdReader, FitsTheMeshCentredIntoANonSquareGrid) {
    // 100 x 50: scale 50, x0 = -0.5, the mesh spans columns 25 .. 74; 50 x
    // 100 centres it vertically; a box twice as wide as the mesh puts it on
    // the left half.
    float bbox[4] = {0, 2, 0, 1};
    VelkVectorField wide, tall, boxed;
    readMesh(wide, squareMesh("4 2"), 100, 50);
    readMesh(tall, squareMesh("4 2"), 50, 100);
    readMesh(boxed, squareMesh("4 2"), 20, 10, bbox);
    for (int j = 0; j < 50; j++) {
        for (int i = 0; i < 100; i++) {
            EXPECT_EQ(wide.data[2 * (j * 100 + i) + 1], i >= 25 && i <= 74 ? 2.0f : 0.0f)
                << i << "," << j;
            EXPECT_EQ(nodeX(tall, j, i), i >= 25 && i <= 74 ? 1.0f : 0.0f) << j << "," << i;
        }
    }
    for (int i = 0; i < 20; i++) EXPECT_EQ(nodeX(boxed, i, 4), i < 10 ? 1.0f : 0.0f) << i;
}

TEST(UcdReader, InterpolatesLinearlyAndLaterTrianglesWin) {
    // v = (x, y) on the unit square: node (i, j) of 8 x 8 gets the value at
    // its centre, ((i + 0.5) / 8, (j + 0.5) / 8).
    VelkVectorField field;
    readMesh(field, "4 2\n\n0 0 0 0\n1 0 1 0\n1 1 1 1\n0 1 0 1\n\n1 2 3 1 3 4\n", 8, 8);
    for (int j = 0; j < 8; j++) {
        for (int i = 0; i < 8; i++) {
            EXPECT_NEAR(field.data[2 * (j * 8 + i)], (i + 0.5f) / 8, 1e-6f);
            EXPECT_NEAR(field.data[2 * (j * 8 + i) + 1], (j + 0.5f) / 8, 1e-6f);
        }
    }
    // Two triangles over the same area with different vectors.
    const std::string nodes = "6 2\n\n0 0 1 1\n1 0 1 1\n0 1 1 1\n0 0 5 5\n1 0 5 5\n0 1 5 5\n\n";
    readMesh(field, nodes + "4 5 6\n1 2 3\n", 4, 4);
    EXPECT_EQ(nodeX(field, 0, 0), 1.0f);
    EXPECT_EQ(nodeX(field, 3, 3), 0.0f);  // beyond the diagonal: no triangle
    readMesh(field, nodes + "1 2 3\n4 5 6\n", 4, 4);
    EXPECT_EQ(nodeX(field, 0, 0), 5.0f);
}

TEST(UcdReader, PixelCallbackIgnoresPositionsOutsideTheGridAndByteOrderSwaps) {
    float nodes[8] = {}, values[2] = {7, 8};
    VelkVectorField field(2, 2, nodes);
    for (auto xy :
         {std::make_pair(2, 0), std::make_pair(-1, 1), std::make_pair(0, 2), std::make_pair(1, 1)})
        VelkVectorField::pixelCallback(xy.first, xy.second, values, &field);
    EXPECT_EQ(floatBytes(nodes, 8),
              floatBytes(std::vector<float>{0, 0, 0, 0, 0, 0, 7, 8}.data(), 8));

    unsigned char bytes[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    swapByteOrder(2, bytes);
    swapByteOrder(0, bytes);
    swapByteOrder(-3, bytes);
    EXPECT_EQ(std::string(bytes, bytes + 9), std::string("\4\3\2\1\10\7\6\5\11"));
}
