#include "linetrace.h"

#include <typeinfo>

#include <velk/RK43.h>
#include <velk/RKCK.h>
#include <velk/RKDP.h>
#include <velk/VelkIntegrator.h>
#include "AdaptiveCursor.h"
#include "forceinline.h"
#include "midpointstep.h"

namespace velk {
namespace {

// One side of a line, records centre + kDir * k for k = 1, 2, ..., traced one
// record per step().
template <int kDir, class Next>
class SideTrace {
  public:
    SideTrace(Next next, Vec2f* centre, VelkCompute::LinePoint* points, int n, int nExtension)
        : next(next), centre(centre), points(points), n(n), nExtension(nExtension) {}

    // Traces one more record; false once the side is complete.
    VELK_ALWAYS_INLINE bool step() {
        if (k > n) {
            if (!(extension < nExtension && points[kDir * (1 + extension)].status == 0)) {
                return false;
            }
            extension++;
        }
        centre[kDir * k] = next(points[kDir * k].status);
        k++;
        return true;
    }
    VELK_ALWAYS_INLINE void run() {
        while (step()) {
        }
    }
    int extensionSteps() const { return extension; }

  private:
    Next next;
    Vec2f* centre;
    VelkCompute::LinePoint* points;
    int n, nExtension;
    int k = 1;
    int extension = 0;
};

// Both sides, from the point makers of each. kInterleaved steps the two in
// turn, which lets the processor overlap two chains of dependent operations;
// only for two distinct integrators, since a shared one would see its calls
// reordered.
template <bool kInterleaved, class Ahead, class Behind>
VELK_ALWAYS_INLINE void traceSides(Ahead nextAhead, Behind nextBehind, Vec2f* centre,
                                   VelkCompute::LinePoint* points, int n, int nExtension,
                                   int& ahead, int& behind) {
    SideTrace<+1, Ahead> a(nextAhead, centre, points, n, nExtension);
    SideTrace<-1, Behind> b(nextBehind, centre, points, n, nExtension);
    if (kInterleaved) {
        bool moreAhead = true, moreBehind = true;
        while (moreAhead && moreBehind) {
            moreAhead = a.step();
            moreBehind = b.step();
        }
        if (moreAhead) a.run();
        if (moreBehind) b.run();
    } else {
        a.run();
        b.run();
    }
    ahead = a.extensionSteps();
    behind = b.extensionSteps();
}

enum IntegratorKind { kGeneric, kAdaptive, kMidpoint };

IntegratorKind kindOf(const VelkIntegrator& integrator) {
    const std::type_info& type = typeid(integrator);
    if (type == typeid(RK43) || type == typeid(RKCK) || type == typeid(RKDP)) return kAdaptive;
    if (type == typeid(Midpoint)) return kMidpoint;
    return kGeneric;
}

// The engine's own integrators are stepped without a virtual call per point.
template <bool kDomain>
auto midpointNext(Midpoint& it) {
    return [&it](int& status) {
        midpointStep<kDomain>(it);
        status = it.status;
        return it.pos;
    };
}

}  // namespace

void traceLine(VelkIntegrator& forward, VelkIntegrator& backward, Vec2f* centre,
               VelkCompute::LinePoint* points, int n, int nExtension, int& ahead, int& behind) {
    const IntegratorKind kind = &forward != &backward ? kindOf(forward) : kGeneric;
    if (kind == kAdaptive && kindOf(backward) == kAdaptive) {
        AdaptiveCursor f(static_cast<AdaptiveIntegrator&>(forward));
        AdaptiveCursor b(static_cast<AdaptiveIntegrator&>(backward));
        traceSides<false>([&](int& status) { return f.next(status); },
                          [&](int& status) { return b.next(status); }, centre, points, n,
                          nExtension, ahead, behind);
        f.finish();
        b.finish();
    } else if (kind == kMidpoint && kindOf(backward) == kMidpoint) {
        // With domain bits on either, both take the domain's evaluation, which
        // gives the plain one's vectors without them.
        Midpoint& f = static_cast<Midpoint&>(forward);
        Midpoint& b = static_cast<Midpoint&>(backward);
        if (forward.domain != 0 || backward.domain != 0) {
            traceSides<true>(midpointNext<true>(f), midpointNext<true>(b), centre, points, n,
                             nExtension, ahead, behind);
        } else {
            traceSides<true>(midpointNext<false>(f), midpointNext<false>(b), centre, points, n,
                             nExtension, ahead, behind);
        }
    } else {
        traceSides<false>([&](int& status) { return forward.next(status); },
                          [&](int& status) { return backward.next(status); }, centre, points, n,
                          nExtension, ahead, behind);
    }
}

}  // namespace velk
