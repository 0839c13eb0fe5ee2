// Field, mesh and colour-map files: every file under tests/data/fields through
// every reader, and what the writers write, against the hashes recorded in
// tests/data/recorded/fields-files.txt.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "TestSupport.h"

using namespace velktest;

namespace {

// Result, reports (the path as %s), standard error and the object afterwards.
template <typename Read>
std::string replay(const std::string& path, Read read) {
    const int files = openFileCount();
    MessageCapture capture;
    Hash h;
    std::string said = stderrOf([&] { h.add(read(h)); }) + capture.errorText();
    for (size_t at; (at = said.find(path)) != std::string::npos;)
        said.replace(at, path.size(), "%s");
    EXPECT_EQ(openFileCount(), files) << path;
    return h.add(said).hex();
}

Hash& add(Hash& h, const float* data, int width, int height, int components) {
    h.add(width).add(height);
    return data ? h.bytes(data, 4 * static_cast<size_t>(components) * width * height) : h;
}

}  // namespace

TEST(FieldFiles, DataFilesThroughEveryReader) {
    std::vector<std::string> paths = {dataPath("fields/missing"), dataPath("fields")};
    for (const auto& entry : std::filesystem::directory_iterator(dataPath("fields")))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    // Fields start as 4 x 4 nines; meshes go onto grids that fit, one with a
    // box, and ones too small or too large to resample onto.
    const int grids[][2] = {{4, 4}, {7, 3}, {0, 4}, {65536, 65536}};
    Hashes hashes;
    for (const std::string& path : paths) {
        const std::string name = std::filesystem::path(path).filename();
        const char* file = path.c_str();
        const auto vector = [&](auto read) {
            return replay(path, [&](Hash& h) {
                VelkVectorField f(4, 4, nullptr);
                std::fill(f.data, f.data + 32, 9.0f);
                int result = read(f);
                add(h, f.data, f.width, f.height, 2);
                return result;
            });
        };
        const auto scalar = [&](auto read) {
            return replay(path, [&](Hash& h) {
                VelkScalarField s(4, 4, nullptr);
                std::fill(s.data, s.data + 16, 9.0f);
                int result = read(s);
                add(h, s.data, s.width, s.height, 1);
                return result;
            });
        };
        hashes.push_back({name + "/vector", vector([&](auto& f) { return f.read(file); })});
        hashes.push_back({name + "/scalar", scalar([&](auto& s) { return s.read(file); })});
        for (const auto& g : grids) {
            const std::string grid = std::to_string(g[0]) + "x" + std::to_string(g[1]);
            float box[4] = {-0.5f, 2.0f, 0.25f, 1.5f};
            hashes.push_back({name + "/vectorUCD/" + grid, vector([&](auto& f) {
                                  return f.readUCD(file, g[0], g[1], g[0] == 7 ? box : nullptr);
                              })});
            hashes.push_back({name + "/scalarUCD/" + grid,
                              scalar([&](auto& s) { return s.readUCD(file, g[0], g[1]); })});
        }
        hashes.push_back({name + "/icol", replay(path, [&](Hash& h) {
                              VelkColormap map;
                              map.setMinMax(-4.0f, 4.0f);
                              int result = map.readIcol(file);
                              h.bytes(map.colors, sizeof map.colors).add(map.min).add(map.max);
                              return result;
                          })});
    }
    expectRecorded("recorded/fields-files.txt", hashes);
}

// The bytes written, and what reading them back gives: fields ASCII and
// binary, a colour map, and writes to a place that does not exist.
TEST(FieldFiles, WrittenFilesMatchTheRecordedHashes) {
    TempDir dir;
    const std::string path = dir.path("f"), nowhere = "/nonexistent/f";
    VelkVectorField vector(5, 3, nullptr), vectorBack;
    VelkScalarField scalar(4, 3, nullptr), scalarBack;
    for (int k = 0; k < 30; k++)
        vector.data[k] = std::ldexp(static_cast<float>(k * 37 % 19) - 9.0f, k % 41 - 20);
    for (int k = 0; k < 12; k++) scalar.data[k] = k == 5 ? -0.0f : 1.0f / static_cast<float>(k - 5);
    VelkColormap map, mapBack;
    map.createHueRamp();
    map.multiply(0.9f, nullptr);
    map.setMinMax(-2.0f, 3.5f);
    Hashes hashes;
    for (int ascii : {1, 0}) {
        Hash h;
        h.add(vector.write(path.c_str(), ascii))
            .add(readFile(path))
            .add(vectorBack.read(path.c_str()));
        add(add(h, vector.data, 5, 3, 2), vectorBack.data, vectorBack.width, vectorBack.height, 2);
        h.add(scalar.write(path.c_str(), ascii))
            .add(readFile(path))
            .add(scalarBack.read(path.c_str()));
        add(add(h, scalar.data, 4, 3, 1), scalarBack.data, scalarBack.width, scalarBack.height, 1);
        hashes.push_back({ascii ? "fields-ascii" : "fields-binary", h.hex()});
    }
    Hash h;
    h.add(map.writeIcol(path.c_str())).add(readFile(path)).add(mapBack.readIcol(path.c_str()));
    h.bytes(mapBack.colors, sizeof mapBack.colors).add(mapBack.min).add(mapBack.max);
    map.colors[3][1] = NAN;  // components no int can hold are written saturated
    map.colors[4][0] = 1e10f;
    map.colors[5][2] = -1e10f;
    h.add(map.writeIcol(path.c_str())).add(readFile(path));
    hashes.push_back({"icol", h.hex()});
    hashes.push_back({"nowhere", replay(nowhere, [&](Hash&) {
                          return vector.write(nowhere.c_str(), 1) +
                                 2 * scalar.write(nowhere.c_str(), 0) +
                                 4 * map.writeIcol(nowhere.c_str());
                      })});
    expectRecorded("recorded/fields-written.txt", hashes);
}

// The scan converter can hand the pixel functions column `width`; they, like
// any caller, must drop positions outside the grid.
TEST(FieldFiles, PixelFunctionsDropPositionsOutsideTheGrid) {
    std::vector<float> nodes(2 * 12 + 2, 0.0f);  // 4 x 3 nodes and a guard node
    VelkVectorField vector(4, 3, nodes.data());
    VelkScalarField scalar(4, 3, nullptr);
    std::fill(scalar.data, scalar.data + 12, 0.0f);
    for (int y = -1; y <= 3; y++) {
        for (int x = -1; x <= 4; x++) {
            float values[2] = {static_cast<float>(x + 10 * y), 1.0f};
            VelkVectorField::pixelCallback(x, y, values, &vector);
            VelkScalarField::pixelCallback(x, y, values, &scalar);
        }
    }
    for (int n = 0; n < 12; n++) {
        EXPECT_EQ(nodes[2 * n], n % 4 + 10 * (n / 4)) << n;
        EXPECT_EQ(scalar.data[n], n % 4 + 10 * (n / 4)) << n;
    }
    EXPECT_EQ(nodes[24] + nodes[25], 0.0f);
}

TEST(ByteOrder, SwapsWholeWordsOnly) {
    unsigned char bytes[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    swapByteOrder(2, bytes);
    swapByteOrder(0, bytes);
    swapByteOrder(-3, bytes);
    EXPECT_EQ(std::string(bytes, bytes + 9), std::string("\4\3\2\1\10\7\6\5\11"));
}
