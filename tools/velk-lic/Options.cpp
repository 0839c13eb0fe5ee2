#include "Options.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "OptionValue.h"
#include "ToolError.h"

namespace {

// Every option, in the order --help lists them.
// clang-format off
enum class Id {
    Output, Ascii, Histogram, Verbose, Help, Version,
    Field, Grid, Angle, Matrix, Offset, Brusselator, FieldFile, Ucd, Bbox, ImageField, ScalarField,
    GradientAngle,
    Noise, Seed, NoiseSize, Texture,
    Kernel, Length, SubPixels, Lookup, Integrator, Rk43, Normalization, Seeding, Mask, Threads,
    Iterations, Enhance, Orientation, Periodic, NoDataFill, Transparent, NoDataMask,
    Adjust, Brighten, NoAdjust, Equalize, EqualizeTiles, EqualizeClip, Blur, Size, Emboss, Light, Relief, Color, ColorScalar, Colormap,
    Range, Flip, Gamma, Overlay, OverlayMesh,
    Frames, Advect,
    Count
};
// clang-format on

// A condition on the other settings under which an option applies.
struct Requirement {
    bool (*holds)(const Options&);
    const char* unmet;  // completes "option --NAME "
};

// Whether the setting `member` has one of `values`.
template <auto member, auto... values>
bool oneOf(const Options& o) {
    return ((o.*member == values) || ...);
}

using F = FieldSource;
using C = Coloring;

const Requirement kCircle{oneOf<&Options::field, F::Circle>, "applies to --field circle only"};
const Requirement kLinear{oneOf<&Options::field, F::Linear>, "applies to --field linear only"};
const Requirement kBrusselator{oneOf<&Options::field, F::Brusselator>,
                               "applies to --field brusselator only"};
const Requirement kGridded{
    oneOf<&Options::field, F::Circle, F::Linear, F::Brusselator, F::Ucd>,
    "applies to the circle, linear and brusselator fields and to --ucd only"};
const Requirement kUcd{oneOf<&Options::field, F::Ucd>, "needs --ucd"};
const Requirement kGradient{oneOf<&Options::field, F::Image, F::Scalar>,
                            "needs --image-field or --scalar-field"};
const Requirement kNoise{[](const Options& o) { return o.texturePath.empty(); },
                         "cannot be combined with --texture"};
const Requirement kRk43{oneOf<&Options::integrator, Integrator::Rk43>,
                        "applies to --integrator rk43 only"};
const Requirement kAdaptive{oneOf<&Options::contrast, Contrast::EqualizeAdaptive>,
                            "needs --equalize adaptive"};
const Requirement kPasses{[](const Options& o) { return o.iterations > 1; },
                          "needs at least 2 --iterations"};
const Requirement kLightEmboss{oneOf<&Options::emboss, Emboss::Light>, "needs --emboss light"};
const Requirement kScalarColor{oneOf<&Options::coloring, C::Scalar>, "needs --color scalar"};
const Requirement kColorMap{oneOf<&Options::coloring, C::Magnitude, C::Scalar>,
                            "needs --color magnitude or --color scalar"};
const Requirement kFrames{[](const Options& o) { return o.frames > 1; },
                          "needs --frames with more than one frame"};
const Requirement kPnm{oneOf<&Options::format, OutputFormat::Pnm>, "applies to PNM output only"};
const Requirement kPng{oneOf<&Options::format, OutputFormat::Png>, "applies to PNG output only"};

// Options of which at most one may be given, and how to say so.
struct Group {
    const char* before;
    const char* lastSeparator;
    const char* after;
};
const Group kOneSource{"give only one field source (", " or ", ")"};
const Group kOneContrast{"give only one of ", " and ", ""};
const Group kOneFill{"give only one of ", " and ", ""};

template <FieldSource S>
void source(Options& o, const OptionValue& v) {
    o.field = S;
    o.fieldPath = v.text;
}

struct Row {
    Id id;
    const char* name;  // long name without the dashes
    char letter;       // short name, or 0
    const char* arg;   // name of the value, or null for a switch
    const char* help;
    const char* byDefault = nullptr;                        // shown as "(default: ...)"
    void (*apply)(Options&, const OptionValue&) = nullptr;  // null: parseOptions answers it
    const Requirement* needs = nullptr;                     // must hold when the option is given
    const Group* conflicts = nullptr;  // at most one option of the group may be given
};

// Short names for the handlers below.
using O = Options&;
using V = const OptionValue&;
using Kernel = VelkCompute::FilterKernel;
using Lookup = VelkCompute::InterpolationMethod;

// clang-format off
const Row kRows[] = {
    {Id::Output, "output", 'o', "FILE",
     "picture to write: .png, or .pgm/.ppm/.pnm for PNM; with --frames N the frames are "
     "FILE-0000.png, FILE-0001.png, ...", "none, required",
     [](O o, V v) { o.output = v.path(); }},
    {Id::Ascii, "ascii", 0, nullptr, "write PNM as ASCII (P2/P3) instead of binary (P5/P6)",
     "binary", [](O o, V) { o.ascii = true; }, &kPnm},
    {Id::Histogram, "histogram", 0, "FILE", "also write the 256-line histogram of the grey values",
     "none", [](O o, V v) { o.histogram = v.path(); }},
    {Id::Verbose, "verbose", 'v', nullptr,
     "show the library's messages (lines traced, hits per pixel, time)", "off",
     [](O o, V) { o.verbose = true; }},
    {Id::Help, "help", 'h', nullptr, "show this help and exit"},
    {Id::Version, "version", 0, nullptr, "show the library version and exit"},

    {Id::Field, "field", 'f', "NAME", "built-in field: circle, saddle, linear, brusselator",
     "circle",
     [](O o, V v) {
         o.field = v.choice<FieldSource>({"circle", "saddle", "linear", "brusselator"});
     }, nullptr, &kOneSource},
    {Id::Grid, "grid", 0, "WxH",
     "grid of the circle, linear and brusselator fields and of --ucd (saddle: 2x2)", "64x64",
     [](O o, V v) { o.grid = v.size(2, kMaxGridSide); }, &kGridded},
    {Id::Angle, "angle", 0, "RAD",
     "circle: rotation in radians; 0 turns counter-clockwise, 1.5708 is a source, values "
     "between give spirals", "0",
     [](O o, V v) { o.angle = v.number(-100, 100); }, &kCircle},
    {Id::Matrix, "matrix", 0, "A,B,C,D", "linear: v = [A B; C D] p + offset on [-2, 2]^2",
     "0.2,1,-1,0.1", [](O o, V v) { v.numbers(&o.matrix[0][0], 4); }, &kLinear},
    {Id::Offset, "offset", 0, "X,Y", "linear: the offset vector", "0.1,0",
     [](O o, V v) { v.numbers(o.offset, 2); }, &kLinear},
    {Id::Brusselator, "brusselator", 0, "XR,YR,A,B",
     "brusselator: domain [0, XR] x [0, YR] and the model parameters A and B", "4,4,1,3",
     [](O o, V v) {
         v.numbers(o.brusselator, 4);
         if (o.brusselator[0] <= 0 || o.brusselator[1] <= 0)
             v.fail("the domain extents XR and YR must be positive");
     }, &kBrusselator},
    {Id::FieldFile, "field-file", 0, "FILE", "read a \"VELK VECTOR\" field file (ASCII or binary)",
     "none", source<FieldSource::File>, nullptr, &kOneSource},
    {Id::Ucd, "ucd", 0, "FILE", "resample a UCD triangle mesh (x y vx vy per node) onto --grid",
     "none", source<FieldSource::Ucd>, nullptr, &kOneSource},
    {Id::Bbox, "bbox", 0, "XMIN,XMAX,YMIN,YMAX", "--ucd: the part of the mesh to resample",
     "the nodes' extent",
     [](O o, V v) {
         v.numbers(o.bbox, 4);
         if (!(o.bbox[0] < o.bbox[1]) || !(o.bbox[2] < o.bbox[3]))
             v.fail("needs XMIN < XMAX and YMIN < YMAX");
         o.hasBbox = true;
     }, &kUcd},
    {Id::ImageField, "image-field", 0, "FILE", "the rotated gradient of a picture (PNM or PNG)",
     "none", source<FieldSource::Image>, nullptr, &kOneSource},
    {Id::ScalarField, "scalar-field", 0, "FILE", "the rotated gradient of a \"VELK SCALAR\" file",
     "none", source<FieldSource::Scalar>, nullptr, &kOneSource},
    {Id::GradientAngle, "gradient-angle", 0, "RAD",
     "rotation of the gradient: 0 follows the iso-lines, 1.5708 the gradient itself", "0",
     [](O o, V v) { o.gradientAngle = v.number(-100, 100); }, &kGradient},

    {Id::Noise, "noise", 0, "KIND", "white noise: grey, binary or color", "grey",
     [](O o, V v) {  // "colour" is the old spelling
         o.noise = v.text == "colour" ? NoiseKind::Color
                                      : v.choice<NoiseKind>({"grey", "binary", "color"});
     }, &kNoise},
    {Id::Seed, "seed", 0, "N", "seed of the noise; 0 leaves the generator unseeded", "1",
     [](O o, V v) { o.seed = v.integer(0, 2147483647L); }, &kNoise},
    {Id::NoiseSize, "noise-size", 0, "WxH", "size of the noise and so of the LIC computation",
     "512x512", [](O o, V v) { o.noiseSize = v.size(2, kMaxPictureSide); }, &kNoise},
    {Id::Texture, "texture", 0, "FILE",
     "convolve a picture (PNM or PNG) instead of noise; its size is the LIC size", "none",
     [](O o, V v) { o.texturePath = v.text; }},

    {Id::Kernel, "kernel", 'k', "NAME", "filter kernel: box, triangle or cubic", "triangle",
     [](O o, V v) { o.kernel = v.choice<Kernel>({"box", "triangle", "cubic"}); }},
    {Id::Length, "length", 'L', "L", "filter half-length in texture pixels, 0 to 1000", "20",
     [](O o, V v) { o.length = v.number(0, 1000); }},
    {Id::SubPixels, "subpixels", 0, "N", "N x N sub-pixels per pixel for hit counting, 1 to 16",
     "1", [](O o, V v) { o.subPixels = v.integer(1, 16); }},
    {Id::Lookup, "lookup", 0, "NAME", "texture lookup: nearest or bilinear", "bilinear",
     [](O o, V v) { o.lookup = v.choice<Lookup>({"nearest", "bilinear"}); }},
    {Id::Integrator, "integrator", 0, "NAME",
     "rk43 (adaptive Runge-Kutta) or midpoint (fixed step)", "rk43",
     [](O o, V v) { o.integrator = v.choice<Integrator>({"rk43", "midpoint"}); }},
    {Id::Rk43, "rk43", 0, "H0,HMIN,HMAX,TOL",
     "rk43: initial, smallest and largest step in grid units, and the tolerance",
     "4,0.5,15,0.001",
     [](O o, V v) {
         v.numbers(o.rk43, 4, 0, 1e4);
         if (o.rk43[1] < 1e-4f) v.fail("the smallest step must be at least 0.0001");
         if (o.rk43[0] < o.rk43[1] || o.rk43[2] < o.rk43[0]) v.fail("needs HMIN <= H0 <= HMAX");
         if (o.rk43[3] < 1e-9f) v.fail("the tolerance must be at least 1e-9");
     }, &kRk43},
    {Id::Normalization, "normalization", 0, "N",
     "field speed below which steps get shorter; 0 makes every step one unit", "0",
     [](O o, V v) { o.normalization = v.number(0, 1e6); }},
    {Id::Seeding, "seeding", 0, "NAME", "seed order: scan, offset or sobol", "offset",
     [](O o, V v) { o.seeding = v.choice<Seeding>({"scan", "offset", "sobol"}); }},
    {Id::Mask, "mask", 0, "FILE",
     "grey picture of the field grid's size; pixels where it is 0 stay black", "none",
     [](O o, V v) { o.maskPath = v.text; }},
    {Id::Threads, "threads", 0, "N",
     "threads of the LIC, 0 to 256: 0 runs the sequential algorithm; N the tiled one on N "
     "threads, whose picture is the same for every N (though not byte for byte the sequential "
     "one's); --frames: up to N frames side by side", "all cores",
     [](O o, V v) { o.threads = v.integer(0, kMaxThreads); }},
    {Id::Iterations, "iterations", 0, "N",
     "LIC passes, 1 to 100: every pass after the first convolves the picture of the one "
     "before, which makes the streaks longer and smoother", "1, or 2 with --enhance",
     [](O o, V v) { o.iterations = v.integer(1, kMaxIterations); }},
    {Id::Enhance, "enhance", 0, nullptr,
     "high-pass filter the picture before every pass after the first, so that the streaks stay "
     "sharp and apart: LIC, high-pass, LIC", "off",
     [](O o, V) { o.enhance = true; }, &kPasses},
    {Id::Orientation, "orientation", 0, nullptr,
     "the field gives directions only up to sign, v and -v meaning the same (polarisation, "
     "directors, stress axes): lines follow it without turning back", "off",
     [](O o, V) { o.orientation = true; }},
    {Id::Periodic, "periodic", 0, "AXES",
     "periodic field axes, x, y or xy: a line leaving one edge comes back at the opposite one; "
     "the grid's nodes are one period and the picture spans it, so that it tiles without a seam",
     "none",
     [](O o, V v) {
         const int axes = v.position({"x", "y", "xy"});
         o.periodicX = axes != 1;
         o.periodicY = axes != 0;
     }},
    {Id::NoDataFill, "nodata-fill", 0, "V",
     "no-data handling: lines end where the field has no data (NaN or infinite vectors, "
     "--nodata-mask), at stagnation points and at closed edges; every pixel is divided by the "
     "kernel weight it received, so edges and holes do not darken; pixels that no line reaches "
     "get the grey value V, 0 to 255, in the finished picture", "off",
     [](O o, V v) {
         o.noData = true;
         o.noDataFill = v.integer(0, 255);
     }, nullptr, &kOneFill},
    {Id::Transparent, "transparent", 0, nullptr,
     "no-data handling as --nodata-fill, with the pixels that no line reaches transparent (a PNG "
     "with an alpha channel)", "off",
     [](O o, V) {
         o.noData = true;
         o.transparent = true;
     }, &kPng, &kOneFill},
    {Id::NoDataMask, "nodata-mask", 0, "FILE",
     "grey picture of the field grid's size, not 0 where the field has no data; turns on "
     "no-data handling (fill 0 unless --nodata-fill or --transparent)", "none",
     [](O o, V v) {
         o.noData = true;
         o.noDataMaskPath = v.text;
     }},

    {Id::Adjust, "adjust", 0, "MEAN,SIGMA",
     "contrast: stretch the non-black pixels to this mean and deviation", "128,48",
     [](O o, V v) {
         v.numbers(o.adjust, 2, 0, 255);
         o.contrast = Contrast::Auto;
     }, nullptr, &kOneContrast},
    {Id::Brighten, "brighten", 0, "LO,HI",
     "contrast: map the grey values LO..HI onto 0..255 instead", "off",
     [](O o, V v) {
         const std::vector<OptionValue> parts = v.split(',');
         if (parts.size() != 2) v.fail("expected LO,HI, got '" + v.text + "'");
         o.window[0] = parts[0].integer(0, 255);
         o.window[1] = parts[1].integer(0, 255);
         if (o.window[0] >= o.window[1]) v.fail("needs LO < HI");
         o.contrast = Contrast::Brighten;
     }, nullptr, &kOneContrast},
    {Id::NoAdjust, "no-adjust", 0, nullptr, "keep the LIC values as computed", "off",
     [](O o, V) { o.contrast = Contrast::None; }, nullptr, &kOneContrast},
    {Id::Equalize, "equalize", 0, "MODE",
     "contrast: histogram equalisation of the LIC picture instead, global (one mapping for the "
     "whole picture) or adaptive (one per tile, blended between tiles)", "off",
     [](O o, V v) {
         o.contrast = v.position({"global", "adaptive"}) == 0 ? Contrast::Equalize
                                                              : Contrast::EqualizeAdaptive;
     }, nullptr, &kOneContrast},
    {Id::EqualizeTiles, "equalize-tiles", 0, "WxH",
     "--equalize adaptive: tiles across and up, 1 to 256", "8x8",
     [](O o, V v) { o.equalizeTiles = v.size(1, 256); }, &kAdaptive},
    {Id::EqualizeClip, "equalize-clip", 0, "C",
     "--equalize adaptive: cap of a histogram bin in multiples of the mean bin, 1 to 256; "
     "lower keeps flat regions calmer, 256 caps nothing", "3",
     [](O o, V v) { o.equalizeClip = v.number(1, 256); }, &kAdaptive},
    {Id::Blur, "blur", 0, "N", "Gaussian blur with a deviation of N pixels, 1 to 9; 0 is none", "0",
     [](O o, V v) { o.blur = v.integer(0, 9); }},
    {Id::Size, "size", 's', "WxH", "zoom the picture to this output size", "the LIC size",
     [](O o, V v) {
         o.size = v.size(2, kMaxPictureSide);
         o.resize = true;
     }},
    {Id::Emboss, "emboss", 0, "MODE", "relief shading: none, light (fixed light) or flow", "none",
     [](O o, V v) { o.emboss = v.choice<Emboss>({"none", "light", "flow"}); }},
    {Id::Light, "light", 0, "AZ,EL", "--emboss light: azimuth and elevation in degrees", "135,45",
     [](O o, V v) {
         v.numbers(o.light, 2, -360, 360);
         if (o.light[1] < 0 || o.light[1] > 90) v.fail("the elevation must lie in 0 to 90 degrees");
     }, &kLightEmboss},
    {Id::Relief, "relief", 0, "N", "--emboss light: relief width, 1 to 1530 (larger is flatter)",
     "3", [](O o, V v) { o.relief = v.integer(1, 1530); }, &kLightEmboss},
    {Id::Color, "color", 0, "MODE",
     "colour the picture: none, direction, magnitude or scalar (--color-scalar)", "none",
     [](O o, V v) {
         o.coloring = v.choice<Coloring>({"none", "direction", "magnitude", "scalar"});
     }},
    {Id::ColorScalar, "color-scalar", 0, "FILE", "\"VELK SCALAR\" file that --color scalar shows",
     "none", [](O o, V v) { o.colorScalarPath = v.text; }, &kScalarColor},
    {Id::Colormap, "colormap", 0, "NAME",
     "colour map of --color magnitude/scalar: hue, hot, bwr, grey, or an icol file", "hue",
     [](O o, V v) {
         if (v.text.empty()) v.fail("the name is empty");
         o.colormap = v.text;
     }, &kColorMap},
    {Id::Range, "range", 0, "MIN,MAX", "data range that the colour map spans",
     "the data's own range",
     [](O o, V v) {
         v.numbers(o.range, 2, -1e30, 1e30);
         if (!(o.range[0] < o.range[1])) v.fail("needs MIN < MAX");
         o.hasRange = true;
     }, &kColorMap},
    {Id::Flip, "flip", 0, nullptr, "reverse the colour map", "off",
     [](O o, V) { o.flip = true; }, &kColorMap},
    {Id::Gamma, "gamma", 0, "G", "gamma of the colour map, 0.1 to 10", "1",
     [](O o, V v) { o.gamma = v.number(0.1, 10); }, &kColorMap},
    {Id::Overlay, "overlay", 0, "FILE",
     "draw a \"VELK GRAPHICS\" command file onto the finished picture", "none",
     [](O o, V v) { o.overlayPath = v.text; }},
    {Id::OverlayMesh, "overlay-mesh", 0, "FILE",
     "draw the edges of a UCD mesh onto the picture (before --overlay)", "none",
     [](O o, V v) { o.meshPath = v.text; }},

    {Id::Frames, "frames", 0, "N",
     "write N frames in which the pattern moves along the flow, 1 to 9999", "1",
     [](O o, V v) { o.frames = v.integer(1, 9999); }},
    {Id::Advect, "advect", 0, "D", "--frames: texture movement per frame in texture pixels", "2",
     [](O o, V v) { o.advect = v.number(0.01, 100); }, &kFrames},
};
// clang-format on

struct Section {
    Id first;
    const char* title;
};
const Section kSections[] = {{Id::Output, "Output"},
                             {Id::Field, "Field (one source)"},
                             {Id::Noise, "Texture"},
                             {Id::Kernel, "LIC engine"},
                             {Id::Adjust, "Post-processing (applied in this order)"},
                             {Id::Frames, "Animation"}};

// One option of the help: its name in the first column, the text wrapped
// into a second column.
void printWrapped(std::string line, const std::string& text) {
    const std::size_t indent = 30, width = 96;
    if (line.size() + 1 > indent) {
        std::printf("%s\n", line.c_str());
        line.clear();
    }
    line.resize(indent, ' ');
    std::istringstream words(text);
    std::string word;
    for (bool first = true; words >> word; first = false) {
        if (!first && line.size() + 1 + word.size() > width) {
            std::printf("%s\n", line.c_str());
            line.assign(indent, ' ');
        } else if (!first) {
            line += ' ';
        }
        line += word;
    }
    std::printf("%s\n", line.c_str());
}

void printHelp() {
    std::printf(
        "Usage: velk-lic -o FILE [options]\n"
        "\n"
        "Makes a line integral convolution (LIC) picture of a 2D vector field: noise\n"
        "smeared along the field lines. `velk-lic -o lic.png` draws a built-in field.\n"
        "Values are given as `--name VALUE` or `--name=VALUE`.\n");
    for (const Row& row : kRows) {
        for (const Section& section : kSections)
            if (section.first == row.id) std::printf("\n%s:\n", section.title);
        std::string head = row.letter ? std::string("  -") + row.letter + ", --" : "      --";
        head += row.name;
        if (row.arg) head += " " + std::string(row.arg);
        std::string text = row.help;
        if (row.byDefault) text += " (default: " + std::string(row.byDefault) + ")";
        printWrapped(head, text);
    }
    std::printf(
        "\n"
        "Exit status: 0 on success, 1 when the work failed, 2 for bad options.\n");
}

const Row* findRow(const std::string& arg) {
    for (const Row& row : kRows) {
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0 ? arg.substr(2) == row.name
                                                           : arg[1] == row.letter)
            return &row;
    }
    return nullptr;
}

