#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <functional>

#include <velk/velk.h>

// How clearly the streaks stand out, on the circular field: the RMS difference
// between the image one pixel apart across the flow, over the same along it,
// measured on the ring between 10 % and 45 % of the image size from the centre
// (clear of the tight centre and of the corners). 1 is no streaks at all; the
// larger, the crisper. "across" is the first of these in grey levels.

namespace {

int imageSize() {
    return std::getenv("VELK_BENCH_SMOKE") ? 64 : 512;
}

float bilinear(const VelkImage& image, float x, float y) {
    const int x0 = static_cast<int>(x), y0 = static_cast<int>(y);
    const float fx = x - x0, fy = y - y0;
    const unsigned char* p = image.data + y0 * image.bytesPerLine + x0;
    const float low = (1 - fx) * p[0] + fx * p[1];
    const float high = (1 - fx) * p[image.bytesPerLine] + fx * p[image.bytesPerLine + 1];
    return (1 - fy) * low + fy * high;
}

struct StreakContrast {
    double across;
    double along;
};

StreakContrast streakContrast(const VelkImage& image) {
    const float centre = 0.5f * (image.width - 1);
    double across = 0.0, along = 0.0;
    long long n = 0;
    for (int y = 0; y < image.height; y++) {
        for (int x = 0; x < image.width; x++) {
            const float dx = x - centre, dy = y - centre;
            const float r = std::sqrt(dx * dx + dy * dy);
            if (r < 0.1f * image.width || r > 0.45f * image.width) continue;
            const float v = bilinear(image, x, y);
            const float a = bilinear(image, x + dx / r, y + dy / r) - v;
            const float b = bilinear(image, x - dy / r, y + dx / r) - v;
            across += a * a;
            along += b * b;
            n++;
        }
    }
    return {std::sqrt(across / n), std::sqrt(along / n)};
}

// The LIC of a noise texture over the circular field, then `finish` on it.
void runContrast(benchmark::State& state, int iterations, bool enhance,
                 const std::function<void(VelkImage&)>& finish) {
    const int size = imageSize();
    VelkVectorField field(256, 256, nullptr);
    field.setCircle(0.0f);
    VelkImage texture(size, size), output;
    texture.createRandom(0, 1);
    VelkCompute engine;
    for (auto _ : state) {
        velk_enhancedLic(engine, &field, &texture, &output, iterations, enhance);
        finish(output);
        benchmark::DoNotOptimize(output.data);
    }
    const StreakContrast c = streakContrast(output);
    state.counters["across"] = c.across;
    state.counters["streak"] = c.across / c.along;
}

void nothing(VelkImage&) {}

}  // namespace

static void BM_ContrastPlain(benchmark::State& state) {
    runContrast(state, 1, false, nothing);
}
BENCHMARK(BM_ContrastPlain)->Unit(benchmark::kMillisecond);

static void BM_ContrastEqualized(benchmark::State& state) {
    runContrast(state, 1, false, [](VelkImage& image) { image.equalize(); });
}
BENCHMARK(BM_ContrastEqualized)->Unit(benchmark::kMillisecond);

// 8 x 8 tiles, clip limit 3.
static void BM_ContrastAdaptive(benchmark::State& state) {
    runContrast(state, 1, false, [](VelkImage& image) { image.equalizeAdaptive(8, 8, 3.0f); });
}
BENCHMARK(BM_ContrastAdaptive)->Unit(benchmark::kMillisecond);

static void BM_ContrastEnhanced(benchmark::State& state) {
    runContrast(state, 2, true, nothing);
}
BENCHMARK(BM_ContrastEnhanced)->Unit(benchmark::kMillisecond);

static void BM_ContrastIterated(benchmark::State& state) {
    runContrast(state, static_cast<int>(state.range(0)), false, nothing);
}
BENCHMARK(BM_ContrastIterated)->Arg(2)->Arg(3)->Unit(benchmark::kMillisecond);
