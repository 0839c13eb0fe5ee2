#ifndef VELK_LIC_TILEDSEEDING_H
#define VELK_LIC_TILEDSEEDING_H

#include <atomic>
#include <vector>

#include "PhaseBarrier.h"
#include "celllayout.h"

class VelkCompute;
class VelkImage;

namespace velk {

// Tiles of 64 x 64 pixels: large enough that most of a line's points fall in
// its own tile or a neighbour, small enough that a phase has many tiles to
// share out (see the tile work measurement in the benchmarks).
const int kTileShift = 6;

// Records traced by one tile in one phase; filled when the engine's tileLog is
// set (measurements of how well the phases can be shared out).
struct TileWork {
    int phase;
    int tile;
    long long records;
};
struct TileLog {
    std::vector<TileWork> work;
};

int coreCount();

// The seeding of the parallel mode. The image is cut into fixed tiles, each
// coloured by the parity of its column and row. The seeding runs in phases:
// a round of the seed order (a sub-pixel and one offset step, a sub-pixel in
// scan order, or a sixteenth of a tile's Sobol draws) for the tiles of one
// colour, which the threads take in any order. A tile seeds only its own
// pixels and decides from the hits as they stood when the phase began plus the
// hits of its own lines; lines run across tiles and add wherever they go. Each
// decision therefore depends neither on the thread count nor on the schedule,
// and the integer sums do not depend on the order of the additions: the output
// is the same for every number of threads.
//
// Whether a sub-pixel had a hit is kept in one byte beside the accumulation:
// 0 never, a phase's own tag when a line of the tile that owns the pixel hit it
// in that phase, its foreign tag when only lines of other tiles did, anything
// else in an earlier phase.
class TiledSeeding {
  public:
    // After the engine's start(), with its cells in tiles of kTileShift.
    TiledSeeding(VelkCompute& engine, VelkImage* mask, VelkImage* seedMap);
    ~TiledSeeding();
    TiledSeeding(const TiledSeeding&) = delete;
    TiledSeeding& operator=(const TiledSeeding&) = delete;

    // Seeds in `mode` (0 scan, 1 offset pattern, 2 Sobol) on `threads`
    // threads (fewer when the integrators cannot be copied or a thread cannot
    // be started) and adds the lines to the engine's count. False when the
    // memory for it cannot be had.
    bool run(int mode, int threads);

    // A sub-pixel's hit byte as the owner of its pixel reads it in the
    // current phase: covered when hit before the phase or by the owner's lines.
    bool covered(unsigned char hit) const { return hit != 0 && hit != foreignTag; }

  private:
    struct Worker;

    void work(Worker& worker);
    void seedTile(Worker& worker, int tile, int round);
    void seedSobolRound(Worker& worker, int tile, int round, int x0, int y0, int w, int h);
    void seedCandidate(Worker& worker, int x, int y, int sub);
    void markLine(const Worker& worker) const;
    void nextPhase();
    bool startWorker(Worker& worker, bool ownIntegrators);

    VelkCompute& engine;
    VelkImage* mask;
    VelkImage* seedMap;
    CellLayout<float, int> cells;
    int mode;
    int tilesX, tilesY;
    int rounds;
    std::vector<int> tilesOfColour[4];
    std::vector<struct SobolCursor> sobolCursors;
    unsigned char* hits;  // per sub-pixel of every cell, the spare cell too
    std::vector<Worker*> workers;
    PhaseBarrier barrier;
    std::atomic<int> nextTile;
    int phase;
    unsigned char ownTag, foreignTag;
    bool shared;  // more than one thread adds to the cells
};

}  // namespace velk

#endif
