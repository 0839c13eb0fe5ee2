#ifndef VELK_LIC_OPTIONS_H
#define VELK_LIC_OPTIONS_H

#include <string>

#include <velk/VelkCompute.h>

struct Size {
    int width;
    int height;
};

enum class FieldSource { Circle, Saddle, Linear, Brusselator, File, Ucd, Image, Scalar };
enum class NoiseKind { Grey, Binary, Color };
enum class Integrator { Rk43, Midpoint };
enum class Seeding { Scan, Offset, Sobol };  // the engine's seedingMode values
enum class Contrast { Auto, Brighten, None, Equalize, EqualizeAdaptive };
enum class Emboss { None, Light, Flow };
enum class Coloring { None, Direction, Magnitude, Scalar };
enum class OutputFormat { Png, Pnm };

// Everything the command line sets, with the defaults --help shows.
struct Options {
    // Output.
    std::string output;
    OutputFormat format = OutputFormat::Png;
    bool ascii = false;
    std::string histogram;
    bool verbose = false;

    // Field.
    FieldSource field = FieldSource::Circle;
    std::string fieldPath;  // File, Ucd, Image, Scalar
    Size grid = {64, 64};
    float angle = 0.0f;
    float matrix[2][2] = {{0.2f, 1.0f}, {-1.0f, 0.1f}};
    float offset[2] = {0.1f, 0.0f};
    float brusselator[4] = {4.0f, 4.0f, 1.0f, 3.0f};
    bool hasBbox = false;
    float bbox[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float gradientAngle = 0.0f;

    // Texture.
    NoiseKind noise = NoiseKind::Grey;
    int seed = 1;
    Size noiseSize = {512, 512};
    std::string texturePath;

    // Engine.
    VelkCompute::FilterKernel kernel = VelkCompute::TRIANGLE;
    float length = 20.0f;
    int subPixels = 1;
    VelkCompute::InterpolationMethod lookup = VelkCompute::BILINEAR;
    Integrator integrator = Integrator::Rk43;
    float rk43[4] = {4.0f, 0.5f, 15.0f, 0.001f};  // initial, min, max step; tolerance
    float normalization = 0.0f;
    Seeding seeding = Seeding::Offset;
    std::string maskPath;
    int threads = -1;    // 0: the sequential algorithm; -1: one thread per core
    int iterations = 1;  // 2 when --enhance comes without --iterations
    bool enhance = false;
    bool orientation = false;
    bool periodicX = false;
    bool periodicY = false;
    bool noData = false;  // no-data handling: set by --nodata-fill, --transparent, --nodata-mask
    int noDataFill = 0;   // of the finished picture's pixels that no line reaches
    bool transparent = false;
    std::string noDataMaskPath;

    // Post-processing.
    Contrast contrast = Contrast::Auto;
    float adjust[2] = {128.0f, 48.0f};
    int window[2] = {0, 255};
    Size equalizeTiles = {8, 8};
    float equalizeClip = 3.0f;
    int blur = 0;
    bool resize = false;
    Size size = {0, 0};
    Emboss emboss = Emboss::None;
    float light[2] = {135.0f, 45.0f};  // degrees
    int relief = 3;
    Coloring coloring = Coloring::None;
    std::string colorScalarPath;
    std::string colormap = "hue";
    bool hasRange = false;
    float range[2] = {0.0f, 1.0f};
    bool flip = false;
    float gamma = 1.0f;
    std::string overlayPath;
    std::string meshPath;

    // Animation.
    int frames = 1;
    float advect = 2.0f;
};

// Largest width and height of any picture the tool makes or reads.
constexpr int kMaxPictureSide = 8192;
// Largest grid of the built-in and mesh fields.
constexpr int kMaxGridSide = 4096;
// Most threads --threads may ask for.
constexpr int kMaxThreads = 256;
// Most LIC passes --iterations may ask for.
constexpr int kMaxIterations = 100;

// Parses the command line. Returns false when --help or --version was answered
// (the caller then exits with status 0); throws UsageError on bad options.
bool parseOptions(int argc, char** argv, Options& options);

// The name of frame `frame` of `count` ("out.png" itself for a single frame,
// "out-0007.png" for frame 7 of several).
std::string frameName(const std::string& output, int frame, int count);

#endif
