#include "TestSupport.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "report.h"

namespace velktest {

namespace {

std::vector<std::string> gInfos;
std::vector<std::string> gErrors;
int gSavedVerbosity;
VelkMessageHandler gSavedInfo;
VelkMessageHandler gSavedError;

void collectInfo(const char* message) {
    gInfos.push_back(message);
}
void collectError(const char* message) {
    gErrors.push_back(message);
}

void removeTree(const std::string& path) {
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* entry = readdir(dir)) {
            std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            std::string child = path + "/" + name;
            struct stat st;
            if (lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
                removeTree(child);
            } else {
                unlink(child.c_str());
            }
        }
        closedir(dir);
    }
    rmdir(path.c_str());
}

}  // namespace

MessageCapture::MessageCapture(int verbosity) {
    gInfos.clear();
    gErrors.clear();
    gSavedVerbosity = velk_verbosity;
    gSavedInfo = velk_info_handler;
    gSavedError = velk_error_handler;
    velk_verbosity = verbosity;
    velk_info_handler = collectInfo;
    velk_error_handler = collectError;
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

TempDir::TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base ? base : "/tmp") + "/velk-test-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed";
    root = buffer.data();
}

TempDir::~TempDir() {
    removeTree(root);
}

std::string TempDir::path(const std::string& name) const {
    return root + "/" + name;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out << bytes;
}

std::string dataPath(const std::string& name) {
    const char* root = std::getenv("VELK_TEST_DATA");
    return std::string(root ? root : "data") + "/" + name;
}

int openFileCount() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir)) count++;
        closedir(dir);
    }
    return count;
}

}  // namespace velktest
