#include <velk/byteorder.h>

void swapByteOrder(int n, void* data) {
    unsigned char* p = static_cast<unsigned char*>(data);
    for (int i = 0; i < n; i++, p += 4) {
        unsigned char b0 = p[0];
        unsigned char b1 = p[1];
        p[0] = p[3];
        p[1] = p[2];
        p[2] = b1;
        p[3] = b0;
    }
}
