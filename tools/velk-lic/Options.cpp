#include "Options.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "ToolError.h"

namespace {

constexpr double kMaxCoordinate = 1e6;

struct OptionSpec {
    const char* name;  // long name without the dashes
    char letter;       // short name, or 0
    const char* arg;   // name of the value, or null for a switch
    const char* help;
    const char* byDefault;  // shown as "(default: ...)", or null
    std::function<void(const std::string&)> apply;
};

struct OptionGroup {
    const char* title;
    std::vector<OptionSpec> options;
};

[[noreturn]] void bad(const std::string& option, const std::string& text) {
    throw UsageError("option --" + option + ": " + text);
}

double parseNumber(const std::string& option, const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    double v = std::strtod(begin, &end);
    if (end == begin || *end != '\0' || errno == ERANGE || !std::isfinite(v))
        bad(option, "'" + text + "' is not a number");
    return v;
}

float parseFloat(const std::string& option, const std::string& text, double lo, double hi) {
    double v = parseNumber(option, text);
    if (v < lo || v > hi) {
        char range[96];
        std::snprintf(range, sizeof range, " is out of range (%g to %g)", lo, hi);
        bad(option, text + range);
    }
    return static_cast<float>(v);
}

int parseInt(const std::string& option, const std::string& text, long lo, long hi) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(begin, &end, 10);
    if (end == begin || *end != '\0' || errno == ERANGE)
        bad(option, "'" + text + "' is not a whole number");
    if (v < lo || v > hi)
        bad(option,
            text + " is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) + ")");
    return static_cast<int>(v);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    for (;;) {
        std::string::size_type end = text.find(separator, start);
        parts.push_back(text.substr(start, end - start));
        if (end == std::string::npos) return parts;
        start = end + 1;
    }
}

void parseFloats(const std::string& option, const std::string& text, int n, float* values,
                 double lo = -1e6, double hi = 1e6) {
    std::vector<std::string> parts = split(text, ',');
    if (static_cast<int>(parts.size()) != n)
        bad(option,
            "expected " + std::to_string(n) + " comma-separated numbers, got '" + text + "'");
    for (int i = 0; i < n; i++) values[i] = parseFloat(option, parts[i], lo, hi);
}

Size parseSize(const std::string& option, const std::string& text, int lo, int hi) {
    std::vector<std::string> parts = split(text, 'x');
    if (parts.size() == 1) parts.push_back(parts[0]);
    if (parts.size() != 2) bad(option, "expected a size WIDTHxHEIGHT, got '" + text + "'");
    Size s;
    s.width = parseInt(option, parts[0], lo, hi);
    s.height = parseInt(option, parts[1], lo, hi);
    return s;
}

int parseChoice(const std::string& option, const std::string& text,
                const std::vector<const char*>& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); i++) {
        if (text == names[i]) return static_cast<int>(i);
        list += (i ? ", " : "") + std::string(names[i]);
    }
    bad(option, "'" + text + "' is not one of " + list);
}

