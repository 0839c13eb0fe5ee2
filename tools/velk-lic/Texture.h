#ifndef VELK_LIC_TEXTURE_H
#define VELK_LIC_TEXTURE_H

struct Options;
class VelkImage;

// The input texture: white noise, or the picture given with --texture.
void makeTexture(const Options& options, VelkImage& texture);

#endif
