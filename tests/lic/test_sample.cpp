#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "TestSupport.h"
#include "velk/velk.h"

namespace {

using Lookup = void (*)(VelkImage*, float, float, int*);

std::vector<int> lookup(Lookup f, VelkImage& image, float x, float y) {
    std::vector<int> out(image.nChannels, -1);
    f(&image, x, y, out.data());
    return out;
}

void uniformField(VelkVectorField& field, int n, float vx, float vy) {
    field.setSize(n, n);
    for (int i = 0; i < n * n; i++) {
        field.data[2 * i] = vx;
        field.data[2 * i + 1] = vy;
    }
}

// Hits and channel sums of one accumulation cell.
struct Cell {
    std::vector<int> hits;
    std::vector<long long> sums;
};

}  // namespace

TEST(TextureLookup, HonoursRowStrideChannelsAndPeriod) {
    // 3 x 3 grey pixels in rows of 5 bytes; the padding (99) must never be read.
    unsigned char grey[] = {10, 20, 30, 99, 99, 40, 50, 60, 99, 99, 70, 80, 90, 99, 99};
    VelkImage g(3, 3, 5, grey);
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, 0.5f, 0.5f), std::vector<int>{30});
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, 1.5f, 0.25f), std::vector<int>{32});
    // Period width - 1: column 2 repeats column 0, -0.5 lies between columns 1 and 2.
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, 2.0f, 0.0f), std::vector<int>{10});
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, -0.5f, 0.0f), std::vector<int>{25});
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, 0.0f, 3.25f), std::vector<int>{47});
    EXPECT_EQ(lookup(VelkCompute::getPixelConst1, g, 1.9f, 1.1f), std::vector<int>{50});
    EXPECT_EQ(lookup(VelkCompute::getPixelConst1, g, 2.5f, -1.0f), std::vector<int>{40});
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinearN, g, 1.5f, 0.25f), std::vector<int>{32});
    EXPECT_EQ(lookup(VelkCompute::getPixelConstN, g, 1.9f, 1.1f), std::vector<int>{50});

    // 3 x 2 RGB pixels in rows of 11 bytes.
    unsigned char rgb[] = {10, 100, 200, 20, 110, 210, 30, 120, 220, 7, 7,
                           50, 140, 240, 60, 150, 250, 70, 160, 0,   7, 7};
    VelkImage c(3, 2, 3, 11, rgb);
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinearN, c, 0.5f, 0.5f),
              (std::vector<int>{35, 125, 225}));
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinearN, c, 1.5f, 0.75f),
              (std::vector<int>{55, 145, 147}));
    EXPECT_EQ(lookup(VelkCompute::getPixelConstN, c, 1.7f, 0.2f), (std::vector<int>{20, 110, 210}));
    EXPECT_EQ(lookup(VelkCompute::getPixelConstN, c, 3.7f, 1.2f), (std::vector<int>{20, 110, 210}));

    // Nothing to wrap into: zeros, never a read outside the image.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, g, nan, 0.0f), std::vector<int>{0});
    EXPECT_EQ(lookup(VelkCompute::getPixelConstN, c, 0.0f, inf), (std::vector<int>{0, 0, 0}));
    unsigned char one[] = {5};
    VelkImage single(1, 1, 1, one);
    EXPECT_EQ(lookup(VelkCompute::getPixelBilinear1, single, 0.0f, 0.0f), std::vector<int>{0});
    // Far-out coordinates still land on the right texel.
    EXPECT_EQ(lookup(VelkCompute::getPixelConst1, g, 2.0f * 1000001.0f + 1.5f, 0.0f),
              std::vector<int>{20});
}

// A uniform field (1, 0) on 11 x 11 nodes over a 10 x 10 image: one texture
// pixel per step. From (6.5, 5.5) the valid points are x = 0.5 .. 9.5; with
// nFilter 2 the forward extension stops once the record two behind the newest
// one is invalid, so exactly the ten points of row 5 are output.
TEST(Sample, ExtensionStopsAtTheFirstInvalidOutputPoint) {
    VelkVectorField field;
    uniformField(field, 11, 1.0f, 0.0f);
    VelkImage texture(10, 10);
    texture.clear(60);
    for (bool midpoint : {false, true}) {
        for (float extension : {80.0f, 0.0f}) {
            VelkCompute engine;
            if (midpoint) engine.useEuler();
            engine.setFilterLength(2.0f);
            engine.extensionLength = extension;
            engine.start(&field, &texture);
            ASSERT_EQ(engine.nFilter, 2);
            engine.sample(Vec2f{6.5f, 5.5f});
            EXPECT_EQ(engine.numFieldLines, 1);
            for (int p = 0; p < 100; p++) {
                const int* cell = engine.accum + p * engine.cellStride;
                const bool expected = p / 10 == 5 && (extension > 0.0f || p % 10 == 6);
                EXPECT_EQ(cell[0], expected ? 1 : 0) << "pixel " << p << " midpoint " << midpoint;
                EXPECT_EQ(cell[1], expected ? 60 : 0) << "pixel " << p;
            }
            engine.stop();
        }
    }
}

