#include <cstddef>

#include <velk/VelkImage.h>
#include "destination.h"

namespace {

// A run from xl to xr on row y whose neighbours on row y + dy are still to be
// examined. Full ints, so images of any width and height are safe.
struct Segment {
    int y;
    int xl;
    int xr;
    int dy;
};

constexpr int kStackSegments = 10000;

}  // namespace

int VelkImage::floodFill(int x, int y, int value, int* bbox, VelkImage* dst) {
    velk::Destination dest(*this, dst);
    if (!dest.inPlace()) dest.assign(*this);
    VelkImage& image = dest.target();

    int localBox[4];
    int* box = bbox ? bbox : localBox;
    box[0] = x;
    box[1] = y;
    box[2] = x;
    box[3] = y;

    const int w = image.width;
    const int h = image.height;
    if (x < 0 || x > w - 1 || y < 0 || y > h - 1) return 0;
    const int old = image.data[static_cast<ptrdiff_t>(y) * image.bytesPerLine + x];
    if (old == value) return 0;
    const unsigned char fill = static_cast<unsigned char>(value);
    // Stored as its low byte, such a value would leave every pixel matching
    // the old one and the fill would never end.
    if (fill == old) return 0;

    Segment stack[kStackSegments];
    int top = 0;
    auto push = [&](int Y, int XL, int XR, int DY) {
        if (Y < box[1]) box[1] = Y;
        if (Y > box[3]) box[3] = Y;
        if (XL < box[0]) box[0] = XL;
        if (XR > box[2]) box[2] = XR;
        // A full stack drops the segment: very complex regions stay partly unfilled.
        if (top < kStackSegments && Y + DY >= 0 && Y + DY <= h - 1) stack[top++] = {Y, XL, XR, DY};
    };

    int count = 0;
    push(y, x, x, 1);
    push(y + 1, x, x, -1);
    while (top > 0) {
        const Segment s = stack[--top];
        const int r = s.y + s.dy;
        unsigned char* row = image.data + static_cast<ptrdiff_t>(r) * image.bytesPerLine;

        int px = s.xl;
        for (; px >= 0 && row[px] == old; px--, count++) row[px] = fill;
        bool skip = px >= s.xl;  // nothing written on the left
        int left = px + 1;
        if (!skip) {
            if (left < s.xl) push(r, left, s.xl - 1, -s.dy);
            px = s.xl + 1;
        }
        do {
            if (!skip) {
                for (; px <= w - 1 && row[px] == old; px++, count++) row[px] = fill;
                push(r, left, px - 1, s.dy);
                if (px > s.xr + 1) push(r, s.xr + 1, px - 1, -s.dy);
            }
            skip = false;
            for (px++; px <= s.xr && row[px] != old; px++) {
            }
            left = px;
        } while (px <= s.xr);
    }
    return count;
}
