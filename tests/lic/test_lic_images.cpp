#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

// Binary P5/P6 with maxval 255, rows flipped so that row 0 is the bottom row.
struct Pnm {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<unsigned char> pixels;
};

bool parsePnm(const std::string& bytes, Pnm& out) {
    std::istringstream in(bytes);
    std::string magic;
    int maxval = 0;
    in >> magic >> out.width >> out.height >> maxval;
    if (!in || (magic != "P5" && magic != "P6") || maxval != 255) return false;
    in.get();  // the single whitespace byte before the raster
    out.channels = magic == "P5" ? 1 : 3;
    const std::size_t row = static_cast<std::size_t>(out.width) * out.channels;
    const std::size_t offset = static_cast<std::size_t>(in.tellg());
    if (bytes.size() != offset + row * out.height) return false;
    out.pixels.resize(row * out.height);
    for (int y = 0; y < out.height; y++) {
        const char* src = bytes.data() + offset + (out.height - 1 - y) * row;
        std::copy(src, src + row, out.pixels.begin() + y * row);
    }
    return true;
}

struct ImageCase {
    const char* file;
    std::function<void(VelkVectorField&)> makeField;
    int texWidth, texHeight, texChannels, binary, seed;
    std::function<void(VelkCompute&)> configure;
    int lines, hits;
};

}  // namespace

TEST(LicImages, MatchTheKnownOutputsByteForByte) {
    const ImageCase cases[] = {
        {"circle-default.pgm", [](VelkVectorField& f) { f.setSize(33, 33), f.setCircle(0); }, 96,
         80, 1, 0, 7, [](VelkCompute&) {}, 251, 21920},
        {"circle-cubic-sobol-midpoint-sub2.pgm",
         [](VelkVectorField& f) { f.setSize(33, 33), f.setCircle(0); }, 96, 80, 1, 0, 7,
         [](VelkCompute& e) {
             e.setFilterKernel(VelkCompute::CUBIC);
             e.setFilterLength(20);
             e.setNumSubPixels(2);
             e.seedingMode = 2;
             e.useEuler();
         },
         774, 74124},
        {"linear-rgb-box-scan-nearest-L5.ppm",
         [](VelkVectorField& f) {
             const float m[2][2] = {{0.2f, 1.0f}, {-1.0f, 0.1f}};
             const float b[2] = {0.1f, 0.0f};
             f.setSize(50, 50);
             f.setLinear(m, b);
         },
         96, 80, 3, 0, 11,
         [](VelkCompute& e) {
             e.setFilterKernel(VelkCompute::BOX);
             e.setFilterLength(5);
             e.seedingMode = 0;
             e.setInterpolationMethod(VelkCompute::CONSTANT);
         },
         234, 21610},
        {"brusselator-binary-sub3.pgm",
         [](VelkVectorField& f) { f.setSize(64, 64), f.setBrusselator(4, 4, 1, 3); }, 96, 80, 1, 1,
         3,
         [](VelkCompute& e) {
             e.setFilterKernel(VelkCompute::TRIANGLE);
             e.setFilterLength(20);
             e.setNumSubPixels(3);
         },
         3844, 304001},
        {"saddle-default.pgm", [](VelkVectorField& f) { f.setSaddle(); }, 128, 128, 1, 0, 5,
         [](VelkCompute&) {}, 669, 46076},
    };
    for (const ImageCase& c : cases) {
        SCOPED_TRACE(c.file);
        Pnm expected;
        ASSERT_TRUE(parsePnm(velktest::readFile(velktest::dataPath(std::string("lic/") + c.file)),
                             expected));

        VelkVectorField field;
        c.makeField(field);
        VelkImage texture(c.texWidth, c.texHeight, c.texChannels);
        texture.createRandom(c.binary, c.seed);
        VelkImage output;
        VelkCompute engine;
        engine.setNormalization(0);
        c.configure(engine);
        velktest::MessageCapture capture;
        ASSERT_EQ(engine.compute(&field, &texture, &output, nullptr, nullptr), 1)
            << capture.errorText();

        EXPECT_EQ(engine.numFieldLines, c.lines);
        EXPECT_EQ(engine.totalHits, c.hits);
        ASSERT_EQ(output.width, expected.width);
        ASSERT_EQ(output.height, expected.height);
        ASSERT_EQ(output.nChannels, expected.channels);
        const std::size_t size = expected.pixels.size();
        std::size_t differing = 0, first = size;
        for (std::size_t i = 0; i < size; i++) {
            if (output.data[i] != expected.pixels[i]) {
                if (first == size) first = i;
                differing++;
            }
        }
        if (differing != 0) {
            const std::size_t pixel = first / expected.channels;
            ADD_FAILURE() << differing << " bytes differ; first at pixel ("
                          << pixel % expected.width << ", " << pixel / expected.width
                          << ") channel " << first % expected.channels << ": got "
                          << int(output.data[first]) << ", expected "
                          << int(expected.pixels[first]);
        }
    }
}
