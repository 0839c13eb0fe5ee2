#include "PostProcess.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Console.h"
#include "NoData.h"
#include "Options.h"
#include "Overlay.h"
#include "ToolError.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

// The library's colour-map reader writes its complaints to the standard error
// stream itself; they are caught here and become part of the tool's message.
class StderrCapture {
  public:
    StderrCapture() {
        std::fflush(stderr);
        file = std::tmpfile();
        if (file) saved = dup(STDERR_FILENO);
        if (saved >= 0) dup2(fileno(file), STDERR_FILENO);
    }
    ~StderrCapture() {
        restore();
        if (file) std::fclose(file);
    }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    // What was written so far, as one line.
    std::string text() {
        restore();
        std::string out;
        if (!file) return out;
        std::rewind(file);
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, file)) out += buffer;
        while (!out.empty() && (out.back() == '\n' || out.back() == '.')) out.pop_back();
        for (char& c : out)
            if (c == '\n') c = ' ';
        return out;
    }

  private:
    void restore() {
        if (saved < 0) return;
        std::fflush(stderr);
        dup2(saved, STDERR_FILENO);
        close(saved);
        saved = -1;
    }

    std::FILE* file = nullptr;
    int saved = -1;
};

void loadColormap(const std::string& name, VelkColormap& map) {
    if (name == "hue") {
        map.createHueRamp();
    } else if (name == "hot") {
        map.createHotIron();
    } else if (name == "bwr") {
        map.createBlueWhiteRed();
    } else if (name == "grey") {
        map.createGreyRamp();
    } else {
        std::FILE* probe = std::fopen(name.c_str(), "rb");
        if (!probe)
            throw ToolError(
                "colour map " + quoted(name) +
                " is no preset (hue, hot, bwr, grey) and cannot be read: " + std::strerror(errno));
        std::fclose(probe);
        StderrCapture capture;
        if (!map.readIcol(name.c_str()))
            throw ToolError("cannot read colour map " + quoted(name) + ": " + capture.text());
    }
}

void setRange(VelkColormap& map, float lo, float hi) {
    // A constant field still needs a usable scale.
    if (!(hi > lo)) hi = lo + 1.0f;
    map.setMinMax(lo, hi);
}

}  // namespace

PostProcessor::PostProcessor(const Options& options, VelkVectorField& field)
    : options(options), field(field) {
    const Coloring c = options.coloring;
    if (c != Coloring::Magnitude && c != Coloring::Scalar) return;
    loadColormap(options.colormap, colormap);
    if (options.flip) colormap.flip(nullptr);
    if (options.gamma != 1.0f) colormap.gamma(options.gamma, nullptr);
    if (c == Coloring::Scalar) {
        const std::string& path = options.colorScalarPath;
        scalar.reset(new VelkScalarField);
        console::clearLibraryError();
        if (!scalar->read(path.c_str()))
            console::libraryFailure("cannot read scalar field file " + quoted(path));
        if (scalar->width > kMaxGridSide || scalar->height > kMaxGridSide)
            throw ToolError("scalar field " + quoted(path) + " is larger than " +
                            std::to_string(kMaxGridSide) + " nodes on a side");
    }
}

PostProcessor::~PostProcessor() = default;

void PostProcessor::apply(VelkImage& picture, const VelkImage* weight) {
    adjustContrast(picture);
    blur(picture);
    if (options.resize &&
        (options.size.width != picture.width || options.size.height != picture.height))
        picture.zoom(options.size.width, options.size.height, nullptr);
    if (options.emboss == Emboss::Light) {
        picture.emboss(static_cast<float>(options.light[0] * kPi / 180.0),
                       static_cast<float>(options.light[1] * kPi / 180.0), options.relief, nullptr);
    } else if (options.emboss == Emboss::Flow) {
        picture.emboss(field, nullptr);
    }
    color(picture);
    if (weight && !options.transparent) fillNoData(*weight, options.noDataFill, picture);
    drawOverlays(options, picture);
}

void PostProcessor::adjustContrast(VelkImage& picture) {
    switch (options.contrast) {
        case Contrast::Auto:
            picture.autoAdjust(options.adjust[0], options.adjust[1], nullptr);
            break;
        case Contrast::Brighten:
            picture.brighten(options.window[0], options.window[1], nullptr);
            break;
        case Contrast::Equalize:
            picture.equalize();
            break;
        case Contrast::EqualizeAdaptive:
            picture.equalizeAdaptive(options.equalizeTiles.width, options.equalizeTiles.height,
                                     options.equalizeClip);
            break;
        case Contrast::None:
            break;
    }
}

void PostProcessor::blur(VelkImage& picture) {
    if (options.blur == 0) return;
    if (picture.nChannels == 1) {
        picture.gaussBlur(options.blur, nullptr);
        return;
    }
    // The filters work on one channel: blur the three separately.
    VelkImage bands[3];
    for (int c = 0; c < 3; c++) {
        picture.oneband(c, &bands[c]);
        bands[c].gaussBlur(options.blur, nullptr);
    }
    picture.glue(bands[0], bands[1], bands[2]);
}

void PostProcessor::color(VelkImage& picture) {
    if (options.coloring == Coloring::None) return;
    if (picture.nChannels == 3) picture.colorToGrey(nullptr);
    if (colorLayer.width != picture.width || colorLayer.height != picture.height)
        prepareColorLayer(picture.width, picture.height);
    // The hue comes from the colour layer, the lightness from the LIC.
    picture.mix(colorLayer, nullptr);
}

void PostProcessor::prepareColorLayer(int width, int height) {
    colorLayer.setSize(width, height, 3);
    colorLayer.clear(0);
    switch (options.coloring) {
        case Coloring::Direction:
            field.vecToColor(colorLayer, 0);
            break;
        case Coloring::Magnitude: {
            VelkScalarField magnitude;
            magnitude.setSize(width, height);
            field.magnitude(magnitude, 0);
            float lo = options.range[0], hi = options.range[1];
            if (!options.hasRange) magnitude.getRange(lo, hi);
            setRange(colormap, lo, hi);
            magnitude.pseudoColor(colormap, colorLayer, 1);
            break;
        }
        case Coloring::Scalar: {
            float lo = options.range[0], hi = options.range[1];
            if (!options.hasRange) scalar->getRange(lo, hi);
            setRange(colormap, lo, hi);
            scalar->pseudoColor(colormap, colorLayer, 0);
            break;
        }
        case Coloring::None:
            break;
    }
    colorLayer.avoidHueOne();
}
