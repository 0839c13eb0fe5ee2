#ifndef VELK_LIC_FIELDSOURCE_H
#define VELK_LIC_FIELDSOURCE_H

struct Options;
class VelkVectorField;

// Fills `field` from the source the options name: a built-in field, a field
// file, a UCD mesh, or the rotated gradient of a picture or scalar file.
// Throws ToolError when the source cannot be read.
void makeField(const Options& options, VelkVectorField& field);

#endif
