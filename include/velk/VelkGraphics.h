#ifndef VELK_VELKGRAPHICS_H
#define VELK_VELKGRAPHICS_H

#include <velk/velk_export.h>

class VelkImage;

// Draws overlays into images: square pen pixels, Bresenham lines, the edges
// of a UCD triangle mesh and "VELK GRAPHICS" command files. Drawing outside
// the image is clipped. The pen (colour and width) persists across calls; no
// image is kept between calls.
class VELK_EXPORT VelkGraphics {
  public:
    unsigned char rgb[3];  // pen colour on 3-channel images
    unsigned char grey;    // pen value on images with any other channel count
    int pixelWidth;        // side of the square drawn per pixel
    int halfWidth;         // pixelWidth / 2

    // Black pen, 1 pixel wide.
    VelkGraphics();
    ~VelkGraphics();

    // Keeps the low 8 bits of each component; grey is their luminance,
    // clamped to 0..255.
    void setColor(int r, int g, int b);
    void setPixelWidth(int w);

    // Paints the pen square with corner (x - halfWidth, y - halfWidth).
    void drawPixel(VelkImage& image, int x, int y);
    // Both end points are drawn; the line is the same either way round.
    void drawLine(VelkImage& image, int x0, int y0, int x1, int y1);

    // Executes a "VELK GRAPHICS" command file; may promote a grey image to
    // RGB. 1 on success; 0 after an error report, keeping what was drawn.
    int drawFile(VelkImage& image, const char* path);
    // Draws every triangle edge of a UCD mesh, fitted into the image. 1 on
    // success, 0 after an error report.
    int drawUCD(VelkImage& image, const char* path);
};

#endif
