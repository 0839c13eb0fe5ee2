// VelkGraphics::drawUCD on arbitrary mesh files, into images of varied size,
// channel count and row padding. The pen does not change during the call, so
// every pixel must stay as it was or take the pen colour.

#include <velk/VelkGraphics.h>
#include "FuzzSupport.h"
#include "TargetImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int kWidths[] = {1, 1, 1, 2, 3, 4, 0, -3, 1000};
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    velkfuzz::TargetImage target(choices, false);
    VelkGraphics graphics;
    graphics.setColor(choices.range(0, 255), choices.range(0, 255), choices.range(0, 255));
    graphics.setPixelWidth(choices.pick(kWidths));

    velkfuzz::Quiet quiet;
    int ok = graphics.drawUCD(*target.image, path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));

    VelkImage& image = *target.image;
    FUZZ_CHECK(image.width == target.width && image.height == target.height);
    FUZZ_CHECK(image.nChannels == target.channels);
    FUZZ_CHECK(target.paddingIntact());
    FUZZ_CHECK(target.onlyPenPixels(graphics.rgb, graphics.grey));
    return 0;
}
