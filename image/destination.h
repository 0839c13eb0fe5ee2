#ifndef VELK_IMAGE_DESTINATION_H
#define VELK_IMAGE_DESTINATION_H

#include <velk/VelkImage.h>

namespace velk {

// Where an operation with a trailing `VelkImage* dst` puts its result: into
// `dst` when given, otherwise back into the image itself. A `dst` that is the
// image itself counts as in place, so a result is never written over the
// pixels it is still being computed from.
class Destination {
  public:
    Destination(VelkImage& self, VelkImage* dst) : self(self), dst(dst == &self ? nullptr : dst) {}
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    bool inPlace() const { return dst == nullptr; }

    // The image written directly while the source is read: dst, or the image.
    VelkImage& target() const { return dst ? *dst : self; }

    // Hands over a result built in a temporary (resize and copy).
    void assign(const VelkImage& result) const { target() = result; }

    // An output that must not share pixels with the source: dst, or a
    // temporary that commit() then copies onto the image itself.
    VelkImage& separate() { return dst ? *dst : scratch; }
    void commit() {
        if (!dst) self = scratch;
    }

  private:
    VelkImage& self;
    VelkImage* dst;
    VelkImage scratch;
};

// Byte count of a compact width x height x channels image, or -1 when a size
// is negative or the count does not fit the int arithmetic of the container;
// that includes the bytes of one row, also when there are no rows.
inline int imageBytes(long long width, long long height, long long channels) {
    if (width < 0 || height < 0 || channels < 0) return -1;
    if (width > 0x7fffffffLL || channels > 0x7fffffffLL) return -1;
    if (width * channels > 0x7fffffffLL) return -1;
    long long bytes = width * height;
    if (bytes > 0x7fffffffLL) return -1;
    bytes *= channels;
    return bytes > 0x7fffffffLL ? -1 : static_cast<int>(bytes);
}

}  // namespace velk

#endif
