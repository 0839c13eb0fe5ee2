#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"

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

// useEuler installs the midpoint rule on purpose; useRK43 takes the tolerance
// last; both keep the normalisation.
TEST(ComputeSettings, IntegratorChoiceKeepsTheNormalisation) {
    VelkCompute engine;
    engine.setNormalization(0.25f);
    engine.useEuler();
    ASSERT_NE(dynamic_cast<Midpoint*>(engine.backward), nullptr);
    EXPECT_EQ(engine.backward->normalization, 0.25f);
    engine.useRK43(2.0f, 0.25f, 9.0f, 0.01f);
    auto* rk = dynamic_cast<RK43*>(engine.backward);
    ASSERT_NE(rk, nullptr);
    EXPECT_EQ((std::vector<float>{rk->initialStep, rk->minStep, rk->maxStep, rk->tolerance,
                                  rk->normalization, rk->direction}),
              (std::vector<float>{2.0f, 0.25f, 9.0f, 0.01f, 0.25f, -1.0f}));
}

TEST(ComputeSettings, StepCountsFromFilterAndExtensionLength) {
    // kernel, L, h, nFilter, nExtension: rounded to the nearest step, and up to a
    // multiple of 6 for the cubic kernel.
    const float cases[][5] = {{1, 20, 1, 20, 80}, {0, 2.5f, 1, 3, 80},   {0, 2.49f, 1, 2, 80},
                              {1, 10, 2, 5, 40},  {2, 20, 1, 24, 80},    {2, 18, 1, 18, 80},
                              {2, 1, 1, 6, 80},   {2, 30, 0.5f, 60, 160}};
    VelkVectorField field;
    circleField(field, 5);
    VelkImage texture(8, 8);
    for (const auto& c : cases) {
        VelkCompute engine;
        engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(c[0]));
        engine.setFilterLength(c[1]);
        engine.stepSize = c[2];
        engine.start(&field, &texture);
        EXPECT_EQ(engine.nFilter, c[3]) << "L " << c[1] << " h " << c[2];
        EXPECT_EQ(engine.nExtension, c[4]) << "L " << c[1] << " h " << c[2];
        EXPECT_EQ(engine.nTotal, c[3] + c[4]);
        engine.stop();
    }
}

TEST(ComputeDriver, MaskOfTheWrongSizeFailsSilentlyAndTouchesNothing) {
    VelkVectorField field;
    circleField(field, 9);
    VelkImage texture(16, 16), output(3, 2), seedMap(4, 4), mask(9, 8);
    texture.createRandom(0, 1);
    output.clear(77);
    seedMap.clear(55);
    for (int verbosity : {0, 1}) {
        velktest::MessageCapture capture(verbosity);
        VelkCompute engine;
        EXPECT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 0);
        EXPECT_EQ(bytesOf(output), std::vector<unsigned char>(6, 77));
        EXPECT_EQ(bytesOf(seedMap), std::vector<unsigned char>(16, 55));
        EXPECT_TRUE(capture.errors().empty());
        EXPECT_EQ(capture.infos(),
                  std::vector<std::string>(verbosity,
                                           "VELK info: field and mask must have the same size"));
    }
}

TEST(ComputeDriver, FilterLengthBelowHalfAStepCopiesTheInput) {
    VelkVectorField field;
    circleField(field, 9);
    // A borrowed RGB texture with padded rows: the copy is compact.
    std::vector<unsigned char> buffer(5 * 20);
    for (std::size_t i = 0; i < buffer.size(); i++) buffer[i] = static_cast<unsigned char>(i * 7);
    VelkImage texture(6, 5, 3, 20, buffer.data()), output, seedMap, mask(9, 9);
    mask.clear(9);
    VelkCompute engine;
    engine.setFilterLength(0.49f);
    ASSERT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 1);
    EXPECT_EQ(engine.numFieldLines, 0);
    EXPECT_EQ(output.bytesPerLine, 18);
    EXPECT_EQ(bytesOf(output), bytesOf(texture));
    EXPECT_EQ(bytesOf(seedMap), std::vector<unsigned char>(30, 1));
}

