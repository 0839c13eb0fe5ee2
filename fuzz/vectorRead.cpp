// VelkVectorField::read on arbitrary files ("VELK VECTOR", ASCII or binary);
// a binary file comes back from the writer byte-reversed.

#include <velk/VelkVectorField.h>
#include "FieldCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velkfuzz::checkRead<VelkVectorField>(data, size, 2, velkfuzz::byteSwapped);
    return 0;
}
