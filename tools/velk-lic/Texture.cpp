#include "Texture.h"

#include <velk/velk.h>

#include "Options.h"
#include "Pictures.h"

void makeTexture(const Options& o, VelkImage& texture) {
    if (!o.texturePath.empty()) {
        readPicture(o.texturePath, "texture", texture);
        return;
    }
    const int channels = o.noise == NoiseKind::Color ? 3 : 1;
    texture.setSize(o.noiseSize.width, o.noiseSize.height, channels);
    texture.createRandom(o.noise == NoiseKind::Binary ? 1 : 0, o.seed);
}
