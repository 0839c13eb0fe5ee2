#ifndef VELK_LIC_ANIMATION_H
#define VELK_LIC_ANIMATION_H

#include <memory>
#include <vector>

#include <velk/velk.h>

struct Options;

// Moves a texture along the flow for animated LIC. Every texel remembers where
// its value comes from: a point traced backwards along the field, one step of
// --advect texture pixels per frame, with the library's own integrator. The
// frame's texture samples the original texture at those points (nearest
// texel, so the noise keeps its contrast); convolving it moves the LIC pattern
// along the field lines. Points whose line has ended (border, critical point)
// go on straight, as the integrators themselves extrapolate.
class TextureAdvector {
  public:
    TextureAdvector(const Options& options, VelkVectorField& field, const VelkImage& texture);
    ~TextureAdvector();
    TextureAdvector(const TextureAdvector&) = delete;
    TextureAdvector& operator=(const TextureAdvector&) = delete;

    // Moves every texel's origin one step further back along the flow.
    void advance();
    // The texture of the current frame.
    void render(VelkImage& frame);

  private:
    VelkImage texture;
    std::unique_ptr<VelkIntegrator> integrator;
    std::vector<Vec2f> origins;   // field coordinates
    std::vector<Vec2f> headings;  // last step, for points whose line has ended
    float xScale;
    float yScale;
};

#endif
