#include <velk/VelkCompute.h>

#include <climits>
#include <cmath>
#include <cstdlib>

#include <velk/Midpoint.h>
#include <velk/RK43.h>
#include <velk/VelkImage.h>
#include <velk/VelkVectorField.h>
#include <velk/report.h>
#include "TiledSeeding.h"
#include "celllayout.h"

namespace {

// Upper bound of nFilter and nExtension. It keeps the three nested running sums
// and the cubic kernel's numerator and divisor far inside 64 bits.
const int kMaxSteps = 1 << 17;

// Sub-pixel coordinates (pixel * numSubPixels) are truncated from floats.
const long long kMaxSubCoordinate = 1 << 30;

const char* const kKernelNames[] = {"box", "triangle", "cubic"};

// trunc(v) for step counts: NaN and negative counts give 0, huge ones the cap.
int stepCount(double v) {
    if (!(v >= 1.0)) return 0;
    if (v >= kMaxSteps) return kMaxSteps;
    return static_cast<int>(v);
}

// Calls visit(cell, pixel) for every output pixel's cell, in memory order:
// tile by tile, row by row within a tile.
template <class Visit>
void visitCells(const int* accum, int stride, const velk::CellLayout<float, int>& cells,
                Visit visit) {
    const int tile = cells.tileSize, width = cells.width, height = cells.height;
    const int* cell = accum;
    for (int y0 = 0; y0 < height; y0 += tile) {
        const int rows = height - y0 < tile ? height - y0 : tile;
        for (int x0 = 0; x0 < width; x0 += tile) {
            const int columns = width - x0 < tile ? width - x0 : tile;
            for (int y = y0; y < y0 + rows; y++) {
                const std::size_t row = static_cast<std::size_t>(y) * width + x0;
                for (int x = 0; x < columns; x++, cell += stride) visit(cell, row + x);
            }
        }
    }
}

// Each output pixel becomes its channel sums divided by its hits, `fill`
// without hits; returns the hits of all pixels. With kWeight (no-data
// handling) the weight shares behind the channel sums become `weight`, 0
// without hits. kSubCells and kChannels are the counts when known at compile
// time, 0 otherwise.
template <int kSubCells, int kChannels, bool kWeight>
long long normalize(const int* accum, unsigned char* out, unsigned char* weight,
                    const velk::CellLayout<float, int>& cells, int subCells, int channels,
                    int fill) {
    const int nSub = kSubCells != 0 ? kSubCells : subCells;
    const int nch = kChannels != 0 ? kChannels : channels;
    long long total = 0;
    visitCells(accum, nSub + nch + kWeight, cells, [&](const int* cell, std::size_t pixel) {
        int hits = 0;
        for (int s = 0; s < nSub; s++) hits += cell[s];
        total += hits;
        const int* sums = cell + nSub;
        unsigned char* o = out + pixel * nch;
        for (int ch = 0; ch < nch; ch++) {
            o[ch] = static_cast<unsigned char>(hits != 0 ? sums[ch] / hits : fill);
        }
        if (kWeight) weight[pixel] = static_cast<unsigned char>(hits != 0 ? sums[nch] / hits : 0);
    });
    return total;
}

// A no-data mask the engine can read node by node.
bool maskFits(const VelkImage* mask, const VelkVectorField* field) {
    return mask && mask->width == field->width && mask->height == field->height &&
           mask->nChannels == 1 && mask->data != nullptr;
}

}  // namespace

const int VelkCompute::offset[16][2] = {{0, 0}, {2, 0}, {0, 2}, {2, 2}, {1, 1}, {3, 1},
                                        {1, 3}, {3, 3}, {1, 0}, {3, 0}, {1, 2}, {3, 2},
                                        {0, 1}, {2, 1}, {0, 3}, {2, 3}};

VelkCompute::VelkCompute()
    : filterLength(20.0f),
      extensionLength(80.0f),
      stepSize(1.0f),
      offsetLength(20.0f),
      normalization(0.0f),
      numSubPixels(1),
      filterKernel(TRIANGLE),
      seedingMode(1),
      interpolationMethod(BILINEAR),
      width(0),
      height(0),
      nChannels(0),
      xMax(0.0f),
      yMax(0.0f),
      xScale(0.0f),
      yScale(0.0f),
      nFilter(0),
      nExtension(0),
      zaehlrohrBase(0),
      nTotal(0),
      cellStride(0),
      numSubCells(0),
      totalHits(0),
      numFieldLines(0),
      field(nullptr),
      input(nullptr),
      forward(new RK43(0.001f, 4.0f, 0.5f, 15.0f, +1)),
      backward(new RK43(0.001f, 4.0f, 0.5f, 15.0f, -1)),
      accum(nullptr),
      samples(nullptr),
      sums(nullptr),
      points(nullptr),
      zaehlrohr(),
      getPixel(nullptr),
      threads(0),
      cellShift(velk::kRowOrderShift),
      tileLog(nullptr),
      positions(nullptr),
      domain(0),
      noData(false),
      noDataFill(0),
      noDataMask(nullptr),
      weight(new VelkImage()),
      dataField(nullptr) {}

