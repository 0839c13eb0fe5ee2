// VelkCompute::compute on small fields holding awkward values (zeros, NaN,
// infinities, huge and subnormal numbers) with settings from their ranges:
// kernel, filter length, sub-pixels, seeding, lookup, integrator and
// normalisation, and the domain settings. It must finish, stay in bounds and
// give an image of the texture's size. Over a constant texture v every kernel
// (weights summing to one) gives at most v, where lookups at positions that
// have no texel read 0; in a field of ordinary finite values every reached
// pixel is exactly v. Pixels no line reaches may hold the no-data fill.

#include <cmath>

#include <velk/VelkCompute.h>
#include <velk/VelkImage.h>
#include <velk/VelkVectorField.h>
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velkfuzz::ByteReader in(data, size);

    VelkCompute engine;
    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(in.range(0, 2)));
    engine.setFilterLength(static_cast<float>(in.range(0, 400)) / 10.0f);
    engine.setNumSubPixels(in.range(1, 3));
    engine.seedingMode = in.range(0, 2);
    engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(in.range(0, 1)));
    switch (in.range(0, 2)) {
        case 1:
            engine.useEuler();
            break;
        case 2:
            // initialStep, minStep, maxStep, tolerance
            engine.useRK43(static_cast<float>(in.range(1, 100)) / 10.0f,
                           static_cast<float>(in.range(1, 100)) / 100.0f,
                           static_cast<float>(in.range(10, 300)) / 10.0f,
                           static_cast<float>(in.range(1, 1000)) / 10000.0f);
            break;
        default:
            break;
    }
    static const float kNormalizations[] = {0.0f, 0.0f, 0.5f, 1.0f, 2.0f, 10.0f, 1e-6f, 1e6f};
    engine.setNormalization(kNormalizations[in.range(0, 7)]);

    int fw = in.range(2, 9);
    int fh = in.range(2, 9);
    VelkVectorField field(fw, fh, nullptr);
    bool ordinary = true;
    for (int i = 0; i < 2 * fw * fh; i++) {
        float v = in.awkwardFloat();
        field.data[i] = v;
        ordinary = ordinary && std::fabs(v) <= 1e6f;  // false for NaN too
    }

    int tw = in.range(1, 12);
    int th = in.range(1, 12);
    int channels = in.range(0, 1) ? 3 : 1;
    bool constant = in.range(0, 3) == 0;
    VelkImage texture(tw, th, channels);
    std::uint8_t value = in.byte();
    for (int i = 0; i < tw * th * channels; i++) texture.data[i] = constant ? value : in.byte();

    // 0 no mask, 1 mask, 2 mask of the wrong size, 3 mask and seed map,
    // 4 seed map alone.
    int masking = in.range(0, 4);
    VelkImage mask(masking == 2 ? fw + 1 : fw, fh, 1);
    for (int i = 0; i < fw * fh; i++) mask.data[i] = in.byte();
    VelkImage seedMap;
    VelkImage* maskArg = masking >= 1 && masking <= 3 ? &mask : nullptr;
    VelkImage* seedArg = masking >= 3 ? &seedMap : nullptr;

    // Read last, so that older inputs keep their meaning: orientation, periodic
    // axes, no-data handling with its fill and (masking 1) the mask as its mask.
    const int domain = in.range(0, 15);
    const int fill = in.byte();
    engine.setOrientation(domain & 1);
    engine.setPeriodic(domain & 2, domain & 4);
    engine.setNoData(domain & 8, fill);
    if ((domain & 8) && masking == 1) engine.setNoDataMask(&mask);

    VelkImage output;
    velkfuzz::Quiet quiet;
    int ok = engine.compute(&field, &texture, &output, maskArg, seedArg);
    quiet.finish();
    FUZZ_CHECK(quiet.errors() == 0);
    FUZZ_CHECK(ok == (masking == 2 ? 0 : 1));
    FUZZ_CHECK(engine.points == nullptr && engine.accum == nullptr);
    if (!ok) return 0;

    FUZZ_CHECK(output.width == tw && output.height == th && output.nChannels == channels);
    FUZZ_CHECK(engine.numFieldLines >= 0 && engine.totalHits >= 0);
    if (seedArg) FUZZ_CHECK(seedMap.width == tw && seedMap.height == th);
    if (domain & 8) FUZZ_CHECK(engine.getWeight().width == tw && engine.getWeight().height == th);
    if (constant) {
        bool exact = ordinary && tw >= 2 && th >= 2;
        for (int i = 0; i < tw * th * channels; i++) {
            const bool filled = (domain & 8) && output.data[i] == fill;
            FUZZ_CHECK(output.data[i] <= value || filled);
            if (exact) {
                FUZZ_CHECK(output.data[i] == value || output.data[i] == 0 || filled);
            }
        }
    }
    return 0;
}