std::string lowerExtension(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    std::string::size_type dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

std::vector<OptionGroup> optionTable(Options& o, bool& help, bool& version) {
    return {
        {"Output",
         {
             {"output", 'o', "FILE",
              "picture to write: .png, or .pgm/.ppm/.pnm for PNM; with --frames N the frames "
              "are FILE-0000.png, FILE-0001.png, ...",
              "none, required",
              [&o](const std::string& v) {
                  if (v.empty()) bad("output", "the file name is empty");
                  o.output = v;
              }},
             {"ascii", 0, nullptr, "write PNM as ASCII (P2/P3) instead of binary (P5/P6)", "binary",
              [&o](const std::string&) { o.ascii = true; }},
             {"histogram", 0, "FILE", "also write the 256-line histogram of the grey values",
              "none",
              [&o](const std::string& v) {
                  if (v.empty()) bad("histogram", "the file name is empty");
                  o.histogram = v;
              }},
             {"verbose", 'v', nullptr,
              "show the library's messages (lines traced, hits per pixel, time)", "off",
              [&o](const std::string&) { o.verbose = true; }},
             {"help", 'h', nullptr, "show this help and exit", nullptr,
              [&help](const std::string&) { help = true; }},
             {"version", 0, nullptr, "show the library version and exit", nullptr,
              [&version](const std::string&) { version = true; }},
         }},
        {"Field (one source)",
         {
             {"field", 'f', "NAME", "built-in field: circle, saddle, linear, brusselator", "circle",
              [&o](const std::string& v) {
                  o.field = static_cast<FieldSource>(
                      parseChoice("field", v, {"circle", "saddle", "linear", "brusselator"}));
              }},
             {"grid", 0, "WxH",
              "grid of the circle, linear and brusselator fields and of --ucd (saddle: 2x2)",
              "64x64",
              [&o](const std::string& v) { o.grid = parseSize("grid", v, 2, kMaxGridSide); }},
             {"angle", 0, "RAD",
              "circle: rotation in radians; 0 turns counter-clockwise, 1.5708 is a source, "
              "values between give spirals",
              "0", [&o](const std::string& v) { o.angle = parseFloat("angle", v, -100, 100); }},
             {"matrix", 0, "A,B,C,D", "linear: v = [A B; C D] p + offset on [-2, 2]^2",
              "0.2,1,-1,0.1",
              [&o](const std::string& v) { parseFloats("matrix", v, 4, &o.matrix[0][0]); }},
             {"offset", 0, "X,Y", "linear: the offset vector", "0.1,0",
              [&o](const std::string& v) { parseFloats("offset", v, 2, o.offset); }},
             {"brusselator", 0, "XR,YR,A,B",
              "brusselator: domain [0, XR] x [0, YR] and the model parameters A and B", "4,4,1,3",
              [&o](const std::string& v) {
                  parseFloats("brusselator", v, 4, o.brusselator);
                  if (o.brusselator[0] <= 0 || o.brusselator[1] <= 0)
                      bad("brusselator", "the domain extents XR and YR must be positive");
              }},
             {"field-file", 0, "FILE", "read a \"VELK VECTOR\" field file (ASCII or binary)",
              "none",
              [&o](const std::string& v) {
                  o.field = FieldSource::File;
                  o.fieldPath = v;
              }},
             {"ucd", 0, "FILE", "resample a UCD triangle mesh (x y vx vy per node) onto --grid",
              "none",
              [&o](const std::string& v) {
                  o.field = FieldSource::Ucd;
                  o.fieldPath = v;
              }},
             {"bbox", 0, "XMIN,XMAX,YMIN,YMAX", "--ucd: the part of the mesh to resample",
              "the nodes' extent",
              [&o](const std::string& v) {
                  parseFloats("bbox", v, 4, o.bbox, -kMaxCoordinate, kMaxCoordinate);
                  if (!(o.bbox[0] < o.bbox[1]) || !(o.bbox[2] < o.bbox[3]))
                      bad("bbox", "needs XMIN < XMAX and YMIN < YMAX");
                  o.hasBbox = true;
              }},
             {"image-field", 0, "FILE", "the rotated gradient of a picture (PNM or PNG)", "none",
              [&o](const std::string& v) {
                  o.field = FieldSource::Image;
                  o.fieldPath = v;
              }},
             {"scalar-field", 0, "FILE", "the rotated gradient of a \"VELK SCALAR\" file", "none",
              [&o](const std::string& v) {
                  o.field = FieldSource::Scalar;
                  o.fieldPath = v;
              }},
             {"gradient-angle", 0, "RAD",
              "rotation of the gradient: 0 follows the iso-lines, 1.5708 the gradient itself", "0",
              [&o](const std::string& v) {
                  o.gradientAngle = parseFloat("gradient-angle", v, -100, 100);
              }},
         }},
        {"Texture",
         {
             {"noise", 0, "KIND", "white noise: grey, binary or colour", "grey",
              [&o](const std::string& v) {
                  o.noise =
                      static_cast<NoiseKind>(parseChoice("noise", v, {"grey", "binary", "colour"}));
              }},
             {"seed", 0, "N", "seed of the noise; 0 leaves the generator unseeded", "1",
              [&o](const std::string& v) { o.seed = parseInt("seed", v, 0, 2147483647L); }},
             {"noise-size", 0, "WxH", "size of the noise and so of the LIC computation", "512x512",
              [&o](const std::string& v) {
                  o.noiseSize = parseSize("noise-size", v, 2, kMaxPictureSide);
              }},
             {"texture", 0, "FILE",
              "convolve a picture (PNM or PNG) instead of noise; its size is the LIC size", "none",
              [&o](const std::string& v) { o.texturePath = v; }},
         }},
        {"LIC engine",
         {
             {"kernel", 'k', "NAME", "filter kernel: box, triangle or cubic", "triangle",
              [&o](const std::string& v) {
                  o.kernel = parseChoice("kernel", v, {"box", "triangle", "cubic"});
              }},
             {"length", 'L', "L", "filter half-length in texture pixels, 0 to 1000", "20",
              [&o](const std::string& v) { o.length = parseFloat("length", v, 0, 1000); }},
             {"subpixels", 0, "N", "N x N sub-pixels per pixel for hit counting, 1 to 16", "1",
              [&o](const std::string& v) { o.subPixels = parseInt("subpixels", v, 1, 16); }},
             {"lookup", 0, "NAME", "texture lookup: nearest or bilinear", "bilinear",
              [&o](const std::string& v) {
                  o.lookup = parseChoice("lookup", v, {"nearest", "bilinear"});
              }},
             {"integrator", 0, "NAME", "rk43 (adaptive Runge-Kutta) or midpoint (fixed step)",
              "rk43",
              [&o](const std::string& v) {
                  o.midpoint = parseChoice("integrator", v, {"rk43", "midpoint"}) == 1;
              }},
             {"rk43", 0, "H0,HMIN,HMAX,TOL",
              "rk43: initial, smallest and largest step in grid units, and the tolerance",
              "4,0.5,15,0.001",
              [&o](const std::string& v) {
                  parseFloats("rk43", v, 4, o.rk43, 0, 1e4);
                  if (o.rk43[1] < 1e-4f) bad("rk43", "the smallest step must be at least 0.0001");
                  if (o.rk43[0] < o.rk43[1] || o.rk43[2] < o.rk43[0])
                      bad("rk43", "needs HMIN <= H0 <= HMAX");
                  if (o.rk43[3] < 1e-9f) bad("rk43", "the tolerance must be at least 1e-9");
              }},
             {"normalization", 0, "N",
              "field speed below which steps get shorter; 0 makes every step one unit", "0",
              [&o](const std::string& v) {
                  o.normalization = parseFloat("normalization", v, 0, 1e6);
              }},
             {"seeding", 0, "NAME", "seed order: scan, offset or sobol", "offset",
              [&o](const std::string& v) {
                  o.seeding = parseChoice("seeding", v, {"scan", "offset", "sobol"});
              }},
             {"mask", 0, "FILE",
              "grey picture of the field grid's size; pixels where it is 0 stay black", "none",
              [&o](const std::string& v) { o.maskPath = v; }},
         }},
        {"Post-processing (applied in this order)",
         {
             {"adjust", 0, "MEAN,SIGMA",
              "contrast: stretch the non-black pixels to this mean and deviation", "128,48",
              [&o](const std::string& v) {
                  parseFloats("adjust", v, 2, o.adjust, 0, 255);
                  o.contrast = Contrast::Auto;
              }},
             {"brighten", 0, "LO,HI", "contrast: map the grey values LO..HI onto 0..255 instead",
              "off",
              [&o](const std::string& v) {
                  std::vector<std::string> parts = split(v, ',');
                  if (parts.size() != 2) bad("brighten", "expected LO,HI, got '" + v + "'");
                  o.window[0] = parseInt("brighten", parts[0], 0, 255);
                  o.window[1] = parseInt("brighten", parts[1], 0, 255);
                  if (o.window[0] >= o.window[1]) bad("brighten", "needs LO < HI");
                  o.contrast = Contrast::Brighten;
              }},
             {"no-adjust", 0, nullptr, "keep the LIC values as computed", "off",
              [&o](const std::string&) { o.contrast = Contrast::None; }},
             {"blur", 0, "N", "Gaussian blur with a deviation of N pixels, 1 to 9; 0 is none", "0",
              [&o](const std::string& v) { o.blur = parseInt("blur", v, 0, 9); }},
             {"size", 's', "WxH", "zoom the picture to this output size", "the LIC size",
              [&o](const std::string& v) {
                  o.size = parseSize("size", v, 2, kMaxPictureSide);
                  o.resize = true;
              }},
             {"emboss", 0, "MODE", "relief shading: none, light (fixed light) or flow", "none",
              [&o](const std::string& v) {
                  o.emboss =
                      static_cast<Emboss>(parseChoice("emboss", v, {"none", "light", "flow"}));
              }},
             {"light", 0, "AZ,EL", "--emboss light: azimuth and elevation in degrees", "135,45",
              [&o](const std::string& v) {
                  parseFloats("light", v, 2, o.light, -360, 360);
                  if (o.light[1] < 0 || o.light[1] > 90)
                      bad("light", "the elevation must lie in 0 to 90 degrees");
              }},
             {"relief", 0, "N", "--emboss light: relief width, 1 to 1530 (larger is flatter)", "3",
              [&o](const std::string& v) { o.relief = parseInt("relief", v, 1, 1530); }},
             {"color", 0, "MODE",
              "colour the picture: none, direction, magnitude or scalar (--color-scalar)", "none",
              [&o](const std::string& v) {
                  o.colouring = static_cast<Colouring>(
                      parseChoice("color", v, {"none", "direction", "magnitude", "scalar"}));
              }},
             {"color-scalar", 0, "FILE", "\"VELK SCALAR\" file that --color scalar shows", "none",
              [&o](const std::string& v) { o.colourScalarPath = v; }},
             {"colormap", 0, "NAME",
              "colour map of --color magnitude/scalar: hue, hot, bwr, grey, or an icol file", "hue",
              [&o](const std::string& v) {
                  if (v.empty()) bad("colormap", "the name is empty");
                  o.colormap = v;
              }},
             {"range", 0, "MIN,MAX", "data range that the colour map spans", "the data's own range",
              [&o](const std::string& v) {
                  parseFloats("range", v, 2, o.range, -1e30, 1e30);
                  if (!(o.range[0] < o.range[1])) bad("range", "needs MIN < MAX");
                  o.hasRange = true;
              }},
             {"flip", 0, nullptr, "reverse the colour map", "off",
              [&o](const std::string&) { o.flip = true; }},
             {"gamma", 0, "G", "gamma of the colour map, 0.1 to 10", "1",
              [&o](const std::string& v) { o.gamma = parseFloat("gamma", v, 0.1, 10); }},
             {"overlay", 0, "FILE",
              "draw a \"VELK GRAPHICS\" command file onto the finished picture", "none",
              [&o](const std::string& v) { o.overlayPath = v; }},
             {"overlay-mesh", 0, "FILE",
              "draw the edges of a UCD mesh onto the picture (before --overlay)", "none",
              [&o](const std::string& v) { o.meshPath = v; }},
         }},
        {"Animation",
         {
             {"frames", 0, "N",
              "write N frames in which the pattern moves along the flow, 1 to 9999", "1",
              [&o](const std::string& v) { o.frames = parseInt("frames", v, 1, 9999); }},
             {"advect", 0, "D", "--frames: texture movement per frame in texture pixels", "2",
              [&o](const std::string& v) { o.advect = parseFloat("advect", v, 0.01, 100); }},
         }},
    };
}

// One option of the help: its name in the first column, the text wrapped
// into a second column.
void printWrapped(const std::string& head, const std::string& text) {
    const std::size_t indent = 30, width = 96;
    std::string line = head;
    if (line.size() + 1 > indent) {
        std::printf("%s\n", line.c_str());
        line.clear();
    }
    line.resize(indent, ' ');
    std::string::size_type pos = 0;
    bool first = true;
    while (pos < text.size()) {
        std::string::size_type end = text.find(' ', pos);
        if (end == std::string::npos) end = text.size();
        std::string word = text.substr(pos, end - pos);
        if (!first && line.size() + 1 + word.size() > width) {
            std::printf("%s\n", line.c_str());
            line.assign(indent, ' ');
            first = true;
        }
        if (!first) line += ' ';
        line += word;
        first = false;
        pos = end + 1;
    }
    std::printf("%s\n", line.c_str());
}

void printHelp(const std::vector<OptionGroup>& groups) {
    std::printf(
        "Usage: velk-lic -o FILE [options]\n"
        "\n"
        "Makes a line integral convolution (LIC) picture of a 2D vector field: noise\n"
        "smeared along the field lines. `velk-lic -o lic.png` draws a built-in field.\n"
        "Values are given as `--name VALUE` or `--name=VALUE`.\n");
    for (const OptionGroup& group : groups) {
        std::printf("\n%s:\n", group.title);
        for (const OptionSpec& option : group.options) {
            std::string head = "  ";
            head += option.letter ? std::string("-") + option.letter + ", " : "    ";
            head += "--" + std::string(option.name);
            if (option.arg) head += " " + std::string(option.arg);
            std::string text = option.help;
            if (option.byDefault) text += " (default: " + std::string(option.byDefault) + ")";
            printWrapped(head, text);
        }
    }
    std::printf(
        "\n"
        "Exit status: 0 on success, 1 when the work failed, 2 for bad options.\n");
}

// Options that only make sense with another one; `given` holds the long names
// seen on the command line.
void checkCombinations(Options& o, const std::set<std::string>& given) {
    auto has = [&given](const char* name) { return given.count(name) != 0; };
    auto needs = [&has](const char* option, bool ok, const char* what) {
        if (has(option) && !ok) throw UsageError("option --" + std::string(option) + " " + what);
    };

    if (o.output.empty()) throw UsageError("no output file given (use -o FILE; see --help)");

    int sources = 0;
    for (const char* name : {"field", "field-file", "ucd", "image-field", "scalar-field"})
        sources += has(name) ? 1 : 0;
    if (sources > 1)
        throw UsageError(
            "give only one field source (--field, --field-file, --ucd, --image-field or "
            "--scalar-field)");
    const FieldSource f = o.field;
    needs("angle", f == FieldSource::Circle, "applies to --field circle only");
    needs("matrix", f == FieldSource::Linear, "applies to --field linear only");
    needs("offset", f == FieldSource::Linear, "applies to --field linear only");
    needs("brusselator", f == FieldSource::Brusselator, "applies to --field brusselator only");
    needs("grid",
          f == FieldSource::Circle || f == FieldSource::Linear || f == FieldSource::Brusselator ||
              f == FieldSource::Ucd,
          "applies to the circle, linear and brusselator fields and to --ucd only");
    needs("bbox", f == FieldSource::Ucd, "needs --ucd");
    needs("gradient-angle", f == FieldSource::Image || f == FieldSource::Scalar,
          "needs --image-field or --scalar-field");

    bool noise = o.texturePath.empty();
    needs("noise", noise, "cannot be combined with --texture");
    needs("seed", noise, "cannot be combined with --texture");
    needs("noise-size", noise, "cannot be combined with --texture");

    needs("rk43", !o.midpoint, "applies to --integrator rk43 only");

    int contrasts =
        (has("adjust") ? 1 : 0) + (has("brighten") ? 1 : 0) + (has("no-adjust") ? 1 : 0);
    if (contrasts > 1) throw UsageError("give only one of --adjust, --brighten and --no-adjust");

    needs("light", o.emboss == Emboss::Light, "needs --emboss light");
    needs("relief", o.emboss == Emboss::Light, "needs --emboss light");

    if (has("color-scalar") && !has("color")) o.colouring = Colouring::Scalar;
    if (o.colouring == Colouring::Scalar && o.colourScalarPath.empty())
        throw UsageError("--color scalar needs --color-scalar FILE");
    needs("color-scalar", o.colouring == Colouring::Scalar, "needs --color scalar");
    bool mapped = o.colouring == Colouring::Magnitude || o.colouring == Colouring::Scalar;
    for (const char* name : {"colormap", "range", "flip", "gamma"})
        needs(name, mapped, "needs --color magnitude or --color scalar");

    needs("advect", o.frames > 1, "needs --frames with more than one frame");
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options) {
    bool help = false;
    bool version = false;
    std::vector<OptionGroup> groups = optionTable(options, help, version);
    std::set<std::string> given;

    auto find = [&groups](auto match) -> const OptionSpec* {
        for (const OptionGroup& group : groups)
            for (const OptionSpec& option : group.options)
                if (match(option)) return &option;
        return nullptr;
    };

    for (int i = 1; i < argc; i++) {
        std::string arg = argv[i];
        const OptionSpec* option = nullptr;
        std::string value;
        bool inlineValue = false;
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0) {
            std::string name = arg.substr(2);
            std::string::size_type eq = name.find('=');
            if (eq != std::string::npos) {
                value = name.substr(eq + 1);
                name.resize(eq);
                inlineValue = true;
            }
            option = find([&name](const OptionSpec& s) { return name == s.name; });
        } else if (arg.size() >= 2 && arg[0] == '-' && arg[1] != '-') {
            char letter = arg[1];
            option = find([letter](const OptionSpec& s) { return s.letter == letter; });
            if (option && arg.size() > 2) {
                if (!option->arg) option = nullptr;  // no bundled switches
                value = arg.substr(2);
                inlineValue = true;
            }
        } else {
            throw UsageError("unexpected argument '" + arg +
                             "' (the output file is given with -o; see --help)");
        }
        if (!option) throw UsageError("unknown option '" + arg + "' (see --help)");

        if (option->arg && !inlineValue) {
            if (i + 1 >= argc)
                throw UsageError("option --" + std::string(option->name) + " needs a value (" +
                                 option->arg + ")");
            value = argv[++i];
        } else if (!option->arg && inlineValue) {
            throw UsageError("option --" + std::string(option->name) + " takes no value");
        }
        if (!given.insert(option->name).second && option->arg)
            throw UsageError("option --" + std::string(option->name) + " is given twice");
        option->apply(value);
    }

    if (help) {
        printHelp(groups);
        return false;
    }
    if (version) {
        std::printf("velk-lic %s\n", VELK_LIC_VERSION);
        return false;
    }

    checkCombinations(options, given);
    std::string ext = lowerExtension(options.output);
    if (ext == "png") {
        options.format = OutputFormat::Png;
    } else if (ext == "pgm" || ext == "ppm" || ext == "pnm") {
        options.format = OutputFormat::Pnm;
    } else {
        throw UsageError("cannot tell the picture format from '" + options.output +
                         "' (use a .png, .pgm, .ppm or .pnm name)");
    }
    if (options.ascii && options.format != OutputFormat::Pnm)
        throw UsageError("option --ascii applies to PNM output only");
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
