// velk-lic run end to end as a separate process, on the cases of runs.txt
// and failures.txt, with the input files of inputs/.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <png.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <velk/velk.h>

#include "TestSupport.h"

extern char** environ;

namespace fs = std::filesystem;
using velktest::readFile;
using velktest::TempDir;

namespace {

const std::string kInputs = VELK_TOOL_TESTS "/inputs/";

struct Result {
    int status = -1;  // -1 when the tool did not exit normally
    std::string out, err;
};

// Runs velk-lic in `dir`, so that relative names are taken from there.
Result runTool(const TempDir& dir, std::vector<std::string> args) {
    args.insert(args.begin(), VELK_LIC_PATH);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    const std::string out = dir.path(".stdout"), err = dir.path(".stderr");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, dir.path("").c_str());
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT, 0644);
    Result run;
    pid_t pid;
    int status = 0;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0 &&
        waitpid(pid, &status, 0) == pid && WIFEXITED(status))
        run.status = WEXITSTATUS(status);
    posix_spawn_file_actions_destroy(&actions);
    run.out = readFile(out);
    run.err = readFile(err);
    fs::remove(out);
    fs::remove(err);
    return run;
}

std::vector<std::string> listDir(const TempDir& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir.path("")))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The files a run added to the inputs.
std::vector<std::string> written(const TempDir& dir) {
    std::vector<std::string> names = listDir(dir);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& n) { return fs::exists(kInputs + n); }),
                names.end());
    return names;
}

bool isPng(const std::string& path) {
    return path.size() > 4 && path.compare(path.size() - 4, 4, ".png") == 0;
}

struct Picture {
    int width = 0, height = 0, channels = 0;
    std::vector<unsigned char> pixels;  // top row first
};

// A PNG read with libpng, a PNM with the library.
Picture readBack(const std::string& path) {
    Picture p;
    if (isPng(path)) {
        png_image png{};
        png.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&png, path.c_str())) {
            ADD_FAILURE() << path << ": " << png.message;
            return p;
        }
        const png_uint_32 alpha = png.format & PNG_FORMAT_FLAG_ALPHA;
        p = {static_cast<int>(png.width),
             static_cast<int>(png.height),
             (png.format & PNG_FORMAT_FLAG_COLOR ? 3 : 1) + (alpha ? 1 : 0),
             {}};
        png.format = (p.channels >= 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY) | alpha;
        p.pixels.resize(PNG_IMAGE_SIZE(png));
        EXPECT_TRUE(png_image_finish_read(&png, nullptr, p.pixels.data(), 0, nullptr)) << path;
        return p;
    }
    VelkImage image;
    EXPECT_EQ(image.readPNM(path.c_str()), 1) << path;
    p = {image.width, image.height, image.nChannels, {}};
    for (int y = image.height - 1; y >= 0; y--) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        p.pixels.insert(p.pixels.end(), row, row + image.width * image.nChannels);
    }
    return p;
}

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// One line of a case table: "ARGUMENTS => EXPECTATION"; '#' starts a comment.
struct Case {
    std::string line;
    std::vector<std::string> args;
    std::string expect;
};

std::vector<Case> readCases(const std::string& name) {
    std::vector<Case> cases;
    std::istringstream lines(readFile(VELK_TOOL_TESTS "/" + name));
    for (std::string line; std::getline(lines, line);) {
        const std::string::size_type arrow = line.find("=> ");
        if (line.empty() || line[0] == '#' || arrow == std::string::npos) continue;
        cases.push_back({line, words(line.substr(0, arrow)), line.substr(arrow + 3)});
    }
    EXPECT_FALSE(cases.empty()) << name;
    return cases;
}

// FNV-1a over the files written (PNGs by their pixels, so that another zlib
// cannot change it), standard output and standard error.
std::string hashOf(const TempDir& dir, const Result& run) {
    std::uint64_t h = 14695981039346656037ull;
    auto add = [&h](const std::string& bytes) {
        for (unsigned char c : std::to_string(bytes.size()) + ":" + bytes)
            h = (h ^ c) * 1099511628211ull;
    };
    for (const std::string& name : written(dir)) {
        add(name);
        if (isPng(name)) {
            const Picture p = readBack(dir.path(name));
            add(std::to_string(p.width) + "x" + std::to_string(p.height) + "x" +
                std::to_string(p.channels));
            add(std::string(p.pixels.begin(), p.pixels.end()));
        } else {
            add(readFile(dir.path(name)));
        }
    }
    add(run.out);
    add(run.err);
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
    return text;
}

}  // namespace

