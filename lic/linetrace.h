#ifndef VELK_LIC_LINETRACE_H
#define VELK_LIC_LINETRACE_H

#include <velk/VelkCompute.h>

class VelkIntegrator;

namespace velk {

// Traces both sides of a line whose integrators init() has started at the
// centre: records centre[k] for k = 1 .. n + ahead with `forward`, centre[-k]
// for k = 1 .. n + behind with `backward`; sets the extension steps taken on
// each side. The filter part is traced whatever the status (past the end of
// the line the integrators extrapolate); an extension step only while the
// output point it completes, n records behind, is valid.
void traceLine(VelkIntegrator& forward, VelkIntegrator& backward, Vec2f* centre,
               VelkCompute::LinePoint* points, int n, int nExtension, int& ahead, int& behind);

}  // namespace velk

#endif
