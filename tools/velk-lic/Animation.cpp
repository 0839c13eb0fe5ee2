#include "Animation.h"

#include <cmath>

#include "Options.h"

TextureAdvector::TextureAdvector(const Options& o, VelkVectorField& field, const VelkImage& source)
    : texture(source),
      xScale(static_cast<float>(source.width) / static_cast<float>(field.width - 1)),
      yScale(static_cast<float>(source.height) / static_cast<float>(field.height - 1)) {
    // Traced against the field, so that the pattern moves along it.
    if (o.integrator == Integrator::Midpoint) {
        integrator.reset(new Midpoint(-1));
    } else {
        integrator.reset(new RK43(o.rk43[3], o.rk43[0], o.rk43[1], o.rk43[2], -1));
    }
    integrator->normalization = o.normalization;
    integrator->setField(field.width, field.height, reinterpret_cast<Vec2f*>(field.data));
    // The engine's own conversion of texture pixels into field units.
    integrator->stepSize = 2.0f * o.advect / (xScale + yScale);

    const int w = texture.width, h = texture.height;
    origins.resize(static_cast<std::size_t>(w) * h);
    headings.assign(origins.size(), Vec2f{0.0f, 0.0f});
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            origins[static_cast<std::size_t>(y) * w + x] = {
                (static_cast<float>(x) + 0.5f) / xScale, (static_cast<float>(y) + 0.5f) / yScale};
}

TextureAdvector::~TextureAdvector() = default;

void TextureAdvector::advance() {
    VelkIntegrator& line = *integrator;
    const float sign = line.direction;
    for (std::size_t i = 0; i < origins.size(); i++) {
        Vec2f& p = origins[i];
        Vec2f& heading = headings[i];
        Vec2f d;
        line.status = 0;
        line.derivs(p, d);
        if (line.status != 0) {
            p.x += heading.x;
            p.y += heading.y;
            continue;
        }
        // derivs() signs the direction; init() wants it unsigned.
        line.init(p, Vec2f{d.x * sign, d.y * sign}, line.magnitude);
        int status = 0;
        Vec2f q = line.next(status);
        if (!std::isfinite(q.x) || !std::isfinite(q.y)) continue;
        heading = {q.x - p.x, q.y - p.y};
        p = q;
    }
}

void TextureAdvector::render(VelkImage& frame) {
    const int w = texture.width, h = texture.height, channels = texture.nChannels;
    frame.setSize(w, h, channels);
    VelkCompute::PixelLookup lookup =
        channels == 1 ? VelkCompute::getPixelConst1 : VelkCompute::getPixelConstN;
    int value[4] = {0, 0, 0, 0};
    for (int y = 0; y < h; y++) {
        unsigned char* out = frame.data + static_cast<long>(y) * frame.bytesPerLine;
        for (int x = 0; x < w; x++, out += channels) {
            const Vec2f& p = origins[static_cast<std::size_t>(y) * w + x];
            lookup(&texture, p.x * xScale, p.y * yScale, value);
            for (int c = 0; c < channels; c++) out[c] = static_cast<unsigned char>(value[c]);
        }
    }
}
