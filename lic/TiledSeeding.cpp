#include "TiledSeeding.h"

#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <thread>
#include <typeinfo>

#include <velk/Euler.h>
#include <velk/Midpoint.h>
#include <velk/RK43.h>
#include <velk/RKCK.h>
#include <velk/RKDP.h>
#include <velk/UxSobol.h>
#include <velk/VelkCompute.h>
#include "linetools.h"

namespace velk {
namespace {

// Rounds of the offset pattern per sub-pixel, and the Sobol draws of a tile
// are cut into as many.
const int kOffsetSteps = 16;

// Tags cycle through pairs from 2 to 255; before they repeat, every hit byte
// of an earlier phase becomes 1.
const int kTagPairs = 127;

template <class T>
VelkIntegrator* copyAs(const VelkIntegrator& it) {
    return new T(static_cast<const T&>(it));
}

// A copy that traces every line exactly as the original, or null for a type
// the library does not know.
VelkIntegrator* copyOf(const VelkIntegrator& it) {
    const std::type_info& type = typeid(it);
    if (type == typeid(RK43)) return copyAs<RK43>(it);
    if (type == typeid(RKCK)) return copyAs<RKCK>(it);
    if (type == typeid(RKDP)) return copyAs<RKDP>(it);
    if (type == typeid(Midpoint)) return copyAs<Midpoint>(it);
    if (type == typeid(Euler)) return copyAs<Euler>(it);
    return nullptr;
}

unsigned char loadHit(const unsigned char* hit) {
    return __atomic_load_n(hit, __ATOMIC_RELAXED);
}

}  // namespace

int coreCount() {
    const unsigned n = std::thread::hardware_concurrency();
    return n > 0 ? static_cast<int>(n) : 1;
}

// Where a tile's Sobol walk stands between its rounds.
struct SobolCursor {
    int xIndex, yIndex, count;
};

// One thread's integrators, line buffers and counts.
struct TiledSeeding::Worker {
    LineTools tools = {};
    bool ownsIntegrators = false;
    long long lines = 0;
    int tileStart = 0, tileCells = 0;  // cells of the tile being seeded
    long long records = 0;             // traced for that tile in this phase
    std::vector<TileWork> log;
    UxSobol sobol;