// Hands out a fixed list of points with fixed statuses, so that output points
// can be placed where no real integrator would put them.
class ScriptedIntegrator : public VelkIntegrator {
  public:
    std::vector<Vec2f> path;
    std::vector<int> statuses;
    std::size_t step = 0;
    Vec2f point{0.0f, 0.0f};

    void init(const Vec2f&, const Vec2f&) override { step = 0; }
    void init(const Vec2f& p, const Vec2f& v, float) override { init(p, v); }
    const Vec2f& next(int& s) override {
        const std::size_t k = step < path.size() ? step : path.size() - 1;
        point = path[k];
        s = statuses[k];
        step++;
        return point;
    }
    const Vec2f& next(float&, int& s) override { return next(s); }
};

// Points just beyond a border wrap once onto the other side of the image;
// points far outside count nowhere. Uniform field, one texture pixel per cell,
// xMax = yMax = 9.999, nFilter 1, so records c+1 .. c+4 are output points.
TEST(Sample, RecordsWrapOnceOntoTheImage) {
    VelkVectorField field;
    uniformField(field, 11, 1.0f, 0.0f);
    VelkImage texture(10, 10);
    texture.clear(80);
    VelkCompute engine;
    auto* ahead = new ScriptedIntegrator;
    ahead->path = {{-0.25f, 5.5f}, {10.25f, 5.5f}, {3.5f, -0.5f}, {25.0f, 5.5f}, {1.5f, 1.5f}};
    ahead->statuses = {0, 0, 0, 0, 1};
    auto* behind = new ScriptedIntegrator;
    behind->path = {{5.5f, 5.5f}};
    behind->statuses = {1};
    delete engine.forward;
    delete engine.backward;
    engine.forward = ahead;
    engine.backward = behind;
    engine.setFilterLength(1.0f);
    engine.extensionLength = 4.0f;
    engine.start(&field, &texture);
    engine.sample(Vec2f{6.5f, 5.5f});
    // Seed 56; -0.25 -> 9.749 (59); 10.25 -> 0.251 (50); y -0.5 -> 9.499 (93).
    for (int p = 0; p < 100; p++) {
        const bool hit = p == 56 || p == 59 || p == 50 || p == 93;
        EXPECT_EQ(engine.accum[2 * p], hit ? 1 : 0) << "pixel " << p;
        EXPECT_EQ(engine.accum[2 * p + 1], hit ? 80 : 0) << "pixel " << p;
    }
    engine.stop();
}

TEST(Sample, ZeroOrInvalidSeedsTraceNothing) {
    VelkVectorField field;
    field.setSize(9, 9);
    field.setCircle(0.0f);  // zero at node (4, 4)
    VelkImage texture(16, 16);
    texture.createRandom(0, 1);
    VelkCompute engine;
    engine.sample(Vec2f{1.0f, 1.0f});  // before start: no buffers, nothing happens
    engine.start(&field, &texture);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (Vec2f seed :
         {Vec2f{4.0f, 4.0f}, Vec2f{nan, 1.0f}, Vec2f{-1.0f, 2.0f}, Vec2f{2.0f, 8.5f}}) {
        engine.sample(seed);
    }
    // Sub-pixels changed after start(): the cells were not sized for them.
    engine.setNumSubPixels(3);
    engine.sample(Vec2f{1.5f, 1.5f});
    engine.setNumSubPixels(1);
    EXPECT_EQ(engine.numFieldLines, 0);
    for (int i = 0; i < (16 * 16 + 1) * engine.cellStride; i++) ASSERT_EQ(engine.accum[i], 0);
    // The last node row and column are valid seeds (their neighbours are mirrored).
    engine.sample(Vec2f{8.0f, 8.0f});
    EXPECT_EQ(engine.numFieldLines, 1);
    engine.stop();
}

