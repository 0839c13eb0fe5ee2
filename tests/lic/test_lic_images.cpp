#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <velk/velk.h>
#include "TestSupport.h"

// Images, line and hit counts of an independent implementation.
TEST(LicImages, MatchTheKnownOutputsByteForByte) {
    enum Field { kCircle, kLinear, kBrusselator, kSaddle };
    struct Case {
        const char* file;
        Field field;
        int texWidth, texHeight, texChannels, binary, seed;
        int kernel, length, subPixels, seeding, lookup;
        bool euler;
        int lines, hits;
    };
    const Case cases[] = {
        {"circle-default.pgm", kCircle, 96, 80, 1, 0, 7, 1, 20, 1, 1, 1, false, 251, 21920},
        {"circle-cubic-sobol-midpoint-sub2.pgm", kCircle, 96, 80, 1, 0, 7, 2, 20, 2, 2, 1, true,
         774, 74124},
        {"linear-rgb-box-scan-nearest-L5.ppm", kLinear, 96, 80, 3, 0, 11, 0, 5, 1, 0, 0, false, 234,
         21610},
        {"brusselator-binary-sub3.pgm", kBrusselator, 96, 80, 1, 1, 3, 1, 20, 3, 1, 1, false, 3844,
         304001},
        {"saddle-default.pgm", kSaddle, 128, 128, 1, 0, 5, 1, 20, 1, 1, 1, false, 669, 46076},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        VelkImage expected;  // row 0 at the bottom, as the engine's output
        velktest::MessageCapture capture(1);
        ASSERT_EQ(expected.readPNM(velktest::dataPath(std::string("lic/") + c.file).c_str()), 1)
            << capture.errorText();

        VelkVectorField field;
        const float m[2][2] = {{0.2f, 1.0f}, {-1.0f, 0.1f}}, b[2] = {0.1f, 0.0f};
        if (c.field == kCircle) field.setSize(33, 33), field.setCircle(0);
        if (c.field == kLinear) field.setSize(50, 50), field.setLinear(m, b);
        if (c.field == kBrusselator) field.setSize(64, 64), field.setBrusselator(4, 4, 1, 3);
        if (c.field == kSaddle) field.setSaddle();
        VelkImage texture(c.texWidth, c.texHeight, c.texChannels), output;
        texture.createRandom(c.binary, c.seed);
        VelkCompute engine;
        engine.setNormalization(0);
        engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(c.kernel));
        engine.setFilterLength(static_cast<float>(c.length));
        engine.setNumSubPixels(c.subPixels);
        engine.seedingMode = c.seeding;
        engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(c.lookup));
        if (c.euler) engine.useEuler();
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1) << capture.errorText();

        EXPECT_EQ(engine.numFieldLines, c.lines);
        EXPECT_EQ(engine.totalHits, c.hits);

        ASSERT_EQ(output.width, expected.width);
        ASSERT_EQ(output.height, expected.height);
        ASSERT_EQ(output.nChannels, expected.nChannels);
        const int size = output.width * output.height * output.nChannels;
        const auto first = std::mismatch(output.data, output.data + size, expected.data);
        if (first.first != output.data + size) {
            const long at = first.first - output.data, pixel = at / output.nChannels;
            ADD_FAILURE() << "first difference at pixel (" << pixel % output.width << ", "
                          << pixel / output.width << ") channel " << at % output.nChannels
                          << ": got " << int(*first.first) << ", expected " << int(*first.second);
        }
    }
}
