#ifndef VELK_VELKCOMPUTE_H
#define VELK_VELKCOMPUTE_H

#include <cstddef>
#include <cstdint>

#include <velk/UxWatch.h>
#include <velk/Vec2f.h>
#include <velk/velk_export.h>

class VelkImage;
class VelkIntegrator;
class VelkVectorField;
namespace velk {
class TiledSeeding;
struct TileLog;
}  // namespace velk

// The line integral convolution engine. Every output pixel is the input texture
// filtered along the field line through it; one traced line feeds up to
// 2 * nExtension + 1 output samples through running sums, so the cost per line
// does not grow with the filter length.
//
// Settings persist between computations; the buffers exist only during
// compute(). The engine owns its two integrators and borrows the field and the
// images for one call.
class VELK_EXPORT VelkCompute {
  public:
    enum FilterKernel : int { BOX = 0, TRIANGLE = 1, CUBIC = 2 };
    enum InterpolationMethod : int { CONSTANT = 0, BILINEAR = 1 };

    // One point of a traced line. Only output records (at least nFilter records
    // from either end of the traced part) get their pixel and sub-pixel.
    struct LinePoint {
        int pixel;     // output pixel px + py * width
        int subPixel;  // sx + numSubPixels * sy
        int status;    // integrator status after the step that made the point
    };

    // Texture lookup at texture pixel coordinates (periodic); one int per channel.
    typedef void (*PixelLookup)(VelkImage* image, float x, float y, int* out);

    // The (x, y) steps of the offset seeding pattern over each 4 x 4 block.
    static const int offset[16][2];

    float filterLength;     // L, half-length of the kernel in texture pixels
    float extensionLength;  // M, how far each line is followed beyond the filter part
    float stepSize;         // h, integration step in texture pixels
    float offsetLength;     // stored only
    float normalization;    // speed normalisation handed to the integrators
    int numSubPixels;       // N: N x N sub-pixels per output pixel
    FilterKernel filterKernel;
    int seedingMode;  // 0 scan, 1 offset pattern, 2 Sobol
    InterpolationMethod interpolationMethod;
    int width;  // of the input texture and so of the output
    int height;
    int nChannels;
    float xMax;    // field width - 1.001
    float yMax;    // field height - 1.001
    float xScale;  // texture pixels per field cell
    float yScale;
    int nFilter;     // filter half-length in steps
    int nExtension;  // extension in steps
    int zaehlrohrBase;
    int nTotal;       // nFilter + nExtension: index of a line's centre record
    int cellStride;   // ints per accumulation cell: numSubCells + nChannels
    int numSubCells;  // N * N
    int totalHits;
    int numFieldLines;
    VelkVectorField* field;  // borrowed during compute()
    VelkImage* input;        // borrowed during compute()
    VelkIntegrator* forward;
    VelkIntegrator* backward;
    // Per output pixel numSubCells hit counters, then nChannels sums (and with
    // no-data handling the sum of the weight shares). One spare
    // cell behind the last pixel takes the points that lie outside the image.
    int* accum;
    int* samples;           // texture values of a line, nChannels per record
    std::int64_t* sums;     // wide running sums of a line (nChannels + 1 per record)
    LinePoint* points;      // 2 * nTotal + 1 records; the seed is record nTotal
    int zaehlrohr[256][2];  // histogram for evalZaehlrohr, filled by the host
    PixelLookup getPixel;
    UxWatch watch;

    // Defaults: L 20, M 80, h 1, triangle kernel, bilinear lookup, offset seeding,
    // one sub-pixel, normalisation 0, two RK43 integrators.
    VelkCompute();
    ~VelkCompute();
    VelkCompute(const VelkCompute&) = delete;
    VelkCompute& operator=(const VelkCompute&) = delete;

    // Take effect at the next compute().
    void setFilterKernel(FilterKernel kernel);
    void setFilterLength(float length);
    void setOffsetLength(float length);
    void setNumSubPixels(int n);
    void setInterpolationMethod(InterpolationMethod method);
    // 0 (the default): the sequential algorithm. n >= 1: the tiled algorithm on
    // n threads, whose output is the same bytes for every n >= 1 (and close to,
    // but not the same as, the sequential one); n < 0: one thread per core.
    // A host's own integrator types cannot be copied for the threads: the
    // tiled algorithm then runs on the calling thread alone. Takes effect at
    // the next compute(); the threads exist only during it.
    void setThreads(int n);
    int getThreads() const;
    // Also written into both current integrators at once.
    void setNormalization(float normalization);

