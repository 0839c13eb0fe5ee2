#include "TestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace velktest {

namespace {

std::vector<std::string> gInfos, gErrors;
int gSavedVerbosity;
VelkMessageHandler gSavedInfo, gSavedError;

}  // namespace

MessageCapture::MessageCapture(int verbosity) {
    gInfos.clear();
    gErrors.clear();
    gSavedVerbosity = velk_verbosity;
    gSavedInfo = velk_info_handler;
    gSavedError = velk_error_handler;
    velk_verbosity = verbosity;
    velk_info_handler = [](const char* message) { gInfos.push_back(message); };
    velk_error_handler = [](const char* message) { gErrors.push_back(message); };
}

MessageCapture::~MessageCapture() {
    velk_verbosity = gSavedVerbosity;
    velk_info_handler = gSavedInfo;
    velk_error_handler = gSavedError;
}

const std::vector<std::string>& MessageCapture::infos() const {
    return gInfos;
}
const std::vector<std::string>& MessageCapture::errors() const {
    return gErrors;
}

std::string MessageCapture::errorText() const {
    std::string text;
    for (const std::string& e : gErrors) text += e + "\n";
    return text;
}

TempDir::TempDir() : root((fs::temp_directory_path() / "velk-test-XXXXXX").string()) {
    if (mkdtemp(root.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed for " << root;
}

TempDir::~TempDir() {
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

std::string TempDir::path(const std::string& name) const {
    return root + "/" + name;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string dataPath(const std::string& name) {
    const char* root = std::getenv("VELK_TEST_DATA");
    return std::string(root ? root : "data") + "/" + name;
}

int openFileCount() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

VelkImage makeImage(int width, int height, int channels, const Bytes& values) {
    VelkImage image(width, height, channels);
    for (size_t i = 0; i < values.size(); i++)
        image.data[i] = static_cast<unsigned char>(values[i]);
    return image;
}

Bytes bytesOf(const VelkImage& image) {
    Bytes bytes;
    for (int y = 0; image.data && y < image.height; y++) {
        const unsigned char* row = image.data + y * image.bytesPerLine;
        bytes.insert(bytes.end(), row, row + image.width * image.nChannels);
    }
    return bytes;
}

std::string picture(const VelkImage& image) {
    std::string text;
    for (int y = image.height - 1; y >= 0; y--) {
        for (int x = 0; x < image.width; x++) {
            int v = image.data[y * image.bytesPerLine + x * image.nChannels];
            text += v == 0 ? '.' : v == 255 ? '#' : '+';
        }
        if (y > 0) text += '/';
    }
    return text;
}

Hash& Hash::bytes(const void* p, std::size_t n) {
    for (std::size_t i = 0; i < n; i++) {
        h ^= static_cast<const unsigned char*>(p)[i];
        h *= 1099511628211ull;
    }
    return *this;
}

// Values go in as their bytes on a little-endian host, as recorded.
Hash& Hash::add(int v) {
    return bytes(&v, sizeof v);
}

Hash& Hash::add(float v) {
    return bytes(&v, sizeof v);
}

Hash& Hash::add(const std::string& text) {
    return add(static_cast<int>(text.size())).bytes(text.data(), text.size());
}

Hash& Hash::add(const VelkImage& image) {
    add(image.width).add(image.height).add(image.nChannels).add(image.bytesPerLine);
    for (int y = 0; image.data && y < image.height; y++)
        bytes(image.data + y * image.bytesPerLine,
              static_cast<std::size_t>(image.width) * image.nChannels);
    return *this;
}

std::string Hash::hex() const {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
    return text;
}

void expectRecorded(const std::string& file, const Hashes& hashes) {
    if (const char* dir = std::getenv("VELK_RECORD_HASHES")) {
        fs::create_directories(fs::path(std::string(dir) + "/" + file).parent_path());
        std::ofstream out(std::string(dir) + "/" + file);
        for (const auto& h : hashes) out << h.first << ' ' << h.second << '\n';
        GTEST_SKIP() << "hashes written to " << dir << "/" << file;
    }
    std::map<std::string, std::string> recorded;
    std::istringstream in(readFile(dataPath(file)));
    for (std::string name, hash; in >> name >> hash;) recorded[name] = hash;
    EXPECT_EQ(recorded.size(), hashes.size()) << file << ": the recorded set and the table differ";
    for (const auto& h : hashes) {
        const auto it = recorded.find(h.first);
        if (it == recorded.end())
            ADD_FAILURE() << h.first << " has no recorded hash in " << file;
        else
            EXPECT_EQ(h.second, it->second) << h.first;
    }
}

Grid::Grid(int w, int h, const std::function<Vec2f(int, int)>& f) : width(w), height(h) {
    for (int j = 0; j < h; j++)
        for (int i = 0; i < w; i++) nodes.push_back(f(i, j));
}

const char* const kSchemes[5] = {"euler", "midpoint", "rk43", "rkck", "rkdp"};

std::unique_ptr<VelkIntegrator> makeScheme(const std::string& name, int direction,
                                           float tolerance) {
    if (name == "euler") return std::make_unique<Euler>(direction);
    if (name == "midpoint") return std::make_unique<Midpoint>(direction);
    if (name == "rk43") return std::make_unique<RK43>(tolerance, 4.0f, 0.5f, 15.0f, direction);
    if (name == "rkck") return std::make_unique<RKCK>(tolerance, 4.0f, 0.5f, 15.0f, direction);
    return std::make_unique<RKDP>(tolerance, 4.0f, 0.5f, 15.0f, direction);
}

}  // namespace velktest
