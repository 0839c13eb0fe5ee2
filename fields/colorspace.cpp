#include <velk/colorspace.h>

void RGB_to_HSL(const float* rgb, float* hsl) {
    float r = rgb[0];
    float g = rgb[1];
    float b = rgb[2];
    float v = r > g ? r : g;
    if (b > v) v = b;
    float m = r < g ? r : g;
    if (b < m) m = b;

    float l = (v + m) * 0.5f;
    hsl[2] = l;
    if (l <= 0.0f) return;
    float d = v - m;
    hsl[1] = d;
    if (d <= 0.0f) return;
    hsl[1] = l <= 0.5f ? d / (v + m)
                       : static_cast<float>(static_cast<double>(d) / (2.0 - static_cast<double>(v) -
                                                                      static_cast<double>(m)));

    float r2 = (v - r) / d;
    float g2 = (v - g) / d;
    float b2 = (v - b) / d;
    float hue6;
    if (r == v) {
        hue6 = g == m ? 5.0f + b2 : 1.0f - g2;
    } else if (g == v) {
        hue6 = b == m ? 1.0f + r2 : 3.0f - b2;
    } else {
        hue6 = r == m ? 3.0f + g2 : 5.0f - r2;
    }
    hsl[0] = hue6 / 6.0f;
}

void HSL_to_RGB(const float* hsl, float* rgb) {
    float h = hsl[0];
    float s = hsl[1];
    float l = hsl[2];
    float v = l <= 0.5f
                  ? static_cast<float>(static_cast<double>(l) * (1.0 + static_cast<double>(s)))
                  : l + s - l * s;
    if (v <= 0.0f) {
        rgb[0] = rgb[1] = rgb[2] = 0.0f;
        return;
    }
    float m = 2.0f * l - v;
    float sv = (v - m) / v;
    float h6 = 6.0f * h;
    // A hue that is not a number has no sextant either.
    if (!(h6 > -1.0f && h6 < 6.0f)) return;
    int sextant = static_cast<int>(h6);
    float f = h6 - static_cast<float>(sextant);
    float vsf = v * sv * f;
    float mid1 = m + vsf;
    float mid2 = v - vsf;
    switch (sextant) {
        case 0:
            rgb[0] = v, rgb[1] = mid1, rgb[2] = m;
            break;
        case 1:
            rgb[0] = mid2, rgb[1] = v, rgb[2] = m;
            break;
        case 2:
            rgb[0] = m, rgb[1] = v, rgb[2] = mid1;
            break;
        case 3:
            rgb[0] = m, rgb[1] = mid2, rgb[2] = v;
            break;
        case 4:
            rgb[0] = mid1, rgb[1] = m, rgb[2] = v;
            break;
        case 5:
            rgb[0] = v, rgb[1] = m, rgb[2] = mid2;
            break;
        default:
            break;  // outside the sextants: rgb stays unwritten
    }
}
