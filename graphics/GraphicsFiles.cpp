#include <velk/VelkGraphics.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/report.h>
#include "cfile.h"
#include "topixel.h"
#include "ucdmesh.h"

// The "VELK GRAPHICS" command files and UCD meshes drawn with the pen.

namespace {

using velk::toPixel;

// A stream with room for the two characters that reading may push back at
// once (one by read_char, one by its caller).
class CommandStream {
  public:
    explicit CommandStream(std::FILE* file) : file(file) {}
    int get() { return count > 0 ? pending[--count] : std::fgetc(file); }
    void unget(int c) {
        if (c != EOF && count < kRoom) pending[count++] = c;
    }

  private:
    static constexpr int kRoom = 4;
    std::FILE* file;
    int pending[kRoom] = {};
    int count = 0;
};

// The next character; a backslash right before a newline joins the lines.
int read_char(CommandStream& in) {
    for (;;) {
        int c = in.get();
        if (c != '\\') return c;
        int next = in.get();
        if (next != '\n') {
            in.unget(next);
            return c;
        }
    }
}

bool isSpace(int c) {
    return c != EOF && std::isspace(static_cast<unsigned char>(c));
}

// Reads a word of at most maxLength characters into `word` (maxLength + 1
// bytes); a longer word is split. endOfLine tells whether only blanks and
// tabs separated the word from the newline that ended its line. 0 at the
// end of the file, with an empty word.
int read_word(CommandStream& in, int maxLength, char* word, int& endOfLine) {
    endOfLine = 0;
    int c = read_char(in);
    while (isSpace(c)) c = read_char(in);
    if (c == EOF) {
        word[0] = '\0';
        return 0;
    }
    int n = 0;
    while (c != EOF && !isSpace(c)) {
        if (n == maxLength) break;  // c starts the next word
        word[n++] = static_cast<char>(c);
        c = read_char(in);
    }
    word[n] = '\0';
    while (c == ' ' || c == '\t') c = read_char(in);
    if (c == '\n') {
        endOfLine = 1;
    } else {
        in.unget(c);
    }
    return 1;
}

// Reads n numbers, which must stand on one line. A word that is not a
// number reads as 0.
int read_floats(CommandStream& in, int n, float* values, int& endOfLine) {
    if (n < 1) return 1;
    char word[128];
    for (int k = 0; k < n; k++) {
        if (!read_word(in, 127, word, endOfLine)) return 0;
        values[k] = static_cast<float>(std::strtod(word, nullptr));
        if (endOfLine && k < n - 1) return 0;
    }
    return 1;
}

// Either is a prefix of the other.
bool check_cmd(const char* word, const char* command) {
    std::size_t n = std::min(std::strlen(word), std::strlen(command));
    return std::strncmp(word, command, n) == 0;
}

// File coordinates onto pixels.
struct Canvas {
    float x0 = 0.0f, y0 = 0.0f;
    float xScale = 1.0f, yScale = 1.0f;

    int column(float x) const { return toPixel(static_cast<double>((x - x0) * xScale) + 0.5); }
    int row(float y) const { return toPixel(static_cast<double>((y - y0) * yScale) + 0.5); }
};

// Rebuilds a grey image as three equal channels. The colour version is made
// beside the image and only then takes its place, so an image whose colour
// version does not fit into memory stays as it was.
bool promoteToColour(VelkImage& image) {
    VelkImage colour;
    if (!colour.glue(image, image, image)) return false;
    if (image.ownedData) std::free(image.ownedData);
    image.ownedData = colour.ownedData;
    image.data = colour.data;
    image.width = colour.width;
    image.height = colour.height;
    image.nChannels = colour.nChannels;
    image.bytesPerLine = colour.bytesPerLine;
    colour.ownedData = nullptr;
    colour.data = nullptr;
    return true;
}

}  // namespace

