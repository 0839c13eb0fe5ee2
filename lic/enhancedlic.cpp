#include <velk/enhancedlic.h>

#include <velk/VelkCompute.h>
#include <velk/VelkImage.h>

namespace {

// A blur of deviation 5 pixels over 9 taps: on the circle field the
// across-over-along contrast of LIC, high-pass, LIC grows with the blur up to
// about this width and no further.
const int kBlurTaps = 5;

// One grey plane minus its blur, re-centred at 128 and spread over the full
// range, so the next pass sees a texture as strong as the first pass's noise.
void highPassPlane(VelkImage& plane) {
    VelkImage blurred;
    plane.gaussBlur(kBlurTaps, &blurred);
    plane.subtract(blurred, nullptr);
    plane.equalize();
}

// The blur works on one byte per pixel, so colour goes plane by plane.
bool highPass(VelkImage& image) {
    if (image.nChannels == 1) {
        highPassPlane(image);
        return true;
    }
    if (image.nChannels != 3) return false;
    VelkImage planes[3];
    for (int c = 0; c < 3; c++) {
        image.oneband(c, &planes[c]);
        highPassPlane(planes[c]);
    }
    return image.glue(planes[0], planes[1], planes[2]) == 1;
}

}  // namespace

int velk_enhancedLic(VelkCompute& engine, VelkVectorField* field, VelkImage* texture,
                     VelkImage* output, int iterations, bool enhance) {
    if (iterations < 1 || !engine.compute(field, texture, output)) return 0;
    for (int pass = 1; pass < iterations; pass++) {
        VelkImage next(*output);
        if (enhance && !highPass(next)) return 0;
        if (!engine.compute(field, &next, output)) return 0;
    }
    return 1;
}
