#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "periodic.h"
#include "velk/velk.h"

TEST(ImageOwnership, PaddedCallerBufferIsCopiedCompactlyAndNeverFreed) {
    // 3 x 2 grey pixels in rows of 5 bytes; the padding holds 99.
    std::vector<unsigned char> buffer = {1, 2, 3, 99, 99, 4, 5, 6, 99, 99};
    {
        VelkImage borrowed(3, 2, 5, buffer.data());
        EXPECT_EQ(borrowed.ownedData, nullptr);
        EXPECT_EQ(borrowed.data, buffer.data());
        EXPECT_EQ(borrowed.nChannels, 1);

        VelkImage copy(borrowed);
        EXPECT_NE(copy.data, buffer.data());
        EXPECT_EQ(copy.bytesPerLine, 3);
        EXPECT_EQ(std::vector<unsigned char>(copy.data, copy.data + 6),
                  (std::vector<unsigned char>{1, 2, 3, 4, 5, 6}));

        borrowed.clear(7);  // padding stays untouched
        EXPECT_EQ(buffer, (std::vector<unsigned char>{7, 7, 7, 99, 99, 7, 7, 7, 99, 99}));
    }
    // Both images are gone; the caller's buffer is still ours to use.
    EXPECT_EQ(buffer[3], 99);
}

TEST(ImageOwnership, SetSizeTransitions) {
    std::vector<unsigned char> buffer(12, 5);
    VelkImage image(2, 2, 3, 6, buffer.data());
    image.setSize(4, 3, 1);  // borrowing -> owning; caller's buffer untouched
    EXPECT_NE(image.ownedData, nullptr);
    EXPECT_EQ(image.data, image.ownedData);
    EXPECT_EQ(image.bytesPerLine, 4);
    EXPECT_EQ(buffer, std::vector<unsigned char>(12, 5));

    image.setSize(0, 3, 1);  // owning -> empty
    EXPECT_EQ(image.ownedData, nullptr);
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 3);

    image.setSize(-2, 5, 1);  // negative sizes stay empty, fields keep the values
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, -2);
    image.clear(1);  // every row loop does nothing
}

TEST(ImageOwnership, NullBufferConstructorsOwnAndIgnoreTheStride) {
    VelkImage a(4, 2, 100, nullptr);
    EXPECT_NE(a.ownedData, nullptr);
    EXPECT_EQ(a.bytesPerLine, 4);
    VelkImage b(4, 2, 3, 100, nullptr);
    EXPECT_EQ(b.bytesPerLine, 12);
    EXPECT_EQ(b.nChannels, 3);
}

TEST(ImageOwnership, AssignmentCopiesAndSelfAssignmentKeepsContent) {
    VelkImage a(3, 3, 3);
    a.createRandom(0, 4);
    std::vector<unsigned char> before(a.data, a.data + 27);
    VelkImage b;
    b = a;
    EXPECT_EQ(std::vector<unsigned char>(b.data, b.data + 27), before);
    a = a;
    EXPECT_EQ(std::vector<unsigned char>(a.data, a.data + 27), before);

    std::vector<unsigned char> buffer = {9, 8, 0, 7, 6, 0};
    VelkImage borrowed(2, 2, 3, buffer.data());
    borrowed = borrowed;  // becomes an owning copy of what it showed
    EXPECT_NE(borrowed.data, buffer.data());
    EXPECT_EQ(std::vector<unsigned char>(borrowed.data, borrowed.data + 4),
              (std::vector<unsigned char>{9, 8, 7, 6}));
}

TEST(ImageFill, ClearKeepsTheLowByte) {
    VelkImage image(3, 2, 3);
    image.clear(300);
    for (int i = 0; i < 18; i++) EXPECT_EQ(image.data[i], 44);
}

TEST(ImageFill, CreateRandomIsReproducibleAndInRange) {
    VelkImage a(16, 16), b(16, 16);
    a.createRandom(1, 5);
    b.createRandom(1, 5);
    EXPECT_EQ(std::vector<unsigned char>(a.data, a.data + 256),
              std::vector<unsigned char>(b.data, b.data + 256));
    int white = 0;
    for (int i = 0; i < 256; i++) {
        ASSERT_TRUE(a.data[i] == 0 || a.data[i] == 255);
        white += a.data[i] == 255;
    }
    EXPECT_GT(white, 80);
    EXPECT_LT(white, 176);

    // Grey noise: every channel byte is its own draw of r * 255.9999.
    VelkImage grey(5, 3, 3);
    grey.createRandom(0, 42);
    srand48(42);
    for (int i = 0; i < 45; i++) {
        EXPECT_EQ(grey.data[i], static_cast<int>(drand48() * 255.9999)) << i;
    }
}

