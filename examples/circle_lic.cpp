// The smallest complete use of velk: a LIC picture of a circular flow.
//
//   circle_lic [out.pgm]

#include <cstdio>

#include <velk/velk.h>

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "lic.pgm";

    // A 64 x 64 grid turning counter-clockwise around its centre.
    VelkVectorField field(64, 64, nullptr);
    field.setCircle(0.0f);

    // White noise as the texture; its size is the size of the picture.
    VelkImage noise(512, 512), lic;
    noise.createRandom(0, 1);

    // Default settings: triangle kernel of half-length 20, adaptive RK43 lines.
    VelkCompute engine;
    if (!engine.compute(&field, &noise, &lic, nullptr, nullptr)) return 1;

    // Stretch the contrast of the (rather grey) result, then save it.
    lic.autoAdjust(128.0f, 48.0f, nullptr);
    if (!lic.writePNM(path, 0)) return 1;
    std::printf("wrote %s (%dx%d)\n", path, lic.width, lic.height);
    return 0;
}
