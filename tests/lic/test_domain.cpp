#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>

#include <velk/velk.h>
#include "TestSupport.h"

// Orientation fields, periodic axes and no-data handling, by the properties
// their pictures must have.

namespace {

using Settings = std::function<void(VelkCompute&)>;
using Node = std::function<Vec2f(int, int)>;

void fill(VelkVectorField& field, const Node& f) {
    for (int j = 0; j < field.height; j++) {
        for (int i = 0; i < field.width; i++) {
            const Vec2f v = f(i, j);
            field.data[2 * (j * field.width + i)] = v.x;
            field.data[2 * (j * field.width + i) + 1] = v.y;
        }
    }
}

VelkImage noise(int width, int height) {
    VelkImage texture(width, height, 1);
    texture.createRandom(0, 7);
    return texture;
}

VelkImage licOf(VelkVectorField& field, VelkImage& texture, const Settings& settings) {
    VelkCompute engine;
    settings(engine);
    VelkImage output;
    EXPECT_EQ(engine.compute(&field, &texture, &output), 1);
    return output;
}

// Mean absolute difference of two one-channel pictures, b read shifted by
// (dx, dy) with wrap-around.
double meanDifference(const VelkImage& a, const VelkImage& b, int dx = 0, int dy = 0) {
    double sum = 0.0;
    for (int y = 0; y < a.height; y++) {
        for (int x = 0; x < a.width; x++) {
            const int bx = (x + dx) % a.width, by = (y + dy) % a.height;
            sum += std::abs(a.data[y * a.bytesPerLine + x] - b.data[by * b.bytesPerLine + bx]);
        }
    }
    return sum / (static_cast<double>(a.width) * a.height);
}

// Mean absolute difference of a and b (read shifted by dx) over the columns
// x0 .. x0 + 3.
double bandDifference(const VelkImage& a, const VelkImage& b, int dx, int dy, int x0) {
    double sum = 0.0;
    for (int y = 0; y < a.height; y++) {
        for (int x = x0; x < x0 + 4; x++) {
            const int bx = (x + dx) % a.width, by = (y + dy) % a.height;
            sum += std::abs(a.data[y * a.bytesPerLine + x] - b.data[by * b.bytesPerLine + bx]);
        }
    }
    return sum / (4.0 * a.height);
}

Vec2f vortex(int i, int j) {
    return {-(static_cast<float>(j) - 21.7f), static_cast<float>(i) - 24.3f};
}

}  // namespace

// v and -v are the same direction: negating any nodes changes nothing, for
// every integrator and thread count; the same flips in a vector field do.
TEST(Orientation, FlippingAnyNodesLeavesThePictureUnchanged) {
    VelkVectorField field(50, 44, nullptr), flipped(50, 44, nullptr);
    std::srand(3);
    fill(field, vortex);
    fill(flipped, [](int i, int j) {
        const Vec2f v = vortex(i, j);
        return std::rand() % 2 ? Vec2f{-v.x, -v.y} : v;
    });
    VelkImage texture = noise(200, 176);
    for (int scheme = 0; scheme < 2; scheme++) {
        for (int threads : {0, 2}) {
            SCOPED_TRACE(testing::Message() << "scheme " << scheme << " threads " << threads);
            const auto with = [&](bool orientation) {
                return [=](VelkCompute& e) {
                    if (scheme == 1) e.useEuler();
                    e.setThreads(threads);
                    e.setOrientation(orientation);
                };
            };
            const VelkImage oriented = licOf(flipped, texture, with(true));
            const VelkImage plain = licOf(field, texture, with(false));
            EXPECT_EQ(velktest::bytesOf(oriented),
                      velktest::bytesOf(licOf(field, texture, with(true))));
            // Traced as the unflipped vector field is, up to the sense of some
            // lines (which moves the traced points by rounding only).
            EXPECT_LT(meanDifference(oriented, plain), 1.0);
            EXPECT_GT(meanDifference(licOf(flipped, texture, with(false)), plain), 2.0);
        }
    }
}