TEST(ImageFill, CreateRandomWithSeedZeroContinuesAndEmptyImageDrawsNothing) {
    VelkImage empty;
    srand48(9);
    empty.createRandom(0, 0);
    double next = drand48();
    srand48(9);
    EXPECT_EQ(next, drand48());

    VelkImage a(8, 8), b(8, 8);
    a.createRandom(0, 3);
    b.createRandom(0, 0);  // continues the sequence: different noise
    EXPECT_NE(std::vector<unsigned char>(a.data, a.data + 64),
              std::vector<unsigned char>(b.data, b.data + 64));
}

class ImageSampling : public testing::Test {
  protected:
    // 4 x 3 ramp: value = 10 * x + 100 * y.
    void SetUp() override {
        for (int y = 0; y < 3; y++)
            for (int x = 0; x < 4; x++) image.data[y * 4 + x] = 10 * x + 100 * y;
    }
    VelkImage image{4, 3};
};

TEST_F(ImageSampling, LastColumnAndRowRepeatTheFirst) {
    EXPECT_EQ(image.interp(3, 0), image.interp(0, 0));
    EXPECT_EQ(image.interp(0, 2), image.interp(0, 0));
    EXPECT_EQ(image.interpConst(3, 2), 0);
    EXPECT_EQ(image.interpConst(-1, -1), image.data[1 * 4 + 2]);
}

TEST_F(ImageSampling, BilinearInsideAndWrappedFromBelow) {
    EXPECT_EQ(image.interp(1.5f, 0.5f), 65);
    EXPECT_EQ(image.interp(1.25f, 0), 12);
    // -0.5 wraps to width - 1.5 = 2.5: between columns 2 and 3.
    EXPECT_EQ(image.interp(-0.5f, 0), 25);
    EXPECT_EQ(image.interp(-0.5f, 0), image.interp(2.5f, 0));
    EXPECT_EQ(image.interp(7.5f, -3.5f), image.interp(1.5f, 0.5f));
}

TEST_F(ImageSampling, UnwrappableInputsGiveZeroInsteadOfReadingOutside) {
    EXPECT_EQ(image.interp(NAN, 0), 0);
    EXPECT_EQ(image.interp(0, INFINITY), 0);
    EXPECT_EQ(image.interpConst(-INFINITY, 0), 0);
    EXPECT_EQ(image.interp(3.0e12f, 1.0f), image.interp(std::fmod(3.0e12f, 3.0f), 1.0f));
    VelkImage line(5, 1);
    line.clear(9);
    EXPECT_EQ(line.interp(1, 0), 0);
    EXPECT_EQ(line.interpConst(1, 0), 0);
}

TEST(ImageSamplingSmall, TwoByTwoWrapsEverythingIntoTheFirstCell) {
    unsigned char pixels[4] = {10, 20, 30, 40};
    VelkImage image(2, 2, 2, pixels);
    EXPECT_EQ(image.interpConst(1.5f, 1.5f), 10);
    EXPECT_EQ(image.interp(0.5f, 0.5f), 25);
    EXPECT_EQ(image.interp(1.5f, 0.5f), 25);
}

TEST(PeriodicWrap, MatchesRepeatedStepsForWholePeriods) {
    // The wrap takes a shortcut for far-out values; it must round exactly as the
    // plain loop does.
    srand48(11);
    for (float period : {1.0f, 2.0f, 31.0f, 95.0f, 1023.0f}) {
        for (int k = 0; k < 2000; k++) {
            float v = static_cast<float>((drand48() - 0.5) * 200.0 * period);
            if (k % 3 == 0) v = std::nextafter(std::floor(v / period) * period, 0.0f);
            float loop = v;
            while (loop < 0.0f) loop += period;
            while (loop >= period) loop -= period;
            float wrapped = v;
            ASSERT_TRUE(velk::wrapPeriodic(wrapped, period));
            ASSERT_EQ(wrapped, loop) << "v = " << v << ", period = " << period;
        }
    }
    float tiny = -1e-8f;
    ASSERT_TRUE(velk::wrapPeriodic(tiny, 31.0f));
    EXPECT_EQ(tiny, 0.0f);  // -1e-8 + 31 rounds to 31, which wraps to 0
    float far = 1e30f;
    EXPECT_TRUE(velk::wrapPeriodic(far, 7.0f));
    EXPECT_GE(far, 0.0f);
    EXPECT_LT(far, 7.0f);
}
