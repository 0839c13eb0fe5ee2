// VelkVectorField::readUCD on arbitrary mesh files, onto grids of varied
// size, without a box and then with one (ordinary, zoomed, inverted,
// degenerate, huge, not a number). A failed read leaves the field as it was.

#include <limits>

#include <velk/VelkVectorField.h>
#include "FieldCheck.h"
#include "FuzzSupport.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

const float kBoxes[][4] = {
    {0.0f, 1.0f, 0.0f, 1.0f},         {-1.0f, 2.0f, -0.5f, 1.5f}, {0.25f, 0.5f, 0.25f, 0.5f},
    {1.0f, 0.0f, 1.0f, 0.0f},         {0.0f, 0.0f, 0.0f, 1.0f},   {0.0f, 1e-30f, 0.0f, 1e-30f},
    {-1e30f, 1e30f, -1e30f, 1e30f},   {kNaN, 1.0f, 0.0f, 1.0f},   {0.0f, kInf, 0.0f, 1.0f},
    {-100.0f, 100.0f, -50.0f, 50.0f}, {0.0f, 10.0f, 0.0f, 10.0f}, {3.0f, 4.0f, -7.0f, -2.0f},
};

// A 3 x 2 field with known values, to see that failures leave it alone.
void prepare(VelkVectorField& field) {
    field.setSize(3, 2);
    for (int i = 0; i < 12; i++) field.data[i] = static_cast<float>(i) - 5.5f;
}

bool unchanged(const VelkVectorField& field) {
    if (field.width != 3 || field.height != 2) return false;
    for (int i = 0; i < 12; i++) {
        if (field.data[i] != static_cast<float>(i) - 5.5f) return false;
    }
    return true;
}

void readOnce(const char* path, int nx, int ny, float* box) {
    VelkVectorField field;
    prepare(field);
    velkfuzz::Quiet quiet;
    int ok = box ? field.readUCD(path, nx, ny, box) : field.readUCD(path, nx, ny);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (!ok) {
        // Unchanged, or emptied when its memory could not be had.
        FUZZ_CHECK(unchanged(field) || (field.width == 0 && field.height == 0));
        return;
    }
    FUZZ_CHECK(field.width == nx && field.height == ny && field.data != nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = velkfuzz::writeScratch(0, data, size);
    velkfuzz::Choices choices(data, size);
    int nx = choices.range(0, 48);
    int ny = choices.range(0, 48);
    float box[4];
    const float(&chosen)[4] = choices.pick(kBoxes);
    for (int i = 0; i < 4; i++) box[i] = chosen[i];
    readOnce(path, nx, ny, nullptr);
    readOnce(path, nx, ny, box);
    return 0;
}
