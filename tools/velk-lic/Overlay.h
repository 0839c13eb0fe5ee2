#ifndef VELK_LIC_OVERLAY_H
#define VELK_LIC_OVERLAY_H

struct Options;
class VelkImage;

// Draws the UCD mesh edges (default pen: black, one pixel) and then the
// "VELK GRAPHICS" command file the options name; throws ToolError when either
// cannot be drawn.
void drawOverlays(const Options& options, VelkImage& picture);

#endif
