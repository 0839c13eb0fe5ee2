// Must not compile: velk's internal headers are not on a consumer's path.
#include "periodic.h"

int main() {
    return 0;
}
