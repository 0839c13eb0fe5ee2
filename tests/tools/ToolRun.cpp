#include "ToolRun.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <png.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "TestSupport.h"

extern char** environ;

namespace velktest {

ToolResult runTool(const std::string& dir, const std::vector<std::string>& args) {
    ToolResult result;
    const std::string outPath = dir + "/.stdout", errPath = dir + "/.stderr";
    std::vector<std::string> words;
    words.push_back(VELK_LIC_PATH);
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(&w[0]);
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, dir.c_str());
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid;
    int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return result;

    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
    }
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    result.out = readFile(outPath);
    result.err = readFile(errPath);
    unlink(outPath.c_str());
    unlink(errPath.c_str());
    return result;
}

namespace {

bool readPng(const std::string& path, Picture& picture, std::string& error) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) {
        error = png.message;
        return false;
    }
    picture.width = static_cast<int>(png.width);
    picture.height = static_cast<int>(png.height);
    picture.channels = PNG_IMAGE_SAMPLE_CHANNELS(png.format);
    png.format = picture.channels >= 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    if (picture.channels == 2) picture.channels = 1;
    if (picture.channels == 4) picture.channels = 3;
    picture.pixels.resize(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, picture.pixels.data(), 0, nullptr)) {
        error = png.message;
        return false;
    }
    return true;
}

}  // namespace

Picture png(const std::string& path) {
    Picture picture;
    std::string error;
    EXPECT_TRUE(readPng(path, picture, error)) << path << ": " << error;
    return picture;
}

std::vector<std::string> listDir(const std::string& dir) {
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string name = e->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace velktest
