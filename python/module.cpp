// The compiled half of the velk package: the library's calls on NumPy arrays,
// each without the GIL. Argument checking with messages that name the
// argument is done by the Python half (velk/__init__.py) before these run.

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/array.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>

#include <velk/velk.h>

#include "arrays.h"
#include "messages.h"

namespace nb = nanobind;
using namespace nb::literals;
using velkpy::BytesIn;
using velkpy::BytesOut;
using velkpy::FieldOut;
using velkpy::FloatIn;
using velkpy::FloatsOut;
using velkpy::Messages;

namespace {

// Process-wide state of the library and the C library: the drand48 generator
// behind createRandom and the packed tables of the fast convolution.
std::mutex noiseLock;
std::mutex convolutionLock;

using Table = nb::ndarray<const float, nb::shape<256, 3>, nb::c_contig, nb::device::cpu>;

struct Settings {
    int kernel;
    float length;
    float extension;
    float step;
    int subpixels;
    int lookup;
    int seeding;
    bool midpoint;
    std::array<float, 4> rk43;  // initial step, min step, max step, tolerance
    float normalization;
    int threads;
    int iterations;
    bool enhance;
    bool orientation;
    bool periodicX;
    bool periodicY;
    bool noData;
    int fill;
};

using Run = std::tuple<BytesOut, std::optional<BytesOut>, int, int>;

// One VelkCompute per Python engine; the lock keeps two threads sharing an
// engine from running it at once (the settings come with every run).
class Core {
  public:
    // The weight comes back only when asked for; the mask is one byte per node.
    Run run(const FloatIn& u, const FloatIn& v, const BytesIn& texture, const Settings& s,
            std::optional<BytesIn> mask, bool wantWeight) {
        Messages messages;
        VelkImage output, weight, noData;
        int ok = 0, lines = 0, hits = 0;
        {
            nb::gil_scoped_release release;
            VelkVectorField field;
            velkpy::readField(u, v, field);
            VelkImage input;
            velkpy::readImage(texture, input);
            if (mask) velkpy::readImage(*mask, noData);
            std::lock_guard<std::mutex> guard(lock);
            // The high-pass between passes blurs with the fast convolution.
            std::unique_lock<std::mutex> tables(convolutionLock, std::defer_lock);
            if (s.enhance) tables.lock();
            configure(s);
            engine.setNoDataMask(mask ? &noData : nullptr);
            ok = velk_enhancedLic(engine, &field, &input, &output, s.iterations, s.enhance);
            engine.setNoDataMask(nullptr);
            lines = engine.numFieldLines;
            hits = engine.totalHits;
            if (wantWeight) weight = engine.getWeight();
        }
        messages.log();
        if (!ok) throw nb::value_error(messages.errors().c_str());
        std::optional<BytesOut> weights;
        if (wantWeight) weights = velkpy::toArray(weight);
        return {velkpy::toArray(output), weights, lines, hits};
    }

  private:
    void configure(const Settings& s) {
        engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(s.kernel));
        engine.setFilterLength(s.length);
        engine.extensionLength = s.extension;
        engine.stepSize = s.step;
        engine.setNumSubPixels(s.subpixels);
        engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(s.lookup));
        engine.seedingMode = s.seeding;
        engine.setThreads(s.threads);
        engine.setNormalization(s.normalization);
        engine.setOrientation(s.orientation);
        engine.setPeriodic(s.periodicX, s.periodicY);
        engine.setNoData(s.noData, s.fill);
        if (s.midpoint) {
            engine.useEuler();
        } else {
            engine.useRK43(s.rk43[0], s.rk43[1], s.rk43[2], s.rk43[3]);
        }
    }

    VelkCompute engine;
    std::mutex lock;
};

// Raises OSError with the library's message; FileNotFoundError and the like
// when the file cannot even be opened.
[[noreturn]] void raiseFileError(const std::string& path, const std::string& message) {
    int code = 0;
    if (std::FILE* probe = std::fopen(path.c_str(), "rb")) {
        std::fclose(probe);
    } else {
        code = errno;
    }
    const std::string text = message.empty() ? "cannot read " + path : message;
    nb::object args = code ? nb::make_tuple(code, text, path) : nb::make_tuple(text);
    PyErr_SetObject(PyExc_OSError, args.ptr());
    throw nb::python_error();
}

// Runs a reader without the GIL; its failure becomes an OSError.
template <class Read>
void readFile(const std::string& path, Read read) {
    Messages messages;
    int ok = 0;
    {
        nb::gil_scoped_release release;
        ok = read(path.c_str());
    }
    messages.log();
    if (!ok) raiseFileError(path, messages.errors());
}

