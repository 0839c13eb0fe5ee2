#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <velk/velk.h>

namespace {

const float kNan = std::numeric_limits<float>::quiet_NaN();

void uniformField(VelkVectorField& field, int n, float vx, float vy) {
    const float zero[2][2] = {}, b[2] = {vx, vy};
    field.setSize(n, n);
    field.setLinear(zero, b);
}

// Hands out a fixed list of points with fixed statuses (the last one repeats),
// so that output points can be placed where no real integrator would put them.
class ScriptedIntegrator : public VelkIntegrator {
  public:
    std::vector<Vec2f> path;
    std::vector<int> statuses;
    std::size_t step = 0;
    Vec2f point{0.0f, 0.0f};

    ScriptedIntegrator(std::vector<Vec2f> p, std::vector<int> s) : path(p), statuses(s) {}
    void init(const Vec2f&, const Vec2f&) override { step = 0; }
    void init(const Vec2f& p, const Vec2f& v, float) override { init(p, v); }
    const Vec2f& next(int& s) override {
        const std::size_t k = std::min(step++, path.size() - 1);
        s = statuses[k];
        return point = path[k];
    }
    const Vec2f& next(float&, int& s) override { return next(s); }
};

}  // namespace

TEST(TextureLookup, HonoursRowStrideChannelsAndPeriod) {
    // 3 x 3 grey pixels in rows of 5 bytes, 3 x 2 RGB pixels in rows of 11: the
    // padding (99, 7) is never read. The period is width - 1 and height - 1.
    unsigned char grey[] = {10, 20, 30, 99, 99, 40, 50, 60, 99, 99, 70, 80, 90, 99, 99};
    unsigned char rgb[] = {10, 100, 200, 20, 110, 210, 30, 120, 220, 7, 7,
                           50, 140, 240, 60, 150, 250, 70, 160, 0,   7, 7};
    unsigned char one[] = {5};
    VelkImage g(3, 3, 5, grey), c(3, 2, 3, 11, rgb), single(1, 1, 1, one);
    using VC = VelkCompute;
    struct Case {
        void (*lookup)(VelkImage*, float, float, int*);
        VelkImage* image;
        float x, y;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {VC::getPixelBilinear1, &g, 0.5f, 0.5f, {30}},
        {VC::getPixelBilinear1, &g, 2.0f, 0.0f, {10}},  // column 2 repeats column 0
        {VC::getPixelBilinear1, &g, -0.5f, 0.0f, {25}},
        {VC::getPixelBilinear1, &g, 0.0f, 3.25f, {47}},
        {VC::getPixelConst1, &g, 1.9f, 1.1f, {50}},
        {VC::getPixelConst1, &g, 2.5f, -1.0f, {40}},
        {VC::getPixelBilinearN, &c, 0.5f, 0.5f, {35, 125, 225}},
        {VC::getPixelBilinearN, &c, 1.5f, 0.75f, {55, 145, 147}},
        {VC::getPixelConstN, &c, 3.7f, 1.2f, {20, 110, 210}},
        // Far out still lands on the right texel; nothing to wrap into gives 0.
        {VC::getPixelConst1, &g, 2.0f * 1000001.0f + 1.5f, 0.0f, {20}},
        {VC::getPixelBilinear1, &g, kNan, 0.0f, {0}},
        {VC::getPixelConstN, &c, 0.0f, std::numeric_limits<float>::infinity(), {0, 0, 0}},
        {VC::getPixelBilinear1, &single, 0.0f, 0.0f, {0}},
    };
    for (const Case& t : cases) {
        std::vector<int> out(t.image->nChannels, -1);
        t.lookup(t.image, t.x, t.y, out.data());
        EXPECT_EQ(out, t.expected) << "case " << &t - cases;
    }
}

// Uniform field, one texture pixel per cell, xMax = yMax = 9.999, nFilter 2:
// records c+1 .. are output points while their own status is 0, though the
// line is traced two records further. Points just beyond a border wrap once
// onto the other side; points far outside count nowhere.
TEST(Sample, OutputPointsEndAtTheFirstInvalidRecordAndWrapOnce) {
    VelkVectorField field;
    uniformField(field, 11, 1.0f, 0.0f);
    VelkImage texture(10, 10);
    texture.clear(80);
    for (float extension : {20.0f, 0.0f}) {
        VelkCompute engine;
        delete engine.forward;
        delete engine.backward;
        engine.forward = new ScriptedIntegrator({{-0.25f, 5.5f},
                                                 {25.0f, 5.5f},
                                                 {10.25f, 5.5f},
                                                 {3.5f, -0.5f},
                                                 {1.5f, 1.5f},
                                                 {2.5f, 2.5f}},
                                                {0, 0, 0, 0, 1, 0});
        engine.backward = new ScriptedIntegrator({{5.5f, 5.5f}, {4.5f, 5.5f}}, {0, 1});
        engine.setFilterLength(2.0f);
        engine.extensionLength = extension;
        engine.start(&field, &texture);
        engine.sample(Vec2f{6.5f, 5.5f});
        // Seed 56; -0.25 -> 9.749 (59); 10.25 -> 0.251 (50); y -0.5 -> 9.499 (93).
        for (int p = 0; p < 100; p++) {
            const bool hit =
                p == 56 || (extension > 0 && (p == 59 || p == 50 || p == 93 || p == 55));
            EXPECT_EQ(engine.accum[2 * p], hit ? 1 : 0) << "pixel " << p << " M " << extension;
            EXPECT_EQ(engine.accum[2 * p + 1], hit ? 80 : 0) << "pixel " << p << " M " << extension;
        }
        engine.stop();
    }
}

