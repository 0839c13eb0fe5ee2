#ifndef VELK_TESTS_INTEGRATESUPPORT_H
#define VELK_TESTS_INTEGRATESUPPORT_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <velk/velk.h>

namespace velktest {

// A field grid owned by the test, filled node by node from f(i, j).
struct Grid {
    int width, height;
    std::vector<Vec2f> nodes;

    Grid(int w, int h, const std::function<Vec2f(int, int)>& f) : width(w), height(h) {
        for (int j = 0; j < h; j++)
            for (int i = 0; i < w; i++) nodes.push_back(f(i, j));
    }
    void attach(VelkIntegrator& it) { it.setField(width, height, nodes.data()); }
};

inline const char* const kAdaptiveSchemes[] = {"rk43", "rkck", "rkdp"};
inline const char* const kAllSchemes[] = {"euler", "midpoint", "rk43", "rkck", "rkdp"};

// The named scheme; the adaptive ones with the LIC engine's step limits.
inline std::unique_ptr<VelkIntegrator> makeScheme(const std::string& name, int direction,
                                                  float tolerance = 0.001f) {
    if (name == "euler") return std::make_unique<Euler>(direction);
    if (name == "midpoint") return std::make_unique<Midpoint>(direction);
    if (name == "rk43") return std::make_unique<RK43>(tolerance, 4.0f, 0.5f, 15.0f, direction);
    if (name == "rkck") return std::make_unique<RKCK>(tolerance, 4.0f, 0.5f, 15.0f, direction);
    return std::make_unique<RKDP>(tolerance, 4.0f, 0.5f, 15.0f, direction);
}

inline AdaptiveIntegrator* adaptive(const std::unique_ptr<VelkIntegrator>& it) {
    return dynamic_cast<AdaptiveIntegrator*>(it.get());
}

}  // namespace velktest

#endif
