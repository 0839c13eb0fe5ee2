#include <velk/velk.h>

// Only the public headers are reachable: a consumer's own "report.h" or
// "periodic.h" can never resolve to one of velk's, nor can an internal helper.
#if __has_include("periodic.h") || __has_include(<velk/periodic.h>) || \
    __has_include("fieldeval.h") || __has_include("report.h") || __has_include("cfile.h")
#error "an internal or unprefixed velk header is on the consumer's include path"
#endif

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
