#ifndef VELK_TESTS_IMAGETESTSUPPORT_H
#define VELK_TESTS_IMAGETESTSUPPORT_H

#include <vector>

#include "velk/velk.h"

namespace imagetest {

// A compact image whose bytes, in memory order (row 0 first), are `values`.
inline VelkImage makeImage(int w, int h, int channels, const std::vector<int>& values) {
    VelkImage image(w, h, channels);
    for (size_t i = 0; i < values.size(); i++)
        image.data[i] = static_cast<unsigned char>(values[i]);
    return image;
}

// All bytes of a compact image in memory order.
inline std::vector<int> bytesOf(const VelkImage& image) {
    return std::vector<int>(image.data, image.data + image.width * image.height * image.nChannels);
}

}  // namespace imagetest

#endif
