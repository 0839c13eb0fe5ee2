#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

std::vector<unsigned char> bytesOf(const VelkImage& image) {
    std::vector<unsigned char> bytes;
    for (int y = 0; y < image.height; y++) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        bytes.insert(bytes.end(), row, row + image.width * image.nChannels);
    }
    return bytes;
}

void circleField(VelkVectorField& field, int n) {
    field.setSize(n, n);
    field.setCircle(0.0f);
}

}  // namespace

TEST(ComputeSettings, IntegratorChoice) {
    VelkCompute engine;
    auto* rk = dynamic_cast<RK43*>(engine.forward);
    ASSERT_NE(rk, nullptr);
    EXPECT_EQ(rk->tolerance, 0.001f);
    EXPECT_EQ(rk->initialStep, 4.0f);
    EXPECT_EQ(rk->minStep, 0.5f);
    EXPECT_EQ(rk->maxStep, 15.0f);
    EXPECT_EQ(engine.forward->direction, 1.0f);
    EXPECT_EQ(engine.backward->direction, -1.0f);

    engine.setNormalization(0.25f);
    EXPECT_EQ(engine.forward->normalization, 0.25f);
    EXPECT_EQ(engine.backward->normalization, 0.25f);

    // The fixed-step choice is the midpoint rule, and keeps the normalisation.
    engine.useEuler();
    ASSERT_NE(dynamic_cast<Midpoint*>(engine.forward), nullptr);
    ASSERT_NE(dynamic_cast<Midpoint*>(engine.backward), nullptr);
    EXPECT_EQ(engine.forward->direction, 1.0f);
    EXPECT_EQ(engine.backward->direction, -1.0f);
    EXPECT_EQ(engine.backward->normalization, 0.25f);

    // The last argument is the tolerance.
    engine.useRK43(2.0f, 0.25f, 9.0f, 0.01f);
    for (VelkIntegrator* integrator : {engine.forward, engine.backward}) {
        auto* adaptive = dynamic_cast<RK43*>(integrator);
        ASSERT_NE(adaptive, nullptr);
        EXPECT_EQ(adaptive->initialStep, 2.0f);
        EXPECT_EQ(adaptive->minStep, 0.25f);
        EXPECT_EQ(adaptive->maxStep, 9.0f);
        EXPECT_EQ(adaptive->tolerance, 0.01f);
        EXPECT_EQ(adaptive->normalization, 0.25f);
    }
    EXPECT_EQ(engine.backward->direction, -1.0f);
}

TEST(ComputeSettings, StepCountsFromFilterAndExtensionLength) {
    struct Case {
        VelkCompute::FilterKernel kernel;
        float length, step;
        int nFilter, nExtension;
    };
    const Case cases[] = {
        {VelkCompute::TRIANGLE, 20.0f, 1.0f, 20, 80}, {VelkCompute::BOX, 2.5f, 1.0f, 3, 80},
        {VelkCompute::BOX, 2.49f, 1.0f, 2, 80},       {VelkCompute::TRIANGLE, 10.0f, 2.0f, 5, 40},
        {VelkCompute::CUBIC, 20.0f, 1.0f, 24, 80},    {VelkCompute::CUBIC, 18.0f, 1.0f, 18, 80},
        {VelkCompute::CUBIC, 1.0f, 1.0f, 6, 80},      {VelkCompute::CUBIC, 30.0f, 0.5f, 60, 160},
        {VelkCompute::TRIANGLE, 0.49f, 1.0f, 0, 80},
    };
    VelkVectorField field;
    circleField(field, 5);
    VelkImage texture(8, 8), output;
    texture.clear(0);
    for (const Case& c : cases) {
        VelkCompute engine;
        engine.setFilterKernel(c.kernel);
        engine.setFilterLength(c.length);
        engine.stepSize = c.step;
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
        EXPECT_EQ(engine.nFilter, c.nFilter) << "L " << c.length << " h " << c.step;
        EXPECT_EQ(engine.nExtension, c.nExtension);
        EXPECT_EQ(engine.nTotal, c.nFilter + c.nExtension);
    }
}

