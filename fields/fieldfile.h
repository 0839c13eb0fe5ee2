#ifndef VELK_FIELDS_FIELDFILE_H
#define VELK_FIELDS_FIELDFILE_H

#include <cstdio>

namespace velk {

// The two header lines shared by the "VELK VECTOR" and "VELK SCALAR" files:
// "<magic> ASCII\n" or "<magic> BINARY\n", then "<width> <height>\n".
void writeFieldHeader(std::FILE* file, const char* magic, int ascii, int width, int height);

// Reads those lines back. Line 1 (at most 62 characters) must contain `magic`
// and selects binary data when it also contains "BINARY"; line 2 must give two
// integers in 2 .. 10000. Otherwise reports "header string '<magic>' not found"
// or `badSize` through velk_ioerror and returns 0. Returns 1 on success.
int readFieldHeader(std::FILE* file, const char* path, const char* magic, const char* badSize,
                    int& binary, int& width, int& height);

}  // namespace velk

#endif
