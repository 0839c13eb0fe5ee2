#include <velk/velk.h>

#include <cstdio>
#include <cstring>

int main() {
    const char* record = kovrapackage_velk();
    if (std::strstr(record, "product|velk|") == nullptr) {
        std::fprintf(stderr, "unexpected build record: %s\n", record);
        return 1;
    }
    VelkVectorField field(8, 8, nullptr);
    field.setCircle(0.0f);
    VelkImage noise(16, 16);
    noise.createRandom(0, 1);
    std::printf("%s\nmax %.3f\n", record, field.getMax());
    return field.getMax() > 0.7f ? 0 : 1;
}
