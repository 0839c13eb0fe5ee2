// VelkScalarField::read on arbitrary files ("VELK SCALAR", ASCII or binary);
// a binary file comes back from the writer exactly.

#include <velk/VelkScalarField.h>
#include "FieldCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velkfuzz::checkRead<VelkScalarField>(data, size, 1, velkfuzz::unchanged);
    return 0;
}
