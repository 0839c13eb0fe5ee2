// VelkScalarField::readUCD on arbitrary mesh files, onto grids of varied
// size. A failed read leaves the field as it was.

#include <velk/VelkScalarField.h>
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    int nx = choices.range(0, 48);
    int ny = choices.range(0, 48);

    VelkScalarField field;
    field.setSize(2, 3);
    for (int i = 0; i < 6; i++) field.data[i] = static_cast<float>(i) * 0.25f;
    velkfuzz::Quiet quiet;
    int ok = field.readUCD(path, nx, ny);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (!ok) {
        if (field.width == 0 && field.height == 0) return 0;  // memory could not be had
        FUZZ_CHECK(field.width == 2 && field.height == 3);
        for (int i = 0; i < 6; i++) FUZZ_CHECK(field.data[i] == static_cast<float>(i) * 0.25f);
        return 0;
    }
    FUZZ_CHECK(field.width == nx && field.height == ny && field.data != nullptr);
    return 0;
}