VelkCompute::~VelkCompute() {
    delete forward;
    delete backward;
    delete weight;
    // Only left over when a host called start() without stop().
    releaseBuffers();
}

void VelkCompute::setFilterKernel(FilterKernel kernel) {
    filterKernel = kernel;
}
void VelkCompute::setFilterLength(float length) {
    filterLength = length;
}
void VelkCompute::setOffsetLength(float length) {
    offsetLength = length;
}
void VelkCompute::setNumSubPixels(int n) {
    numSubPixels = n;
}
void VelkCompute::setInterpolationMethod(InterpolationMethod method) {
    interpolationMethod = method;
}

void VelkCompute::setThreads(int n) {
    threads = n;
}
int VelkCompute::getThreads() const {
    return threads;
}

void VelkCompute::setOrientation(bool on) {
    domain = on ? domain | VelkIntegrator::ORIENTATION : domain & ~VelkIntegrator::ORIENTATION;
}
bool VelkCompute::getOrientation() const {
    return domain & VelkIntegrator::ORIENTATION;
}

void VelkCompute::setPeriodic(bool x, bool y) {
    domain = (domain & VelkIntegrator::ORIENTATION) | (x ? VelkIntegrator::PERIODIC_X : 0) |
             (y ? VelkIntegrator::PERIODIC_Y : 0);
}
bool VelkCompute::getPeriodicX() const {
    return domain & VelkIntegrator::PERIODIC_X;
}
bool VelkCompute::getPeriodicY() const {
    return domain & VelkIntegrator::PERIODIC_Y;
}

int VelkCompute::setNoData(bool on, int fill) {
    if (fill < 0 || fill > 255) {
        return velk_error("the no-data fill value %d is outside 0 .. 255", fill);
    }
    noData = on;
    noDataFill = fill;
    return 1;
}
bool VelkCompute::getNoData() const {
    return noData;
}
int VelkCompute::getNoDataFill() const {
    return noDataFill;
}
void VelkCompute::setNoDataMask(VelkImage* mask) {
    noDataMask = mask;
}
const VelkImage& VelkCompute::getWeight() const {
    return *weight;
}

void VelkCompute::setNormalization(float value) {
    normalization = value;
    if (forward) forward->normalization = value;
    if (backward) backward->normalization = value;
}

void VelkCompute::replaceIntegrators(VelkIntegrator* f, VelkIntegrator* b) {
    delete forward;
    delete backward;
    forward = f;
    backward = b;
    forward->normalization = normalization;
    backward->normalization = normalization;
}

void VelkCompute::useEuler() {
    replaceIntegrators(new Midpoint(+1), new Midpoint(-1));
}

void VelkCompute::useRK43(float initialStep, float minStep, float maxStep, float tolerance) {
    replaceIntegrators(new RK43(tolerance, initialStep, minStep, maxStep, +1),
                       new RK43(tolerance, initialStep, minStep, maxStep, -1));
}