TEST(ComputeDriver, MaskOfTheWrongSizeFailsSilentlyAndTouchesNothing) {
    VelkVectorField field;
    circleField(field, 9);
    VelkImage texture(16, 16), output(3, 2), seedMap(4, 4), mask(9, 8);
    texture.createRandom(0, 1);
    output.clear(77);
    seedMap.clear(55);
    mask.clear(3);
    for (int verbosity : {0, 1}) {
        velktest::MessageCapture capture(verbosity);
        VelkCompute engine;
        EXPECT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 0);
        EXPECT_EQ(engine.numFieldLines, 0);
        EXPECT_EQ(bytesOf(output), std::vector<unsigned char>(6, 77));
        EXPECT_EQ(bytesOf(seedMap), std::vector<unsigned char>(16, 55));
        EXPECT_TRUE(capture.errors().empty());
        if (verbosity == 0) {
            EXPECT_TRUE(capture.infos().empty());
        } else {
            EXPECT_EQ(capture.infos(), std::vector<std::string>{
                                           "VELK info: field and mask must have the same size"});
        }
    }
}

TEST(ComputeDriver, ZeroFilterLengthCopiesTheInput) {
    VelkVectorField field;
    circleField(field, 9);
    // A borrowed RGB texture with padded rows: the copy is compact.
    std::vector<unsigned char> buffer(5 * 20);
    for (std::size_t i = 0; i < buffer.size(); i++) buffer[i] = static_cast<unsigned char>(i * 7);
    VelkImage texture(6, 5, 3, 20, buffer.data());
    VelkImage output, seedMap, mask(9, 9);
    mask.clear(9);
    VelkCompute engine;
    engine.setFilterLength(0.4f);
    ASSERT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 1);
    EXPECT_EQ(engine.nFilter, 0);
    EXPECT_EQ(engine.numFieldLines, 0);
    ASSERT_EQ(output.nChannels, 3);
    EXPECT_EQ(output.bytesPerLine, 18);
    EXPECT_EQ(bytesOf(output), bytesOf(texture));
    EXPECT_EQ(bytesOf(seedMap), std::vector<unsigned char>(30, 1));
}

TEST(ComputeDriver, ZeroFieldGivesNoLinesAndABlackImage) {
    VelkVectorField field(7, 7, nullptr);
    for (int i = 0; i < 2 * 49; i++) field.data[i] = 0.0f;
    VelkImage texture(20, 20), output;
    texture.createRandom(0, 3);
    for (int mode : {0, 1, 2}) {
        VelkCompute engine;
        engine.seedingMode = mode;
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
        EXPECT_EQ(engine.numFieldLines, 0);
        EXPECT_EQ(engine.totalHits, 0);
        EXPECT_EQ(bytesOf(output), std::vector<unsigned char>(400, 0));
    }
}

// Kernel weights sum to the divisor, so a constant texture stays constant
// wherever a line reached; the scan and offset orders reach every pixel.
TEST(ComputeDriver, ConstantTextureStaysConstant) {
    VelkVectorField circle;
    circleField(circle, 17);
    for (int channels : {1, 3}) {
        VelkImage texture(40, 32, channels), output;
        texture.clear(173);
        for (auto lookup : {VelkCompute::CONSTANT, VelkCompute::BILINEAR}) {
            for (auto kernel : {VelkCompute::BOX, VelkCompute::TRIANGLE, VelkCompute::CUBIC}) {
                for (int mode : {0, 1, 2}) {
                    for (bool midpoint : {false, true}) {
                        SCOPED_TRACE(::testing::Message()
                                     << "channels " << channels << " lookup " << lookup
                                     << " kernel " << kernel << " mode " << mode << " midpoint "
                                     << midpoint);
                        VelkCompute engine;
                        engine.setInterpolationMethod(lookup);
                        engine.setFilterKernel(kernel);
                        engine.setFilterLength(7.0f);
                        engine.seedingMode = mode;
                        if (midpoint) engine.useEuler();
                        ASSERT_EQ(engine.compute(&circle, &texture, &output), 1);
                        ASSERT_EQ(output.nChannels, channels);
                        std::vector<unsigned char> bytes = bytesOf(output);
                        std::size_t reached = 0;
                        for (unsigned char b : bytes) {
                            ASSERT_TRUE(b == 173 || b == 0) << int(b);
                            reached += b == 173;
                        }
                        if (mode == 2) {
                            EXPECT_GT(reached, bytes.size() * 9 / 10);
                        } else {
                            EXPECT_EQ(reached, bytes.size());
                        }
                        EXPECT_GT(engine.numFieldLines, 0);
                    }
                }
            }
        }
    }
}

