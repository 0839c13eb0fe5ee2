#ifndef VELK_VEC2F_H
#define VELK_VEC2F_H

// A position or vector in field grid coordinates: node (i, j) lies at (i, j).
struct Vec2f {
    float x;
    float y;
};

#endif
