#ifndef VELK_TESTS_IMAGETESTSUPPORT_H
#define VELK_TESTS_IMAGETESTSUPPORT_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velk/velk.h>

namespace imagetest {

typedef std::vector<int> Bytes;

// A compact image whose bytes, in memory order (row 0 first), are `values`.
inline VelkImage makeImage(int w, int h, int channels, const Bytes& values) {
    VelkImage image(w, h, channels);
    for (size_t i = 0; i < values.size(); i++)
        image.data[i] = static_cast<unsigned char>(values[i]);
    return image;
}

// A one-channel image with value(x, y) at every pixel.
template <typename F>
VelkImage greyImage(int w, int h, F value) {
    VelkImage image(w, h, 1);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) image.data[y * w + x] = static_cast<unsigned char>(value(x, y));
    return image;
}

// All bytes of a compact image in memory order.
inline Bytes bytesOf(const VelkImage& image) {
    if (image.data == nullptr) return {};
    return Bytes(image.data, image.data + image.width * image.height * image.nChannels);
}

// What `operation` wrote to the standard error stream.
template <typename F>
std::string stderrOf(F operation) {
    testing::internal::CaptureStderr();
    operation();
    return testing::internal::GetCapturedStderr();
}

}  // namespace imagetest

using imagetest::Bytes;
using imagetest::bytesOf;
using imagetest::greyImage;
using imagetest::makeImage;
using imagetest::stderrOf;

#endif
