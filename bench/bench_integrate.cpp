#include <benchmark/benchmark.h>

#include <csetjmp>
#include <memory>
#include <stdexcept>
#include <vector>

#include <velk/velk.h>

namespace {

enum Scheme { kEuler, kMidpoint, kRK43, kRKCK, kRKDP };

std::unique_ptr<VelkIntegrator> makeScheme(int scheme) {
    switch (scheme) {
        case kEuler:
            return std::make_unique<Euler>(1);
        case kMidpoint:
            return std::make_unique<Midpoint>(1);
        case kRK43:
            return std::make_unique<RK43>(0.001f, 4.0f, 0.5f, 15.0f, 1);
        case kRKCK:
            return std::make_unique<RKCK>(0.001f, 4.0f, 0.5f, 15.0f, 1);
        default:
            return std::make_unique<RKDP>(0.001f, 4.0f, 0.5f, 15.0f, 1);
    }
}

void setSchemeLabel(benchmark::State& state) {
    static const char* const names[] = {"Euler", "Midpoint", "RK43", "RKCK", "RKDP"};
    state.SetLabel(names[state.range(0)]);
}

// Time per returned point, shown in seconds with an SI prefix (n = ns).
void countPoints(benchmark::State& state, double pointsPerIteration) {
    state.counters["time/point"] =
        benchmark::Counter(pointsPerIteration, benchmark::Counter::kIsIterationInvariantRate |
                                                   benchmark::Counter::kInvert);
}

}  // namespace

// Closed circles of radius 100 on a 256 x 256 rotation field, points at the
// spacing 0.5: one line of 2000 points per iteration, never leaving the domain.
static void BM_IntegrateCircle(benchmark::State& state) {
    VelkVectorField field(256, 256, nullptr);
    field.setCircle(0.0f);
    auto it = makeScheme(static_cast<int>(state.range(0)));
    it->setField(256, 256, reinterpret_cast<Vec2f*>(field.data));
    it->stepSize = 0.5f;
    const int points = 2000;
    for (auto _ : state) {
        it->init({227.5f, 127.5f}, {0.0f, 1.0f});
        int status = 0;
        for (int k = 0; k < points; k++) benchmark::DoNotOptimize(it->next(status));
        if (status != 0) state.SkipWithError("line ended");
    }
    setSchemeLabel(state);
    countPoints(state, points);
}
BENCHMARK(BM_IntegrateCircle)->DenseRange(kEuler, kRKDP);

// Lines that end at the border: 20 points along a slanted uniform field; the
// second adaptive step fails at the right edge (the non-local exit), Euler
// steps take the line to the border at point 17, the rest are extrapolated.
// Arg 1 selects the same start on a grid wide enough that all 20 points stay
// inside, for comparison.
static void BM_IntegrateLineEnd(benchmark::State& state) {
    const bool inside = state.range(1) != 0;
    const int width = inside ? 128 : 40;
    std::vector<Vec2f> nodes(static_cast<std::size_t>(width) * 40, Vec2f{0.96f, 0.28f});
    auto it = makeScheme(static_cast<int>(state.range(0)));
    it->setField(width, 40, nodes.data());
    it->stepSize = 0.7f;
    int points = 0;
    for (auto _ : state) {
        it->init({28.0f, 10.0f}, {0.96f, 0.28f});
        int status = 0;
        for (points = 0; points < 20; points++) benchmark::DoNotOptimize(it->next(status));
        if ((status == 0) != inside) state.SkipWithError("line did not end where expected");
    }
    setSchemeLabel(state);
    state.counters["points/line"] = points;
    countPoints(state, points);
}
BENCHMARK(BM_IntegrateLineEnd)->ArgsProduct({{kRK43, kRKCK, kRKDP}, {0, 1}});

namespace {

struct StepFailed {};

std::jmp_buf exitBuffer;

__attribute__((noinline)) void failWithLongjmp(int code) {
    std::longjmp(exitBuffer, code);
}
__attribute__((noinline)) void failWithThrow(int) {
    throw StepFailed();
}

}  // namespace

// The bare cost of leaving a failed step: a setjmp/longjmp round trip as the
// adaptive schemes use it, against a C++ exception for comparison.
static void BM_NonLocalExit(benchmark::State& state) {
    const bool exception = state.range(0) != 0;
    volatile int caught = 0;
    for (auto _ : state) {
        if (exception) {
            try {
                failWithThrow(1);
            } catch (const StepFailed&) {
                caught = caught + 1;
            }
        } else {
            if (setjmp(exitBuffer) == 0)
                failWithLongjmp(1);
            else
                caught = caught + 1;
        }
    }
    benchmark::DoNotOptimize(caught);
    state.SetLabel(exception ? "exception" : "setjmp/longjmp");
}
BENCHMARK(BM_NonLocalExit)->Arg(0)->Arg(1);
