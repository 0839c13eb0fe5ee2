#ifndef VELK_FUZZ_TARGETIMAGE_H
#define VELK_FUZZ_TARGETIMAGE_H

#include <cstdlib>
#include <cstring>
#include <vector>

#include <velk/VelkImage.h>
#include "FuzzSupport.h"

namespace velkfuzz {

// An image to draw into, of a size and channel count chosen from the input.
// Half of them borrow a buffer with padded rows, allocated to the exact size
// so that the sanitizer sees any overrun; the padding holds a pattern that
// drawing must leave alone. With `large`, one in 128 is a 48-megabyte grey
// image, whose RGB version is beyond the fuzzers' allocation limit.
class TargetImage {
  public:
    TargetImage(Choices& choices, bool large) {
        static const int kChannels[] = {1, 3, 1, 3, 2, 4};
        int w = choices.range(0, 40);
        int h = choices.range(0, 40);
        int c = choices.pick(kChannels);
        if (large && choices.range(0, 127) == 0) {
            w = 8000;
            h = 6000;
            c = 1;
            image = new VelkImage(w, h, c);
            if (image->data == nullptr) {  // a limit below even this size
                delete image;
                w = h = 0;
                image = new VelkImage(w, h, c);
            }
            stride = w;
            bytes = static_cast<std::size_t>(w) * h;
            if (bytes > 0) std::memset(image->data, static_cast<int>(choices.next() & 0xff), bytes);
        } else if (choices.range(0, 1)) {
            stride = w * c + choices.range(0, 5);
            bytes = static_cast<std::size_t>(stride) * h;
            buffer = static_cast<unsigned char*>(std::malloc(bytes ? bytes : 1));
            for (std::size_t i = 0; i < bytes; i++) buffer[i] = static_cast<unsigned char>(i * 7);
            image = new VelkImage(w, h, c, stride, buffer);
        } else {
            image = new VelkImage(w, h, c);
            stride = w * c;
            bytes = static_cast<std::size_t>(stride) * h;
        }
        for (int y = 0; y < h && bytes <= kRandomBytes; y++) {
            for (int x = 0; x < w * c; x++) {
                image->data[y * stride + x] = static_cast<unsigned char>(choices.next());
            }
        }
        width = w;
        height = h;
        channels = c;
        before.assign(image->data, image->data + bytes);
    }
    ~TargetImage() {
        delete image;
        std::free(buffer);
    }
    TargetImage(const TargetImage&) = delete;
    TargetImage& operator=(const TargetImage&) = delete;

    // The padding of a borrowed buffer is as it was.
    bool paddingIntact() const {
        if (!buffer) return true;
        for (int y = 0; y < height; y++) {
            for (int x = width * channels; x < stride; x++) {
                std::size_t i = static_cast<std::size_t>(y) * stride + x;
                if (buffer[i] != before[i]) return false;
            }
        }
        return true;
    }

    // Every pixel is as it was or painted in the pen colour (rgb on 3
    // channels, grey in every channel otherwise).
    bool onlyPenPixels(const unsigned char rgb[3], unsigned char grey) const {
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                const unsigned char* now = image->data + y * stride + x * channels;
                const unsigned char* was = before.data() + y * stride + x * channels;
                if (std::memcmp(now, was, channels) == 0) continue;
                for (int c = 0; c < channels; c++) {
                    if (now[c] != (channels == 3 ? rgb[c] : grey)) return false;
                }
            }
        }
        return true;
    }

    VelkImage* image;
    int width;
    int height;
    int channels;

  private:
    static constexpr std::size_t kRandomBytes = 1 << 16;
    unsigned char* buffer = nullptr;
    int stride;
    std::size_t bytes;
    std::vector<unsigned char> before;
};

}  // namespace velkfuzz

#endif
