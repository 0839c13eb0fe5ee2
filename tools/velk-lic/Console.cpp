#include "Console.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include <velk/velk.h>

#include "ToolError.h"

namespace console {
namespace {

bool beVerbose = false;
// Per thread: frames made side by side each hear of their own failures.
thread_local std::string lastLibraryError;
// Guards the standard error stream and the progress line.
std::mutex lineLock;
// Length of the progress line now on the terminal, 0 when there is none.
std::size_t progressWidth = 0;
std::chrono::steady_clock::time_point progressStart;

void clearProgressLine() {
    if (progressWidth == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(progressWidth), "");
    progressWidth = 0;
}

void printLine(const char* text) {
    std::lock_guard<std::mutex> lock(lineLock);
    clearProgressLine();
    std::fprintf(stderr, "%s\n", text);
}

void infoHandler(const char* message) {
    printLine(message);
}

void errorHandler(const char* message) {
    const char* prefix = "VELK error: ";
    if (std::strncmp(message, prefix, std::strlen(prefix)) == 0) message += std::strlen(prefix);
    lastLibraryError = message;
}

}  // namespace

void init(bool verbose) {
    beVerbose = verbose;
    velk_verbosity = verbose ? 1 : 0;
    velk_info_handler = infoHandler;
    velk_error_handler = errorHandler;
}

bool verbose() {
    return beVerbose;
}

void note(const std::string& text) {
    printLine(("velk-lic: " + text).c_str());
}

void warn(const std::string& text) {
    printLine(("velk-lic: warning: " + text).c_str());
}

void libraryFailure(const std::string& what) {
    std::string message = what;
    if (!lastLibraryError.empty()) message += ": " + lastLibraryError;
    lastLibraryError.clear();
    throw ToolError(message);
}

void clearLibraryError() {
    lastLibraryError.clear();
}

Progress::Progress(bool longWork) : enabled(longWork && isatty(STDERR_FILENO)) {
    progressStart = std::chrono::steady_clock::now();
}

Progress::~Progress() {
    std::lock_guard<std::mutex> lock(lineLock);
    clearProgressLine();
}

void Progress::show(const std::string& text) {
    if (!enabled) return;
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - progressStart).count();
    char line[256];
    int n = std::snprintf(line, sizeof line, "velk-lic: %s (%.1f s)", text.c_str(), seconds);
    if (n < 0) return;
    std::size_t width = static_cast<std::size_t>(n) < sizeof line ? n : sizeof line - 1;
    std::lock_guard<std::mutex> lock(lineLock);
    clearProgressLine();
    std::fputs(line, stderr);
    std::fflush(stderr);
    progressWidth = width;
}

void Progress::done() {
    std::lock_guard<std::mutex> lock(lineLock);
    if (enabled) clearProgressLine();
}

}  // namespace console
