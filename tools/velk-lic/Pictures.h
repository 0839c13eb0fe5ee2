#ifndef VELK_LIC_PICTURES_H
#define VELK_LIC_PICTURES_H

#include <string>

class VelkImage;

// Reads a PNM (through the library) or PNG picture; `role` names the picture
// in messages ("texture", "mask", ...). Throws ToolError on any failure,
// including sizes beyond kMaxPictureSide.
void readPicture(const std::string& path, const char* role, VelkImage& image);

// Writes a grey or RGB picture as PNG or as the library's PNM, complete or not
// at all (see PendingFile). An alpha channel (one channel, the picture's size)
// makes the PNG grey or RGB with alpha.
void writePng(const VelkImage& image, const std::string& path, const VelkImage* alpha = nullptr);
void writePnm(VelkImage& image, const std::string& path, bool ascii);

// The 256-line histogram of the picture's grey values.
void writeHistogram(const VelkImage& image, const std::string& path);

#endif
