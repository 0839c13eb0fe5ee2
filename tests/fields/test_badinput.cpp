// Every malformed file under tests/data/fields, replayed through its readers.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

std::string data(const std::string& name) {
    return velktest::dataPath("fields/" + name);
}

// Replaces each "%s" of `pattern` by `path`.
std::string withPath(std::string pattern, const std::string& path) {
    for (size_t at; (at = pattern.find("%s")) != std::string::npos;) pattern.replace(at, 2, path);
    return pattern;
}

struct UcdCase {
    const char* file;
    const char* vectorMessage;  // after "VELK error: "; %s is the path; null: success
    const char* scalarMessage;
};

const UcdCase kUcdCases[] = {
    {"ucd-empty.inp", "can't open %s (this is not an UCD file)",
     "can't open %s (this is not an UCD file)"},
    {"ucd-header-without-numbers.inp", "can't open %s (this is not an UCD file)",
     "can't open %s (this is not an UCD file)"},
    {"ucd-header-one-number.inp", "can't open %s (this is not an UCD file)",
     "can't open %s (this is not an UCD file)"},
    {"ucd-too-few-nodes.inp", "file %s contains insufficient data (2 vertices, 1 triangles",
     "file %s contains insufficient data (2 vertices, 1 triangles"},
    {"ucd-no-triangles.inp", "file %s contains insufficient data (3 vertices, 0 triangles",
     "file %s contains insufficient data (3 vertices, 0 triangles"},
    {"ucd-node-line-two-numbers.inp", "expected to read 4 floats, got 2",
     "expected to read 3 floats, got 2"},
    {"ucd-node-line-garbage.inp", "expected to read 4 floats, got 0",
     "expected to read 3 floats, got 0"},
    {"ucd-node-line-blank.inp", "expected to read 4 floats, got -1",
     "expected to read 3 floats, got -1"},
    // Missing node lines re-read the last line; the triangles then find the end.
    {"ucd-nodes-truncated.inp", "expected to read 3 ints, got -1",
     "expected to read 3 ints, got -1"},
    // Headers announcing more nodes than the file holds read on into the
    // separator and triangle lines; no memory is set aside for the announcement.
    {"ucd-header-millions-of-nodes.inp", "expected to read 4 floats, got 3",
     "expected to read 3 ints, got -1"},
    {"ucd-header-largest-counts.inp", "expected to read 4 floats, got -1",
     "expected to read 3 floats, got -1"},
    {"ucd-triangle-short.inp", "expected to read 3 ints, got 2", "expected to read 3 ints, got 2"},
    {"ucd-triangle-garbage.inp", "expected to read 3 ints, got 0",
     "expected to read 3 ints, got 0"},
    {"ucd-triangle-node-zero.inp", "file %s: triangle 1 uses node 0, but the nodes are 1 to 3",
     "file %s: triangle 1 uses node 0, but the nodes are 1 to 3"},
    {"ucd-triangle-node-beyond-count.inp",
     "file %s: triangle 2 uses node 4, but the nodes are 1 to 3",
     "file %s: triangle 2 uses node 4, but the nodes are 1 to 3"},
    {"ucd-triangle-node-negative.inp", "file %s: triangle 1 uses node -1, but the nodes are 1 to 3",
     "file %s: triangle 1 uses node -1, but the nodes are 1 to 3"},
    {"ucd-nodes-on-one-vertical-line.inp", "degenerate grid (width=0, height=2)",
     "degenerate grid (width=0, height=2)"},
    // Not-a-number and infinite extents pass the checks and draw nothing.
    {"ucd-node-coordinates-nan.inp", nullptr, nullptr},
    {"ucd-box-wider-than-float.inp", nullptr, nullptr},
};

template <typename Field, int kComponents>
void replayUcd(const char*(UcdCase::*message)) {
    for (const UcdCase& c : kUcdCases) {
        std::string path = data(c.file);
        SCOPED_TRACE(c.file);
        Field field(3, 2, nullptr);
        for (int k = 0; k < 6 * kComponents; k++) field.data[k] = 9;
        float* before = field.data;
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        int result = field.readUCD(path.c_str(), 4, 4);
        EXPECT_EQ(velktest::openFileCount(), files);
        if (c.*message == nullptr) {
            EXPECT_EQ(result, 1) << capture.errorText();
            EXPECT_EQ(field.width, 4);
            for (int k = 0; k < 16 * kComponents; k++) EXPECT_EQ(field.data[k], 0.0f);
            continue;
        }
        EXPECT_EQ(result, 0);
        ASSERT_EQ(capture.errors().size(), 1u);
        EXPECT_EQ(capture.errors()[0], "VELK error: " + withPath(c.*message, path));
        EXPECT_EQ(field.data, before);  // untouched
        EXPECT_EQ(field.width, 3);
        EXPECT_EQ(field.data[5], 9.0f);
    }
}

}  // namespace

TEST(BadInput, UcdMeshesThroughTheVectorFieldReader) {
    replayUcd<VelkVectorField, 2>(&UcdCase::vectorMessage);
}

