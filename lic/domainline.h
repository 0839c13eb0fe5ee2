#ifndef VELK_LIC_DOMAINLINE_H
#define VELK_LIC_DOMAINLINE_H

#include <velk/VelkCompute.h>
#include "linetools.h"

namespace velk {

// Whether the engine's lines need sampleDomainLine: an orientation field,
// periodic axes or no-data handling.
inline bool needsDomainLine(const VelkCompute& e) {
    return e.getOrientation() || e.getPeriodicX() || e.getPeriodicY() || e.getNoData();
}

// sampleLine for those settings, with the same arguments and result: the seed
// direction agrees at its four nodes, periodic axes wrap the seed, the points
// and the texture, and with no-data handling a line ends at its first invalid
// record (a stagnation seed keeps only its own value) and the convolution
// divides by the weight received.
bool sampleDomainLine(const VelkCompute& e, int cellShift, LineTools& tools, const Vec2f& seed,
                      const CellZone* zone, DeferredAdds* deferred);

}  // namespace velk

#endif