int VelkGraphics::drawFile(VelkImage& image, const char* path) {
    velk::FilePtr file = velk::openFile(path, "rb");
    if (!file) return velk_ioerror(path, nullptr);

    char header[1024] = {};
    if (!std::fgets(header, 1023, file.get()) || !std::strstr(header, "VELK GRAPHICS")) {
        file.reset();
        return velk_ioerror(path, "header string 'VELK GRAPHICS' not found");
    }

    CommandStream in(file.get());
    Canvas canvas;
    char word[1024];
    int endOfLine = 0;
    float v[4];
    while (read_word(in, 1023, word, endOfLine)) {
        if (word[0] == '#') continue;  // this word only: the rest of the line is read on
        if (check_cmd(word, "color")) {
            if (!read_floats(in, 3, v, endOfLine)) return velk_error("expecting 'color r g b'");
            int r = toPixel(v[0] * 255.0f);
            int g = toPixel(v[1] * 255.0f);
            int b = toPixel(v[2] * 255.0f);
            setColor(r, g, b);
            if (!(r == g && g == b) && image.nChannels != 3 && !promoteToColour(image)) {
                return velk_error("not enough memory to draw %s in colour", path);
            }
        } else if (check_cmd(word, "width")) {
            if (!read_floats(in, 1, v, endOfLine)) return velk_error("expecting 'width n'");
            setPixelWidth(toPixel(static_cast<double>(v[0]) + 0.5));
        } else if (check_cmd(word, "canvas")) {
            if (!read_floats(in, 4, v, endOfLine)) {
                return velk_error("expecting 'canvas x0 y0 x1 y1'");
            }
            canvas.x0 = v[0];
            canvas.y0 = v[1];
            float w = v[2] - v[0];
            float h = v[3] - v[1];
            if (w == 0.0f) w = 1.0f;
            if (h == 0.0f) h = 1.0f;
            canvas.xScale = static_cast<float>(image.width) / w;
            canvas.yScale = static_cast<float>(image.height) / h;
        } else if (check_cmd(word, "line")) {
            if (!read_floats(in, 4, v, endOfLine)) {
                return velk_error("expecting 'line x0 y0 x1 y1 [x2 y2 ...]'");
            }
            int px = canvas.column(v[2]);
            int py = canvas.row(v[3]);
            drawLine(image, canvas.column(v[0]), canvas.row(v[1]), px, py);
            // Further points to the end of the line; an odd one out ends it.
            while (!endOfLine && read_floats(in, 2, v, endOfLine)) {
                int qx = canvas.column(v[0]);
                int qy = canvas.row(v[1]);
                drawLine(image, px, py, qx, qy);
                px = qx;
                py = qy;
            }
        } else if (check_cmd(word, "points")) {
            if (!read_floats(in, 2, v, endOfLine)) {
                return velk_error("expecting 'points x1 y1 [x2 y2 ...]'");
            }
            int px = canvas.column(v[0]);
            int py = canvas.row(v[1]);
            drawPixel(image, px, py);
            // Further pairs are read, but each marks the first point again.
            while (!endOfLine && read_floats(in, 2, v + 2, endOfLine)) drawPixel(image, px, py);
        }
    }
    return 1;
}

int VelkGraphics::drawUCD(VelkImage& image, const char* path) {
    velk::UcdMesh mesh;
    if (!velk::readUcdMesh(path, {2, "expected to read 2 floats, got %d"}, mesh)) return 0;
    velk::UcdBox box = velk::ucdNodeBox(mesh);
    float w, h;
    if (!velk::ucdBoxSize(box, w, h)) return 0;
    if (image.width == 0 || image.height == 0) {
        return velk_error("degenerate image (width=%d, height=%d)", image.width, image.height);
    }
    float scale, xOrigin, yOrigin;
    velk::ucdFit(box, w, h, static_cast<float>(image.width), static_cast<float>(image.height),
                 scale, xOrigin, yOrigin);

    // Halfway between two pixels goes to the lower one.
    auto pixel = [&](float p, float origin) {
        return toPixel(std::ceil(static_cast<double>((p - origin) * scale) - 0.5));
    };
    int px[3], py[3];
    for (int t = 0; t < mesh.nT; t++) {
        for (int c = 0; c < 3; c++) {
            const float* node = mesh.node(mesh.triangle(t)[c]);
            px[c] = pixel(node[0], xOrigin);
            py[c] = pixel(node[1], yOrigin);
        }
        drawLine(image, px[0], py[0], px[1], py[1]);
        drawLine(image, px[1], py[1], px[2], py[2]);
        drawLine(image, px[2], py[2], px[0], py[0]);
    }
    return 1;
}
