#ifndef VELK_VELK_H
#define VELK_VELK_H

// The whole public interface of velk.

#include "UxWatch.h"
#include "Vec2f.h"
#include "VelkImage.h"
#include "VelkVectorField.h"
#include "report.h"

#include "AdaptiveIntegrator.h"
#include "Euler.h"
#include "FixedIntegrator.h"
#include "Midpoint.h"
#include "RK43.h"
#include "RKCK.h"
#include "RKDP.h"
#include "VelkIntegrator.h"

#include "UxSobol.h"
#include "VelkCompute.h"

#include "VelkColormap.h"
#include "VelkScalarField.h"
#include "VelkScanConvert.h"
#include "byteorder.h"
#include "colorspace.h"

#include "fastconv.h"

#include "VelkGraphics.h"

#include "kovrapackage.h"

#endif
