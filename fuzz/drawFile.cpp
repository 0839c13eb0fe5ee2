// VelkGraphics::drawFile on arbitrary command files, into images of varied
// size, channel count and row padding, with varied starting pens.

#include <velk/VelkGraphics.h>
#include "FuzzSupport.h"
#include "TargetImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int kWidths[] = {1, 1, 1, 2, 3, 4, 0, -3, 1000};
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    velkfuzz::TargetImage target(choices, true);
    VelkGraphics graphics;
    graphics.setColor(choices.range(-300, 300), choices.range(-300, 300), choices.range(-300, 300));
    graphics.setPixelWidth(choices.pick(kWidths));

    velkfuzz::Quiet quiet;
    int ok = graphics.drawFile(*target.image, path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));

    VelkImage& image = *target.image;
    FUZZ_CHECK(image.width == target.width && image.height == target.height);
    // Promotion to colour is the only change of shape.
    FUZZ_CHECK(image.nChannels == target.channels ||
               (image.nChannels == 3 && image.bytesPerLine == 3 * image.width));
    FUZZ_CHECK(target.paddingIntact());
    FUZZ_CHECK(graphics.halfWidth == graphics.pixelWidth / 2);
    return 0;
}