// A zero field traces nothing; an unknown kernel traces every pixel (nothing
// is ever hit) but accumulates nothing. Both give a black image.
TEST(ComputeDriver, NothingAccumulatedGivesABlackImage) {
    VelkVectorField circle, zero(7, 7, nullptr);
    circleField(circle, 9);
    for (int i = 0; i < 2 * 49; i++) zero.data[i] = 0.0f;
    VelkImage texture(24, 24), output;
    texture.createRandom(0, 2);
    for (int mode : {0, 1, 2, -1}) {  // -1: the unknown kernel on the circle
        velktest::MessageCapture capture(1);
        VelkCompute engine;
        engine.seedingMode = mode < 0 ? 1 : mode;
        if (mode < 0) engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(3));
        ASSERT_EQ(engine.compute(mode < 0 ? &circle : &zero, &texture, &output), 1);
        EXPECT_EQ(engine.numFieldLines, mode < 0 ? 24 * 24 : 0) << "mode " << mode;
        EXPECT_EQ(engine.totalHits, 0);
        EXPECT_EQ(bytesOf(output), std::vector<unsigned char>(24 * 24, 0));
        if (mode >= 0) continue;
        ASSERT_EQ(capture.infos().size(), 4u);
        EXPECT_EQ(capture.infos()[0],
                  "VELK info: computing LIC image (L=20, filter=unknown, mask=1x1)");
        const std::string time = capture.infos()[3];
        EXPECT_EQ(time.rfind("VELK info: time for LIC computation = ", 0), 0u) << time;
        EXPECT_EQ(time.substr(time.size() - 4), " sec");
    }
}

// Kernel weights sum to the divisor, so a constant texture stays constant
// wherever a line reached; the scan and offset orders reach every pixel.
TEST(ComputeDriver, ConstantTextureStaysConstant) {
    VelkVectorField circle;
    circleField(circle, 17);
    for (int combination = 0; combination < 72; combination++) {
        const int channels = combination % 2 ? 3 : 1;
        const auto lookup = static_cast<VelkCompute::InterpolationMethod>(combination / 2 % 2);
        const auto kernel = static_cast<VelkCompute::FilterKernel>(combination / 4 % 3);
        const int mode = combination / 12 % 3;
        const bool midpoint = combination / 36;
        SCOPED_TRACE(::testing::Message()
                     << "channels " << channels << " lookup " << lookup << " kernel " << kernel
                     << " mode " << mode << " midpoint " << midpoint);
        VelkImage texture(40, 32, channels), output;
        texture.clear(173);
        VelkCompute engine;
        engine.setInterpolationMethod(lookup);
        engine.setFilterKernel(kernel);
        engine.setFilterLength(7.0f);
        engine.seedingMode = mode;
        if (midpoint) engine.useEuler();
        ASSERT_EQ(engine.compute(&circle, &texture, &output), 1);
        ASSERT_EQ(output.nChannels, channels);
        std::size_t reached = 0;
        for (unsigned char b : bytesOf(output)) {
            ASSERT_TRUE(b == 173 || b == 0) << int(b);
            reached += b == 173;
        }
        EXPECT_GE(reached, 40u * 32 * channels * (mode == 2 ? 9 : 10) / 10);
    }
}

