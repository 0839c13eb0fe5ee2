#ifndef VELK_LIC_POSTPROCESS_H
#define VELK_LIC_POSTPROCESS_H

#include <memory>

#include <velk/velk.h>

struct Options;

// The finishing steps a LIC picture goes through, in the order a user applies
// them: contrast, blur, zoom, emboss, coloring, overlays. Everything that
// does not change from frame to frame (colour map, scalar file, colour layer)
// is prepared once.
class PostProcessor {
  public:
    // Reads the colour map and the scalar file; throws ToolError.
    PostProcessor(const Options& options, VelkVectorField& field);
    ~PostProcessor();
    PostProcessor(const PostProcessor&) = delete;
    PostProcessor& operator=(const PostProcessor&) = delete;

    // Turns the LIC picture into the finished picture, in place. With the
    // engine's weight image (no-data handling), the pixels no line reached
    // get the fill value before the overlays are drawn (unless transparent).
    void apply(VelkImage& picture, const VelkImage* weight);

  private:
    void adjustContrast(VelkImage& picture);
    void blur(VelkImage& picture);
    void color(VelkImage& picture);
    void prepareColorLayer(int width, int height);

    const Options& options;
    VelkVectorField& field;
    VelkColormap colormap;
    std::unique_ptr<VelkScalarField> scalar;
    VelkImage colorLayer;  // the hues, made once for the output size
};

#endif