// Copies an array into an image, applies `op` without the GIL, returns the result.
template <class Op>
BytesOut transform(const BytesIn& in, Op op) {
    VelkImage image;
    {
        nb::gil_scoped_release release;
        velkpy::readImage(in, image);
        op(image);
    }
    return velkpy::toArray(image);
}

// The hue and saturation of `layer`, the lightness of the image.
void mixColor(VelkImage& image, VelkImage& layer) {
    layer.avoidHueOne();
    if (image.nChannels == 3) image.colorToGrey(nullptr);
    image.mix(layer, nullptr);
}

BytesOut noise(int height, int width, int channels, bool binary, int seed) {
    VelkImage image;
    {
        nb::gil_scoped_release release;
        image.setSize(width, height, channels);
        std::lock_guard<std::mutex> guard(noiseLock);
        image.createRandom(binary ? 1 : 0, seed);
    }
    return velkpy::toArray(image);
}

BytesOut blur(const BytesIn& in, int radius) {
    return transform(in, [radius](VelkImage& image) {
        std::lock_guard<std::mutex> guard(convolutionLock);
        if (image.nChannels == 1) {
            image.gaussBlur(radius, nullptr);
            return;
        }
        // The filters work on one channel: blur the three separately.
        VelkImage bands[3];
        for (int c = 0; c < 3; c++) {
            image.oneband(c, &bands[c]);
            bands[c].gaussBlur(radius, nullptr);
        }
        image.glue(bands[0], bands[1], bands[2]);
    });
}

BytesOut colorScalars(const BytesIn& in, const FloatIn& values, const Table& table, float lo,
                      float hi) {
    return transform(in, [&](VelkImage& image) {
        VelkScalarField scalars;
        velkpy::readScalars(values, scalars);
        VelkColormap map;
        std::memcpy(map.colors, table.data(), sizeof map.colors);
        map.setMinMax(lo, hi);
        VelkImage layer(image.width, image.height, 3);
        layer.clear(0);
        scalars.pseudoColor(map, layer, 0);
        mixColor(image, layer);
    });
}

BytesOut colorDirection(const BytesIn& in, const FloatIn& u, const FloatIn& v) {
    return transform(in, [&](VelkImage& image) {
        VelkVectorField field;
        velkpy::readField(u, v, field);
        VelkImage layer(image.width, image.height, 3);
        layer.clear(0);
        field.vecToColor(layer, 0);
        mixColor(image, layer);
    });
}

BytesOut embossFlow(const BytesIn& in, const FloatIn& u, const FloatIn& v) {
    return transform(in, [&](VelkImage& image) {
        VelkVectorField field;
        velkpy::readField(u, v, field);
        image.emboss(field, nullptr);
    });
}

FloatsOut colormap(const std::string& name) {
    VelkColormap map;
    if (name == "hue") map.createHueRamp();
    if (name == "hot") map.createHotIron();
    if (name == "bwr") map.createBlueWhiteRed();
    if (name == "grey") map.createGreyRamp();
    float* table = new float[256 * 3];
    std::memcpy(table, map.colors, sizeof map.colors);
    nb::capsule owner(table, [](void* p) noexcept { delete[] static_cast<float*>(p); });
    return FloatsOut(table, {256, 3}, owner);
}

// Fills a fresh nx x ny field with `fill` and returns it as (u, v).
template <class Fill>
FieldOut analytic(int nx, int ny, Fill fill) {
    VelkVectorField field;
    {
        nb::gil_scoped_release release;
        field.setSize(nx, ny);
        if (!field.data) throw std::bad_alloc();
        fill(field);
    }
    return velkpy::toArrays(field);
}

FieldOut readVectorField(const std::string& path) {
    VelkVectorField field;
    readFile(path, [&](const char* p) { return field.read(p); });
    return velkpy::toArrays(field);
}

FieldOut readVectorUcd(const std::string& path, int nx, int ny,
                       std::optional<std::array<float, 4>> bbox) {
    VelkVectorField field;
    readFile(path, [&](const char* p) {
        return field.readUCD(p, nx, ny, bbox ? bbox->data() : nullptr);
    });
    return velkpy::toArrays(field);
}

FloatsOut readScalarField(const std::string& path) {
    VelkScalarField scalars;
    readFile(path, [&](const char* p) { return scalars.read(p); });
    return velkpy::toArray(scalars);
}

FloatsOut readScalarUcd(const std::string& path, int nx, int ny) {
    VelkScalarField scalars;
    readFile(path, [&](const char* p) { return scalars.readUCD(p, nx, ny); });
    return velkpy::toArray(scalars);
}