TEST(ComputeDriver, UnknownKernelTracesButAccumulatesNothing) {
    VelkVectorField field;
    circleField(field, 9);
    VelkImage texture(24, 24), output;
    texture.createRandom(0, 2);
    velktest::MessageCapture capture(1);
    VelkCompute engine;
    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(3));
    ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
    EXPECT_EQ(engine.totalHits, 0);
    // Nothing is ever hit, so every pixel is seeded and traced.
    EXPECT_EQ(engine.numFieldLines, 24 * 24);
    EXPECT_EQ(bytesOf(output), std::vector<unsigned char>(24 * 24, 0));
    ASSERT_FALSE(capture.infos().empty());
    EXPECT_EQ(capture.infos()[0],
              "VELK info: computing LIC image (L=20, filter=unknown, mask=1x1)");
}

// Without extension every line outputs its seed only: one hit per seed, and
// every sub-pixel is seeded exactly once in the scan and offset orders.
TEST(ComputeDriver, EverySubPixelIsSeededOnceWithoutExtension) {
    VelkVectorField field;
    circleField(field, 10);
    VelkImage texture(21, 13), output;
    texture.createRandom(0, 9);
    for (int n : {1, 2, 3}) {
        for (int mode : {0, 1}) {
            VelkCompute engine;
            engine.extensionLength = 0.0f;
            engine.setNumSubPixels(n);
            engine.seedingMode = mode;
            ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
            EXPECT_EQ(engine.numFieldLines, 21 * 13 * n * n) << "N " << n << " mode " << mode;
            EXPECT_EQ(engine.totalHits, 21 * 13 * n * n);
        }
    }
}

// Each seeded pixel records the mask value at its (last) seed; the others keep 1.
TEST(ComputeDriver, SeedMapRecordsTheMaskAtTheSeeds) {
    const int fw = 12, fh = 10, w = 30, h = 22;
    VelkVectorField field;
    field.setSize(fw, fh);
    field.setCircle(0.4f);
    VelkImage mask(fw, fh), texture(w, h), output, seedMap;
    for (int i = 0; i < fw * fh; i++) mask.data[i] = static_cast<unsigned char>(2 + (i * 37) % 250);
    texture.createRandom(0, 4);
    for (int n : {1, 2}) {
        VelkCompute engine;
        engine.setNumSubPixels(n);
        engine.seedingMode = 0;
        ASSERT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 1);
        ASSERT_EQ(seedMap.width, w);
        ASSERT_EQ(seedMap.height, h);
        ASSERT_EQ(seedMap.nChannels, 1);
        const float rx = 1.0f / (static_cast<float>(w) / (fw - 1));
        const float ry = 1.0f / (static_cast<float>(h) / (fh - 1));
        int seeded = 0;
        for (int y = 0; y < h; y++) {
            for (int x = 0; x < w; x++) {
                const int value = seedMap.data[y * w + x];
                if (value == 1) continue;
                seeded++;
                bool candidate = false;
                for (int s = 0; s < n * n; s++) {
                    const float sx = (x + (s % n + 0.5f) / n) * rx;
                    const float sy = (y + (s / n + 0.5f) / n) * ry;
                    candidate |=
                        value == mask.data[static_cast<int>(sy) * fw + static_cast<int>(sx)];
                }
                EXPECT_TRUE(candidate) << "pixel " << x << ", " << y << " N " << n;
            }
        }
        EXPECT_EQ(seedMap.data[0], mask.data[0]);  // (0, 0) is always the first seed
        if (n == 1) {
            EXPECT_EQ(seeded, engine.numFieldLines);
        }
        EXPECT_GT(seeded, 0);
        EXPECT_LT(seeded, w * h);
    }

    // Without a mask the seed map is only sized and set to 1.
    VelkCompute engine;
    ASSERT_EQ(engine.compute(&field, &texture, &output, nullptr, &seedMap), 1);
    EXPECT_EQ(bytesOf(seedMap), std::vector<unsigned char>(w * h, 1));
}

