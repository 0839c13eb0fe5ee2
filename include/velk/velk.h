#ifndef VELK_VELK_H
#define VELK_VELK_H

// The whole public interface of velk.

#include <velk/UxWatch.h>
#include <velk/Vec2f.h>
#include <velk/VelkImage.h>
#include <velk/VelkVectorField.h>
#include <velk/report.h>

#include <velk/AdaptiveIntegrator.h>
#include <velk/Euler.h>
#include <velk/FixedIntegrator.h>
#include <velk/Midpoint.h>
#include <velk/RK43.h>
#include <velk/RKCK.h>
#include <velk/RKDP.h>
#include <velk/VelkIntegrator.h>

#include <velk/UxSobol.h>
#include <velk/VelkCompute.h>
#include <velk/enhancedlic.h>

#include <velk/VelkColormap.h>
#include <velk/VelkScalarField.h>
#include <velk/VelkScanConvert.h>
#include <velk/byteorder.h>
#include <velk/colorspace.h>

#include <velk/fastconv.h>

#include <velk/VelkGraphics.h>

#include <velk/kovrapackage.h>

#endif