// The running-sum convolution against a direct weighted sum over an
// independently traced line: boxes of width 2n (box), two nested boxes of
// width n (triangle) and three nested boxes of width m = 2n/3 (cubic), ending
// at the record n ahead of the output point.
TEST(Sample, RunningSumsMatchADirectWeightedSum) {
    const int fieldSize = 17, w = 64, h = 48;
    VelkVectorField field;
    field.setSize(fieldSize, fieldSize);
    field.setCircle(0.3f);
    const Vec2f seeds[] = {{3.3f, 7.9f}, {12.25f, 4.5f}, {8.7f, 13.1f}, {15.5f, 1.2f}};
    for (int channels : {1, 3}) {
        VelkImage texture(w, h, channels);
        texture.createRandom(0, 21);
        for (int kernel : {0, 1, 2}) {
            for (int N : {1, 2}) {
                for (const Vec2f& seed : seeds) {
                    SCOPED_TRACE(::testing::Message()
                                 << "channels " << channels << " kernel " << kernel << " N " << N
                                 << " seed " << seed.x << ", " << seed.y);
                    VelkCompute engine;
                    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(kernel));
                    engine.setFilterLength(6.0f);
                    engine.extensionLength = 15.0f;
                    engine.setNumSubPixels(N);
                    engine.start(&field, &texture);
                    engine.sample(seed);
                    ASSERT_EQ(engine.numFieldLines, 1);
                    const int n = engine.nFilter, ext = engine.nExtension;

                    // Trace the line again, both ways, as far as the engine may have.
                    const int ix = static_cast<int>(seed.x), iy = static_cast<int>(seed.y);
                    const float fx = seed.x - ix, fy = seed.y - iy;
                    auto node = [&](int i, int j, int c) {
                        return field.data[2 * (j * fieldSize + i) + c];
                    };
                    float v[2];
                    for (int c = 0; c < 2; c++) {
                        v[c] = node(ix, iy, c) + (node(ix + 1, iy, c) - node(ix, iy, c)) * fx +
                               (node(ix, iy + 1, c) - node(ix, iy, c)) * fy +
                               fx * fy *
                                   (node(ix, iy, c) - node(ix, iy + 1, c) - node(ix + 1, iy, c) +
                                    node(ix + 1, iy + 1, c));
                    }
                    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1]);
                    const Vec2f direction = {v[0] / length, v[1] / length};
                    std::map<int, Vec2f> position;
                    std::map<int, int> status;
                    position[0] = seed;
                    for (int sign : {1, -1}) {
                        RK43 rk(0.001f, 4.0f, 0.5f, 15.0f, sign);
                        rk.setField(fieldSize, fieldSize, reinterpret_cast<Vec2f*>(field.data));
                        rk.stepSize = 2.0f / (engine.xScale + engine.yScale);
                        rk.init(seed, direction);
                        for (int k = 1; k <= n + ext; k++) {
                            int s;
                            position[sign * k] = rk.next(s);
                            status[sign * k] = s;
                        }
                    }
                    int ahead = 0, behind = 0;
                    while (ahead < ext && status[1 + ahead] == 0) ahead++;
                    while (behind < ext && status[-1 - behind] == 0) behind++;

                    auto T = [&](int k, int ch) {
                        int out[3];
                        VelkCompute::getPixelBilinearN(&texture, position[k].x * engine.xScale,
                                                       position[k].y * engine.yScale, out);
                        return static_cast<long long>(out[ch]);
                    };
                    const int m = 2 * n / 3;
                    const long long divisor = kernel == 0   ? 2 * n
                                              : kernel == 1 ? n * n
                                                            : 8LL * n * n * n / 27;
                    std::map<int, Cell> expected;
                    for (int i = -behind; i <= ahead; i++) {
                        const Vec2f p = position[i];
                        const int pixel = static_cast<int>(engine.xScale * p.x) +
                                          static_cast<int>(engine.yScale * p.y) * w;
                        const int sub = static_cast<int>(engine.xScale * N * p.x) % N +
                                        N * (static_cast<int>(engine.yScale * N * p.y) % N);
                        Cell& cell = expected[pixel];
                        cell.hits.resize(N * N);
                        cell.sums.resize(channels);
                        cell.hits[sub]++;
                        for (int ch = 0; ch < channels; ch++) {
                            long long total = 0;
                            if (kernel == 0) {
                                for (int k = i - n + 1; k <= i + n; k++) total += T(k, ch);
                            } else if (kernel == 1) {
                                for (int j = i + 1; j <= i + n; j++) {
                                    for (int k = j - n + 1; k <= j; k++) total += T(k, ch);
                                }
                            } else {
                                for (int l1 = i + n - m + 1; l1 <= i + n; l1++) {
                                    for (int l2 = l1 - m + 1; l2 <= l1; l2++) {
                                        for (int k = l2 - m + 1; k <= l2; k++) total += T(k, ch);
                                    }
                                }
                            }
                            cell.sums[ch] += total / divisor;
                        }
                    }

                    int checked = 0;
                    for (int p = 0; p < w * h; p++) {
                        const int* cell = engine.accum + p * engine.cellStride;
                        auto it = expected.find(p);
                        for (int s = 0; s < N * N; s++) {
                            ASSERT_EQ(cell[s], it == expected.end() ? 0 : it->second.hits[s])
                                << "pixel " << p;
                        }
                        for (int ch = 0; ch < channels; ch++) {
                            ASSERT_EQ(cell[N * N + ch],
                                      it == expected.end() ? 0 : it->second.sums[ch])
                                << "pixel " << p << " channel " << ch;
                        }
                        checked += it != expected.end();
                    }
                    EXPECT_EQ(checked, static_cast<int>(expected.size()));
                    EXPECT_GT(ahead + behind, ext / 2);
                    engine.stop();
                }
            }
        }
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
        const double along = correlation(true), across = correlation(false);
        EXPECT_GT(along, 0.8) << "N " << N;
        EXPECT_LT(across, 0.4) << "N " << N;
    }
}