// The nodes of a periodic axis are one period: rolling field and texture by
// whole nodes rolls the picture (not byte for byte: the seeds fall in another
// order), and the old edge leaves no seam. Three equal channels give the grey
// picture three times.
TEST(Periodic, RollingTheInputRollsThePictureWithoutASeam) {
    const int W = 48, H = 40, scale = 4;
    const auto waves = [&](int i, int j) {
        return Vec2f{std::sin(6.2831853f * static_cast<float>(j) / H) + 0.3f,
                     std::cos(6.2831853f * static_cast<float>(i) / W)};
    };
    VelkVectorField field(W, H, nullptr), rolled(W, H, nullptr);
    fill(field, waves);
    const VelkImage texture = noise(W * scale, H * scale);
    const struct {
        bool x, y;
        int kx, ky;
    } cases[] = {{true, true, 11, 7}, {true, false, 11, 0}, {false, false, 11, 7}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "periodic " << c.x << c.y);
        fill(rolled, [&](int i, int j) { return waves((i + c.kx) % W, (j + c.ky) % H); });
        VelkImage rolledTexture(texture.width, texture.height, 1),
            colour(texture.width, texture.height, 3);
        for (int y = 0; y < texture.height; y++) {
            for (int x = 0; x < texture.width; x++) {
                const unsigned char v = texture.data[y * texture.bytesPerLine + x];
                rolledTexture.data[y * rolledTexture.bytesPerLine + x] =
                    texture.data[((y + c.ky * scale) % texture.height) * texture.bytesPerLine +
                                 (x + c.kx * scale) % texture.width];
                for (int ch = 0; ch < 3; ch++)
                    colour.data[y * colour.bytesPerLine + 3 * x + ch] = v;
            }
        }
        const Settings settings = [=](VelkCompute& e) { e.setPeriodic(c.x, c.y); };
        VelkImage grey = texture;
        const VelkImage a = licOf(field, grey, settings);
        const VelkImage b = licOf(rolled, rolledTexture, settings);
        const double rolledDifference = meanDifference(b, a, c.kx * scale, c.ky * scale);
        const double unrelated = meanDifference(b, a);
        // The columns on both sides of the old left edge.
        const double seam =
            bandDifference(b, a, c.kx * scale, c.ky * scale, (W - c.kx) * scale - 2);
        if (!c.x) {
            EXPECT_GT(rolledDifference, 0.25 * unrelated);
            continue;
        }
        EXPECT_LT(rolledDifference, 0.25 * unrelated);
        EXPECT_LT(seam, 2.0 * rolledDifference);
        const VelkImage rgb = licOf(field, colour, settings);
        for (int y = 0; y < a.height; y++) {
            for (int x = 0; x < a.width; x++) {
                for (int ch = 0; ch < 3; ch++) {
                    ASSERT_EQ(rgb.data[y * rgb.bytesPerLine + 3 * x + ch],
                              a.data[y * a.bytesPerLine + x]);
                }
            }
        }
    }
}

// Up a small box, periodic across, lines run far beyond the closed top and
// bottom, and every column sees only its own texture column: rolling the
// texture across rolls the picture exactly, seam included.
TEST(Periodic, UpwardFlowRollsWithItsTextureAcrossTheSeam) {
    VelkVectorField field(6, 5, nullptr);
    fill(field, [](int, int) { return Vec2f{0.0f, 1.0f}; });
    VelkImage texture = noise(24, 20), rolledTexture(24, 20, 1);
    const int k = 8;  // whole blocks of the seeding pattern
    for (int y = 0; y < 20; y++) {
        for (int x = 0; x < 24; x++) {
            rolledTexture.data[y * rolledTexture.bytesPerLine + x] =
                texture.data[y * texture.bytesPerLine + (x + k) % 24];
        }
    }
    const Settings settings = [](VelkCompute& e) { e.setPeriodic(true, false); };
    const VelkImage a = licOf(field, texture, settings);
    const VelkImage b = licOf(field, rolledTexture, settings);
    EXPECT_EQ(meanDifference(b, a, k, 0), 0.0);
    EXPECT_GT(meanDifference(b, a), 1.0);
}

