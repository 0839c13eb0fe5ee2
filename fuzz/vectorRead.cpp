// VelkVectorField::read on arbitrary files ("VELK VECTOR", ASCII or binary).
// A loaded field must come back from the library's own writer: exactly from
// an ASCII file up to "%g" precision, byte-reversed from a binary one.

#include <velk/VelkVectorField.h>
#include "FieldCheck.h"
#include "FuzzSupport.h"

namespace {

constexpr long long kRoundTripNodes = 1 << 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    VelkVectorField field;
    velkfuzz::Quiet quiet;
    int ok = field.read(path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (!ok) {
        // Rejected before any store, or left with the size the header gave.
        FUZZ_CHECK((field.width == 0 && field.height == 0) ||
                   (field.width >= 2 && field.height >= 2 && field.data != nullptr));
        return 0;
    }
    FUZZ_CHECK(field.width >= 2 && field.width <= 10000);
    FUZZ_CHECK(field.height >= 2 && field.height <= 10000);
    FUZZ_CHECK(field.data != nullptr);
    long long n = static_cast<long long>(field.width) * field.height;
    if (n > kRoundTripNodes) return 0;

    int ascii = size % 2;
    const char* copyPath = velkfuzz::scratchPath(1);
    VelkVectorField back;
    velkfuzz::Quiet again;
    FUZZ_CHECK(field.write(copyPath, ascii) == 1);
    FUZZ_CHECK(back.read(copyPath) == 1);
    again.finish();
    FUZZ_CHECK(back.width == field.width && back.height == field.height);
    for (long long i = 0; i < 2 * n; i++) {
        float v = field.data[i];
        float expected = ascii ? velkfuzz::throughText(v) : velkfuzz::byteSwapped(v);
        FUZZ_CHECK(velkfuzz::sameFloat(back.data[i], expected));
    }
    return 0;
}
