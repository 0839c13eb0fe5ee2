// Runs a fuzz target over corpus files without libFuzzer: every argument is a
// file or a directory whose files are fed to the target in name order.

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "FuzzSupport.h"

namespace {

bool isDirectory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void collect(const std::string& path, std::vector<std::string>& files) {
    if (!isDirectory(path)) {
        files.push_back(path);
        return;
    }
    DIR* dir = opendir(path.c_str());
    if (!dir) return;
    std::vector<std::string> names;
    while (dirent* entry = readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(dir);
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) collect(path + "/" + name, files);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> files;
    for (int i = 1; i < argc; i++) collect(argv[i], files);
    if (files.empty()) {
        std::fprintf(stderr, "usage: %s corpus-dir-or-file...\n(no inputs found)\n", argv[0]);
        return 2;
    }
    for (const std::string& path : files) {
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "%s: can't read %s\n", argv[0], path.c_str());
            return 1;
        }
        std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("replayed %zu inputs\n", files.size());
    return 0;
}
