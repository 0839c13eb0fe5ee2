// VelkImage::readPNM on arbitrary files; a loaded image must survive a
// binary write and read unchanged.

#include <climits>
#include <cstring>

#include <velk/VelkImage.h>
#include "FuzzSupport.h"

namespace {

// Round trips stay cheap; larger images are only read.
constexpr long long kRoundTripBytes = 1 << 20;

bool sameRows(const VelkImage& a, const VelkImage& b) {
    if (a.width != b.width || a.height != b.height || a.nChannels != b.nChannels) return false;
    int rowBytes = a.width * a.nChannels;
    if (rowBytes == 0 || a.height == 0) return true;
    for (int y = 0; y < a.height; y++) {
        if (std::memcmp(a.data + y * a.bytesPerLine, b.data + y * b.bytesPerLine, rowBytes) != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    VelkImage image;
    velkfuzz::Quiet quiet;
    int ok = image.readPNM(path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (!ok) return 0;

    FUZZ_CHECK(size >= 2);
    bool colour = data[1] == '6' || data[1] == '3';
    FUZZ_CHECK(image.nChannels == (colour ? 3 : 1));
    FUZZ_CHECK(image.width >= 0 && image.height >= 0);
    // Rows the container's int arithmetic can address, even when there are none.
    FUZZ_CHECK(static_cast<long long>(image.width) * image.nChannels <= INT_MAX);
    FUZZ_CHECK(image.bytesPerLine == image.width * image.nChannels);
    long long bytes = static_cast<long long>(image.bytesPerLine) * image.height;
    FUZZ_CHECK(bytes == 0 || image.data != nullptr);
    if (bytes > kRoundTripBytes) return 0;

    // Binary and ASCII files flip rows both ways and store every byte.
    const char* copyPath = velkfuzz::scratchPath(1);
    VelkImage back;
    velkfuzz::Quiet again;
    int ascii = size % 2;
    FUZZ_CHECK(image.writePNM(copyPath, ascii) == 1);
    FUZZ_CHECK(back.readPNM(copyPath) == 1);
    again.finish();
    FUZZ_CHECK(sameRows(image, back));
    return 0;
}
