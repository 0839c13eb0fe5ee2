#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <velk/velk.h>

namespace {

void countPixel(int, int, float* values, void* userData) {
    *static_cast<float*>(userData) += values[0];
}

// A UCD file of an n x n node grid (2 (n-1)^2 triangles) carrying a rotation.
std::string writeGridMesh(int n) {
    std::string path = "/tmp/velk-bench-mesh-" + std::to_string(getpid()) + ".inp";
    std::FILE* f = std::fopen(path.c_str(), "w");
    std::fprintf(f, "%d %d\nnodes\n", n * n, 2 * (n - 1) * (n - 1));
    for (int j = 0; j < n; j++) {
        for (int i = 0; i < n; i++) std::fprintf(f, "%d %d %d %d\n", i, j, -j, i);
    }
    std::fprintf(f, "triangles\n");
    for (int j = 0; j + 1 < n; j++) {
        for (int i = 0; i + 1 < n; i++) {
            int a = j * n + i + 1;
            std::fprintf(f, "%d %d %d\n%d %d %d\n", a, a + 1, a + n + 1, a, a + n + 1, a + n);
        }
    }
    std::fclose(f);
    return path;
}

}  // namespace

// Triangle rasterisation with three interpolated values; pixels per second.
static void BM_ScanConvertTriangles(benchmark::State& state) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<float> pos(-20.0f, 532.0f), val(-1.0f, 1.0f);
    std::vector<VelkScanConvert::Vertex> v(3 * 256);
    for (auto& p : v) p = {pos(rng), pos(rng), {val(rng), val(rng), val(rng)}};
    float sum = 0;
    VelkScanConvert sc(3);
    sc.setCanvas(512, 512);
    sc.setPixelCallback(countPixel, &sum);
    int pixels = 0;
    VelkScanConvert counter(0);
    counter.setCanvas(512, 512);
    counter.setPixelCallback([](int, int, float*, void* n) { ++*static_cast<int*>(n); }, &pixels);
    for (size_t t = 0; t < v.size(); t += 3) counter.scanConvert(3, &v[t]);
    for (auto _ : state) {
        for (size_t t = 0; t < v.size(); t += 3) sc.scanConvert(3, &v[t]);
        benchmark::DoNotOptimize(sum);
    }
    state.counters["Mpx/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ScanConvertTriangles);

// Parsing a 10201-node, 20000-triangle mesh and rasterising it onto 512 x 512.
static void BM_ReadUCD(benchmark::State& state) {
    std::string path = writeGridMesh(101);
    VelkVectorField field;
    for (auto _ : state) {
        benchmark::DoNotOptimize(field.readUCD(path.c_str(), 512, 512));
    }
    std::remove(path.c_str());
}
BENCHMARK(BM_ReadUCD)->Unit(benchmark::kMillisecond);

// Bilinear pseudo-colouring of a 256 x 256 field onto a 1024 x 1024 image.
static void BM_PseudoColor(benchmark::State& state) {
    VelkScalarField field(256, 256, nullptr);
    field.createDipole(3, 0.2f);
    VelkColormap map;
    map.createHueRamp();
    map.setMinMax(-1, 1);
    VelkImage image(1024, 1024, 3);
    for (auto _ : state) {
        field.pseudoColor(map, image, 0);
        benchmark::DoNotOptimize(image.data);
    }
    state.counters["Mpx/s"] =
        benchmark::Counter(1024.0 * 1024.0 * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_PseudoColor);
