// velk-lic: line integral convolution pictures from the command line.

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include <velk/velk.h>

#include "Animation.h"
#include "Console.h"
#include "Engine.h"
#include "FieldSource.h"
#include "Options.h"
#include "Pictures.h"
#include "PostProcess.h"
#include "Texture.h"
#include "ToolError.h"

namespace {

// Work above this many pixels (all frames together) shows progress.
constexpr long long kLongWorkPixels = 2000000;

void checkReadable(const std::string& path, const char* role) {
    if (path.empty()) return;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        throw ToolError("cannot read " + std::string(role) + " '" + path +
                        "': " + std::strerror(errno));
    std::fclose(file);
}

// Fails before any work when the output cannot be created.
void checkWritableDirectory(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    std::string dir = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (access(dir.c_str(), W_OK) != 0)
        throw ToolError("cannot write '" + path + "': " + std::strerror(errno));
}

void writeOutput(const Options& o, VelkImage& picture, int frame) {
    const std::string name = frameName(o.output, frame, o.frames);
    if (o.format == OutputFormat::Png) {
        writePng(picture, name);
    } else {
        writePnm(picture, name, o.ascii);
    }
    if (!o.histogram.empty()) writeHistogram(picture, frameName(o.histogram, frame, o.frames));
    if (console::verbose())
        console::note("wrote " + name + " (" + std::to_string(picture.width) + "x" +
                      std::to_string(picture.height) +
                      (picture.nChannels == 3 ? " colour)" : " grey)"));
}

void run(Options& o) {
    checkReadable(o.overlayPath, "overlay");
    checkReadable(o.meshPath, "mesh");
    checkWritableDirectory(o.output);
    if (!o.histogram.empty()) checkWritableDirectory(o.histogram);

    VelkVectorField field;
    makeField(o, field);
    VelkImage texture;
    makeTexture(o, texture);
    checkEngineMemory(o, texture);
    VelkImage mask;
    if (!o.maskPath.empty()) readMask(o.maskPath, field, mask);
    VelkImage* maskPointer = o.maskPath.empty() ? nullptr : &mask;

    VelkCompute engine;
    configureEngine(o, engine);
    PostProcessor post(o, field);

    const long long pixels = static_cast<long long>(texture.width) * texture.height +
                             (o.resize ? static_cast<long long>(o.size.width) * o.size.height : 0);
    console::Progress progress(o.frames > 1 || pixels > kLongWorkPixels);
    VelkImage picture;

    if (o.frames == 1) {
        progress.show("computing a " + std::to_string(texture.width) + "x" +
                      std::to_string(texture.height) + " LIC");
        computeLic(engine, field, texture, maskPointer, picture);
        progress.show("finishing the picture");
        post.apply(picture);
        progress.show("writing " + o.output);
        writeOutput(o, picture, 0);
        progress.done();
        return;
    }

    TextureAdvector advector(o, field, texture);
    VelkImage frameTexture;
    for (int frame = 0; frame < o.frames; frame++) {
        progress.show("frame " + std::to_string(frame + 1) + " of " + std::to_string(o.frames));
        if (frame > 0) advector.advance();
        advector.render(frameTexture);
        computeLic(engine, field, frameTexture, maskPointer, picture);
        post.apply(picture);
        writeOutput(o, picture, frame);
    }
    progress.done();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options;
        if (!parseOptions(argc, argv, options)) return 0;
        console::init(options.verbose);
        run(options);
        return 0;
    } catch (const ToolError& e) {
        std::fprintf(stderr, "velk-lic: %s\n", e.what());
        return e.exitStatus();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "velk-lic: out of memory\n");
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "velk-lic: %s\n", e.what());
        return 1;
    }
}