TEST(ComputeDriver, ReportsStartAndStop) {
    VelkVectorField field;
    circleField(field, 33);
    VelkImage texture(96, 80), output;
    texture.createRandom(0, 7);
    velktest::MessageCapture capture(1);
    VelkCompute engine;
    ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
    ASSERT_EQ(capture.infos().size(), 4u);
    EXPECT_EQ(capture.infos()[0],
              "VELK info: computing LIC image (L=20, filter=triangle, mask=1x1)");
    EXPECT_EQ(capture.infos()[1], "VELK info: total number of field lines = 251");
    EXPECT_EQ(capture.infos()[2], "VELK info: average number of hits per pixel = 2.85");
    const std::string time = capture.infos()[3];
    EXPECT_EQ(time.rfind("VELK info: time for LIC computation = ", 0), 0u) << time;
    EXPECT_EQ(time.substr(time.size() - 4), " sec");
}

TEST(Zaehlrohr, PicksTheExtensionWithTheBestRatio) {
    VelkCompute engine;
    // n = 3, nFilter 2, base 1. Cumulated counts a: 51 46 45 43 40; ratios
    // 6/(4*45), 26/(5*43), 27/(6*40): the second wins.
    engine.nExtension = 3;
    engine.nFilter = 2;
    engine.zaehlrohrBase = 1;
    const int a[] = {5, 1, 2, 3, 40, 9};
    const int b[] = {6, 20, 1, 8, 7};
    for (int k = 0; k < 6; k++) engine.zaehlrohr[k][0] = a[k];
    for (int k = 0; k < 5; k++) engine.zaehlrohr[k][1] = b[k];
    engine.evalZaehlrohr();
    EXPECT_EQ(engine.nExtension, 2);
    const int aAfter[] = {51, 0, 0, 0, 0, 9};
    const int bAfter[] = {0, 0, 0, 8, 7};
    for (int k = 0; k < 6; k++) EXPECT_EQ(engine.zaehlrohr[k][0], aAfter[k]) << "a " << k;
    for (int k = 0; k < 5; k++) EXPECT_EQ(engine.zaehlrohr[k][1], bAfter[k]) << "b " << k;

    // Equal ratios (3/3 and 6/6) keep the shorter extension.
    VelkCompute tie;
    tie.nExtension = 2;
    tie.nFilter = 0;
    tie.zaehlrohr[3][0] = 3;
    tie.zaehlrohr[0][1] = 3;
    tie.zaehlrohr[1][1] = 3;
    tie.evalZaehlrohr();
    EXPECT_EQ(tie.nExtension, 1);

    // Without extension only the first two counts are summed.
    VelkCompute none;
    none.nExtension = 0;
    none.zaehlrohr[0][0] = 3;
    none.zaehlrohr[1][0] = 4;
    none.zaehlrohr[2][0] = 5;
    none.evalZaehlrohr();
    EXPECT_EQ(none.nExtension, 0);
    EXPECT_EQ(none.zaehlrohr[0][0], 7);
    EXPECT_EQ(none.zaehlrohr[1][0], 0);
    EXPECT_EQ(none.zaehlrohr[2][0], 5);
}
