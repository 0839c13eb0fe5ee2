// VelkColormap::readIcol on arbitrary files. Failures are told on the
// standard error stream with one of the two messages; a loaded map keeps its
// range in step and comes back from the library's writer as the file format
// allows: components truncated to (int)(255 c), the range to "%g".

#include <climits>
#include <cmath>
#include <string>

#include <velk/VelkColormap.h>
#include "FieldCheck.h"
#include "FuzzSupport.h"

namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// A component as an icol file stores it; out-of-range values saturate.
int stored(float c) {
    float v = 255.0f * c;
    if (std::isnan(v)) return 0;
    if (v >= 2147483648.0f) return INT_MAX;
    if (v < -2147483648.0f) return INT_MIN;
    return static_cast<int>(v);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    VelkColormap map;
    velkfuzz::Quiet quiet;
    int ok = map.readIcol(path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK(quiet.errors() == 0);
    std::string told = quiet.stderrText();
    if (!ok) {
        FUZZ_CHECK(startsWith(told, "Illegal format in "));
        return 0;
    }
    FUZZ_CHECK(told.empty());
    FUZZ_CHECK(velkfuzz::sameFloat(map.scale, 1.0f / (map.max - map.min)));

    // "%4d" runs a number of four or more characters into the one before it,
    // so only maps whose stored components are -99 .. 999 can come back.
    for (int e = 0; e < 256; e++) {
        for (int c = 0; c < 3; c++) {
            int v = stored(map.colors[e][c]);
            if (v < -99 || v > 999) return 0;
        }
    }

    const char* copyPath = velkfuzz::scratchPath(1);
    VelkColormap back;
    velkfuzz::Quiet again;
    FUZZ_CHECK(map.writeIcol(copyPath) == 1);
    FUZZ_CHECK(back.readIcol(copyPath) == 1);
    again.finish();
    for (int e = 0; e < 256; e++) {
        for (int c = 0; c < 3; c++) {
            float expected = static_cast<float>(stored(map.colors[e][c])) * (1.0f / 255.0f);
            FUZZ_CHECK(velkfuzz::sameFloat(back.colors[e][c], expected));
        }
    }
    FUZZ_CHECK(velkfuzz::sameFloat(back.min, velkfuzz::throughText(map.min)));
    FUZZ_CHECK(velkfuzz::sameFloat(back.max, velkfuzz::throughText(map.max)));
    return 0;
}
