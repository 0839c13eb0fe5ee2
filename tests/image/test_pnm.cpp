// PNM files: every file under tests/data/image replayed, and files that cannot be opened.
#include <filesystem>
#include <string>

#include "TestSupport.h"

using namespace velktest;

// Result, report (the path as %s) and pixels of every file, against the
// hashes in tests/data/recorded/image-files.txt; no handle stays open.
TEST(PnmRead, DataFilesMatchTheRecordedHashes) {
    Hashes hashes;
    for (const auto& entry : std::filesystem::directory_iterator(dataPath("image"))) {
        const std::string name = entry.path().filename(), path = entry.path();
        VelkImage image = makeImage(2, 1, 1, {42, 42});
        const int files = openFileCount();
        MessageCapture capture;
        Hash h;
        h.add(image.readPNM(path.c_str()));
        // Rows a short binary file lacks are not written.
        const Bytes pixels = bytesOf(image);
        const size_t unset = name == "truncated-pixels.pgm" ? 8 : 0;
        h.add(image.width)
            .add(image.height)
            .add(image.nChannels)
            .bytes(pixels.data() + unset, (pixels.size() - unset) * sizeof(int));
        std::string report = capture.errorText();
        for (size_t at; (at = report.find(path)) != std::string::npos;)
            report.replace(at, path.size(), "%s");
        hashes.push_back({name, h.add(report).hex()});
        EXPECT_EQ(openFileCount(), files) << name;
    }
    std::sort(hashes.begin(), hashes.end());
    expectRecorded("recorded/image-files.txt", hashes);
}

// An unknown magic shows the file name as the format: a "%s" in it shows the
// reason, other conversions are shown as written.
TEST(PnmRead, FileNamesAreNoFormats) {
    TempDir dir;
    const char* names[][2] = {{"why-%s.pbm", "why-no PNM header found.pbm"},
                              {"100%%.pbm", "100%.pbm"},
                              {"bad-%n%d%s.pbm", "bad-%n%d%s.pbm"}};
    for (const auto& name : names) {
        writeFile(dir.path(name[0]), readFile(dataPath("image/unknown-magic.pbm")));
        MessageCapture capture;
        VelkImage image;
        EXPECT_EQ(image.readPNM(dir.path(name[0]).c_str()), 0);
        EXPECT_EQ(capture.errorText(), "VELK error: " + dir.path(name[1]) + "\n");
    }
}

TEST(PnmWrite, UnwritableFilesAreSaid) {
    VelkImage image = makeImage(2, 2, 1, {0, 0, 7, 255});
    const std::string path = "/nonexistent-velk-dir/x.pgm";
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(image.writePNM(path.c_str(), 0), 0); }),
              "VelkImage: Can't open file " + path + "\n");
    EXPECT_EQ(stderrOf([&] { EXPECT_EQ(image.writeHistogram(path.c_str()), 0); }),
              "VelkImage: Can't write histogram " + path + "\n");
}