    // The field as an orientation field: its vectors give directions only up
    // to sign (v and -v mean the same), and lines follow them without turning
    // back, whatever the integrator. Off by default.
    void setOrientation(bool on);
    bool getOrientation() const;
    // Periodic axes: a line leaving one edge goes on from the opposite one.
    // The nodes of a periodic axis are one period (node W is node 0 again, as
    // numpy.roll has it), and the image spans exactly that period. Off by
    // default: lines leaving the field go on straight.
    void setPeriodic(bool x, bool y);
    bool getPeriodicX() const;
    bool getPeriodicY() const;
    // No-data handling, off by default. On, the field has no data at nodes
    // with a NaN or infinite component and at the non-zero nodes of the
    // no-data mask; lines end where they meet such a node, at stagnation
    // points and at the edges of a closed axis, and each value is divided by
    // the kernel weight it received rather than the full weight, so pictures
    // do not darken towards edges and holes. Pixels that no line reaches get
    // `fill` in every channel. Returns 0, changing nothing, for a fill outside
    // 0 .. 255 (reported with velk_error).
    int setNoData(bool on, int fill = 0);
    bool getNoData() const;
    int getNoDataFill() const;
    // Borrowed until the next compute(): one channel of the field's size,
    // non-zero where the field has no data; null for none. compute() fails
    // with a message for a mask of another size or channel count.
    void setNoDataMask(VelkImage* mask);
    // After a compute() with no-data handling: per pixel the mean share of the
    // full kernel weight its values received, scaled to 1 .. 255, and 0 where
    // no line came (255 everywhere when the filter has no length, as the
    // picture is then the texture). Empty (0 x 0) after any other compute().
    const VelkImage& getWeight() const;

    // Replaces the integrators by two Midpoint integrators (the fixed-step choice).
    void useEuler();
    // Replaces the integrators by RK43(tolerance, initialStep, minStep, maxStep):
    // the defaults are useRK43(4.0, 0.5, 15.0, 0.001).
    void useRK43(float initialStep, float minStep, float maxStep, float tolerance);

    // Computes the LIC image of `field` over the texture `input` into `output`
    // (size and channels of `input`). `mask` (field-sized, one channel) and
    // `seedMap` are optional: seedMap receives per pixel the mask value at the
    // last seed placed in it. Returns 1, or 0 when the mask size differs from the
    // field's (nothing touched) or the buffers cannot be had (sizes beyond the
    // int arithmetic, allocation failure; reported with velk_error).
    int compute(VelkVectorField* field, VelkImage* input, VelkImage* output,
                VelkImage* mask = nullptr, VelkImage* seedMap = nullptr);
    // Set-up and tear-down around one computation (compute() calls them).
    void start(VelkVectorField* field, VelkImage* input);
    void stop();
    // Traces and convolves the line through `seed` (field coordinates) and
    // accumulates its samples. Needs start(); does nothing when the field value
    // at the seed is zero or not a number, or the seed lies outside the field.
    void sample(const Vec2f& seed);
    // Sets nExtension from the histogram in zaehlrohr, which it clears.
    void evalZaehlrohr();

    // Periodic texture lookups at texture pixel coordinates (period width - 1 and
    // height - 1, rows at bytesPerLine): one int to `out` for the 1-variants,
    // nChannels ints otherwise; zeros where nothing can be wrapped (an image
    // narrower or lower than 2 pixels, a coordinate that is not finite).
    static void getPixelConstN(VelkImage* image, float x, float y, int* out);
    static void getPixelConst1(VelkImage* image, float x, float y, int* out);
    static void getPixelBilinearN(VelkImage* image, float x, float y, int* out);
    static void getPixelBilinear1(VelkImage* image, float x, float y, int* out);

  private:
    friend class velk::TiledSeeding;
    int threads;             // as set by setThreads
    int cellShift;           // accum tile by tile (tiles of 2^cellShift pixels), or row order
    velk::TileLog* tileLog;  // where the tiled seeding records its work (measurements)
    Vec2f* positions;        // the traced points of a line, one per record
    int domain;              // VelkIntegrator::Domain bits handed to the integrators
    bool noData;             // as set by setNoData
    int noDataFill;
    VelkImage* noDataMask;  // borrowed, see setNoDataMask
    VelkImage* weight;      // the coverage of the last computation
    Vec2f* dataField;       // with no-data handling, the field with NaN wherever it has no data
    void seedScan(VelkImage* mask, VelkImage* seedMap);
    void seedOffset(VelkImage* mask, VelkImage* seedMap);
    void seedSobol(VelkImage* mask, VelkImage* seedMap);
    void seedPixel(int x, int y, int sub, VelkImage* mask, VelkImage* seedMap);
    Vec2f seedOf(int x, int y, int sub) const;
    void markSeed(const Vec2f& seed, int x, int y, VelkImage* mask, VelkImage* seedMap) const;
    void replaceIntegrators(VelkIntegrator* forward, VelkIntegrator* backward);
    void releaseBuffers();
    bool prepareDataField();
};

#endif
