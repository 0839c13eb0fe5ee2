// Peak memory of one LIC computation with the engine's defaults, against the
// budget of 1.5 times its accumulation buffer plus the input and output images.
// Usage: velk-lic-memory [size [threads]]   (default 4096: a size x size noise
// texture; threads as for VelkCompute::setThreads, default 0: sequential)

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

#include <velk/velk.h>

namespace {

double peakMegabytes() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB
}

}  // namespace

int main(int argc, char** argv) {
    const int size = argc > 1 ? std::atoi(argv[1]) : 4096;
    const int threads = argc > 2 ? std::atoi(argv[2]) : 0;
    if (size < 2) {
        std::fprintf(stderr, "usage: velk-lic-memory [size >= 2 [threads]]\n");
        return 2;
    }
    VelkVectorField field(256, 256, nullptr);
    field.setCircle(0.0f);
    VelkImage texture(size, size);
    texture.createRandom(0, 1);
    VelkImage output;
    VelkCompute engine;
    engine.setNormalization(0.0f);
    engine.setThreads(threads);
    const double before = peakMegabytes();
    if (engine.compute(&field, &texture, &output) != 1) return 1;

    const double mb = 1.0 / (1024.0 * 1024.0);
    const double pixels = static_cast<double>(size) * size;
    const double accum = pixels * engine.cellStride * sizeof(int) * mb;
    const double images = 2.0 * pixels * mb;
    const double peak = peakMegabytes();
    std::printf(
        "image %dx%d, defaults, threads %d: accumulation buffer %.1f MiB, input + output %.1f "
        "MiB\n",
        size, size, threads, accum, images);
    std::printf(
        "peak resident %.1f MiB (%.1f MiB before compute), %.3f times the buffers "
        "(budget 1.5)\n",
        peak, before, peak / (accum + images));
    return 0;
}