    ~Worker() {
        if (ownsIntegrators) {
            delete tools.forward;
            delete tools.backward;
        }
        std::free(tools.positions);
        std::free(tools.points);
        std::free(tools.samples);
        std::free(tools.sums);
        std::free(sobol.xTable);
        std::free(sobol.yTable);
    }
};

TiledSeeding::TiledSeeding(VelkCompute& engine, VelkImage* mask, VelkImage* seedMap)
    : engine(engine),
      mask(mask),
      seedMap(seedMap),
      cells(cellLayout(engine.cellShift, engine.width, engine.height)),
      mode(-1),
      tilesX(0),
      tilesY(0),
      rounds(0),
      hits(nullptr),
      nextTile(0),
      phase(0),
      ownTag(3),
      foreignTag(2),
      shared(false) {}

TiledSeeding::~TiledSeeding() {
    for (Worker* worker : workers) delete worker;
    std::free(hits);
}

bool TiledSeeding::startWorker(Worker& worker, bool ownIntegrators) {
    LineTools& t = worker.tools;
    if (ownIntegrators) {
        t.forward = engine.forward;
        t.backward = engine.backward;
    } else {
        worker.ownsIntegrators = true;
        t.forward = copyOf(*engine.forward);
        t.backward = copyOf(*engine.backward);
        if (!t.forward || !t.backward) return false;
    }
    const std::size_t records = 2 * static_cast<std::size_t>(engine.nTotal) + 1;
    const std::size_t channels = engine.nChannels > 0 ? engine.nChannels : 1;
    t.positions = static_cast<Vec2f*>(std::malloc(records * sizeof(Vec2f)));
    t.points =
        static_cast<VelkCompute::LinePoint*>(std::malloc(records * sizeof(VelkCompute::LinePoint)));
    t.samples = static_cast<int*>(std::malloc(records * channels * sizeof(int)));
    t.sums = static_cast<std::int64_t*>(std::malloc(records * channels * sizeof(std::int64_t)));
    return t.positions && t.points && t.samples && t.sums;
}

bool TiledSeeding::run(int seedingMode, int threads) {
    const int N = engine.numSubPixels;
    const long long subCells = engine.numSubCells;
    if (seedingMode < 0 || seedingMode > 2 || engine.width < 1 || engine.height < 1) return true;
    mode = seedingMode;
    const long long perSub = mode == 0 ? 1 : mode == 1 ? kOffsetSteps : 0;
    const long long allRounds = mode == 2 ? kOffsetSteps : perSub * N * N;
    if (allRounds > (1 << 26)) return false;
    rounds = static_cast<int>(allRounds);

    const int tile = cells.tileSize;
    tilesX = (engine.width + tile - 1) / tile;
    tilesY = (engine.height + tile - 1) / tile;
    for (int ty = 0; ty < tilesY; ty++) {
        for (int tx = 0; tx < tilesX; tx++)
            tilesOfColour[(tx & 1) + 2 * (ty & 1)].push_back(ty * tilesX + tx);
    }
    if (mode == 2) sobolCursors.assign(static_cast<std::size_t>(tilesX) * tilesY, {0, 0, 0});
    const std::size_t cellCount = static_cast<std::size_t>(engine.width) * engine.height + 1;
    hits = static_cast<unsigned char*>(std::calloc(cellCount, static_cast<std::size_t>(subCells)));
    if (!hits) return false;

    for (int k = 0; k < threads; k++) {
        workers.push_back(new Worker);
        if (!startWorker(*workers.back(), k == 0)) {
            // A host's own integrator type cannot be copied: one thread.
            const bool copyFailed =
                k > 0 && (!workers.back()->tools.forward || !workers.back()->tools.backward);
            delete workers.back();
            workers.pop_back();
            if (!copyFailed) return false;
            break;
        }
    }
    std::vector<std::thread> pool;
    for (std::size_t k = 1; k < workers.size(); k++) {
        try {
            pool.emplace_back(&TiledSeeding::work, this, std::ref(*workers[k]));
        } catch (const std::system_error&) {
            break;
        }
    }
    shared = !pool.empty();
    barrier.open(static_cast<int>(pool.size()) + 1);
    work(*workers[0]);
    for (std::thread& thread : pool) thread.join();

    for (std::size_t k = 0; k <= pool.size(); k++) {
        engine.numFieldLines += static_cast<int>(workers[k]->lines);
        if (engine.tileLog) {
            std::vector<TileWork>& log = engine.tileLog->work;
            log.insert(log.end(), workers[k]->log.begin(), workers[k]->log.end());
        }
    }
    return true;
}

void TiledSeeding::work(Worker& worker) {
    barrier.waitForOpen();
    const int phases = 4 * rounds;
    for (int p = 0; p < phases; p++) {
        const std::vector<int>& tiles = tilesOfColour[p % 4];
        for (;;) {
            const int k = nextTile.fetch_add(1, std::memory_order_relaxed);
            if (k >= static_cast<int>(tiles.size())) break;
            seedTile(worker, tiles[k], p / 4);
        }
        barrier.arriveAndWait([this] { nextPhase(); });
    }
}

void TiledSeeding::nextPhase() {
    phase++;
    nextTile.store(0, std::memory_order_relaxed);
    const int pair = phase % kTagPairs;
    if (pair == 0) {
        const std::size_t bytes =
            (static_cast<std::size_t>(engine.width) * engine.height + 1) * engine.numSubCells;
        for (std::size_t i = 0; i < bytes; i++) hits[i] = hits[i] != 0;
    }
    foreignTag = static_cast<unsigned char>(2 + 2 * pair);
    ownTag = static_cast<unsigned char>(foreignTag + 1);
}

void TiledSeeding::seedTile(Worker& worker, int tile, int round) {
    const int x0 = (tile % tilesX) * cells.tileSize;
    const int y0 = (tile / tilesX) * cells.tileSize;
    const int x1 = engine.width - x0 < cells.tileSize ? engine.width : x0 + cells.tileSize;
    const int y1 = engine.height - y0 < cells.tileSize ? engine.height : y0 + cells.tileSize;
    worker.tileStart = cells.cellOf(x0, y0);
    worker.tileCells = (x1 - x0) * (y1 - y0);
    worker.records = 0;
    if (mode == 0) {
        for (int y = y0; y < y1; y++) {
            for (int x = x0; x < x1; x++) seedCandidate(worker, x, y, round);
        }
    } else if (mode == 1) {
        const int* o = VelkCompute::offset[round % kOffsetSteps];
        for (int y = y0 + o[1]; y < y1; y += 4) {
            for (int x = x0 + o[0]; x < x1; x += 4)
                seedCandidate(worker, x, y, round / kOffsetSteps);
        }
    } else {
        seedSobolRound(worker, tile, round, x0, y0, x1 - x0, y1 - y0);
    }
    if (engine.tileLog) worker.log.push_back({phase, tile, worker.records});
}

void TiledSeeding::seedSobolRound(Worker& worker, int tile, int round, int x0, int y0, int w,
                                  int h) {
    const int N = engine.numSubPixels;
    UxSobol& sobol = worker.sobol;
    sobol.init(w * N, h * N);
    if (!sobol.xTable || !sobol.yTable) return;
    SobolCursor& cursor = sobolCursors[tile];
    sobol.xIndex = cursor.xIndex;
    sobol.yIndex = cursor.yIndex;
    sobol.count = cursor.count;
    const int draws = w * h;
    const long long end = round == kOffsetSteps - 1
                              ? draws
                              : static_cast<long long>(round + 1) * draws / kOffsetSteps;
    while (sobol.count < end) {
        const int xi = sobol.xTable[sobol.xIndex];
        const int yi = sobol.yTable[sobol.yIndex % sobol.ny];
        sobol.xIndex++;
        sobol.yIndex++;
        if (sobol.xIndex == sobol.nx) {
            sobol.xIndex = 0;
            sobol.yIndex -= sobol.nx - 1;
        }
        if (++sobol.count >= draws) break;
        seedCandidate(worker, x0 + xi / N, y0 + yi / N, xi % N + N * (yi % N));
    }
    cursor = {sobol.xIndex, sobol.yIndex, sobol.count};
}

void TiledSeeding::seedCandidate(Worker& worker, int x, int y, int sub) {
    const std::size_t cell = static_cast<std::size_t>(cells.cellOf(x, y));
    if (covered(loadHit(hits + cell * engine.numSubCells + sub))) return;
    const Vec2f seed = engine.seedOf(x, y, sub);
    if (sampleLine(engine, engine.cellShift, worker.tools, seed, shared)) {
        worker.lines++;
        worker.records += worker.tools.hi - worker.tools.lo + 1;
        markLine(worker);
    }
    engine.markSeed(seed, x, y, mask, seedMap);
}

void TiledSeeding::markLine(const Worker& worker) const {
    const LineTools& t = worker.tools;
    const int n = engine.nFilter;
    const std::size_t subCells = engine.numSubCells;
    for (int i = t.lo + n; i <= t.hi - n; i++) {
        const VelkCompute::LinePoint& point = t.points[i];
        unsigned char* hit =
            hits + static_cast<std::size_t>(point.pixel) * subCells + point.subPixel;
        const unsigned char before = loadHit(hit);
        if (static_cast<unsigned>(point.pixel - worker.tileStart) <
            static_cast<unsigned>(worker.tileCells)) {
            if (before == 0 || before == foreignTag)
                __atomic_store_n(hit, ownTag, __ATOMIC_RELAXED);
        } else if (before == 0) {
            unsigned char expected = 0;
            __atomic_compare_exchange_n(hit, &expected, foreignTag, false, __ATOMIC_RELAXED,
                                        __ATOMIC_RELAXED);
        }
    }
}

}  // namespace velk
