// Interoperability with Netpbm, a PNM implementation written elsewhere. The
// tools must be installed (scripts/deps.sh): a missing tool fails the test.
#include <cstdlib>
#include <sstream>
#include <string>

#include "TestSupport.h"

using namespace velktest;

namespace {

// Standard output of a shell command; a failing command fails the test.
std::string run(const std::string& command) {
    TempDir dir;
    EXPECT_EQ(std::system((command + " > " + dir.path("out")).c_str()), 0) << command;
    return readFile(dir.path("out"));
}

// The image's samples in file order: top row first.
Bytes topDown(const VelkImage& image) {
    Bytes samples;
    for (int y = image.height - 1; y >= 0; y--) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        samples.insert(samples.end(), row, row + image.width * image.nChannels);
    }
    return samples;
}

}  // namespace

// Each written variant is what Netpbm reads (pamtable lists the samples top
// row first), and what Netpbm writes in the other layout reads back the same.
TEST(NetpbmInterop, WrittenVariantsAreReadByNetpbmAndReadBack) {
    TempDir dir;
    std::string path = dir.path("written.pnm"), converted = dir.path("converted.pnm");
    const int sizes[][2] = {{7, 5}, {1, 1}, {17, 3}, {3, 11}};
    int seed = 1;
    for (int variant = 0; variant < 4; variant++) {
        for (const auto& size : sizes) {
            SCOPED_TRACE(testing::Message()
                         << "variant " << variant << " " << size[0] << "x" << size[1]);
            VelkImage image(size[0], size[1], variant < 2 ? 1 : 3), back;
            image.createRandom(0, seed++);
            ASSERT_EQ(image.writePNM(path.c_str(), variant % 2), 1);
            std::istringstream table(run("pamtable " + path + " | tr '|' ' '"));
            Bytes samples;
            for (int v; table >> v;) samples.push_back(v);
            EXPECT_EQ(samples, topDown(image));
            writeFile(converted, run((variant % 2 ? "pamtopnm " : "pamtopnm -plain ") + path));
            MessageCapture capture;
            ASSERT_EQ(back.readPNM(converted.c_str()), 1) << capture.errorText();
            EXPECT_EQ(back.nChannels, image.nChannels);
            EXPECT_EQ(topDown(back), topDown(image));
        }
    }
}