// Channels are convolved independently along the same lines: each channel of
// a colour LIC is the grey LIC of that channel, whatever the channel count.
TEST(ComputeDriver, ChannelsAreConvolvedLikeGreyTextures) {
    VelkVectorField field;
    field.setSize(17, 17);
    field.setCircle(0.3f);
    for (int run = 0; run < 12; run++) {
        const int channels = 2 + run % 2, w = 37, h = 29;
        VelkImage colour(w, h, channels), output, grey(w, h), greyOutput;
        colour.createRandom(0, run);
        VelkCompute engine;
        engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(run / 2 % 3));
        engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(run / 6));
        engine.setFilterLength(9.0f);
        engine.setNumSubPixels(2);
        ASSERT_EQ(engine.compute(&field, &colour, &output), 1);
        for (int ch = 0; ch < channels; ch++) {
            for (int i = 0; i < w * h; i++) grey.data[i] = colour.data[i * channels + ch];
            ASSERT_EQ(engine.compute(&field, &grey, &greyOutput), 1);
            for (int i = 0; i < w * h; i++) {
                ASSERT_EQ(output.data[i * channels + ch], greyOutput.data[i])
                    << "run " << run << " channel " << ch << " pixel " << i;
            }
        }
    }
}

// Each seeded pixel holds the mask value at the node cell of its seed, the
// pixel centre in field coordinates; the others keep 1.
TEST(ComputeDriver, SeedMapRecordsTheMaskAtTheSeeds) {
    const int fw = 12, fh = 10, w = 30, h = 22;
    VelkVectorField field;
    field.setSize(fw, fh);
    field.setCircle(0.4f);
    VelkImage mask(fw, fh), texture(w, h), output, seedMap;
    for (int i = 0; i < fw * fh; i++) mask.data[i] = static_cast<unsigned char>(2 + (i * 37) % 250);
    texture.createRandom(0, 4);
    VelkCompute engine;
    engine.seedingMode = 0;
    ASSERT_EQ(engine.compute(&field, &texture, &output, &mask, &seedMap), 1);
    ASSERT_EQ(seedMap.width * seedMap.height, w * h);
    int seeded = 0;
    for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
            const int value = seedMap.data[y * w + x];
            if (value == 1) continue;
            seeded++;
            const int i =
                static_cast<int>((x + 0.5f) * (1.0f / (static_cast<float>(w) / (fw - 1))));
            const int j =
                static_cast<int>((y + 0.5f) * (1.0f / (static_cast<float>(h) / (fh - 1))));
            EXPECT_EQ(value, mask.data[j * fw + i]) << "pixel " << x << ", " << y;
        }
    }
    EXPECT_EQ(seeded, engine.numFieldLines);
    EXPECT_LT(seeded, w * h);
}

TEST(Zaehlrohr, PicksTheExtensionWithTheBestRatio) {
    struct Case {
        int nExtension, nFilter, base;
        std::vector<int> a, b, aAfter, bAfter;
        int chosen;
    };
    const Case cases[] = {
        // Cumulated a: 51 46 45 43 40; ratios 6/(4*45), 26/(5*43), 27/(6*40).
        {3, 2, 1, {5, 1, 2, 3, 40, 9}, {6, 20, 1, 8, 7}, {51, 0, 0, 0, 0, 9}, {0, 0, 0, 8, 7}, 2},
        // Equal ratios 3/3 and 6/6 keep the shorter extension.
        {2, 0, 0, {0, 0, 0, 3}, {3, 3}, {3, 0, 0, 0}, {0, 0}, 1},
        // Without extension only the first two counts are summed.
        {0, 0, 0, {3, 4, 5}, {}, {7, 0, 5}, {}, 0},
    };
    for (const Case& c : cases) {
        VelkCompute engine;
        engine.nExtension = c.nExtension;
        engine.nFilter = c.nFilter;
        engine.zaehlrohrBase = c.base;
        for (std::size_t k = 0; k < c.a.size(); k++) engine.zaehlrohr[k][0] = c.a[k];
        for (std::size_t k = 0; k < c.b.size(); k++) engine.zaehlrohr[k][1] = c.b[k];
        engine.evalZaehlrohr();
        EXPECT_EQ(engine.nExtension, c.chosen) << "n " << c.nExtension;
        for (std::size_t k = 0; k < c.a.size(); k++) EXPECT_EQ(engine.zaehlrohr[k][0], c.aAfter[k]);
        for (std::size_t k = 0; k < c.b.size(); k++) EXPECT_EQ(engine.zaehlrohr[k][1], c.bAfter[k]);
    }
}
