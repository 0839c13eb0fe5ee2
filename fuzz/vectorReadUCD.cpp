// VelkVectorField::readUCD on arbitrary mesh files, onto grids of varied
// size, without a box and then with one (ordinary, zoomed, inverted,
// degenerate, huge, not a number).

#include <limits>

#include <velk/VelkVectorField.h>
#include "FieldCheck.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

const float kBoxes[][4] = {
    {0.0f, 1.0f, 0.0f, 1.0f},         {-1.0f, 2.0f, -0.5f, 1.5f}, {0.25f, 0.5f, 0.25f, 0.5f},
    {1.0f, 0.0f, 1.0f, 0.0f},         {0.0f, 0.0f, 0.0f, 1.0f},   {0.0f, 1e-30f, 0.0f, 1e-30f},
    {-1e30f, 1e30f, -1e30f, 1e30f},   {kNaN, 1.0f, 0.0f, 1.0f},   {0.0f, kInf, 0.0f, 1.0f},
    {-100.0f, 100.0f, -50.0f, 50.0f}, {0.0f, 10.0f, 0.0f, 10.0f}, {3.0f, 4.0f, -7.0f, -2.0f},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    int nx = choices.range(0, 48);
    int ny = choices.range(0, 48);
    float box[4];
    const float(&chosen)[4] = choices.pick(kBoxes);
    for (int i = 0; i < 4; i++) box[i] = chosen[i];
    velkfuzz::checkReadUCD<VelkVectorField>(path, nx, ny, 2);
    velkfuzz::checkReadUCD<VelkVectorField>(path, nx, ny, 2, box);
    return 0;
}
