#include "Pictures.h"

#include <png.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <velk/velk.h>

#include "Console.h"
#include "Options.h"
#include "PendingFile.h"
#include "ToolError.h"

namespace {

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

void checkSide(const std::string& path, const char* role, long width, long height) {
    if (width > kMaxPictureSide || height > kMaxPictureSide)
        throw ToolError(std::string(role) + " " + quoted(path) + " is " + std::to_string(width) +
                        "x" + std::to_string(height) + "; the largest supported side is " +
                        std::to_string(kMaxPictureSide));
}

// The size a PNM header announces, read the way the library reads it, so that
// absurd sizes are refused before any memory is taken for them.
void checkPnmHeader(std::FILE* file, const std::string& path, const char* role) {
    char line[256];
    if (!std::fgets(line, 32, file)) return;
    do {
        if (!std::fgets(line, sizeof line - 1, file)) return;
    } while (line[0] == '#');
    long width = 0, height = 0;
    if (std::sscanf(line, "%ld %ld", &width, &height) == 2) checkSide(path, role, width, height);
}

void readPng(const std::string& path, const char* role, VelkImage& image) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str()))
        throw ToolError(std::string(role) + " " + quoted(path) + ": " + png.message);
    if (png.width > static_cast<png_uint_32>(kMaxPictureSide) ||
        png.height > static_cast<png_uint_32>(kMaxPictureSide)) {
        png_image_free(&png);
        checkSide(path, role, static_cast<long>(png.width), static_cast<long>(png.height));
    }
    const bool color = (png.format & PNG_FORMAT_FLAG_COLOR) != 0;
    png.format = color ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    const int channels = color ? 3 : 1;
    image.setSize(static_cast<int>(png.width), static_cast<int>(png.height), channels);
    // Transparent pixels are composed onto the buffer: make that black.
    image.clear(0);
    // A negative stride reads the bottom row first: row 0 of a VelkImage.
    if (!png_image_finish_read(&png, nullptr, image.data, -image.bytesPerLine, nullptr))
        throw ToolError(std::string(role) + " " + quoted(path) + ": " + png.message);
}

long pnmBytes(const VelkImage& image, bool ascii) {
    const bool color = image.nChannels == 3;
    char header[64];
    int headerBytes =
        std::snprintf(header, sizeof header, "P%c\n%d %d\n255\n",
                      color ? (ascii ? '3' : '6') : (ascii ? '2' : '5'), image.width, image.height);
    long pixels = static_cast<long>(image.width) * image.height;
    long perPixel = ascii ? (color ? 12 : 5) : (color ? 3 : 1);
    return headerBytes + pixels * perPixel;
}

}  // namespace

void readPicture(const std::string& path, const char* role, VelkImage& image) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        throw ToolError("cannot read " + std::string(role) + " " + quoted(path) + ": " +
                        std::strerror(errno));
    unsigned char magic[8] = {};
    std::size_t got = std::fread(magic, 1, sizeof magic, file);
    const bool isPng = got == sizeof magic && png_sig_cmp(magic, 0, sizeof magic) == 0;
    if (!isPng) {
        std::rewind(file);
        checkPnmHeader(file, path, role);
    }
    std::fclose(file);

    if (isPng) {
        readPng(path, role, image);
    } else {
        console::clearLibraryError();
        if (!image.readPNM(path.c_str()))
            console::libraryFailure("cannot read " + std::string(role) + " " + quoted(path) +
                                    " (not a PNM or PNG picture)");
    }
    if (image.width < 2 || image.height < 2)
        throw ToolError(std::string(role) + " " + quoted(path) + " is " +
                        std::to_string(image.width) + "x" + std::to_string(image.height) +
                        "; it must be at least 2x2");
}

namespace {

// The picture's channels with the alpha behind each pixel's, rows packed.
std::vector<unsigned char> withAlpha(const VelkImage& image, const VelkImage& alpha) {
    const int channels = image.nChannels;
    std::vector<unsigned char> out(static_cast<std::size_t>(image.width) * image.height *
                                   (channels + 1));
    unsigned char* o = out.data();
    for (int y = 0; y < image.height; y++) {
        const unsigned char* p = image.data + static_cast<std::ptrdiff_t>(y) * image.bytesPerLine;
        const unsigned char* a = alpha.data + static_cast<std::ptrdiff_t>(y) * alpha.bytesPerLine;
        for (int x = 0; x < image.width; x++) {
            for (int c = 0; c < channels; c++) *o++ = *p++;
            *o++ = a[x];
        }
    }
    return out;
}

}  // namespace

void writePng(const VelkImage& image, const std::string& path, const VelkImage* alpha) {
    if (image.nChannels != 1 && image.nChannels != 3)
        throw ToolError("cannot write " + quoted(path) + ": the picture has " +
                        std::to_string(image.nChannels) + " channels");
    PendingFile pending(path);
    std::FILE* file = std::fopen(pending.path().c_str(), "wb");
    if (!file) throw ToolError("cannot write " + quoted(path) + ": " + std::strerror(errno));

    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    const bool rgb = image.nChannels == 3;
    png.format =
        alpha ? (rgb ? PNG_FORMAT_RGBA : PNG_FORMAT_GA) : (rgb ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY);
    const std::vector<unsigned char> interleaved =
        alpha ? withAlpha(image, *alpha) : std::vector<unsigned char>();
    const unsigned char* pixels = alpha ? interleaved.data() : image.data;
    const int stride = alpha ? image.width * (image.nChannels + 1) : image.bytesPerLine;
    // Row 0 is the bottom of the picture: a negative stride writes it last.
    int ok = png_image_write_to_stdio(&png, file, 0, pixels, -stride, nullptr);
    std::string message = ok ? "" : png.message;
    png_image_free(&png);
    bool flushed = std::fflush(file) == 0 && !std::ferror(file);
    int savedErrno = errno;
    if (std::fclose(file) != 0 && flushed) {
        flushed = false;
        savedErrno = errno;
    }
    if (!ok) throw ToolError("cannot write " + quoted(path) + ": " + message);
    if (!flushed)
        throw ToolError("cannot write " + quoted(path) + ": " + std::strerror(savedErrno));
    pending.commit();
}

void writePnm(VelkImage& image, const std::string& path, bool ascii) {
    PendingFile pending(path);
    if (!image.writePNM(pending.path().c_str(), ascii ? 1 : 0))
        throw ToolError("cannot write " + quoted(path));
    // The library does not see short writes (a full disk); the size tells.
    struct stat st;
    if (stat(pending.path().c_str(), &st) != 0 || st.st_size != pnmBytes(image, ascii))
        throw ToolError("cannot write " + quoted(path) + ": the file came out short");
    pending.commit();
}

void writeHistogram(const VelkImage& image, const std::string& path) {
    VelkImage grey(image);
    if (grey.nChannels == 3) grey.colorToGrey(nullptr);
    PendingFile pending(path);
    std::fflush(stdout);
    if (!grey.writeHistogram(pending.path().c_str()))
        throw ToolError("cannot write histogram " + quoted(path));
    pending.commit();
}
