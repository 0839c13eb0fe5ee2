#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <utility>
#include <vector>

#include <velk/velk.h>
#include "classic_lic.h"

// The LIC engine on a noise texture over a circular field. With the environment
// variable VELK_BENCH_SMOKE set, every image is 16 times smaller each way, so
// that a smoke run of all cases takes seconds.

namespace {

bool smokeRun() {
    static const bool smoke = std::getenv("VELK_BENCH_SMOKE") != nullptr;
    return smoke;
}

int imageSize(long long size) {
    return static_cast<int>(smokeRun() ? std::max(64LL, size / 16) : size);
}

double processSeconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// The same 256 x 256 circular field for every image size, as a host's data
// would be, and a noise texture of the image's size.
struct Scene {
    VelkVectorField field;
    VelkImage texture;

    Scene(int size, int channels) : field(256, 256, nullptr), texture(size, size, channels) {
        field.setCircle(0.0f);
        texture.createRandom(0, 1);
    }
};

void reportPixels(benchmark::State& state, int size) {
    const double pixels = static_cast<double>(size) * size;
    state.counters["Mpx/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["time/px"] = benchmark::Counter(
        pixels, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void reportLines(benchmark::State& state, const VelkCompute& engine, int size) {
    state.counters["lines"] = engine.numFieldLines;
    state.counters["hits/px"] =
        static_cast<double>(engine.totalHits) / (static_cast<double>(size) * size);
}

// The engine as the classic baseline is set up: midpoint rule, box kernel.
void configureLikeClassic(VelkCompute& engine, int L) {
    engine.setNormalization(0.0f);
    engine.useEuler();
    engine.setFilterKernel(VelkCompute::BOX);
    engine.setFilterLength(static_cast<float>(L));
}

typedef std::pair<double, double> Medians;

// The median process times of a and b, computed in turn within every
// iteration, so that a machine whose speed drifts (other jobs, clock changes)
// affects both alike.
Medians pairedMedians(benchmark::State& state, const std::function<void()>& a,
                      const std::function<void()>& b) {
    std::vector<double> first, second;
    for (auto _ : state) {
        double t0 = processSeconds();
        a();
        first.push_back(processSeconds() - t0);
        t0 = processSeconds();
        b();
        second.push_back(processSeconds() - t0);
    }
    std::sort(first.begin(), first.end());
    std::sort(second.begin(), second.end());
    return {first[first.size() / 2], second[second.size() / 2]};
}

}  // namespace

// 1. The engine (midpoint rule, box kernel, one sub-pixel) on 1024 x 1024 for
// L = 10, 20, 40, 80 ...
static void BM_LicEngineBox(benchmark::State& state) {
    const int size = imageSize(1024);
    Scene scene(size, 1);
    VelkImage output;
    VelkCompute engine;
    configureLikeClassic(engine, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        engine.compute(&scene.field, &scene.texture, &output);
        benchmark::DoNotOptimize(output.data);
    }
    reportPixels(state, size);
    reportLines(state, engine, size);
}
BENCHMARK(BM_LicEngineBox)
    ->ArgName("L")
    ->Arg(10)
    ->Arg(20)
    ->Arg(40)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// ... against the classic baseline on the same texture and field. Counters:
// the engine's time for the same image (median of three runs), the speed-up
// classic/engine, and how far the two images lie apart (mean absolute
// difference in grey levels and PSNR in dB).
static void BM_LicClassic(benchmark::State& state) {
    const int size = imageSize(1024);
    const int L = static_cast<int>(state.range(0));
    Scene scene(size, 1);
    VelkImage engineOutput, classicOutput;
    VelkCompute engine;
    configureLikeClassic(engine, L);
    std::vector<double> engineTimes;
    for (int run = 0; run < 3; run++) {
        const double t0 = processSeconds();
        engine.compute(&scene.field, &scene.texture, &engineOutput);
        engineTimes.push_back(processSeconds() - t0);
    }
    std::sort(engineTimes.begin(), engineTimes.end());

    const double t0 = processSeconds();
    for (auto _ : state) {
        classicLic(scene.field, scene.texture, L, engine.stepSize, classicOutput);
        benchmark::DoNotOptimize(classicOutput.data);
    }
    const double classicTime = (processSeconds() - t0) / static_cast<double>(state.iterations());

    double absolute = 0.0, squared = 0.0;
    const std::size_t pixels = static_cast<std::size_t>(size) * size;
    for (std::size_t i = 0; i < pixels; i++) {
        const double d = static_cast<double>(engineOutput.data[i]) - classicOutput.data[i];
        absolute += std::fabs(d);
        squared += d * d;
    }
    const double mse = squared / static_cast<double>(pixels);
    reportPixels(state, size);
    state.counters["engine ms"] = 1e3 * engineTimes[1];
    state.counters["classic/engine"] = classicTime / engineTimes[1];
    state.counters["MAD"] = absolute / static_cast<double>(pixels);
    state.counters["PSNR dB"] = 10.0 * std::log10(255.0 * 255.0 / mse);
}
BENCHMARK(BM_LicClassic)
    ->ArgName("L")
    ->Arg(10)
    ->Arg(20)
    ->Arg(40)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// 2. The engine with its defaults (RK43, triangle kernel, L = 20): image sizes
// 256 to 4096 (time per pixel should stay flat; the field's 256 x 256 cells
// span 1 to 16 pixels), and at 1024 the filter lengths 10 to 80 (the records
// grow 1.77 times from L = 10 to 80, the kernel adds nothing).
static void BM_LicDefaults(benchmark::State& state) {
    const int size = imageSize(state.range(0));
    Scene scene(size, 1);
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setFilterLength(static_cast<float>(state.range(1)));
    for (auto _ : state) {
        engine.compute(&scene.field, &scene.texture, &output);
        benchmark::DoNotOptimize(output.data);
    }
    reportPixels(state, size);
    reportLines(state, engine, size);
}
BENCHMARK(BM_LicDefaults)
    ->ArgNames({"size", "L"})
    ->Args({256, 20})
    ->Args({512, 20})
    ->Args({1024, 20})
    ->Args({2048, 20})
    ->Args({4096, 20})
    ->Args({1024, 10})
    ->Args({1024, 40})
    ->Args({1024, 80})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// The growth from L = 10 to L = 80 with the defaults at 1024 x 1024, both
// lengths computed in turn within every iteration, so that a machine whose
// speed drifts (other jobs, clock changes) affects both alike. Counters: the
// median times and their ratio.
static void BM_LicLengthGrowth(benchmark::State& state) {
    const int size = imageSize(1024);
    Scene scene(size, 1);
    VelkImage output;
    VelkCompute shortKernel, longKernel;
    for (VelkCompute* engine : {&shortKernel, &longKernel}) engine->setNormalization(0.0f);
    shortKernel.setFilterLength(10.0f);
    longKernel.setFilterLength(80.0f);
    const Medians m = pairedMedians(
        state, [&] { shortKernel.compute(&scene.field, &scene.texture, &output); },
        [&] { longKernel.compute(&scene.field, &scene.texture, &output); });
    state.counters["L10 ms"] = 1e3 * m.first;
    state.counters["L80 ms"] = 1e3 * m.second;
    state.counters["L80/L10"] = m.second / m.first;
}
BENCHMARK(BM_LicLengthGrowth)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

// What the domain settings cost with the defaults at 1024 x 1024, each mode in
// turn with the plain computation: 1 orientation field, 2 both axes periodic,
// 3 no-data handling over a field with a hole of a tenth of its nodes, 4 all
// three. Counters: the median times and their ratio.
static void BM_LicDomainCost(benchmark::State& state) {
    const int size = imageSize(1024);
    const int mode = static_cast<int>(state.range(0));
    Scene scene(size, 1);
    if (mode >= 3) {
        for (int j = 100; j < 180; j++) {
            for (int i = 100; i < 180; i++) scene.field.data[2 * (j * 256 + i)] = NAN;
        }
    }
    VelkImage output;
    VelkCompute plain, domain;
    for (VelkCompute* engine : {&plain, &domain}) engine->setNormalization(0.0f);
    domain.setOrientation(mode == 1 || mode == 4);
    domain.setPeriodic(mode == 2 || mode == 4, mode == 2 || mode == 4);
    domain.setNoData(mode >= 3);
    const Medians m = pairedMedians(
        state, [&] { plain.compute(&scene.field, &scene.texture, &output); },
        [&] { domain.compute(&scene.field, &scene.texture, &output); });
    state.counters["plain ms"] = 1e3 * m.first;
    state.counters["mode ms"] = 1e3 * m.second;
    state.counters["mode/plain"] = m.second / m.first;
}
BENCHMARK(BM_LicDomainCost)
    ->ArgName("mode")
    ->DenseRange(1, 4)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// 3. Each kernel (0 box, 1 triangle, 2 cubic) with 1, 2 and 3 sub-pixels, on
// grey and RGB textures of 1024 x 1024; RK43, L = 20.
static void BM_LicSettings(benchmark::State& state) {
    const int size = imageSize(1024);
    Scene scene(size, static_cast<int>(state.range(2)));
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(state.range(0)));
    engine.setNumSubPixels(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        engine.compute(&scene.field, &scene.texture, &output);
        benchmark::DoNotOptimize(output.data);
    }
    reportPixels(state, size);
    reportLines(state, engine, size);
}
BENCHMARK(BM_LicSettings)
    ->ArgNames({"kernel", "sub", "channels"})
    ->ArgsProduct({{0, 1, 2}, {1, 2, 3}, {1, 3}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// The seeding orders (0 scan, 1 offset pattern, 2 Sobol) with the defaults.
static void BM_LicSeeding(benchmark::State& state) {
    const int size = imageSize(1024);
    Scene scene(size, 1);
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.seedingMode = static_cast<int>(state.range(0));
    for (auto _ : state) {
        engine.compute(&scene.field, &scene.texture, &output);
        benchmark::DoNotOptimize(output.data);
    }
    reportPixels(state, size);
    reportLines(state, engine, size);
}
BENCHMARK(BM_LicSeeding)
    ->ArgName("seeding")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
