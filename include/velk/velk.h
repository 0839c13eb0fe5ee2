#ifndef VELK_VELK_H
#define VELK_VELK_H

// The whole public interface of velk.

#include "Vec2f.h"
#include "report.h"
#include "UxWatch.h"
#include "VelkImage.h"
#include "VelkVectorField.h"

#include "VelkIntegrator.h"
#include "FixedIntegrator.h"
#include "Euler.h"
#include "Midpoint.h"
#include "AdaptiveIntegrator.h"
#include "RK43.h"
#include "RKCK.h"
#include "RKDP.h"

#include "UxSobol.h"
#include "VelkCompute.h"

#include "colorspace.h"
#include "byteorder.h"
#include "VelkScanConvert.h"
#include "VelkColormap.h"
#include "VelkScalarField.h"

#include "fastconv.h"

#include "VelkGraphics.h"

#include "kovrapackage.h"

#endif
