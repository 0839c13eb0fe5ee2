#include <benchmark/benchmark.h>

#include <velk/velk.h>

// Noise texture creation: one drand48 draw per byte.
static void BM_CreateRandom(benchmark::State& state) {
    VelkImage image(static_cast<int>(state.range(0)), static_cast<int>(state.range(0)));
    for (auto _ : state) {
        image.createRandom(0, 1);
        benchmark::DoNotOptimize(image.data);
    }
    state.counters["Mpx/s"] =
        benchmark::Counter(static_cast<double>(state.range(0) * state.range(0)) * 1e-6,
                           benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_CreateRandom)->Arg(1024);

// Periodic bilinear sampling of a grey image.
static void BM_Interp(benchmark::State& state) {
    VelkImage image(512, 512);
    image.createRandom(0, 1);
    float x = 0.25f;
    for (auto _ : state) {
        benchmark::DoNotOptimize(image.interp(x, x * 0.5f));
        x += 1.37f;
        if (x > 2000.0f) x -= 2000.0f;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Interp);
