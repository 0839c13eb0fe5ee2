#ifndef VELK_LIC_TILEDSEEDING_H
#define VELK_LIC_TILEDSEEDING_H

#include <atomic>
#include <cstddef>
#include <vector>

#include "PhaseBarrier.h"
#include "celllayout.h"
#include "cellzone.h"

class VelkCompute;
class VelkImage;

namespace velk {

// Tiles of 64 x 64 pixels: smaller tiles share out better over many threads,
// larger ones defer fewer additions (see the tile schedule benchmark).
const int kTileShift = 6;

// Records traced by one tile in one phase; filled when the engine's tileLog is
// set (measurements of how well the phases can be shared out).
struct TileWork {
    int phase;
    int tile;
    long long records;
};
struct TileLog {
    int tileShift = kTileShift;  // the tile size to measure with
    std::vector<TileWork> work;
};

int coreCount();

// The seeding of the parallel mode. The image is cut into fixed tiles, each
// coloured by its column and row modulo 3. The seeding runs in phases: one
// sub-pixel (all of them for the Sobol order) for the tiles of one colour,
// which the threads take in any order. A tile seeds only its own pixels, in
// the usual order (scan, offset pattern or Sobol) within the tile. Its lines
// run anywhere, but add directly only to the tile and its eight neighbours, a
// zone no other tile of the phase touches; what falls outside is added when
// every tile of the phase is done. So while a tile is seeded its hit counters
// hold the hits from before the phase plus those of its own lines, whatever
// the other threads do: the decisions, and with the exact integer sums the
// output, are the same for every number of threads and every schedule.
class TiledSeeding {
  public:
    // After the engine's start(), with its cells in tiles of engine.cellShift.
    TiledSeeding(VelkCompute& engine, VelkImage* mask, VelkImage* seedMap);
    ~TiledSeeding();
    TiledSeeding(const TiledSeeding&) = delete;
    TiledSeeding& operator=(const TiledSeeding&) = delete;

    // Seeds in `mode` (0 scan, 1 offset pattern, 2 Sobol) on `threads`
    // threads (fewer when the integrators cannot be copied or a thread cannot
    // be started) and adds the lines to the engine's count. False when the
    // memory for it cannot be had.
    bool run(int mode, int threads);

    // Makes the engine's next computations record their tile work into `log`
    // (null: stop), with log->tileShift as the tile size.
    static void record(VelkCompute& engine, TileLog* log);

  private:
    struct Worker;

    bool startWorker(Worker& worker, bool ownIntegrators);
    void work(Worker& worker);
    void seedTile(Worker& worker, int tile, int round);
    void seedSobol(Worker& worker, int x0, int y0, int w, int h);
    void seedCandidate(Worker& worker, int x, int y, int sub);
    CellZone zoneOf(int tileX, int tileY) const;
    void addDeferred();

    VelkCompute& engine;
    VelkImage* mask;
    VelkImage* seedMap;
    CellLayout<float, int> cells;
    int mode;
    int tilesX, tilesY;
    int rounds;
    std::vector<int> tilesOfColour[9];
    std::vector<Worker*> workers;
    std::size_t running;  // workers with a thread
    PhaseBarrier barrier;
    std::atomic<int> nextTile;
    int phase;
};

}  // namespace velk

#endif