std::string lowerExtension(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    std::string::size_type dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

// The options seen on the command line.
struct Given {
    bool seen[static_cast<int>(Id::Count)] = {};
    bool& operator[](Id id) { return seen[static_cast<int>(id)]; }
    bool operator[](Id id) const { return seen[static_cast<int>(id)]; }
};

void checkCombinations(Options& o, const Given& given) {
    if (o.output.empty()) throw UsageError("no output file given (use -o FILE; see --help)");
    for (const Group* group : {&kOneSource, &kOneContrast, &kOneFill}) {
        std::vector<std::string> names;
        int count = 0;
        for (const Row& row : kRows) {
            if (row.conflicts != group) continue;
            names.push_back("--" + std::string(row.name));
            count += given[row.id];
        }
        if (count < 2) continue;
        std::string list = names[0];
        for (std::size_t i = 1; i < names.size(); i++)
            list += (i + 1 < names.size() ? ", " : group->lastSeparator) + names[i];
        throw UsageError(group->before + list + group->after);
    }

    const std::string ext = lowerExtension(o.output);
    if (ext == "png") {
        o.format = OutputFormat::Png;
    } else if (ext == "pgm" || ext == "ppm" || ext == "pnm") {
        o.format = OutputFormat::Pnm;
    } else {
        throw UsageError("cannot tell the picture format from '" + o.output +
                         "' (use a .png, .pgm, .ppm or .pnm name)");
    }

    if (o.enhance && !given[Id::Iterations]) o.iterations = 2;
    if (given[Id::ColorScalar] && !given[Id::Color]) o.coloring = Coloring::Scalar;
    if (o.coloring == Coloring::Scalar && o.colorScalarPath.empty())
        throw UsageError("--color scalar needs --color-scalar FILE");
    for (const Row& row : kRows) {
        if (given[row.id] && row.needs && !row.needs->holds(o))
            throw UsageError("option --" + std::string(row.name) + " " + row.needs->unmet);
    }
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options) {
    Given given;
    for (int i = 1; i < argc; i++) {
        std::string arg = argv[i];
        std::string value;
        bool inlineValue = false;
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0) {
            const std::string::size_type eq = arg.find('=');
            if (eq != std::string::npos) {
                value = arg.substr(eq + 1);
                inlineValue = true;
            }
            arg = arg.substr(0, eq);
        } else if (arg.size() >= 2 && arg[0] == '-' && arg[1] != '-') {
            value = arg.substr(2);
            inlineValue = arg.size() > 2;
        } else {
            throw UsageError("unexpected argument '" + arg +
                             "' (the output file is given with -o; see --help)");
        }
        const Row* row = findRow(arg);
        // Short switches take no value and are not bundled.
        if (!row || (arg[1] != '-' && inlineValue && !row->arg))
            throw UsageError("unknown option '" + std::string(argv[i]) + "' (see --help)");

        const std::string name = "option --" + std::string(row->name);
        if (row->arg && !inlineValue) {
            if (i + 1 >= argc) throw UsageError(name + " needs a value (" + row->arg + ")");
            value = argv[++i];
        } else if (!row->arg && inlineValue) {
            throw UsageError(name + " takes no value");
        }
        if (given[row->id] && row->arg) throw UsageError(name + " is given twice");
        given[row->id] = true;
        if (row->apply) row->apply(options, OptionValue{row->name, value});
    }

    if (given[Id::Help]) {
        printHelp();
        return false;
    }
    if (given[Id::Version]) {
        std::printf("velk-lic %s\n", VELK_LIC_VERSION);
        return false;
    }
    checkCombinations(options, given);
    return true;
}

std::string frameName(const std::string& output, int frame, int count) {
    if (count <= 1) return output;
    char number[16];
    std::snprintf(number, sizeof number, "-%04d", frame);
    std::string::size_type slash = output.rfind('/');
    std::string::size_type dot = output.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash) ||
        dot == (slash == std::string::npos ? 0 : slash + 1))
        return output + number;
    return output.substr(0, dot) + number + output.substr(dot);
}
