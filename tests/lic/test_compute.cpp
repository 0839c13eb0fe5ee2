#include <gtest/gtest.h>

#include <velk/velk.h>
#include "TestSupport.h"

// Kernel weights sum to the divisor, so a constant texture stays constant
// wherever a line reached; the scan and offset orders reach every pixel.
TEST(ComputeDriver, ConstantTextureStaysConstant) {
    VelkVectorField circle;
    circle.setSize(17, 17);
    circle.setCircle(0.0f);
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
        for (int b : velktest::bytesOf(output)) {
            ASSERT_TRUE(b == 173 || b == 0) << b;
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
