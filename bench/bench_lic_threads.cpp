#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "TiledSeeding.h"

// The parallel (tiled) mode of the LIC engine against the sequential one, on
// the scene of the other LIC benchmarks: a 256 x 256 circular field under a
// noise texture, engine defaults. With VELK_BENCH_SMOKE set the images are 16
// times smaller each way.

namespace {

int imageSize(long long size) {
    return static_cast<int>(std::getenv("VELK_BENCH_SMOKE") ? std::max(64LL, size / 16) : size);
}

struct Scene {
    VelkVectorField field;
    VelkImage texture;

    explicit Scene(int size) : field(256, 256, nullptr), texture(size, size) {
        field.setCircle(0.0f);
        texture.createRandom(0, 1);
    }
};

// Lines, mean hits per pixel, and the mean and standard deviation of the
// output in grey levels: the tiled picture should match the sequential one.
void reportPicture(benchmark::State& state, const VelkCompute& engine, const VelkImage& output) {
    const double pixels = static_cast<double>(output.width) * output.height;
    double sum = 0.0, squares = 0.0;
    for (int y = 0; y < output.height; y++) {
        const unsigned char* row = output.data + static_cast<std::size_t>(y) * output.bytesPerLine;
        for (int x = 0; x < output.width; x++) {
            sum += row[x];
            squares += static_cast<double>(row[x]) * row[x];
        }
    }
    const double mean = sum / pixels;
    state.counters["lines"] = engine.numFieldLines;
    state.counters["hits/px"] = engine.totalHits / pixels;
    state.counters["mean"] = mean;
    state.counters["std"] = std::sqrt(std::max(0.0, squares / pixels - mean * mean));
    state.counters["time/px"] = benchmark::Counter(
        pixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

// Sequential (threads 0) against tiled on 1 and 2 threads, and the time per
// pixel from 1024 to 8192 pixels square. Wall time and process CPU time.
static void BM_LicThreads(benchmark::State& state) {
    Scene scene(imageSize(state.range(0)));
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setThreads(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        engine.compute(&scene.field, &scene.texture, &output);
        benchmark::DoNotOptimize(output.data);
    }
    reportPicture(state, engine, output);
}
BENCHMARK(BM_LicThreads)
    ->ArgNames({"size", "threads"})
    ->ArgsProduct({{1024, 2048, 4096, 8192}, {0, 1}})
    ->Args({2048, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

// The phase schedule on paper: the records each tile traced in each phase of
// one tiled run at 2048 x 2048, tiles of 2^shift pixels. Tiles are handed to
// threads in list order as each becomes free, and a phase ends with its last
// tile, so the speed-up on P threads is the total work over the sum of the
// phases' simulated lengths (never more than the phase's total over its
// longest tile allows).
static void BM_LicTileSchedule(benchmark::State& state) {
    Scene scene(imageSize(2048));
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setThreads(1);
    velk::TileLog log;
    log.tileShift = static_cast<int>(state.range(0));
    for (auto _ : state) {
        log.work.clear();
        velk::TiledSeeding::record(engine, &log);
        engine.compute(&scene.field, &scene.texture, &output);
        velk::TiledSeeding::record(engine, nullptr);
    }
    // The log holds each thread's tiles in the order it took them; with one
    // thread that is the list order of every phase.
    std::vector<std::vector<long long>> phases;
    long long total = 0;
    for (const velk::TileWork& w : log.work) {
        if (w.phase >= static_cast<int>(phases.size())) phases.resize(w.phase + 1);
        phases[w.phase].push_back(w.records);
        total += w.records;
    }
    for (int threads : {2, 8, 16, 64}) {
        long long span = 0;
        for (const std::vector<long long>& tiles : phases) {
            std::vector<long long> free(threads, 0);
            for (long long records : tiles) {
                *std::min_element(free.begin(), free.end()) += records;
            }
            span += *std::max_element(free.begin(), free.end());
        }
        state.counters["x" + std::to_string(threads)] = static_cast<double>(total) / span;
    }
    state.counters["phases"] = static_cast<double>(phases.size());
    reportPicture(state, engine, output);
}
BENCHMARK(BM_LicTileSchedule)
    ->ArgName("shift")
    ->DenseRange(5, 8)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