// On a circulating field the image is smooth along the circles and noisy across
// them. A convolution running the wrong way along the records, or records
// landing on the wrong pixels, destroys the first property.
TEST(Sample, CircularFlowCorrelatesAlongTheFlowOnly) {
    const int size = 128;
    VelkVectorField field;
    field.setSize(33, 33);
    field.setCircle(0.0f);
    VelkImage texture(size, size), output;
    texture.createRandom(0, 17);
    for (int N : {1, 3}) {
        VelkCompute engine;
        engine.setNumSubPixels(N);
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
        auto correlation = [&](bool along) {
            double sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
            int count = 0;
            for (int y = 0; y < size; y++) {
                for (int x = 0; x < size; x++) {
                    const double dx = x + 0.5 - size / 2, dy = y + 0.5 - size / 2;
                    const double r = std::sqrt(dx * dx + dy * dy);
                    if (r < 16 || r > 56) continue;
                    const double ux = along ? -dy / r : dx / r, uy = along ? dx / r : dy / r;
                    const int x2 = static_cast<int>(std::floor(x + 0.5 + 2 * ux));
                    const int y2 = static_cast<int>(std::floor(y + 0.5 + 2 * uy));
                    const double a = output.data[y * size + x], b = output.data[y2 * size + x2];
                    sa += a, sb += b, saa += a * a, sbb += b * b, sab += a * b;
                    count++;
                }
            }
            const double cov = sab / count - sa / count * sb / count;
            const double va = saa / count - sa / count * sa / count;
            const double vb = sbb / count - sb / count * sb / count;
            return cov / std::sqrt(va * vb);
        };
        EXPECT_GT(correlation(true), 0.8) << "N " << N;
        EXPECT_LT(correlation(false), 0.4) << "N " << N;
    }
}

// Degenerate inputs: no access outside the buffers (the sanitizer build checks
// that) and no line, or a black or copied result.
TEST(Sample, DegenerateInputsStayInsideTheBuffers) {
    VelkVectorField circle, thin, field;
    circle.setSize(9, 9);
    circle.setCircle(0.0f);  // zero at node (4, 4)
    thin.setSize(1, 5);      // never read: no cell to interpolate in
    uniformField(field, 6, 0.3f, 0.7f);
    VelkImage texture(48, 40), empty, output;
    texture.clear(200);
    VelkCompute engine;
    engine.sample(Vec2f{1.0f, 1.0f});  // before start: no buffers
    engine.start(&circle, &texture);
    // Seeds on a zero node, not a number, outside the field, sub-pixels changed
    // after start(): no line.
    for (Vec2f seed : {Vec2f{4.0f, 4.0f}, Vec2f{kNan, 1.0f}, Vec2f{-1.0f, 2.0f}, Vec2f{2.0f, 8.5f}})
        engine.sample(seed);
    engine.setNumSubPixels(3);
    engine.sample(Vec2f{1.5f, 1.5f});
    engine.setNumSubPixels(1);
    EXPECT_EQ(engine.numFieldLines, 0);
    for (int i = 0; i < (48 * 40 + 1) * engine.cellStride; i++) ASSERT_EQ(engine.accum[i], 0);
    // The last node row and column are valid seeds (their neighbours are mirrored).
    engine.sample(Vec2f{8.0f, 8.0f});
    EXPECT_EQ(engine.numFieldLines, 1);
    engine.stop();

    ASSERT_EQ(engine.compute(&thin, &texture, &output), 1);
    EXPECT_EQ(engine.numFieldLines, 0);
    ASSERT_EQ(engine.compute(&field, &empty, &output), 1);
    EXPECT_EQ(output.width, 0);
    for (int n : {0, -2}) {
        engine.setNumSubPixels(n);
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
        EXPECT_EQ(engine.numFieldLines, 0);
        EXPECT_EQ(*std::max_element(output.data, output.data + 48 * 40), 0);
    }
    engine.setNumSubPixels(1);
    engine.setFilterLength(kNan);
    ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
    EXPECT_EQ(output.data[0], 200);
    // Absurd lengths are capped, not allocated.
    engine.setFilterLength(1e9f);
    engine.extensionLength = 1e30f;
    engine.start(&field, &texture);
    EXPECT_EQ(engine.nFilter, 1 << 17);
    EXPECT_EQ(engine.nExtension, 1 << 17);
    ASSERT_NE(engine.points, nullptr);
    engine.stop();
}