// Inputs far outside what the engine is meant for: no read or write outside
// the buffers (the sanitizer build checks that), and a sane result.
TEST(Sample, HostileInputsStayInsideTheBuffers) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    VelkImage texture(48, 40), output;
    texture.clear(200);

    // Long filters over a tiny field: the extrapolated ends go far outside.
    {
        VelkVectorField saddle;
        saddle.setSaddle();
        VelkCompute engine;
        engine.setFilterLength(300.0f);
        ASSERT_EQ(engine.compute(&saddle, &texture, &output), 1);
        for (int i = 0; i < 48 * 40; i++) ASSERT_TRUE(output.data[i] == 200 || output.data[i] == 0);
    }
    // Not-a-number and overflowing field values. An infinite node can give a
    // seed direction that is not a number: its points land nowhere and read 0.
    for (float bad : {nan, 1e30f, -std::numeric_limits<float>::infinity()}) {
        VelkVectorField field;
        field.setSize(9, 9);
        field.setCircle(0.2f);
        for (int i = 0; i < 20; i++) field.data[2 * (i * 4 % 81) + (i & 1)] = bad;
        for (int mode : {0, 2}) {
            VelkCompute engine;
            engine.seedingMode = mode;
            engine.setNumSubPixels(2);
            ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
            for (int i = 0; i < 48 * 40; i++) ASSERT_LE(output.data[i], 200);
        }
    }
    // Degenerate fields and textures.
    {
        VelkVectorField thin;
        uniformField(thin, 5, 1.0f, 0.0f);
        thin.setSize(1, 5);
        VelkCompute engine;
        ASSERT_EQ(engine.compute(&thin, &texture, &output), 1);
        EXPECT_EQ(engine.numFieldLines, 0);
        VelkVectorField field;
        uniformField(field, 6, 0.3f, 0.7f);
        VelkImage dot(1, 1), empty;
        dot.clear(9);
        ASSERT_EQ(engine.compute(&field, &dot, &output), 1);
        EXPECT_EQ(output.data[0], 0);  // a 1 x 1 texture has no period to sample
        ASSERT_EQ(engine.compute(&field, &empty, &output), 1);
        EXPECT_EQ(output.width, 0);
        for (int n : {0, -2}) {
            for (int mode : {0, 1, 2}) {
                engine.setNumSubPixels(n);
                engine.seedingMode = mode;
                ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
                EXPECT_EQ(engine.numFieldLines, 0);
                for (int i = 0; i < 48 * 40; i++) ASSERT_EQ(output.data[i], 0);
            }
        }
        engine.setNumSubPixels(1);
        engine.setFilterLength(nan);
        ASSERT_EQ(engine.compute(&field, &texture, &output), 1);
        EXPECT_EQ(engine.nFilter, 0);
        // Absurd lengths are capped, not allocated.
        engine.setFilterLength(1e9f);
        engine.extensionLength = 1e30f;
        engine.start(&field, &texture);
        EXPECT_EQ(engine.nFilter, 1 << 17);
        EXPECT_EQ(engine.nExtension, 1 << 17);
        ASSERT_NE(engine.points, nullptr);
        engine.stop();
    }
}
