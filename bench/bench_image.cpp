#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include <velk/velk.h>

namespace {

void reportMegapixels(benchmark::State& state, double pixels) {
    state.counters["Mpx/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

VelkImage noise(int size, int binary) {
    VelkImage image(size, size);
    image.createRandom(binary, 1);
    return image;
}

}  // namespace

// Separable packed-table convolution: a 9-tap Gaussian (two groups).
static void BM_GaussBlur5(benchmark::State& state) {
    VelkImage image = noise(2048, 0);
    VelkImage out;
    for (auto _ : state) {
        image.gaussBlur(5, &out);
        benchmark::DoNotOptimize(out.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_GaussBlur5)->Unit(benchmark::kMillisecond);

static void BM_MedianFilter(benchmark::State& state) {
    VelkImage image = noise(2048, 0);
    VelkImage out;
    for (auto _ : state) {
        image.medianFilter(&out);
        benchmark::DoNotOptimize(out.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_MedianFilter)->Unit(benchmark::kMillisecond);

// Tent-filtered enlargement 1024 -> 2048, counted in output pixels.
static void BM_Zoom1024To2048(benchmark::State& state) {
    VelkImage image = noise(1024, 0);
    VelkImage out;
    for (auto _ : state) {
        image.zoom(2048, 2048, &out);
        benchmark::DoNotOptimize(out.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_Zoom1024To2048)->Unit(benchmark::kMillisecond);

// Binary P5 files of a 4096 x 4096 binary-noise image.
static std::string benchFile() {
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir ? dir : "/tmp") + "/velk-bench-" + std::to_string(getpid()) + ".pgm";
}

static void BM_WritePNM(benchmark::State& state) {
    VelkImage image = noise(4096, 1);
    std::string path = benchFile();
    for (auto _ : state) benchmark::DoNotOptimize(image.writePNM(path.c_str(), 0));
    unlink(path.c_str());
    reportMegapixels(state, 4096.0 * 4096.0);
}
BENCHMARK(BM_WritePNM)->Unit(benchmark::kMillisecond);

static void BM_ReadPNM(benchmark::State& state) {
    std::string path = benchFile();
    noise(4096, 1).writePNM(path.c_str(), 0);
    VelkImage image;
    for (auto _ : state) benchmark::DoNotOptimize(image.readPNM(path.c_str()));
    unlink(path.c_str());
    reportMegapixels(state, 4096.0 * 4096.0);
}
BENCHMARK(BM_ReadPNM)->Unit(benchmark::kMillisecond);