TEST(BadInput, UcdMeshesThroughTheScalarFieldReader) {
    replayUcd<VelkScalarField, 1>(&UcdCase::scalarMessage);
}

TEST(BadInput, UcdOpenFailureAndUnusableGrids) {
    velktest::MessageCapture capture;
    VelkVectorField v;
    VelkScalarField s;
    EXPECT_EQ(v.readUCD("/nonexistent/m.inp", 4, 4), 0);
    EXPECT_EQ(s.readUCD("/nonexistent/m.inp", 4, 4), 0);
    ASSERT_EQ(capture.errors().size(), 2u);
    EXPECT_EQ(capture.errors()[1],
              "VELK error: can't open /nonexistent/m.inp (No such file or directory)");

    std::string path = velktest::dataPath("fields/ucd-square.inp");
    const int grids[][2] = {{0, 4}, {4, -1}, {65536, 65536}};
    for (const auto& g : grids) {
        EXPECT_EQ(v.readUCD(path.c_str(), g[0], g[1]), 0);
        EXPECT_EQ(s.readUCD(path.c_str(), g[0], g[1]), 0);
        EXPECT_EQ(capture.errors().back(), "VELK error: can't resample " + path + " onto a " +
                                               std::to_string(g[0]) + " x " + std::to_string(g[1]) +
                                               " grid");
    }
    EXPECT_EQ(v.width, 0);
    EXPECT_EQ(s.width, 0);
}

TEST(BadInput, ScalarFieldFiles) {
    struct Case {
        const char* file;
        const char* reason;  // null: the read succeeds
        bool resized;
    };
    const Case cases[] = {
        {"vector-empty.vec", "header string 'VELK SCALAR' not found", false},
        {"scalar-magic-missing.sca", "header string 'VELK SCALAR' not found", false},
        {"scalar-size-one-row.sca", "illegal scalar field dimensions", false},
        {"scalar-size-too-tall.sca", "illegal scalar field dimensions", false},
        {"vector-size-words.vec", "header string 'VELK SCALAR' not found", false},
        {"scalar-ascii-values-missing.sca", "illegal or missing scalar values", true},
        {"scalar-ascii-values-garbage.sca", "illegal or missing scalar values", true},
        {"scalar-binary-data-short.sca", nullptr, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        std::string path = data(c.file);
        VelkScalarField field(3, 3, nullptr);
        float* before = field.data;
        int files = velktest::openFileCount();
        velktest::MessageCapture capture;
        int result = field.read(path.c_str());
        EXPECT_EQ(velktest::openFileCount(), files);
        if (c.reason) {
            EXPECT_EQ(result, 0);
            ASSERT_EQ(capture.errors().size(), 1u);
            EXPECT_EQ(capture.errors()[0],
                      "VELK error: can't open " + path + " (" + c.reason + ")");
        } else {
            EXPECT_EQ(result, 1) << capture.errorText();
        }
        EXPECT_EQ(field.width, c.resized ? 2 : 3);
        if (!c.resized) {
            EXPECT_EQ(field.data, before);
        }
    }
    VelkScalarField field;
    ASSERT_EQ(field.read(data("scalar-binary-data-short.sca").c_str()), 1);
    EXPECT_EQ(field.data[2], 3.0f);  // the values present are big-endian
}

TEST(BadInput, ColourMapFiles) {
    const char* bad[] = {
        "icol-empty.icol",
        "icol-first-line-two-numbers.icol",
        "icol-first-line-five-numbers.icol",
        "icol-three-column-truncated.icol",
        "icol-three-column-short-line.icol",
        "icol-four-group-short-line.icol",
        "icol-four-group-truncated.icol",
    };
    for (const char* file : bad) {
        std::string path = data(file);
        VelkColormap map;
        map.setMinMax(-4, 4);
        int files = velktest::openFileCount();
        testing::internal::CaptureStderr();
        EXPECT_EQ(map.readIcol(path.c_str()), 0) << file;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Illegal format in " + path + ".\n");
        EXPECT_EQ(velktest::openFileCount(), files);
        EXPECT_EQ(map.min, -4.0f) << file;  // the range stays
        EXPECT_EQ(map.max, 4.0f) << file;
    }

    VelkColormap map;
    testing::internal::CaptureStderr();
    EXPECT_EQ(map.readIcol("/nonexistent/c.icol"), 0);
    EXPECT_EQ(map.writeIcol("/nonexistent/c.icol"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Can't open /nonexistent/c.icol.\nCan't open /nonexistent/c.icol.\n");

    // Groups naming entries outside the table are skipped; the rest load.
    VelkColormap grey;
    ASSERT_EQ(map.readIcol(data("icol-four-group-index-out-of-range.icol").c_str()), 1);
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) {
            float want = i == 7 ? (c == 0 ? 1.0f : 0.0f) : grey.colors[i][c];
            EXPECT_EQ(map.colors[i][c], want) << i;
        }
    }
}
