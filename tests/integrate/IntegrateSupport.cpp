#include "IntegrateSupport.h"

#include <stdexcept>

namespace velktest {

const char* const kAdaptiveSchemes[3] = {"rk43", "rkck", "rkdp"};
const char* const kAllSchemes[5] = {"euler", "midpoint", "rk43", "rkck", "rkdp"};

std::unique_ptr<VelkIntegrator> makeScheme(const std::string& name, int direction,
                                           const AdaptiveSettings& s) {
    if (name == "euler") return std::make_unique<Euler>(direction);
    if (name == "midpoint") return std::make_unique<Midpoint>(direction);
    if (name == "rk43")
        return std::make_unique<RK43>(s.tolerance, s.initialStep, s.minStep, s.maxStep, direction);
    if (name == "rkck")
        return std::make_unique<RKCK>(s.tolerance, s.initialStep, s.minStep, s.maxStep, direction);
    if (name == "rkdp")
        return std::make_unique<RKDP>(s.tolerance, s.initialStep, s.minStep, s.maxStep, direction);
    throw std::invalid_argument("unknown scheme " + name);
}

AdaptiveIntegrator* asAdaptive(VelkIntegrator* it) {
    return dynamic_cast<AdaptiveIntegrator*>(it);
}

}  // namespace velktest
