#ifndef VELK_UXWATCH_H
#define VELK_UXWATCH_H

#include <velk/velk_export.h>

// Stopwatch of the host's support library, provided here so that velk runs
// without a host. Times are taken with times(2) in clock ticks.
class VELK_EXPORT UxWatch {
  public:
    UxWatch();
    // Zeroes the accumulated times and takes the start time.
    void start();
    // Adds the time since start() to the accumulated times.
    void stop();
    // Accumulated real (wall-clock) time in seconds.
    double elapsed() const;
    // Accumulated user and system CPU time in seconds.
    double cpu() const;

  private:
    long startReal;
    long startCpu;
    long accumulatedReal;
    long accumulatedCpu;
};

#endif
