#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "ToolRun.h"

using velktest::TempDir;
using velktest::ToolResult;

namespace {

struct FailureCase {
    std::vector<std::string> args;
    const char* mentions;  // the message names this
};

// Runs the tool in `dir`: exit status `status` and one line on the standard
// error stream, naming the problem.
void expectFailure(const TempDir& dir, const std::vector<std::string>& args, int status,
                   const char* mentions) {
    std::string trace;
    for (const std::string& a : args) trace += a + " ";
    SCOPED_TRACE(trace);
    const ToolResult r = velktest::runTool(dir.path(""), args);
    EXPECT_EQ(r.status, status);
    ASSERT_FALSE(r.err.empty());
    EXPECT_EQ(r.err.compare(0, 10, "velk-lic: "), 0) << r.err;
    EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << r.err;
    EXPECT_NE(r.err.find(mentions), std::string::npos) << r.err;
}

}  // namespace

TEST(ToolFailures, BadOptionsExitWithStatusTwoAndWriteNothing) {
    const std::vector<FailureCase> cases = {
        {{}, "-o FILE"},
        {{"--length", "-1"}, "--length"},
        {{"--length", "1e9"}, "out of range"},
        {{"--size", "1x5"}, "--size"},
        {{"--noise-size", "100000x8"}, "--noise-size"},
        {{"--grid", "64x"}, "--grid"},
        {{"--subpixels", "0"}, "--subpixels"},
        {{"--kernel", "gauss"}, "box, triangle, cubic"},
        {{"--blur", "10"}, "--blur"},
        {{"--frames", "0"}, "--frames"},
        {{"--rk43", "1,2,3"}, "4 comma-separated"},
        {{"--rk43", "4,0.5,15,0"}, "tolerance"},
        {{"--rk43", "4,0,15,0.001"}, "smallest step"},
        {{"--rk43", "20,0.5,15,0.001"}, "H0"},
        {{"--gamma", "nan"}, "not a number"},
        {{"--brighten", "200,100"}, "LO < HI"},
        {{"--range", "5,5"}, "MIN < MAX"},
        {{"--relief", "0", "--emboss", "light"}, "--relief"},
        {{"--matrix", "1,2,3,x"}, "'x'"},
        {{"--seed", "-4"}, "--seed"},
        {{"--bogus"}, "'--bogus'"},
        {{"stray"}, "'stray'"},
        {{"--verbose=yes"}, "takes no value"},
        {{"--length"}, "needs a value"},
        {{"--length", "5", "--length", "6"}, "twice"},
        {{"--angle", "1", "-f", "saddle"}, "--angle"},
        {{"-f", "circle", "--field-file", "a.vec"}, "one field source"},
        {{"--texture", "t.pgm", "--seed", "3"}, "--seed"},
        {{"--color", "scalar"}, "--color-scalar"},
        {{"--colormap", "hot"}, "--color"},
        {{"--light", "10,20"}, "--emboss light"},
        {{"--advect", "3"}, "--frames"},
        {{"--adjust", "100,40", "--no-adjust"}, "only one"},
        {{"--ascii"}, "PNM"},
    };
    TempDir dir;
    for (const FailureCase& c : cases) {
        std::vector<std::string> args = c.args;
        if (c.mentions != std::string("-o FILE")) args.insert(args.begin(), {"-o", "out.png"});
        expectFailure(dir, args, 2, c.mentions);
    }
    expectFailure(dir, {"-o", "out.gif"}, 2, "out.gif");
    EXPECT_TRUE(velktest::listDir(dir.path("")).empty());
}

TEST(ToolFailures, UnreadableOrMalformedInputsFailCleanly) {
    TempDir dir;
    velktest::writeFile(dir.path("tiny.vec"), "VELK VECTOR ASCII\n1 5\n");
    velktest::writeFile(dir.path("short.vec"), "VELK VECTOR ASCII\n3 3\n1 0\n0 1\n");
    velktest::writeFile(dir.path("noheader.vec"), "VECTOR\n3 3\n");
    velktest::writeFile(dir.path("text.pgm"), "hello\n");
    velktest::writeFile(dir.path("huge.pgm"), "P5\n100000 100000\n255\n");
    velktest::writeFile(dir.path("bad.inp"), "4 2\nnodes\n0 0 1\n");
    velktest::writeFile(dir.path("bad.sca"), "VELK SCALAR ASCII\n2 2\n1\n");
    velktest::writeFile(dir.path("bad.icol"), "1 2\n");
    velktest::writeFile(dir.path("bad.vg"), "VELK GRAPHICS\nline 1 2 3\n");
    velktest::writeFile(dir.path("bad.png"), "\x89PNG\r\n\x1a\nnot really");
    velktest::writeFile(dir.path("mask10.pgm"), "P5\n10 10\n255\n" + std::string(100, '\xff'));
    const std::vector<std::string> inputs = velktest::listDir(dir.path(""));

    const std::vector<FailureCase> cases = {
        {{"--field-file", "missing.vec"}, "missing.vec"},
        {{"--field-file", "tiny.vec"}, "illegal vector field dimensions"},
        {{"--field-file", "short.vec"}, "illegal or missing vector values"},
        {{"--field-file", "noheader.vec"}, "'VELK VECTOR' not found"},
        {{"--field-file", "."}, "'.'"},
        {{"--texture", "missing.pgm"}, "missing.pgm"},
        {{"--texture", "text.pgm"}, "text.pgm"},
        {{"--texture", "huge.pgm"}, "largest supported side"},
        {{"--texture", "bad.png"}, "bad.png"},
        {{"--image-field", "text.pgm"}, "text.pgm"},
        {{"--ucd", "bad.inp"}, "bad.inp"},
        {{"--scalar-field", "bad.sca"}, "illegal or missing scalar values"},
        {{"--color-scalar", "bad.sca"}, "bad.sca"},
        {{"--color", "magnitude", "--colormap", "bad.icol"}, "Illegal format"},
        {{"--color", "magnitude", "--colormap", "nosuch"}, "nosuch"},
        {{"--mask", "missing.pgm"}, "missing.pgm"},
        {{"--grid", "16x16", "--mask", "mask10.pgm"}, "16x16"},
        {{"--overlay", "missing.vg"}, "missing.vg"},
        {{"--overlay", "bad.vg"}, "expecting 'line"},
        {{"--overlay-mesh", "bad.inp"}, "bad.inp"},
        {{"--noise-size", "8000x8000", "--subpixels", "4"}, "sub-pixels"},
    };
    for (const FailureCase& c : cases) {
        std::vector<std::string> args = {"-o", "out.png"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        if (c.args[0] != "--texture" && c.args[0] != "--noise-size")
            args.insert(args.end(), {"--noise-size", "20x20"});
        expectFailure(dir, args, 1, c.mentions);
        EXPECT_EQ(velktest::listDir(dir.path("")), inputs) << "no output, no temporary file";
    }
}

TEST(ToolFailures, AnOutputThatCannotBeCreatedFailsBeforeTheWork) {
    TempDir dir;
    expectFailure(dir, {"-o", "no/such/dir/out.png"}, 1, "no/such/dir/out.png");
    ASSERT_EQ(mkdir(dir.path("taken.png").c_str(), 0755), 0);
    expectFailure(dir, {"-o", "taken.png", "--noise-size", "8x8"}, 1, "directory");
    EXPECT_EQ(velktest::listDir(dir.path("")), std::vector<std::string>{"taken.png"});
}
