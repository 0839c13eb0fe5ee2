#include <benchmark/benchmark.h>

#include <climits>

#include <velk/velk.h>

namespace {

void reportMegapixels(benchmark::State& state, double pixels) {
    state.counters["Mpx/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

// Noise as the relief: hardly a pixel is flat.
VelkImage relief(int size, int channels) {
    VelkImage image(size, size, channels);
    image.createRandom(0, 3);
    return image;
}

}  // namespace

// Fixed light; grey, and colour through its grey version.
static void BM_Emboss(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0));
    VelkImage image = relief(2048, channels);
    VelkImage out;
    for (auto _ : state) {
        image.emboss(0.7f, 0.6f, 3, &out);
        benchmark::DoNotOptimize(out.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_Emboss)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond);

// Light along a circulating field of the image's size.
static void BM_EmbossAlongField(benchmark::State& state) {
    VelkImage image = relief(2048, 1);
    VelkVectorField field(2048, 2048, nullptr);
    field.setCircle(0.2f);
    VelkImage out;
    for (auto _ : state) {
        image.emboss(field, &out);
        benchmark::DoNotOptimize(out.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_EmbossAlongField)->Unit(benchmark::kMillisecond);

// Direction colours: one pixel per node (1), or sampled onto 2048 x 2048 from
// a 512 x 512 field (0).
static void BM_VecToColor(benchmark::State& state) {
    const int sameSize = static_cast<int>(state.range(0));
    VelkVectorField field(sameSize ? 2048 : 512, sameSize ? 2048 : 512, nullptr);
    field.setCircle(0.4f);
    VelkImage image(2048, 2048, 3);
    for (auto _ : state) {
        field.vecToColor(image, sameSize);
        benchmark::DoNotOptimize(image.data);
    }
    reportMegapixels(state, 2048.0 * 2048.0);
}
BENCHMARK(BM_VecToColor)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

// A line between the ends of the int range across a 2048 x 2048 image: the
// cost is that of the part near the image.
static void BM_DrawLineAcrossIntRange(benchmark::State& state) {
    VelkImage image(2048, 2048, 1);
    image.clear(0);
    VelkGraphics g;
    g.setColor(255, 255, 255);
    g.setPixelWidth(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        g.drawLine(image, INT_MIN, INT_MIN / 3, INT_MAX, INT_MAX / 3 + 1000);
        benchmark::DoNotOptimize(image.data);
    }
}
BENCHMARK(BM_DrawLineAcrossIntRange)->Arg(1)->Arg(5)->Unit(benchmark::kMicrosecond);
