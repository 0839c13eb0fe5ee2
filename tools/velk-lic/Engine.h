#ifndef VELK_LIC_ENGINE_H
#define VELK_LIC_ENGINE_H

#include <string>

struct Options;
class VelkCompute;
class VelkImage;
class VelkVectorField;

// Sets kernel, filter length, sub-pixels, lookup, integrator, normalisation
// and seeding order from the options.
void configureEngine(const Options& options, VelkCompute& engine);

// Throws ToolError when a LIC of the texture's size with these settings would
// need more memory than the tool allows.
void checkEngineMemory(const Options& options, const VelkImage& texture);

// Reads the mask picture (grey, of the field grid's size); throws ToolError.
void readMask(const std::string& path, const VelkVectorField& field, VelkImage& mask);

// Computes the LIC of `texture` into `lic`; with a mask, the pixels whose
// centre lies where the mask is 0 become 0.
void computeLic(VelkCompute& engine, VelkVectorField& field, VelkImage& texture, VelkImage* mask,
                VelkImage& lic);

#endif
