// Every malformed file under tests/data/fields, replayed through its readers.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include <velk/velk.h>
#include "TestSupport.h"

namespace {

std::string data(const std::string& name) {
    return velktest::dataPath("fields/" + name);
}

// Runs `read`; checks its result, its one report ("" for none) and that it
// leaves no file open.
void expectReplay(const std::function<int()>& read, int result, const std::string& report) {
    int files = velktest::openFileCount();
    velktest::MessageCapture capture;
    EXPECT_EQ(read(), result);
    EXPECT_EQ(capture.errorText(), report.empty() ? "" : "VELK error: " + report + "\n");
    EXPECT_EQ(velktest::openFileCount(), files);
}

}  // namespace

// Header failures leave the 4 x 4 field of 9s untouched; value failures leave
// it resized with the values read so far; a short binary file is not noticed
// (its values are big-endian).
TEST(BadInput, FieldFiles) {
    struct Case {
        const char* file;
        bool vector;
        const char* reason;  // null: the read succeeds
        int width, index;
        float value;  // at `index` afterwards
    } cases[] = {
        {"vector-empty.vec", true, "header string 'VELK VECTOR' not found", 4, 0, 9},
        {"vector-magic-missing.vec", true, "header string 'VELK VECTOR' not found", 4, 0, 9},
        {"vector-size-line-missing.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-size-words.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-size-one-number.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-size-one-column.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-size-too-wide.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-size-negative.vec", true, "illegal vector field dimensions", 4, 0, 9},
        {"vector-ascii-values-missing.vec", true, "illegal or missing vector values", 3, 2, 3},
        {"vector-ascii-values-garbage.vec", true, "illegal or missing vector values", 2, 1, 2},
        {"vector-binary-data-short.vec", true, nullptr, 2, 2, 3},
        {"vector-empty.vec", false, "header string 'VELK SCALAR' not found", 4, 0, 9},
        {"scalar-magic-missing.sca", false, "header string 'VELK SCALAR' not found", 4, 0, 9},
        {"vector-size-words.vec", false, "header string 'VELK SCALAR' not found", 4, 0, 9},
        {"scalar-size-one-row.sca", false, "illegal scalar field dimensions", 4, 0, 9},
        {"scalar-size-too-tall.sca", false, "illegal scalar field dimensions", 4, 0, 9},
        {"scalar-ascii-values-missing.sca", false, "illegal or missing scalar values", 2, 2, 3},
        {"scalar-ascii-values-garbage.sca", false, "illegal or missing scalar values", 2, 0, 1},
        {"scalar-binary-data-short.sca", false, nullptr, 2, 2, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::string path = data(c.file);
        VelkVectorField vector(4, 4, nullptr);
        VelkScalarField scalar(4, 4, nullptr);
        std::fill(vector.data, vector.data + 32, 9.0f);
        std::fill(scalar.data, scalar.data + 16, 9.0f);
        expectReplay(
            [&] { return c.vector ? vector.read(path.c_str()) : scalar.read(path.c_str()); },
            c.reason ? 0 : 1, c.reason ? "can't open " + path + " (" + c.reason + ")" : "");
        EXPECT_EQ(c.vector ? vector.width : scalar.width, c.width);
        EXPECT_EQ(c.vector ? vector.data[c.index] : scalar.data[c.index], c.value);
    }
}

// Through both UCD readers (%s is the path): failures leave the 3 x 2 field
// of 9s untouched. Missing node lines re-read the last line; headers
// announcing more nodes than the file holds read on into the separator and
// triangle lines, with no memory set aside for the announcement; extents that
// are not finite pass the checks and draw nothing.
TEST(BadInput, UcdMeshes) {
    const char* cases[][3] = {
        {"ucd-empty.inp", "can't open %s (this is not an UCD file)", nullptr},
        {"ucd-header-without-numbers.inp", "can't open %s (this is not an UCD file)", nullptr},
        {"ucd-header-one-number.inp", "can't open %s (this is not an UCD file)", nullptr},
        {"ucd-too-few-nodes.inp", "file %s contains insufficient data (2 vertices, 1 triangles",
         nullptr},
        {"ucd-no-triangles.inp", "file %s contains insufficient data (3 vertices, 0 triangles",
         nullptr},
        {"ucd-node-line-two-numbers.inp", "expected to read 4 floats, got 2",
         "expected to read 3 floats, got 2"},
        {"ucd-node-line-garbage.inp", "expected to read 4 floats, got 0",
         "expected to read 3 floats, got 0"},
        {"ucd-node-line-blank.inp", "expected to read 4 floats, got -1",
         "expected to read 3 floats, got -1"},
        {"ucd-nodes-truncated.inp", "expected to read 3 ints, got -1", nullptr},
        {"ucd-header-millions-of-nodes.inp", "expected to read 4 floats, got 3",
         "expected to read 3 ints, got -1"},
        {"ucd-header-largest-counts.inp", "expected to read 4 floats, got -1",
         "expected to read 3 floats, got -1"},
        {"ucd-triangle-short.inp", "expected to read 3 ints, got 2", nullptr},
        {"ucd-triangle-garbage.inp", "expected to read 3 ints, got 0", nullptr},
        {"ucd-triangle-node-zero.inp", "file %s: triangle 1 uses node 0, but the nodes are 1 to 3",
         nullptr},
        {"ucd-triangle-node-beyond-count.inp",
         "file %s: triangle 2 uses node 4, but the nodes are 1 to 3", nullptr},
        {"ucd-triangle-node-negative.inp",
         "file %s: triangle 1 uses node -1, but the nodes are 1 to 3", nullptr},
        {"ucd-nodes-on-one-vertical-line.inp", "degenerate grid (width=0, height=2)", nullptr},
        {"ucd-node-coordinates-nan.inp", "", ""},
        {"ucd-box-wider-than-float.inp", "", ""},
    };
    for (const auto& c : cases) {
        std::string path = data(c[0]);
        for (int reader = 0; reader < 2; reader++) {
            SCOPED_TRACE(testing::Message() << c[0] << (reader ? " as scalars" : " as vectors"));
            std::string report = reader && c[2] ? c[2] : c[1];
            for (size_t at; (at = report.find("%s")) != std::string::npos;)
                report.replace(at, 2, path);
            VelkVectorField vector(3, 2, nullptr);
            VelkScalarField scalar(3, 2, nullptr);
            std::fill(vector.data, vector.data + 12, 9.0f);
            std::fill(scalar.data, scalar.data + 6, 9.0f);
            expectReplay(
                [&] {
                    return reader ? scalar.readUCD(path.c_str(), 4, 4)
                                  : vector.readUCD(path.c_str(), 4, 4);
                },
                report.empty() ? 1 : 0, report);
            EXPECT_EQ(reader ? scalar.width : vector.width, report.empty() ? 4 : 3);
            float* values = reader ? scalar.data : vector.data;
            long n = reader ? scalar.width * scalar.height : 2 * vector.width * vector.height;
            EXPECT_EQ(std::count(values, values + n, report.empty() ? 0.0f : 9.0f), n);
        }
    }
}

TEST(BadInput, UnopenableFilesAndUnusableGrids) {
    const std::string missing = "/nonexistent/f",
                      cannot = "can't open /nonexistent/f (No such file or directory)";
    VelkVectorField v;
    VelkScalarField s(2, 2, nullptr);
    expectReplay([&] { return v.read(missing.c_str()); }, 0, cannot);
    expectReplay([&] { return v.write(missing.c_str(), 1); }, 0, cannot);
    expectReplay([&] { return v.readUCD(missing.c_str(), 4, 4); }, 0, cannot);
    expectReplay([&] { return s.read(missing.c_str()); }, 0, cannot);
    expectReplay([&] { return s.write(missing.c_str(), 0); }, 0, cannot);
    expectReplay([&] { return s.readUCD(missing.c_str(), 4, 4); }, 0, cannot);
    std::string path = data("ucd-square.inp");
    for (const auto& g :
         {std::make_pair(0, 4), std::make_pair(4, -1), std::make_pair(65536, 65536)}) {
        std::string report = "can't resample " + path + " onto a " + std::to_string(g.first) +
                             " x " + std::to_string(g.second) + " grid";
        expectReplay([&] { return v.readUCD(path.c_str(), g.first, g.second); }, 0, report);
        expectReplay([&] { return s.readUCD(path.c_str(), g.first, g.second); }, 0, report);
    }
    EXPECT_EQ(v.width, 0);
    EXPECT_EQ(s.width, 2);
}

TEST(BadInput, ColourMapFiles) {
    for (const char* file :
         {"icol-empty.icol", "icol-first-line-two-numbers.icol",
          "icol-first-line-five-numbers.icol", "icol-three-column-truncated.icol",
          "icol-three-column-short-line.icol", "icol-four-group-short-line.icol",
          "icol-four-group-truncated.icol", "/nonexistent"}) {
        std::string path = file[0] == '/' ? file : data(file);
        VelkColormap map;
        map.setMinMax(-4, 4);
        int files = velktest::openFileCount();
        testing::internal::CaptureStderr();
        EXPECT_EQ(map.readIcol(path.c_str()), 0) << file;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  (file[0] == '/' ? "Can't open " : "Illegal format in ") + path + ".\n");
        EXPECT_EQ(velktest::openFileCount(), files);
        EXPECT_EQ(map.min, -4.0f) << file;  // the range stays
        EXPECT_EQ(map.max, 4.0f) << file;
    }
    VelkColormap map, grey;
    testing::internal::CaptureStderr();
    EXPECT_EQ(map.writeIcol("/nonexistent/c.icol"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Can't open /nonexistent/c.icol.\n");

    // Groups naming entries outside the table are skipped; the rest load.
    ASSERT_EQ(map.readIcol(data("icol-four-group-index-out-of-range.icol").c_str()), 1);
    grey.colors[7][1] = grey.colors[7][2] = 0.0f;
    grey.colors[7][0] = 1.0f;
    for (int i = 0; i < 256; i++)
        for (int c = 0; c < 3; c++) EXPECT_EQ(map.colors[i][c], grey.colors[i][c]) << i;
}
