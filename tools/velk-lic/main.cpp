// velk-lic: line integral convolution pictures from the command line.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <velk/velk.h>

#include "Animation.h"
#include "Console.h"
#include "Engine.h"
#include "FieldSource.h"
#include "NoData.h"
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

void writeOutput(const Options& o, VelkImage& picture, const VelkImage* alpha, int frame) {
    const std::string name = frameName(o.output, frame, o.frames);
    if (o.format == OutputFormat::Png) {
        writePng(picture, name, alpha);
    } else {
        writePnm(picture, name, o.ascii);
    }
    if (!o.histogram.empty()) writeHistogram(picture, frameName(o.histogram, frame, o.frames));
    if (console::verbose())
        console::note("wrote " + name + " (" + std::to_string(picture.width) + "x" +
                      std::to_string(picture.height) +
                      (picture.nChannels == 3 ? " colour)" : " grey)"));
}

// A LIC of a texture, finished and written: the work of one frame. Each
// maker has its own engine and finishing steps, so that frames can be made
// side by side; they are written one after the other, in order.
class FrameMaker {
  public:
    FrameMaker(const Options& o, VelkVectorField& field, VelkImage* mask, VelkImage* noDataMask,
               int threads)
        : options(o), field(field), mask(mask), post(o, field) {
        configureEngine(o, threads, noDataMask, engine);
    }

    void make(VelkImage& texture, console::Progress* progress = nullptr) {
        if (progress)
            progress->show("computing a " + std::to_string(texture.width) + "x" +
                           std::to_string(texture.height) + " LIC");
        computeLic(options, engine, field, texture, mask, picture);
        if (progress) progress->show("finishing the picture");
        const VelkImage* weight = options.noData ? &engine.getWeight() : nullptr;
        post.apply(picture, weight);
        if (options.transparent) noDataAlpha(*weight, picture.width, picture.height, alpha);
    }

    void write(int frame) {
        writeOutput(options, picture, options.transparent ? &alpha : nullptr, frame);
    }

  private:
    const Options& options;
    VelkVectorField& field;
    VelkImage* mask;
    VelkCompute engine;
    PostProcessor post;
    VelkImage picture;
    VelkImage alpha;  // with --transparent
};

// Runs work(0) .. work(n - 1) side by side; the first failure by index is
// rethrown once all have ended.
void sideBySide(int n, const std::function<void(int)>& work) {
    std::vector<std::exception_ptr> failures(n);
    auto guarded = [&](int i) {
        try {
            work(i);
        } catch (...) {
            failures[i] = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 1; i < n; i++) {
        try {
            threads.emplace_back(guarded, i);
        } catch (const std::system_error&) {
            guarded(i);  // no thread to be had: in this one, then
        }
    }
    guarded(0);
    for (std::thread& t : threads) t.join();
    for (const std::exception_ptr& failure : failures)
        if (failure) std::rethrow_exception(failure);
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
    VelkImage mask, noDataMask;
    if (!o.maskPath.empty()) readMask(o.maskPath, "mask", field, mask);
    if (!o.noDataMaskPath.empty()) readMask(o.noDataMaskPath, "no-data mask", field, noDataMask);
    VelkImage* maskPointer = o.maskPath.empty() ? nullptr : &mask;
    VelkImage* noDataPointer = o.noDataMaskPath.empty() ? nullptr : &noDataMask;

    const long long pixels = static_cast<long long>(texture.width) * texture.height +
                             (o.resize ? static_cast<long long>(o.size.width) * o.size.height : 0);
    console::Progress progress(o.frames > 1 || pixels > kLongWorkPixels);
    const ThreadShare share = shareThreads(o, texture);
    std::vector<std::unique_ptr<FrameMaker>> makers;
    for (int i = 0; i < share.frames; i++)
        makers.emplace_back(
            new FrameMaker(o, field, maskPointer, noDataPointer, share.engineThreads));
    if (o.frames == 1) {
        makers[0]->make(texture, &progress);
        progress.show("writing " + o.output);
        makers[0]->write(0);
        progress.done();
        return;
    }

    // The textures move on frame by frame; their LICs are made side by side.
    TextureAdvector advector(o, field, texture);
    std::vector<VelkImage> textures(share.frames);
    for (int first = 0; first < o.frames; first += share.frames) {
        const int n = std::min(share.frames, o.frames - first);
        progress.show("frame " + std::to_string(first + n) + " of " + std::to_string(o.frames));
        for (int i = 0; i < n; i++) {
            if (first + i > 0) advector.advance();
            advector.render(textures[i]);
        }
        sideBySide(n, [&](int i) { makers[i]->make(textures[i]); });
        for (int i = 0; i < n; i++) makers[i]->write(first + i);
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
