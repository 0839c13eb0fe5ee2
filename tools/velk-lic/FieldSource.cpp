#include "FieldSource.h"

#include <cmath>
#include <string>

#include <velk/velk.h>

#include "Console.h"
#include "Options.h"
#include "Pictures.h"
#include "ToolError.h"

namespace {

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

// NaN or infinite nodes would only end lines early, but a field that is zero
// (or not a number) everywhere gives a black picture: say so.
void checkField(const VelkVectorField& field, const std::string& source) {
    const float* v = field.data;
    const long n = 2L * field.width * field.height;
    bool any = false;
    for (long i = 0; i < n && !any; i++) any = std::isfinite(v[i]) && v[i] != 0.0f;
    if (!any) console::warn("the field from " + source + " is zero everywhere");
}

}  // namespace

void makeField(const Options& o, VelkVectorField& field) {
    const std::string& path = o.fieldPath;
    std::string source;
    console::clearLibraryError();
    switch (o.field) {
        case FieldSource::Circle:
            field.setSize(o.grid.width, o.grid.height);
            field.setCircle(o.angle);
            source = "the circle field";
            break;
        case FieldSource::Saddle:
            field.setSaddle();
            source = "the saddle field";
            break;
        case FieldSource::Linear:
            field.setSize(o.grid.width, o.grid.height);
            field.setLinear(o.matrix, o.offset);
            source = "the linear field";
            break;
        case FieldSource::Brusselator:
            field.setSize(o.grid.width, o.grid.height);
            field.setBrusselator(o.brusselator[0], o.brusselator[1], o.brusselator[2],
                                 o.brusselator[3]);
            source = "the brusselator field";
            break;
        case FieldSource::File:
            if (!field.read(path.c_str()))
                console::libraryFailure("cannot read vector field file " + quoted(path));
            source = quoted(path);
            break;
        case FieldSource::Ucd: {
            float bbox[4] = {o.bbox[0], o.bbox[1], o.bbox[2], o.bbox[3]};
            if (!field.readUCD(path.c_str(), o.grid.width, o.grid.height,
                               o.hasBbox ? bbox : nullptr))
                console::libraryFailure("cannot read UCD mesh " + quoted(path));
            source = quoted(path);
            break;
        }
        case FieldSource::Image: {
            VelkImage picture;
            readPicture(path, "field picture", picture);
            if (picture.width > kMaxGridSide || picture.height > kMaxGridSide)
                throw ToolError("field picture " + quoted(path) + " is larger than " +
                                std::to_string(kMaxGridSide) + " pixels on a side");
            field.fromImage(picture, o.gradientAngle);
            source = quoted(path);
            break;
        }
        case FieldSource::Scalar: {
            VelkScalarField scalar;
            if (!scalar.read(path.c_str()))
                console::libraryFailure("cannot read scalar field file " + quoted(path));
            if (scalar.width > kMaxGridSide || scalar.height > kMaxGridSide)
                throw ToolError("scalar field " + quoted(path) + " is larger than " +
                                std::to_string(kMaxGridSide) + " nodes on a side");
            field.fromScalarField(scalar, o.gradientAngle);
            source = quoted(path);
            break;
        }
    }
    if (field.width < 2 || field.height < 2 || field.data == nullptr)
        throw ToolError("the field from " + source + " has no usable grid");
    checkField(field, source);
}