BytesOut readPnm(const std::string& path) {
    VelkImage image;
    readFile(path, [&](const char* p) { return image.readPNM(p); });
    return velkpy::toArray(image);
}

void writePnm(const std::string& path, const BytesIn& in, bool ascii) {
    // The writer reports an unopenable file on stderr: find out first.
    std::FILE* probe = std::fopen(path.c_str(), "wb");
    if (!probe) raiseFileError(path, "can't open " + path + " (" + std::strerror(errno) + ")");
    std::fclose(probe);
    transform(in, [&](VelkImage& image) { image.writePNM(path.c_str(), ascii ? 1 : 0); });
}

}  // namespace

NB_MODULE(_velk, m) {
    Messages::install();

    nb::class_<Settings>(m, "Settings")
        .def(nb::init<>())
        .def_rw("kernel", &Settings::kernel)
        .def_rw("length", &Settings::length)
        .def_rw("extension", &Settings::extension)
        .def_rw("step", &Settings::step)
        .def_rw("subpixels", &Settings::subpixels)
        .def_rw("lookup", &Settings::lookup)
        .def_rw("seeding", &Settings::seeding)
        .def_rw("midpoint", &Settings::midpoint)
        .def_rw("rk43", &Settings::rk43)
        .def_rw("normalization", &Settings::normalization)
        .def_rw("threads", &Settings::threads)
        .def_rw("iterations", &Settings::iterations)
        .def_rw("enhance", &Settings::enhance)
        .def_rw("orientation", &Settings::orientation)
        .def_rw("periodic_x", &Settings::periodicX)
        .def_rw("periodic_y", &Settings::periodicY)
        .def_rw("nodata", &Settings::noData)
        .def_rw("fill", &Settings::fill);
    nb::class_<Core>(m, "Core")
        .def(nb::init<>())
        .def("run", &Core::run, "u"_a, "v"_a, "texture"_a, "settings"_a, "mask"_a.none(),
             "weight"_a);

    m.def("noise", &noise);
    m.def("adjust", [](const BytesIn& in, float mean, float sigma) {
        return transform(in, [=](VelkImage& i) { i.autoAdjust(mean, sigma, nullptr); });
    });
    m.def("brighten", [](const BytesIn& in, int lo, int hi) {
        return transform(in, [=](VelkImage& i) { i.brighten(lo, hi, nullptr); });
    });
    m.def("equalize",
          [](const BytesIn& in) { return transform(in, [](VelkImage& i) { i.equalize(); }); });
    m.def("equalize_adaptive", [](const BytesIn& in, int rows, int columns, float clip) {
        return transform(in, [=](VelkImage& i) { i.equalizeAdaptive(columns, rows, clip); });
    });
    m.def("blur", &blur);
    m.def("zoom", [](const BytesIn& in, int height, int width) {
        return transform(in, [=](VelkImage& i) { i.zoom(width, height, nullptr); });
    });
    m.def("emboss_light", [](const BytesIn& in, float azimuth, float elevation, int relief) {
        return transform(in, [=](VelkImage& i) { i.emboss(azimuth, elevation, relief, nullptr); });
    });
    m.def("emboss_flow", &embossFlow);
    m.def("color_scalars", &colorScalars);
    m.def("color_direction", &colorDirection);
    m.def("colormap", &colormap);

    m.def("circle", [](int nx, int ny, float angle) {
        return analytic(nx, ny, [=](VelkVectorField& f) { f.setCircle(angle); });
    });
    m.def("saddle", [] { return analytic(2, 2, [](VelkVectorField& f) { f.setSaddle(); }); });
    m.def("linear", [](int nx, int ny, std::array<float, 4> m, std::array<float, 2> b) {
        return analytic(nx, ny, [=](VelkVectorField& f) {
            const float matrix[2][2] = {{m[0], m[1]}, {m[2], m[3]}};
            f.setLinear(matrix, b.data());
        });
    });
    m.def("brusselator", [](int nx, int ny, float xRange, float yRange, float a, float b) {
        return analytic(nx, ny,
                        [=](VelkVectorField& f) { f.setBrusselator(xRange, yRange, a, b); });
    });

    m.def("read_vector_field", &readVectorField);
    m.def("read_ucd", &readVectorUcd, "path"_a, "nx"_a, "ny"_a, "bbox"_a.none());
    m.def("read_scalar_field", &readScalarField);
    m.def("read_scalar_ucd", &readScalarUcd);
    m.def("read_pnm", &readPnm);
    m.def("write_pnm", &writePnm);
}
