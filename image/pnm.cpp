#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/report.h>
#include "cfile.h"
#include "destination.h"
#include "outputchannel.h"

namespace {

// One header line, skipping whole lines that begin with '#'. A line that
// cannot be read comes back empty (and so converts no numbers).
void readHeaderLine(std::FILE* file, char* line, int size) {
    do {
        if (!std::fgets(line, size, file)) {
            line[0] = '\0';
            return;
        }
    } while (line[0] == '#');
}

// The unknown-magic report uses the file name as its format. A name holding
// any conversion other than "%%" and a single plain "%s" would make the
// formatter read arguments that were never passed; such names are shown as
// they are instead.
bool usableAsFormat(const char* name) {
    int strings = 0;
    for (const char* p = name; *p; p++) {
        if (*p != '%') continue;
        if (p[1] == '%') {
            p++;
        } else if (p[1] == 's' && strings == 0) {
            strings++;
            p++;
        } else {
            return false;
        }
    }
    return true;
}

// ASCII samples. Values keep what they last held when a scan fails; once a
// scan fails without moving on in the file (at its end, or stuck before a
// character no number can start with), every later scan would fail the same
// way, so the remaining samples are filled without scanning.
class SampleScanner {
  public:
    explicit SampleScanner(std::FILE* file) : file(file) {}

    void next(int count) {
        if (stuck) return;
        int got = count == 1 ? std::fscanf(file, "%ld", &values[0])
                             : std::fscanf(file, "%ld%ld%ld", &values[0], &values[1], &values[2]);
        if (got == count) return;
        long position = std::ftell(file);
        if (std::feof(file) || position == lastFailure) stuck = true;
        lastFailure = position;
    }

    unsigned char byte(int i) const { return static_cast<unsigned char>(values[i] & 0xff); }

  private:
    std::FILE* file;
    long values[3] = {0, 0, 0};
    long lastFailure = -2;
    bool stuck = false;
};

void writeAsciiSeparator(std::FILE* file, int& pixels) {
    pixels++;
    std::fputc(pixels % 16 == 0 ? '\n' : ' ', file);
}

}  // namespace

int VelkImage::readPNM(const char* filename) {
    velk::FilePtr owner = velk::openFile(filename, "rb");
    std::FILE* file = owner.get();
    if (!file) return velk_ioerror(filename, nullptr);

    // A directory opens for reading but yields no bytes; say so instead.
    struct stat status;
    if (fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return velk_ioerror(filename, nullptr);
    }

    char magic[32];
    if (!std::fgets(magic, sizeof magic, file)) magic[0] = '\0';

    char line[255];
    long w = 0, h = 0, maxval = 0;
    readHeaderLine(file, line, sizeof line);
    int converted = std::sscanf(line, "%ld %ld", &w, &h);
    readHeaderLine(file, line, sizeof line);
    int convertedMaxval = std::sscanf(line, "%ld", &maxval);

    bool grey = std::strncmp(magic, "P5", 2) == 0 || std::strncmp(magic, "P2", 2) == 0;
    bool colour = std::strncmp(magic, "P6", 2) == 0 || std::strncmp(magic, "P3", 2) == 0;
    int channels = colour ? 3 : 1;
    // Negative sizes and byte counts beyond int would reach the allocator and
    // the row arithmetic; they are no readable dimensions.
    if (converted != 2 || convertedMaxval != 1 || w > 0x7fffffffL || h > 0x7fffffffL ||
        velk::imageBytes(w, h, channels) < 0) {
        return velk_ioerror(filename, "couldn't read dimensions");
    }
    if (!grey && !colour) {
        if (usableAsFormat(filename)) return velk_error(filename, "no PNM header found");
        return velk_error("%s", filename);
    }

    setSize(static_cast<int>(w), static_cast<int>(h), channels);
    if (data == nullptr && width > 0 && height > 0) {
        return velk_ioerror(filename, std::strerror(ENOMEM));
    }

    bool binary = magic[1] == '5' || magic[1] == '6';
    int rowBytes = width * channels;
    // Empty rows hold nothing to read, however many the header announces.
    if (rowBytes > 0 && binary) {
        for (int y = height - 1; y >= 0; y--) {
            // A short file leaves the rest of the buffer as it was; the rows
            // after the end of the file would only read nothing again.
            if (std::fread(data + y * rowBytes, 1, rowBytes, file) <
                static_cast<size_t>(rowBytes)) {
                break;
            }
        }
    } else if (rowBytes > 0) {
        SampleScanner scanner(file);
        for (int y = height - 1; y >= 0; y--) {
            unsigned char* p = data + y * rowBytes;
            for (int x = 0; x < width; x++, p += channels) {
                scanner.next(channels);
                for (int c = 0; c < channels; c++) p[c] = scanner.byte(c);
            }
        }
    }
    return 1;
}

int VelkImage::writePNM(const char* filename, int ascii) {
    velk::FilePtr owner = velk::openFile(filename, "wb");
    std::FILE* file = owner.get();
    if (!file) {
        velk::writeStderr("VelkImage: Can't open file %s\n", filename);
        return 0;
    }
    bool colour = nChannels == 3;
    std::fprintf(file, "%s\n%d %d\n255\n", colour ? (ascii ? "P3" : "P6") : (ascii ? "P2" : "P5"),
                 width, height);
    // A grey image's rows are its first `width` bytes, whatever its channels.
    int rowBytes = colour ? 3 * width : width;
    if (data != nullptr && rowBytes > 0) {
        int pixels = 0;
        for (int y = height - 1; y >= 0; y--) {
            const unsigned char* row = data + y * bytesPerLine;
            if (!ascii) {
                std::fwrite(row, 1, rowBytes, file);
            } else if (colour) {
                for (int i = 0; i < rowBytes; i += 3) {
                    std::fprintf(file, "%03d %03d %03d", row[i], row[i + 1], row[i + 2]);
                    writeAsciiSeparator(file, pixels);
                }
            } else {
                for (int i = 0; i < rowBytes; i++) {
                    std::fprintf(file, "%03d ", row[i]);
                    writeAsciiSeparator(file, pixels);
                }
            }
        }
    }
    return 1;
}

int VelkImage::writeHistogram(const char* filename) {
    long long counts[256] = {};
    long long sum = 0;
    long long pixels = static_cast<long long>(width) * height;
    if (data != nullptr) {
        for (long long i = 0; i < pixels; i++) {
            counts[data[i]]++;
            sum += data[i];
        }
    }
    velk::FilePtr owner = velk::openFile(filename, "wb");
    std::FILE* file = owner.get();
    if (!file) {
        velk::writeStderr("VelkImage: Can't write histogram %s\n", filename);
        return 0;
    }
    for (int v = 0; v < 256; v++) std::fprintf(file, "%d %lld\n", v, counts[v]);
    owner.reset();
    velk::writeStdout("Mean = %g\n",
                      static_cast<double>(static_cast<float>(sum) / static_cast<float>(pixels)));
    return 1;
}
