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

// Tiles of one colour lie three apart, so that their zones do not meet.
const int kColours = 9;

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

}  // namespace

int coreCount() {
    const unsigned n = std::thread::hardware_concurrency();
    return n > 0 ? static_cast<int>(n) : 1;
}

// One thread's integrators, line buffers and counts.
struct TiledSeeding::Worker {
    LineTools tools = {};
    bool ownsIntegrators = false;
    long long lines = 0;
    CellZone zone = {};  // of the tile being seeded
    DeferredAdds deferred;
    long long records = 0;  // traced for that tile in this phase
    std::vector<TileWork> log;
    UxSobol sobol;

    ~Worker() {
        if (ownsIntegrators) {
            if (tools.backward != tools.forward) delete tools.backward;
            delete tools.forward;
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
      running(0),
      nextTile(0),
      phase(0) {}

void TiledSeeding::record(VelkCompute& engine, TileLog* log) {
    engine.tileLog = log;
}

TiledSeeding::~TiledSeeding() {
    for (Worker* worker : workers) delete worker;
}

bool TiledSeeding::startWorker(Worker& worker, bool ownIntegrators) {
    LineTools& t = worker.tools;
    if (ownIntegrators) {
        t.forward = engine.forward;
        t.backward = engine.backward;
    } else {
        // A host may have made one integrator trace both ways; so do the copies.
        worker.ownsIntegrators = true;
        t.forward = copyOf(*engine.forward);
        t.backward = engine.backward == engine.forward ? t.forward : copyOf(*engine.backward);
        if (!t.forward || !t.backward) return false;
    }
    const std::size_t records = 2 * static_cast<std::size_t>(engine.nTotal) + 1;
    const std::size_t channels = engine.nChannels > 0 ? engine.nChannels : 1;
    t.positions = static_cast<Vec2f*>(std::malloc(records * sizeof(Vec2f)));
    t.points =
        static_cast<VelkCompute::LinePoint*>(std::malloc(records * sizeof(VelkCompute::LinePoint)));
    t.samples = static_cast<int*>(std::malloc(records * channels * sizeof(int)));
    t.sums =
        static_cast<std::int64_t*>(std::malloc(records * (channels + 1) * sizeof(std::int64_t)));
    return t.positions && t.points && t.samples && t.sums;
}

bool TiledSeeding::run(int seedingMode, int threads) {
    if (seedingMode < 0 || seedingMode > 2 || engine.width < 1 || engine.height < 1) return true;
    mode = seedingMode;
    // A round per sub-pixel; the Sobol order draws all sub-pixels at once.
    rounds = mode == 2 ? 1 : engine.numSubCells;

    const int tile = cells.tileSize;
    tilesX = (engine.width - 1) / tile + 1;
    tilesY = (engine.height - 1) / tile + 1;
    for (int ty = 0; ty < tilesY; ty++) {
        for (int tx = 0; tx < tilesX; tx++) {
            tilesOfColour[tx % 3 + 3 * (ty % 3)].push_back(ty * tilesX + tx);
        }
    }

    for (int k = 0; k < threads; k++) {
        workers.push_back(new Worker);
        if (!startWorker(*workers.back(), k == 0)) {
            // A host's own integrator type cannot be copied: fewer threads.
            const LineTools& t = workers.back()->tools;
            const bool copyFailed = k > 0 && (!t.forward || !t.backward);
            delete workers.back();
            workers.pop_back();
            if (!copyFailed) return false;
            break;
        }
    }
    std::vector<std::thread> pool;
    for (std::size_t k = 1; k < workers.size(); k++) {
        try {
            // A lambda, not a member pointer: its type has no linkage, so the
            // std::thread code made for it stays inside the library.
            Worker& worker = *workers[k];
            pool.emplace_back([this, &worker] { work(worker); });
        } catch (const std::system_error&) {
            break;
        }
    }
    running = pool.size() + 1;
    barrier.open(static_cast<int>(running));
    work(*workers[0]);
    for (std::thread& thread : pool) thread.join();

    bool complete = true;
    for (std::size_t k = 0; k < running; k++) {
        engine.numFieldLines += static_cast<int>(workers[k]->lines);
        complete = complete && !workers[k]->deferred.failed;
        if (engine.tileLog) {
            std::vector<TileWork>& log = engine.tileLog->work;
            log.insert(log.end(), workers[k]->log.begin(), workers[k]->log.end());
        }
    }
    return complete;
}

void TiledSeeding::work(Worker& worker) {
    barrier.waitForOpen();
    const long long phases = static_cast<long long>(kColours) * rounds;
    for (long long p = 0; p < phases; p++) {
        const std::vector<int>& tiles = tilesOfColour[p % kColours];
        for (;;) {
            const int k = nextTile.fetch_add(1, std::memory_order_relaxed);
            if (k >= static_cast<int>(tiles.size())) break;
            seedTile(worker, tiles[k], static_cast<int>(p / kColours));
        }
        barrier.arriveAndWait([this] {
            addDeferred();
            nextTile.store(0, std::memory_order_relaxed);
            phase++;
        });
    }
}

// Every thread has finished the phase: nothing else adds meanwhile.
void TiledSeeding::addDeferred() {
    const int values = engine.cellStride - engine.numSubCells;
    const int entry = 2 + values;
    for (std::size_t k = 0; k < running; k++) {
        DeferredAdds& d = workers[k]->deferred;
        for (std::size_t i = 0; i + entry <= d.size; i += entry) {
            const int* e = d.data + i;
            int* cell = engine.accum + static_cast<std::ptrdiff_t>(e[0]) * engine.cellStride;
            cell[e[1]]++;
            for (int v = 0; v < values; v++) cell[engine.numSubCells + v] += e[2 + v];
        }
        d.size = 0;
    }
}

CellZone TiledSeeding::zoneOf(int tileX, int tileY) const {
    const int tile = cells.tileSize;
    const int x0 = (tileX > 0 ? tileX - 1 : 0) * tile;
    const int x1 = tileX + 2 < tilesX ? (tileX + 2) * tile : engine.width;
    CellZone zone = {};
    for (int k = 0; k < 3; k++) {
        const int row = tileY - 1 + k;
        if (row < 0 || row >= tilesY) continue;
        const int y0 = row * tile;
        const int rows = engine.height - y0 < tile ? engine.height - y0 : tile;
        zone.first[k] = y0 * engine.width + x0 * rows;
        zone.count[k] = static_cast<unsigned>((x1 - x0) * rows);
    }
    return zone;
}

void TiledSeeding::seedTile(Worker& worker, int tile, int round) {
    const int tileX = tile % tilesX, tileY = tile / tilesX;
    const int x0 = tileX * cells.tileSize;
    const int y0 = tileY * cells.tileSize;
    const int x1 = engine.width - x0 < cells.tileSize ? engine.width : x0 + cells.tileSize;
    const int y1 = engine.height - y0 < cells.tileSize ? engine.height : y0 + cells.tileSize;
    worker.zone = zoneOf(tileX, tileY);
    worker.records = 0;
    if (mode == 0) {
        for (int y = y0; y < y1; y++) {
            for (int x = x0; x < x1; x++) seedCandidate(worker, x, y, round);
        }
    } else if (mode == 1) {
        for (const int* o : VelkCompute::offset) {
            for (int y = y0 + o[1]; y < y1; y += 4) {
                for (int x = x0 + o[0]; x < x1; x += 4) seedCandidate(worker, x, y, round);
            }
        }
    } else {
        seedSobol(worker, x0, y0, x1 - x0, y1 - y0);
    }
    if (engine.tileLog) worker.log.push_back({phase, tile, worker.records});
}

// The Sobol order over the tile's sub-pixels, as the sequential seeding walks
// the image's: as many draws as the tile has pixels.
void TiledSeeding::seedSobol(Worker& worker, int x0, int y0, int w, int h) {
    const int N = engine.numSubPixels;
    UxSobol& sobol = worker.sobol;
    sobol.init(w * N, h * N);
    if (!sobol.xTable || !sobol.yTable) {
        worker.deferred.failed = true;
        return;
    }
    const int draws = w * h;
    for (;;) {
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
}

// The tile's own cells change only through its own lines during the phase.
void TiledSeeding::seedCandidate(Worker& worker, int x, int y, int sub) {
    const std::size_t cell = static_cast<std::size_t>(cells.cellOf(x, y));
    if (engine.accum[cell * engine.cellStride + sub] != 0) return;
    const Vec2f seed = engine.seedOf(x, y, sub);
    if (sampleLine(engine, engine.cellShift, worker.tools, seed, &worker.zone, &worker.deferred)) {
        worker.lines++;
        worker.records += worker.tools.hi - worker.tools.lo + 1;
    }
    engine.markSeed(seed, x, y, mask, seedMap);
}

}  // namespace velk
