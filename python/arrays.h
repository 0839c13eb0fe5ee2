#ifndef VELK_PYTHON_ARRAYS_H
#define VELK_PYTHON_ARRAYS_H

#include <cstdint>
#include <utility>

#include <nanobind/ndarray.h>

class VelkImage;
class VelkScalarField;
class VelkVectorField;

namespace velkpy {

namespace nb = nanobind;

// Inputs: any strides and order. Float inputs are float32 or float64 (the
// package checks the dtype first and names the argument).
using FloatIn = nb::ndarray<nb::ro, nb::ndim<2>, nb::device::cpu>;
using BytesIn = nb::ndarray<const std::uint8_t, nb::device::cpu>;
using BytesOut = nb::ndarray<nb::numpy, std::uint8_t>;
using FloatsOut = nb::ndarray<nb::numpy, float>;
using FieldOut = std::pair<FloatsOut, FloatsOut>;

// Copies without the GIL: the arrays stay referenced by the caller.
void readImage(const BytesIn& array, VelkImage& image);
void readField(const FloatIn& u, const FloatIn& v, VelkVectorField& field);
void readScalars(const FloatIn& values, VelkScalarField& scalars);

// Need the GIL. toArray takes over the image's buffer; the image is left empty.
BytesOut toArray(VelkImage& image);
FieldOut toArrays(const VelkVectorField& field);
FloatsOut toArray(const VelkScalarField& scalars);

}  // namespace velkpy

#endif