TEST(ToolRuns, WriteWhatWasRecorded) {
    std::map<std::string, std::string> named;  // the first hash of each "=NAME"
    for (const Case& c : readCases("runs.txt")) {
        SCOPED_TRACE(c.line);
        TempDir dir;
        fs::copy(kInputs, dir.path(""));
        const Result run = runTool(dir, c.args);
        ASSERT_EQ(run.status, 0) << run.err;
        if (c.expect.find('/') != std::string::npos) {
            const std::vector<std::string> files = written(dir);
            ASSERT_EQ(files.size(), 1u);
            EXPECT_TRUE(readFile(dir.path(files[0])) == readFile(velktest::dataPath(c.expect)));
        } else {
            const std::string hash = hashOf(dir, run);
            if (c.expect[0] == '=') {
                EXPECT_EQ(hash, named.emplace(c.expect, hash).first->second);
            } else {
                EXPECT_EQ(hash, c.expect)
                    << "now: " << c.line.substr(0, c.line.find("=> ") + 3) << hash;
            }
        }
    }
}

TEST(ToolFailures, EndWithTheirStatusAndOneLineAndWriteNothing) {
    TempDir dir;
    fs::copy(kInputs, dir.path(""));
    ASSERT_EQ(mkdir(dir.path("taken.png").c_str(), 0755), 0);
    const std::vector<std::string> before = listDir(dir);
    for (const Case& c : readCases("failures.txt")) {
        SCOPED_TRACE(c.line);
        const Result run = runTool(dir, c.args);
        EXPECT_EQ(std::to_string(run.status) + " " + run.err,
                  c.expect.substr(0, 2) + "velk-lic: " + c.expect.substr(2) + "\n");
        EXPECT_EQ(listDir(dir), before) << "no output, no temporary file";
    }
}

TEST(ToolOutput, EveryFormatReadsBackAsTheSamePicture) {
    struct Format {
        const char* file;
        const char* magic;  // empty for PNG
        const char* noise;
    };
    const Format formats[] = {{"g.png", "", "grey"},    {"g.pgm", "P5", "grey"},
                              {"a.pgm", "P2", "grey"},  {"c.png", "", "color"},
                              {"c.ppm", "P6", "color"}, {"a.pnm", "P3", "color"}};
    TempDir dir;
    Picture first[2];  // grey, colour
    for (const Format& f : formats) {
        SCOPED_TRACE(f.file);
        std::vector<std::string> args = {"-v",    "-o",      f.file, "--noise-size",
                                         "33x21", "--noise", f.noise};
        if (f.file[0] == 'a') args.push_back("--ascii");
        const Result run = runTool(dir, args);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find("total number of field lines"), std::string::npos) << run.err;
        EXPECT_EQ(readFile(dir.path(f.file)).substr(0, 2), f.magic[0] ? f.magic : "\x89P");
        const Picture p = readBack(dir.path(f.file));
        const int colour = f.noise[0] == 'c';
        EXPECT_EQ(std::vector<int>({p.width, p.height, p.channels}),
                  std::vector<int>({33, 21, 1 + 2 * colour}));
        if (first[colour].pixels.empty()) first[colour] = p;
        EXPECT_EQ(p.pixels, first[colour].pixels);
    }
}

// A uniform flow to the right over a grid of one node per pixel: each frame
// is the one before moved right by exactly --advect pixels.
TEST(ToolAnimation, FramesMoveByTheAdvectDistance) {
    TempDir dir;
    const Result run =
        runTool(dir, words("-o f.pgm --frames 3 --advect 3 -f linear --matrix 0,0,0,0 "
                           "--offset 1,0 --grid 81x25 --noise-size 80x24 -L 6 "
                           "--no-adjust --threads 0"));
    ASSERT_EQ(run.status, 0) << run.err;
    for (int frame = 1; frame < 3; frame++) {
        const Picture a = readBack(dir.path("f-000" + std::to_string(frame - 1) + ".pgm"));
        const Picture b = readBack(dir.path("f-000" + std::to_string(frame) + ".pgm"));
        ASSERT_EQ(b.pixels.size(), 80u * 24u);
        EXPECT_NE(a.pixels, b.pixels);
        for (int i = 0; i < 80 * 24; i++) {
            if (i % 80 < 3) continue;
            ASSERT_EQ(b.pixels[i], a.pixels[i - 3]) << frame << " at " << i;
        }
    }
}