// A constant texture gives that constant wherever there is data: a hole (NaN
// and infinite nodes), a masked coast and the edges cut lines short, and the
// kernel is renormalised. Where no line comes the fill value stands, with
// weight 0.
TEST(NoData, ConstantTextureGivesAConstantPictureWhereverThereIsData) {
    const int W = 41, H = 33;
    VelkVectorField field(W, H, nullptr);
    fill(field, [](int i, int j) {
        if (i >= 24 && i < 32 && j >= 8 && j < 14) return Vec2f{NAN, 1.0f};
        if (i == 10 && j == 20) return Vec2f{INFINITY, 0.0f};
        return vortex(i, j);
    });
    VelkImage mask(W, H, 1);
    mask.clear(0);
    for (int j = 0; j < H; j++) {
        for (int i = 0; i < 4 + j / 4; i++) mask.data[j * mask.bytesPerLine + i] = 1;
    }
    VelkImage texture(160, 128, 3);
    texture.clear(100);
    for (int kernel = 0; kernel < 3; kernel++) {
        for (int threads : {0, 2}) {
            SCOPED_TRACE(testing::Message() << "kernel " << kernel << " threads " << threads);
            VelkCompute engine;
            engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(kernel));
            engine.setThreads(threads);
            if (kernel == 1) engine.useEuler();
            ASSERT_EQ(engine.setNoData(true, 7), 1);
            engine.setNoDataMask(&mask);
            VelkImage output;
            ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
            const VelkImage& weight = engine.getWeight();
            ASSERT_EQ(weight.width, output.width);
            int full = 0, cut = 0, none = 0;
            for (int y = 0; y < output.height; y++) {
                for (int x = 0; x < output.width; x++) {
                    const int w = weight.data[y * weight.bytesPerLine + x];
                    const unsigned char* p = output.data + y * output.bytesPerLine + 3 * x;
                    const int expected = w > 0 ? 100 : 7;
                    ASSERT_TRUE(p[0] == expected && p[1] == expected && p[2] == expected)
                        << x << "," << y << " weight " << w;
                    full += w == 255;
                    cut += w > 0 && w < 255;
                    none += w == 0;
                }
            }
            // The hole's inside, a pixel in the masked corner, a cut line near the edge.
            EXPECT_EQ(weight.data[44 * weight.bytesPerLine + 110], 0);
            EXPECT_EQ(weight.data[2 * weight.bytesPerLine + 2], 0);
            EXPECT_GT(full, 0);
            EXPECT_GT(cut, 0);
            EXPECT_GT(none, 400);
        }
    }
}

// A uniform flow across a closed box: lines are cut short at both ends, and
// the pixels within a kernel half-length of either edge receive part of the
// weight, those in the middle all of it.
TEST(NoData, LinesCutAtEitherEndReceivePartOfTheWeight) {
    VelkVectorField field(17, 9, nullptr);
    fill(field, [](int, int) { return Vec2f{1.0f, 0.0f}; });
    VelkImage texture = noise(64, 32), output;
    VelkCompute engine;
    engine.setNoData(true);
    ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
    const VelkImage& weight = engine.getWeight();
    const unsigned char* row = weight.data + 16 * weight.bytesPerLine;
    EXPECT_LT(row[0], 200);
    EXPECT_LT(row[63], 200);
    EXPECT_EQ(row[32], 255);
}

TEST(NoData, BadSettingsAreRefusedAndEmptyFieldsFilled) {
    velktest::MessageCapture messages;
    VelkVectorField field(20, 16, nullptr);
    fill(field, vortex);
    VelkImage texture = noise(40, 32), output;
    VelkCompute engine;
    EXPECT_EQ(engine.setNoData(true, 256), 0);
    EXPECT_EQ(engine.setNoData(true, -1), 0);
    EXPECT_FALSE(engine.getNoData());
    ASSERT_EQ(engine.setNoData(true, 255), 1);

    VelkImage small(19, 16, 1), colour(20, 16, 3);
    for (VelkImage* mask : {&small, &colour}) {
        mask->clear(0);
        engine.setNoDataMask(mask);
        EXPECT_EQ(engine.compute(&field, &texture, &output), 0);
    }
    EXPECT_EQ(messages.errors().size(), 4u) << messages.errorText();

    engine.setNoDataMask(nullptr);
    fill(field, [](int, int) { return Vec2f{NAN, NAN}; });
    ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
    for (int v : velktest::bytesOf(output)) ASSERT_EQ(v, 255);
    for (int v : velktest::bytesOf(engine.getWeight())) ASSERT_EQ(v, 0);
}
