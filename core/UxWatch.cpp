#include <velk/UxWatch.h>

#include <sys/times.h>
#include <unistd.h>

namespace {

void now(long& real, long& cpu) {
    struct tms t;
    real = static_cast<long>(times(&t));
    cpu = static_cast<long>(t.tms_utime + t.tms_stime);
}

double ticksToSeconds(long ticks) {
    return static_cast<double>(ticks) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace

UxWatch::UxWatch() : startReal(0), startCpu(0), accumulatedReal(0), accumulatedCpu(0) {}

void UxWatch::start() {
    accumulatedReal = 0;
    accumulatedCpu = 0;
    now(startReal, startCpu);
}

void UxWatch::stop() {
    long real, cpu;
    now(real, cpu);
    accumulatedReal += real - startReal;
    accumulatedCpu += cpu - startCpu;
    startReal = real;
    startCpu = cpu;
}

double UxWatch::elapsed() const {
    return ticksToSeconds(accumulatedReal);
}

double UxWatch::cpu() const {
    return ticksToSeconds(accumulatedCpu);
}