void VelkCompute::start(VelkVectorField* field, VelkImage* input) {
    const char* kernelName =
        filterKernel >= BOX && filterKernel <= CUBIC ? kKernelNames[filterKernel] : "unknown";
    velk_info("computing LIC image (L=%.0f, filter=%s, mask=%dx%d)", filterLength, kernelName,
              numSubPixels, numSubPixels);
    watch.start();

    this->field = field;
    this->input = input;
    width = input->width;
    height = input->height;
    nChannels = input->nChannels;
    const int fieldWidth = field->width;
    const int fieldHeight = field->height;
    xMax = static_cast<float>(fieldWidth) - 1.001f;
    yMax = static_cast<float>(fieldHeight) - 1.001f;
    // A periodic axis's image spans the period of all its nodes.
    const int cellsX = getPeriodicX() ? fieldWidth : fieldWidth - 1;
    const int cellsY = getPeriodicY() ? fieldHeight : fieldHeight - 1;
    xScale = static_cast<float>(width) / static_cast<float>(cellsX);
    yScale = static_cast<float>(height) / static_cast<float>(cellsY);

    const float step = 2 * stepSize / (xScale + yScale);
    forward->stepSize = step;
    backward->stepSize = step;

    nFilter = stepCount(static_cast<double>(filterLength) / static_cast<double>(stepSize) + 0.5);
    if (filterKernel == CUBIC && nFilter % 6 != 0) nFilter += 6 - nFilter % 6;
    nExtension = stepCount(extensionLength / stepSize + 0.5f);
    nTotal = nFilter + nExtension;
    zaehlrohrBase = 0;
    // Hosts that sample lines themselves see the cells in row order.
    cellShift = velk::kRowOrderShift;

    // Left-overs of a start() without stop().
    releaseBuffers();

    // Sizes the int arithmetic of the accumulation cannot hold leave the
    // buffers null, and compute() then fails instead of overrunning them.
    const long long n = numSubPixels;
    const long long pixels = static_cast<long long>(width) * height;
    const bool sizesOk = width >= 0 && height >= 0 && nChannels >= 0 && pixels < INT_MAX &&
                         n * width <= kMaxSubCoordinate && n * height <= kMaxSubCoordinate &&
                         n * n + nChannels <= INT_MAX &&
                         (2LL * nTotal + 1) * nChannels <= INT_MAX &&
                         (input->data != nullptr || pixels == 0);
    numSubCells = sizesOk ? numSubPixels * numSubPixels : 0;
    cellStride = sizesOk ? numSubCells + nChannels + (noData ? 1 : 0) : 0;
    if (sizesOk) {
        const std::size_t records = 2 * static_cast<std::size_t>(nTotal) + 1;
        const std::size_t cells = static_cast<std::size_t>(width) * height + 1;
        const std::size_t channels = nChannels > 0 ? nChannels : 1;
        points = static_cast<LinePoint*>(std::malloc(records * sizeof(LinePoint)));
        accum = static_cast<int*>(std::calloc(cells, cellStride * sizeof(int)));
        samples = static_cast<int*>(std::malloc(records * channels * sizeof(int)));
        sums = static_cast<std::int64_t*>(
            std::malloc(records * (channels + 1) * sizeof(std::int64_t)));
        positions = static_cast<Vec2f*>(std::malloc(records * sizeof(Vec2f)));
        if (!points || !accum || !samples || !sums || !positions || !prepareDataField()) {
            releaseBuffers();
        }
    }
    Vec2f* nodes = dataField ? dataField : reinterpret_cast<Vec2f*>(field->data);
    forward->domain = domain;
    backward->domain = domain;
    forward->setField(fieldWidth, fieldHeight, nodes);
    backward->setField(fieldWidth, fieldHeight, nodes);

    totalHits = 0;
    numFieldLines = 0;

    if (interpolationMethod == BILINEAR) {
        getPixel = nChannels == 1 ? getPixelBilinear1 : getPixelBilinearN;
    } else {
        getPixel = nChannels == 1 ? getPixelConst1 : getPixelConstN;
    }
}

// With no-data handling, the field with NaN wherever it has no data, which
// ends every line that meets it; false without memory for it.
bool VelkCompute::prepareDataField() {
    if (!noData) return true;
    const int w = field->width, h = field->height;
    const std::size_t nodes = static_cast<std::size_t>(w) * h;
    dataField = static_cast<Vec2f*>(std::malloc((nodes > 0 ? nodes : 1) * sizeof(Vec2f)));
    if (!dataField) return false;
    const Vec2f* from = reinterpret_cast<const Vec2f*>(field->data);
    const VelkImage* mask = maskFits(noDataMask, field) ? noDataMask : nullptr;
    const float nan = std::nanf("");
    for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
            const std::size_t k = static_cast<std::size_t>(y) * w + x;
            const Vec2f v = from[k];
            const bool masked =
                mask && mask->data[static_cast<std::size_t>(y) * mask->bytesPerLine + x] != 0;
            dataField[k] =
                masked || !std::isfinite(v.x) || !std::isfinite(v.y) ? Vec2f{nan, nan} : v;
        }
    }
    return true;
}

void VelkCompute::releaseBuffers() {
    std::free(dataField);
    dataField = nullptr;
    std::free(points);
    std::free(accum);
    std::free(samples);
    std::free(sums);
    std::free(positions);
    points = nullptr;
    accum = nullptr;
    samples = nullptr;
    sums = nullptr;
    positions = nullptr;
}

