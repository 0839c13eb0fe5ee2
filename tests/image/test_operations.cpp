// Every image operation on every kind of input, into a destination and in
// place, against the hashes recorded in tests/data/recorded/image-operations.txt.
#include <algorithm>
#include <numeric>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

using namespace velktest;

namespace {

// Inputs are noise; a padded row stride makes the image borrow its buffer.
struct Input {
    const char* name;
    int width, height, channels, stride, binary;
};
const Input kInputs[] = {
    {"grey", 13, 9, 1, 13, 0},     {"rgb", 13, 9, 3, 39, 0},     {"padded", 7, 5, 1, 11, 0},
    {"paddedrgb", 5, 4, 3, 17, 0}, {"binary", 16, 12, 1, 16, 1}, {"binaryrgb", 6, 5, 3, 18, 1},
    {"pairs", 6, 4, 2, 12, 0},     {"row", 6, 1, 1, 6, 0},       {"column", 1, 6, 3, 3, 0},
    {"dot", 1, 1, 1, 1, 0},        {"twobytwo", 2, 2, 1, 2, 0},  {"empty", 0, 0, 1, 0, 0},
    {"nowidth", 0, 3, 1, 0, 0}};

// The input on a buffer of its own, whose padding holds 0xA5.
struct Source {
    std::vector<unsigned char> buffer;
    VelkImage image;
    Source(const Input& in, int seed)
        : buffer(static_cast<size_t>(in.stride) * in.height + 1, 0xA5),
          image(in.width, in.height, in.channels, in.stride,
                in.stride != in.width * in.channels ? buffer.data() : nullptr) {
        image.createRandom(in.binary, seed);
    }
};

// Operands the size of the input, a differently sized one, and a scratch directory.
struct Operands {
    VelkImage grey, rgb, other;
    VelkVectorField flow, coarse;
    TempDir dir;
};

void addImage(Hash& h, const VelkImage& image, int channels) {
    h.add(image.nChannels);
    if (image.data == nullptr) return void(h.add(image.width).add(image.height));
    h.add(VelkImage(image.width, image.height, channels, image.bytesPerLine, image.data));
}

// Runs one call on `im`, writing to `dst` (null: in place); results other than
// images go to `h`.
void call(const std::string& text, VelkImage& im, VelkImage* dst, Operands& o, Hash& h) {
    std::istringstream in(text);
    std::vector<std::string> w;
    for (std::string word; in >> word;) w.push_back(word);
    const auto f = [&](size_t k) { return std::stof(w[k]); };
    const auto n = [&](size_t k) { return std::stoi(w[k]); };
    const auto operand = [&](size_t k) -> VelkImage& {
        return w[k] == "grey" ? o.grey : w[k] == "rgb" ? o.rgb : w[k] == "self" ? im : o.other;
    };
    const std::string& op = w[0];
    const std::string file = o.dir.path("f");
    float mean, sigma;
    int box[4] = {};
    std::vector<float> taps;
    if (op == "brighten") im.brighten(n(1), n(2), dst);
    if (op == "autoAdjust") im.autoAdjust(f(1), f(2), dst);
    if (op == "getStatistics") im.getStatistics(mean, sigma), h.add(mean).add(sigma);
    if (op == "oneband") im.oneband(n(1), dst);
    if (op == "colorToGrey") im.colorToGrey(dst);
    if (op == "crop") h.add(im.crop(n(1), n(2), n(3), n(4), dst));
    if (op == "subtract") h.add(im.subtract(operand(1), dst));
    if (op == "mix") h.add(im.mix(operand(1), dst));
    if (op == "multiply") h.add(im.multiply(operand(1), dst));
    if (op == "applyMask") h.add(im.applyMask(operand(1), dst));
    if (op == "glue") h.add(im.glue(operand(1), operand(2), operand(3)));
    if (op == "convolve") {
        // Taps of both signs, the centre making up the sum.
        taps.assign(n(1), 0.0f);
        for (int i = 1; i < n(1); i++) taps[i] = 0.03f * static_cast<float>(i * 7 % 5) - 0.02f;
        taps[0] = f(2) - 2.0f * std::accumulate(taps.begin() + 1, taps.end(), 0.0f);
        im.convolve(n(1), taps.data(), dst);
    }
    if (op == "gaussBlur") im.gaussBlur(n(1), dst);
    if (op == "medianFilter") im.medianFilter(dst);
    if (op == "zoom") im.zoom(n(1), n(2), dst);
    if (op == "emboss") im.emboss(f(1), f(2), n(3), dst);
    if (op == "embossAlong") im.emboss(w[1] == "flow" ? o.flow : o.coarse, dst);
    if (op == "floodFill") {
        // The seed as fractions of the size.
        const int x = static_cast<int>(f(1) * im.width), y = static_cast<int>(f(2) * im.height);
        h.add(im.floodFill(std::min(x, im.width), y, n(3), box, dst));
        for (int v : box) h.add(v);
    }
    if (op == "writePNM") h.add(im.writePNM(file.c_str(), n(1))).add(readFile(file));
    if (op == "readPNM") {
        im.writePNM(file.c_str(), n(1));
        VelkImage back;
        h.add(back.readPNM(file.c_str()));
        im = back;
    }
    if (op == "writeHistogram") {
        testing::internal::CaptureStdout();
        h.add(im.writeHistogram(file.c_str())).add(readFile(file));
        h.add(testing::internal::GetCapturedStdout());
    }
}

}  // namespace

TEST(ImageOperations, OutputsMatchTheRecordedHashes) {
    // One call a line: the operation, then its numbers or operands.
    std::vector<std::string> calls;
    std::istringstream lines(readFile(dataPath("recorded/image-calls.txt")));
    for (std::string line; std::getline(lines, line);) calls.push_back(line);
    ASSERT_GT(calls.size(), 50u);
    Hashes hashes;
    int seed = 1;
    for (const Input& in : kInputs) {
        Operands o;
        o.grey.setSize(in.width, in.height, 1);
        o.rgb.setSize(in.width, in.height, 3);
        o.other.setSize(3, 2, 1);
        o.grey.createRandom(0, 100 + seed);
        o.rgb.createRandom(0, 200 + seed);
        o.other.clear(9);
        o.flow.setSize(std::max(in.width, 2), std::max(in.height, 2));
        o.flow.setCircle(0.7f);
        o.coarse.setSize(4, 3);
        o.coarse.setCircle(-0.4f);
        o.coarse.data[4] = o.coarse.data[5] = 0.0f;
        for (const std::string& c : calls) {
            Hash h;
            for (bool inPlace : {false, true}) {
                Source s(in, seed);
                VelkImage dst(in.width, in.height, in.channels);
                dst.createRandom(0, 300 + seed);
                h.add(stderrOf([&] { call(c, s.image, inPlace ? nullptr : &dst, o, h); }));
                // A one-byte-per-pixel result, and the source whose channel
                // count applyMask raises over the same buffer, are hashed as far
                // as their bytes are defined.
                const int defined = c == "medianFilter" ? 1
                                    : inPlace           ? s.image.nChannels
                                                        : in.channels;
                addImage(h, s.image, std::min(defined, s.image.nChannels));
                addImage(h, dst, c == "medianFilter" ? 1 : dst.nChannels);
                h.bytes(s.buffer.data(), s.buffer.size());
            }
            hashes.push_back(
                {std::regex_replace(c, std::regex(" "), ":") + "/" + in.name, h.hex()});
        }
        seed++;
    }
    expectRecorded("recorded/image-operations.txt", hashes);
}
