#include <velk/FixedIntegrator.h>

FixedIntegrator::FixedIntegrator(int direction) : pos{0.0f, 0.0f}, deriv{0.0f, 0.0f} {
    this->direction = static_cast<float>(direction);
}

void FixedIntegrator::init(const Vec2f& p, const Vec2f& v) {
    pos = p;
    deriv.x = direction * v.x;
    deriv.y = direction * v.y;
    status = 0;
    heading = v;
}

void FixedIntegrator::init(const Vec2f& p, const Vec2f& v, float magnitude) {
    FixedIntegrator::init(p, v);
    this->magnitude = magnitude;
}
