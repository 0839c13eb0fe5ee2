#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"
#include "TiledSeeding.h"

// The tiled algorithm (setThreads(n), n >= 1) gives the same bytes for every
// thread count, whatever the settings and however the threads are scheduled.

namespace {

// Same behaviour, a type the engine cannot copy for its threads.
class HostRK43 : public RK43 {
  public:
    using RK43::RK43;
};

struct ThreadCase {
    int width, height;  // of the texture
    int tileShift;      // tiles of 2^tileShift pixels, partial at the edges
    int kernel, subPixels, channels, seeding, interpolation;
    bool euler, saddle, withMask, hostIntegrators;
    int domain;  // VelkIntegrator::Domain bits, and 8 for no-data handling over a hole
};

struct Result {
    velktest::Bytes output, seedMap;
    int lines;
};

Result computeWith(const ThreadCase& c, int threads, int tileShift) {
    VelkVectorField field(41, 31, nullptr);
    if (c.saddle) {
        field.setSaddle();
    } else {
        field.setCircle(0.3f);
    }
    if (c.domain & 8) {
        for (int k = 400; k < 600 && k < field.width * field.height; k += 2)
            field.data[2 * k] = NAN;
    }
    VelkImage texture(c.width, c.height, c.channels);
    texture.createRandom(0, 7);
    VelkCompute engine;
    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(c.kernel));
    engine.setNumSubPixels(c.subPixels);
    engine.seedingMode = c.seeding;
    engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(c.interpolation));
    if (c.euler) engine.useEuler();
    if (c.hostIntegrators) {
        delete engine.forward;
        delete engine.backward;
        engine.forward = new HostRK43(0.001f, 4.0f, 0.5f, 15.0f, +1);
        engine.backward = new HostRK43(0.001f, 4.0f, 0.5f, 15.0f, -1);
    }
    engine.setThreads(threads);
    engine.setOrientation(c.domain & VelkIntegrator::ORIENTATION);
    engine.setPeriodic(c.domain & VelkIntegrator::PERIODIC_X,
                       c.domain & VelkIntegrator::PERIODIC_Y);
    engine.setNoData(c.domain & 8, 9);
    velk::TileLog log;
    log.tileShift = tileShift;
    velk::TiledSeeding::record(engine, &log);
    VelkImage mask(field.width, field.height, 1), seedMap, output;
    mask.createRandom(0, 3);
    EXPECT_EQ(engine.compute(&field, &texture, &output, c.withMask ? &mask : nullptr,
                             c.withMask ? &seedMap : nullptr),
              1);
    return {velktest::bytesOf(output), c.withMask ? velktest::bytesOf(seedMap) : velktest::Bytes(),
            engine.numFieldLines};
}

const ThreadCase kCases[] = {
    {300, 200, 4, 1, 1, 1, 1, 1, false, false, false, false, 0},
    {200, 150, 5, 0, 2, 3, 0, 0, true, true, true, false, 0},
    {257, 130, 4, 2, 1, 1, 2, 1, false, true, false, false, 0},
    {120, 100, 4, 1, 3, 3, 2, 0, true, false, true, false, 0},
    {130, 129, 3, 2, 2, 1, 0, 1, false, false, false, false, 0},
    {50, 40, 2, 1, 1, 1, 1, 1, false, true, true, false, 0},
    {150, 100, 4, 1, 1, 1, 1, 1, false, false, false, true, 0},
    {330, 260, 6, 1, 1, 1, 1, 1, false, false, false, false, 0},
    {210, 170, 4, 1, 1, 1, 1, 1, false, false, false, false, 1 | 2 | 8},
    {160, 140, 4, 2, 2, 3, 0, 0, true, true, false, false, 4 | 8},
    {180, 120, 4, 0, 1, 1, 2, 1, false, false, true, false, 1 | 2 | 4},
};

}  // namespace

TEST(Threads, SameBytesForEveryThreadCount) {
    for (const ThreadCase& c : kCases) {
        SCOPED_TRACE(testing::Message()
                     << c.width << "x" << c.height << " tiles " << c.tileShift << " kernel "
                     << c.kernel << " sub " << c.subPixels << " seeding " << c.seeding);
        // Small tiles: many run at once, and many lines leave their tile's zone.
        const Result one = computeWith(c, 1, c.tileShift);
        EXPECT_GT(one.lines, 0);
        for (int threads : {2, 3, 7}) {
            const Result many = computeWith(c, threads, c.tileShift);
            EXPECT_EQ(many.output, one.output) << "threads " << threads;
            EXPECT_EQ(many.seedMap, one.seedMap);
            EXPECT_EQ(many.lines, one.lines);
        }
    }
}

// A tile as large as the image is seeded in the sequential order, with the
// sequential decisions: the two algorithms then agree byte for byte.
TEST(Threads, OneTileIsTheSequentialAlgorithm) {
    for (const ThreadCase& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " seeding " << c.seeding);
        const Result sequential = computeWith(c, 0, c.tileShift);
        const Result tiled = computeWith(c, 2, 10);
        EXPECT_EQ(tiled.output, sequential.output);
        EXPECT_EQ(tiled.seedMap, sequential.seedMap);
        EXPECT_EQ(tiled.lines, sequential.lines);
    }
}
