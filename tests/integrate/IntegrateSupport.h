#ifndef VELK_TESTS_INTEGRATESUPPORT_H
#define VELK_TESTS_INTEGRATESUPPORT_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "velk/velk.h"

namespace velktest {

// A field grid owned by the test, filled node by node from f(i, j).
struct Grid {
    int width;
    int height;
    std::vector<Vec2f> nodes;

    Grid(int w, int h, const std::function<Vec2f(int, int)>& f) : width(w), height(h) {
        nodes.reserve(static_cast<std::size_t>(w) * h);
        for (int j = 0; j < h; j++)
            for (int i = 0; i < w; i++) nodes.push_back(f(i, j));
    }
    Vec2f& at(int i, int j) { return nodes[static_cast<std::size_t>(j) * width + i]; }
    void attach(VelkIntegrator& it) { it.setField(width, height, nodes.data()); }
};

// Adaptive settings used unless a test says otherwise: those of the LIC engine.
struct AdaptiveSettings {
    float tolerance = 0.001f;
    float initialStep = 4.0f;
    float minStep = 0.5f;
    float maxStep = 15.0f;
};

// "euler", "midpoint", "rk43", "rkck" or "rkdp".
std::unique_ptr<VelkIntegrator> makeScheme(const std::string& name, int direction,
                                           const AdaptiveSettings& settings = {});
AdaptiveIntegrator* asAdaptive(VelkIntegrator* it);

extern const char* const kAdaptiveSchemes[3];
extern const char* const kAllSchemes[5];

}  // namespace velktest

#endif
