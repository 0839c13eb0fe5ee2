#ifndef VELK_LIC_PHASEBARRIER_H
#define VELK_LIC_PHASEBARRIER_H

#include <condition_variable>
#include <mutex>

namespace velk {

// The threads of the tiled seeding meet here between phases. The last one to
// arrive runs the step between two phases alone, while the others wait; what
// it writes is seen by all of them afterwards. The number of threads is fixed
// by open(), which also lets them start.
class PhaseBarrier {
  public:
    void open(int threads) {
        std::lock_guard<std::mutex> lock(mutex);
        count = threads;
        opened = true;
        changed.notify_all();
    }
    void waitForOpen() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return opened; });
    }
    template <class Step>
    void arriveAndWait(Step betweenPhases) {
        std::unique_lock<std::mutex> lock(mutex);
        const long long phase = generation;
        if (++waiting == count) {
            betweenPhases();
            waiting = 0;
            generation++;
            changed.notify_all();
        } else {
            changed.wait(lock, [&] { return generation != phase; });
        }
    }

  private:
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
    int waiting = 0;
    bool opened = false;
    long long generation = 0;
};

}  // namespace velk

#endif
