#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <velk/report.h>

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

}  // namespace velktest
