#ifndef VELK_ADAPTIVECURSOR_H
#define VELK_ADAPTIVECURSOR_H

#include <velk/AdaptiveIntegrator.h>
#include "fieldeval.h"

namespace velk {

// Hands out the points of an adaptive integrator exactly as its next(int&)
// does, but keeps the forward differencing of the current adaptive step in
// locals: a caller that stores every point no longer makes the compiler reload
// the integrator's members around each store. Points beyond the current step
// (and the Euler and extrapolation modes) go through next() itself.
//
// While a cursor is in use, only the cursor steps the integrator; finish()
// writes the state back.
class AdaptiveCursor {
  public:
    explicit AdaptiveCursor(AdaptiveIntegrator& integrator) : it(integrator) { load(); }

    VELK_ALWAYS_INLINE Vec2f next(int& outStatus) {
        if (adaptive) {
            const float tNext = t + stepSize;
            if (tNext <= s) {
                t = tNext;
                out.x += diff1.x;
                out.y += diff1.y;
                diff1.x += diff2.x;
                diff1.y += diff2.y;
                diff2.x += diff3.x;
                diff2.y += diff3.y;
                outStatus = 0;
                return out;
            }
        }
        store();
        const Vec2f p = it.AdaptiveIntegrator::next(outStatus);
        load();
        return p;
    }

    void finish() { store(); }

  private:
    void load() {
        adaptive = it.status == 0 && it.fallback == 0;
        out = it.outPoint;
        diff1 = it.diff1;
        diff2 = it.diff2;
        diff3 = it.diff3;
        t = it.t;
        s = it.s;
        stepSize = it.stepSize;
    }
    void store() {
        it.outPoint = out;
        it.diff1 = diff1;
        it.diff2 = diff2;
        it.t = t;
    }

    AdaptiveIntegrator& it;
    bool adaptive;  // status 0 and not in Euler mode: the forward differences apply
    Vec2f out, diff1, diff2, diff3;
    float t, s, stepSize;
};

}  // namespace velk

#endif
