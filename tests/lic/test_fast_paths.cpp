#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include <velk/velk.h>

// The engine steps its own integrators and reads the library's texture
// lookups through specialised code; any other integrator or lookup takes the
// general path. Both must give the same accumulation, bit for bit.

namespace {

// Same type behaviour, different dynamic type: the engine cannot recognise them.
class HostRK43 : public RK43 {
  public:
    using RK43::RK43;
};

class HostMidpoint : public Midpoint {
  public:
    using Midpoint::Midpoint;
};

void hostBilinear(VelkImage* image, float x, float y, int* out) {
    VelkCompute::getPixelBilinear1(image, x, y, out);
}

void hostConst(VelkImage* image, float x, float y, int* out) {
    VelkCompute::getPixelConst1(image, x, y, out);
}

// Seeds every sub-pixel without a hit in scan order, as seeding mode 0 does,
// with optional changes to the engine after start(); returns the accumulation.
std::vector<int> accumulate(VelkCompute& engine, VelkVectorField& field, VelkImage& texture,
                            const std::function<void(VelkCompute&)>& afterStart) {
    engine.start(&field, &texture);
    afterStart(engine);
    const int N = engine.numSubPixels;
    for (int sub = 0; sub < N * N; sub++) {
        for (int y = 0; y < engine.height; y++) {
            for (int x = 0; x < engine.width; x++) {
                const std::size_t cell = static_cast<std::size_t>(y) * engine.width + x;
                if (engine.accum[cell * engine.cellStride + sub] != 0) continue;
                engine.sample({(x + (sub % N + 0.5f) / N) / engine.xScale,
                               (y + (sub / N + 0.5f) / N) / engine.yScale});
            }
        }
    }
    std::vector<int> result(engine.accum, engine.accum + static_cast<std::size_t>(engine.width) *
                                                             engine.height * engine.cellStride);
    engine.stop();
    return result;
}

}  // namespace

TEST(FastPaths, LibraryLookupsMatchTheGeneralPath) {
    // A saddle sends most lines out of the domain, so the extrapolated ends
    // wrap on the texture; L 30 with the cubic kernel gives nFilter 30.
    VelkVectorField field;
    field.setSaddle();
    VelkImage texture(61, 43);
    texture.createRandom(0, 9);
    for (int kernel = 0; kernel < 3; kernel++) {
        for (int sub : {1, 2}) {
            for (bool bilinear : {true, false}) {
                SCOPED_TRACE(testing::Message() << "kernel " << kernel << " sub " << sub
                                                << (bilinear ? " bilinear" : " constant"));
                auto configure = [&](VelkCompute& e) {
                    e.setNormalization(0.0f);
                    e.setFilterKernel(static_cast<VelkCompute::FilterKernel>(kernel));
                    e.setFilterLength(30.0f);
                    e.setNumSubPixels(sub);
                    e.setInterpolationMethod(bilinear ? VelkCompute::BILINEAR
                                                      : VelkCompute::CONSTANT);
                };
                VelkCompute fast, general;
                configure(fast);
                configure(general);
                const std::vector<int> expected = accumulate(
                    general, field, texture,
                    [&](VelkCompute& e) { e.getPixel = bilinear ? hostBilinear : hostConst; });
                EXPECT_EQ(accumulate(fast, field, texture, [](VelkCompute&) {}), expected);
                EXPECT_EQ(fast.numFieldLines, general.numFieldLines);
            }
        }
    }
}

TEST(FastPaths, EngineIntegratorsMatchTheGeneralPath) {
    VelkVectorField field(40, 30, nullptr);
    field.setCircle(0.3f);
    VelkImage texture(70, 50);
    texture.createRandom(0, 4);
    for (bool adaptive : {true, false}) {
        SCOPED_TRACE(adaptive ? "RK43" : "Midpoint");
        VelkCompute fast, general;
        for (VelkCompute* e : {&fast, &general}) e->setNormalization(0.2f);
        if (adaptive) {
            delete general.forward;
            delete general.backward;
            general.forward = new HostRK43(0.001f, 4.0f, 0.5f, 15.0f, +1);
            general.backward = new HostRK43(0.001f, 4.0f, 0.5f, 15.0f, -1);
        } else {
            fast.useEuler();
            delete general.forward;
            delete general.backward;
            general.forward = new HostMidpoint(+1);
            general.backward = new HostMidpoint(-1);
        }
        general.setNormalization(0.2f);
        auto none = [](VelkCompute&) {};
        EXPECT_EQ(accumulate(fast, field, texture, none),
                  accumulate(general, field, texture, none));
        // The integrators are left as next() would leave them.
        if (adaptive) {
            for (int side = 0; side < 2; side++) {
                auto* a = static_cast<AdaptiveIntegrator*>(side ? fast.backward : fast.forward);
                auto* b =
                    static_cast<AdaptiveIntegrator*>(side ? general.backward : general.forward);
                EXPECT_EQ(a->outPoint.x, b->outPoint.x);
                EXPECT_EQ(a->outPoint.y, b->outPoint.y);
                EXPECT_EQ(a->diff1.x, b->diff1.x);
                EXPECT_EQ(a->diff2.y, b->diff2.y);
                EXPECT_EQ(a->t, b->t);
                EXPECT_EQ(a->s, b->s);
                EXPECT_EQ(a->status, b->status);
            }
        } else {
            auto* a = static_cast<Midpoint*>(fast.backward);
            auto* b = static_cast<Midpoint*>(general.backward);
            EXPECT_EQ(a->pos.x, b->pos.x);
            EXPECT_EQ(a->pos.y, b->pos.y);
            EXPECT_EQ(a->status, b->status);
        }
    }
}

TEST(FastPaths, WideRowsGiveTheImageOfCompactRows) {
    // Rows 300001 bytes apart: texel offsets beyond 2^24 take 64-bit arithmetic.
    VelkVectorField field(20, 20, nullptr);
    field.setCircle(0.0f);
    VelkImage compact(64, 60);
    compact.createRandom(0, 2);
    const int stride = 300001;
    std::vector<unsigned char> buffer(static_cast<std::size_t>(stride) * 60, 0x5a);
    for (int y = 0; y < 60; y++) {
        std::copy(compact.data + y * 64, compact.data + y * 64 + 64,
                  buffer.begin() + static_cast<std::ptrdiff_t>(y) * stride);
    }
    VelkImage wide(64, 60, 1, stride, buffer.data());
    VelkImage fromCompact, fromWide;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    ASSERT_EQ(engine.compute(&field, &compact, &fromCompact), 1);
    const int lines = engine.numFieldLines;
    ASSERT_EQ(engine.compute(&field, &wide, &fromWide), 1);
    EXPECT_EQ(engine.numFieldLines, lines);
    EXPECT_TRUE(std::equal(fromCompact.data, fromCompact.data + 64 * 60, fromWide.data));
}
