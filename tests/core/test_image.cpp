#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include <velk/velk.h>
#include "periodic.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytes(const VelkImage& image, int n) {
    return Bytes(image.data, image.data + n);
}

}  // namespace

TEST(ImageOwnership, PaddedCallerBufferIsCopiedCompactlyAndNeverFreed) {
    // 3 x 2 grey pixels in rows of 5 bytes; the padding holds 99.
    Bytes buffer = {1, 2, 3, 99, 99, 4, 5, 6, 99, 99};
    {
        VelkImage borrowed(3, 2, 5, buffer.data());
        EXPECT_EQ(borrowed.ownedData, nullptr);
        VelkImage copy(borrowed);
        const VelkImage& alias = copy;
        copy = alias;
        EXPECT_EQ(copy.bytesPerLine, 3);
        EXPECT_EQ(bytes(copy, 6), (Bytes{1, 2, 3, 4, 5, 6}));
        const VelkImage& self = borrowed;
        borrowed = self;  // becomes an owning copy of what it showed
        EXPECT_NE(borrowed.data, buffer.data());
        EXPECT_EQ(bytes(borrowed, 6), bytes(copy, 6));
        VelkImage(3, 2, 5, buffer.data()).clear(300);  // the low byte, padding untouched
    }
    EXPECT_EQ(buffer, (Bytes{44, 44, 44, 99, 99, 44, 44, 44, 99, 99}));
}

TEST(ImageOwnership, SetSizeTransitions) {
    Bytes buffer(12, 5);
    VelkImage image(2, 2, 3, 6, buffer.data());
    image.setSize(4, 3, 1);  // borrowing -> owning; the caller's buffer is left alone
    EXPECT_NE(image.ownedData, nullptr);
    EXPECT_EQ(image.data, image.ownedData);
    EXPECT_EQ(image.bytesPerLine, 4);
    EXPECT_EQ(buffer, Bytes(12, 5));
    image.setSize(0, 3, 1);  // owning -> empty
    EXPECT_EQ(image.ownedData, nullptr);
    EXPECT_EQ(image.data, nullptr);
    image.setSize(-2, 5, 1);  // stays empty, the fields keep the values, row loops do nothing
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, -2);
    image.clear(1);
    VelkImage fresh(4, 2, 3, 100, nullptr);  // no buffer: owning, the stride ignored
    EXPECT_NE(fresh.ownedData, nullptr);
    EXPECT_EQ(fresh.bytesPerLine, 12);
}

TEST(ImageFill, CreateRandomDrawsOneValuePerByte) {
    VelkImage a(16, 16), b(16, 16);
    a.createRandom(1, 5);
    b.createRandom(1, 5);
    EXPECT_EQ(bytes(a, 256), bytes(b, 256));
    int white = 0;
    for (unsigned char v : bytes(a, 256)) {
        ASSERT_TRUE(v == 0 || v == 255);
        white += v == 255;
    }
    EXPECT_GT(white, 80);
    EXPECT_LT(white, 176);

    // Grey noise is r * 255.9999 per channel byte. Seed 0 continues the
    // sequence, and an empty image draws nothing from it.
    VelkImage grey(5, 3, 3), empty;
    srand48(42);
    empty.createRandom(0, 0);
    grey.createRandom(0, 0);
    srand48(42);
    for (int i = 0; i < 45; i++) EXPECT_EQ(grey.data[i], int(drand48() * 255.9999)) << i;
}

TEST(ImageSampling, PeriodicWithTheLastColumnAndRowRepeatingTheFirst) {
    // 4 x 3 ramp 10 x + 100 y: the periods are 3 and 2, so -0.5 wraps to
    // width - 1.5. Where no wrapped value exists the result is 0 and nothing is read.
    VelkImage image(4, 3);
    for (int k = 0; k < 12; k++) image.data[k] = 10 * (k % 4) + 100 * (k / 4);
    const struct {
        float x, y;
        int interp, interpConst;
    } cases[] = {{3, 0, 0, 0},          {0, 2, 0, 0},         {3, 2, 0, 0},
                 {-1, -1, 120, 120},    {1.5f, 0.5f, 65, 10}, {1.25f, 0, 12, 10},
                 {7.5f, -3.5f, 65, 10}, {-0.5f, 0, 25, 20},   {NAN, 0, 0, 0},
                 {0, INFINITY, 0, 0},   {-INFINITY, 0, 0, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(image.interp(c.x, c.y), c.interp) << c.x << ", " << c.y;
        EXPECT_EQ(image.interpConst(c.x, c.y), c.interpConst) << c.x << ", " << c.y;
    }
    // A 2 x 2 image wraps everything into its first cell; a single row has no period.
    unsigned char pixels[4] = {10, 20, 30, 40};
    VelkImage small(2, 2, 2, pixels), line(5, 1);
    line.clear(9);
    EXPECT_EQ(small.interpConst(1.5f, 1.5f), 10);
    EXPECT_EQ(small.interp(1.5f, 0.5f), 25);
    EXPECT_EQ(line.interp(1, 0), 0);
    EXPECT_EQ(line.interpConst(1, 0), 0);
}

TEST(ImageSampling, PeriodicWrapMatchesRepeatedStepsForWholePeriods) {
    // The wrap takes a shortcut for far-out values; it must round exactly as the
    // plain loop does.
    srand48(11);
    for (float period : {1.0f, 2.0f, 31.0f, 95.0f, 1023.0f}) {
        for (int k = 0; k < 2000; k++) {
            float v = static_cast<float>((drand48() - 0.5) * 200.0 * period);
            if (k % 3 == 0) v = std::nextafter(std::floor(v / period) * period, 0.0f);
            float loop = v, wrapped = v;
            while (loop < 0.0f) loop += period;
            while (loop >= period) loop -= period;
            ASSERT_TRUE(velk::wrapPeriodic(wrapped, period));
            ASSERT_EQ(wrapped, loop) << "v = " << v << ", period = " << period;
        }
    }
    float far = 1e30f;  // beyond 2^24 the loop would stall; the wrap still ends
    EXPECT_TRUE(velk::wrapPeriodic(far, 7.0f));
    EXPECT_TRUE(far >= 0.0f && far < 7.0f) << far;
}
