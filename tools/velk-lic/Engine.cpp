#include "Engine.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>

#include <velk/velk.h>

#include "Console.h"
#include "Options.h"
#include "Pictures.h"
#include "ToolError.h"

namespace {

// The hit counters and channel sums of one computation may take this much.
constexpr std::uint64_t kMaxAccumBytes = std::uint64_t(1) << 30;

// The hit counters and channel sums of one LIC of the texture.
std::uint64_t accumBytes(const Options& o, const VelkImage& texture) {
    const std::uint64_t cells = std::uint64_t(texture.width) * std::uint64_t(texture.height);
    const std::uint64_t perCell = std::uint64_t(o.subPixels) * std::uint64_t(o.subPixels) +
                                  std::uint64_t(texture.nChannels) + (o.noData ? 1 : 0);
    return cells * perCell * sizeof(int);
}

}  // namespace

void configureEngine(const Options& o, int threads, VelkImage* noDataMask, VelkCompute& engine) {
    engine.setThreads(threads);
    engine.setOrientation(o.orientation);
    engine.setPeriodic(o.periodicX, o.periodicY);
    engine.setNoData(o.noData, 0);
    engine.setNoDataMask(noDataMask);
    engine.setFilterKernel(o.kernel);
    engine.setFilterLength(o.length);
    engine.setNumSubPixels(o.subPixels);
    engine.setInterpolationMethod(o.lookup);
    engine.setNormalization(o.normalization);
    engine.seedingMode = static_cast<int>(o.seeding);
    if (o.integrator == Integrator::Midpoint) {
        engine.useEuler();
    } else {
        engine.useRK43(o.rk43[0], o.rk43[1], o.rk43[2], o.rk43[3]);
    }
}

void checkEngineMemory(const Options& o, const VelkImage& texture) {
    const std::uint64_t bytes = accumBytes(o, texture);
    if (bytes > kMaxAccumBytes)
        throw ToolError("a " + std::to_string(texture.width) + "x" +
                        std::to_string(texture.height) + " LIC with " +
                        std::to_string(o.subPixels) + "x" + std::to_string(o.subPixels) +
                        " sub-pixels needs " + std::to_string(bytes >> 20) +
                        " MiB of counters (at most " + std::to_string(kMaxAccumBytes >> 20) +
                        " MiB); use fewer sub-pixels or a smaller texture");
}

void readMask(const std::string& path, const char* role, const VelkVectorField& field,
              VelkImage& mask) {
    readPicture(path, role, mask);
    if (mask.nChannels == 3) mask.colorToGrey(nullptr);
    if (mask.width != field.width || mask.height != field.height)
        throw ToolError(std::string(role) + " '" + path + "' is " + std::to_string(mask.width) +
                        "x" + std::to_string(mask.height) + " but the field grid is " +
                        std::to_string(field.width) + "x" + std::to_string(field.height));
}

void computeLic(const Options& o, VelkCompute& engine, VelkVectorField& field, VelkImage& texture,
                VelkImage* mask, VelkImage& lic) {
    console::clearLibraryError();
    // Repeated passes convolve whole pictures: the mask applies to the result.
    const int ok = o.iterations == 1
                       ? engine.compute(&field, &texture, &lic, mask, nullptr)
                       : velk_enhancedLic(engine, &field, &texture, &lic, o.iterations, o.enhance);
    if (!ok) console::libraryFailure("the LIC computation failed");
    if (!mask) return;

    // Pixel centres in field coordinates, as the engine places its seeds (a
    // periodic axis's picture spans all its nodes).
    const int cellsX = o.periodicX ? field.width : field.width - 1;
    const int cellsY = o.periodicY ? field.height : field.height - 1;
    const float rx = static_cast<float>(cellsX) / static_cast<float>(lic.width);
    const float ry = static_cast<float>(cellsY) / static_cast<float>(lic.height);
    for (int y = 0; y < lic.height; y++) {
        unsigned char* p = lic.data + static_cast<long>(y) * lic.bytesPerLine;
        for (int x = 0; x < lic.width; x++, p += lic.nChannels) {
            int inside = 0;
            VelkCompute::getPixelConst1(mask, (static_cast<float>(x) + 0.5f) * rx,
                                        (static_cast<float>(y) + 0.5f) * ry, &inside);
            if (inside == 0)
                for (int c = 0; c < lic.nChannels; c++) p[c] = 0;
        }
    }
}

ThreadShare shareThreads(const Options& o, const VelkImage& texture) {
    // The fast convolution behind --blur and --enhance keeps its tables in
    // process-wide state, so such frames are made one at a time.
    if (o.frames == 1 || o.threads == 0 || o.blur > 0 || o.enhance) return {1, o.threads};
    const unsigned cores = std::thread::hardware_concurrency();
    const int threads = o.threads > 0 ? o.threads : std::max(1, static_cast<int>(cores));
    // Frames side by side share the counter budget of one LIC.
    const std::uint64_t budget =
        kMaxAccumBytes / std::max<std::uint64_t>(accumBytes(o, texture), 1);
    const int frames = static_cast<int>(
        std::min<std::uint64_t>({std::uint64_t(threads), std::uint64_t(o.frames), budget}));
    return {std::max(frames, 1), std::max(threads / std::max(frames, 1), 1)};
}
