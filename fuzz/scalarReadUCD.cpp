// VelkScalarField::readUCD on arbitrary mesh files, onto grids of varied size.

#include <velk/VelkScalarField.h>
#include "FieldCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    int nx = choices.range(0, 48);
    int ny = choices.range(0, 48);
    velkfuzz::checkReadUCD<VelkScalarField>(path, nx, ny, 1);
    return 0;
}