void VelkCompute::stop() {
    releaseBuffers();

    velk_info("total number of field lines = %d", numFieldLines);
    const int pixels = width * height;
    velk_info("average number of hits per pixel = %.2f",
              pixels > 0 ? static_cast<float>(totalHits) / static_cast<float>(pixels) : 0.0f);
    watch.stop();
    velk_info("time for LIC computation = %.2f sec", watch.elapsed());
}

int VelkCompute::compute(VelkVectorField* field, VelkImage* input, VelkImage* output,
                         VelkImage* mask, VelkImage* seedMap) {
    if (mask && (mask->width != field->width || mask->height != field->height)) {
        velk_info("field and mask must have the same size");
        return 0;
    }
    weight->setSize(0, 0, 1);
    if (noData && noDataMask && !maskFits(noDataMask, field)) {
        return velk_error("the no-data mask must be one channel of the field's size, %dx%d",
                          field->width, field->height);
    }
    start(field, input);
    if (!points) {
        stop();
        return velk_error(
            "can't allocate the buffers of a %dx%dx%d LIC image with %dx%d sub-pixels", width,
            height, nChannels, numSubPixels, numSubPixels);
    }
    if (seedMap) {
        seedMap->setSize(width, height, 1);
        seedMap->clear(1);
    }
    if (nFilter == 0) {
        // No kernel to cut short: the texture itself, with its full weight.
        *output = *input;
        if (noData) {
            weight->setSize(width, height, 1);
            weight->clear(255);
        }
        stop();
        return 1;
    }

    // A seed map can only be filled from a mask. Without sub-pixels there is
    // nothing to seed.
    VelkImage* map = mask ? seedMap : nullptr;
    const int mode = numSubPixels >= 1 ? seedingMode : -1;
    if (threads != 0) {
        // The tiled seeding needs the cells tile by tile; the sequential one
        // gains nothing from it (measured) and keeps the row order.
        cellShift = tileLog ? tileLog->tileShift : velk::kTileShift;
        const int workers = threads > 0 ? threads : velk::coreCount();
        if (!velk::TiledSeeding(*this, mask, map).run(mode, workers)) {
            stop();
            return velk_error("can't allocate the seeding state of a %dx%d LIC image", width,
                              height);
        }
    } else if (mode == 0) {
        seedScan(mask, map);
    } else if (mode == 1) {
        seedOffset(mask, map);
    } else if (mode == 2) {
        seedSobol(mask, map);
    }

    output->setSize(width, height, nChannels);
    const velk::CellLayout<float, int> cells = velk::cellLayout(cellShift, width, height);
    long long total;
    if (noData) {
        weight->setSize(width, height, 1);
        total = normalize<0, 0, true>(accum, output->data, weight->data, cells, numSubCells,
                                      nChannels, noDataFill);
    } else if (numSubCells == 1 && nChannels == 1) {
        total = normalize<1, 1, false>(accum, output->data, nullptr, cells, 1, 1, 0);
    } else {
        total =
            normalize<0, 0, false>(accum, output->data, nullptr, cells, numSubCells, nChannels, 0);
    }
    totalHits = total > INT_MAX ? INT_MAX : static_cast<int>(total);
    stop();
    return 1;
}

void VelkCompute::evalZaehlrohr() {
    // The histogram has 256 entries: a longer extension is evaluated over the
    // first 254 steps only.
    const int n = nExtension < 254 ? nExtension : 254;
    int(*h)[2] = zaehlrohr;
    for (int k = n + 1; k >= 1; k--) {
        h[k - 1][0] =
            static_cast<int>(static_cast<unsigned>(h[k - 1][0]) + static_cast<unsigned>(h[k][0]));
    }
    if (n < 1) {
        h[1][0] = 0;
        nExtension = 0;
        return;
    }
    long long cum = 0;
    float best = 0.0f;
    int bestK = 0;
    for (int k = 1; k <= n; k++) {
        cum += h[k - 1][1];
        // In double the product is exact wherever the int product would not overflow.
        const double weight = static_cast<double>(k) + nFilter + zaehlrohrBase;
        const float ratio = static_cast<float>(cum) / static_cast<float>(weight * h[k + 1][0]);
        if (ratio > best) {
            best = ratio;
            bestK = k;
        }
        h[k - 1][1] = 0;
        h[k][0] = 0;
    }
    h[n + 1][0] = 0;
    nExtension = bestK;
}
