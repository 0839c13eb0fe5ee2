#include <benchmark/benchmark.h>

#include "velk/velk.h"

namespace {

// Arguments: filter length, sub-pixels, seeding mode, integrator (0 RK43, 1 useEuler).
void BM_LicCircle(benchmark::State& state) {
    const int size = 1024;
    VelkVectorField field(256, 256, nullptr);
    field.setCircle(0.0f);
    VelkImage texture(size, size);
    texture.createRandom(0, 1);
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setFilterLength(static_cast<float>(state.range(0)));
    engine.setNumSubPixels(static_cast<int>(state.range(1)));
    engine.seedingMode = static_cast<int>(state.range(2));
    if (state.range(3) == 1) engine.useEuler();
    for (auto _ : state) {
        engine.compute(&field, &texture, &output, nullptr, nullptr);
        benchmark::DoNotOptimize(output.data);
    }
    state.counters["lines"] = engine.numFieldLines;
    state.counters["hits/px"] =
        static_cast<double>(engine.totalHits) / (static_cast<double>(size) * size);
}

}  // namespace

BENCHMARK(BM_LicCircle)
    ->ArgNames({"L", "sub", "seeding", "euler"})
    ->Args({20, 1, 1, 0})
    ->Args({10, 1, 1, 0})
    ->Args({40, 1, 1, 0})
    ->Args({80, 1, 1, 0})
    ->Args({20, 2, 1, 0})
    ->Args({20, 3, 1, 0})
    ->Args({20, 1, 0, 0})
    ->Args({20, 1, 2, 0})
    ->Args({20, 1, 1, 1})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
