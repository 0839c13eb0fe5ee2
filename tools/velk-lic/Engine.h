#ifndef VELK_LIC_ENGINE_H
#define VELK_LIC_ENGINE_H

#include <string>

struct Options;
class VelkCompute;
class VelkImage;
class VelkVectorField;

// Sets kernel, filter length, sub-pixels, lookup, integrator, normalisation,
// seeding order and the domain settings from the options, with the no-data
// mask (or null), and the engine's threads (as VelkCompute::setThreads: 0 the
// sequential algorithm, -1 one per core). The engine's fill is 0: the tool
// fills in the finished picture.
void configureEngine(const Options& options, int threads, VelkImage* noDataMask,
                     VelkCompute& engine);

// How the threads of --threads are spent on the frames of an animation:
// `frames` of them are computed side by side, each LIC on `engineThreads`.
// Any split gives the same pictures, as the tiled algorithm does not depend on
// its thread count; --threads 0 gives one frame at a time, sequentially, and
// --blur and --enhance one frame at a time on all threads.
struct ThreadShare {
    int frames;
    int engineThreads;
};
ThreadShare shareThreads(const Options& options, const VelkImage& texture);

// Throws ToolError when a LIC of the texture's size with these settings would
// need more memory than the tool allows.
void checkEngineMemory(const Options& options, const VelkImage& texture);

// Reads a mask picture (grey, of the field grid's size); `role` names it in
// messages. Throws ToolError.
void readMask(const std::string& path, const char* role, const VelkVectorField& field,
              VelkImage& mask);

// Computes the LIC of `texture` into `lic` in --iterations passes (enhanced
// with --enhance); with a mask, the pixels whose centre lies where the mask is
// 0 become 0.
void computeLic(const Options& options, VelkCompute& engine, VelkVectorField& field,
                VelkImage& texture, VelkImage* mask, VelkImage& lic);

#endif
