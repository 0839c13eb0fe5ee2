#include <velk/report.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "outputchannel.h"

namespace {

void default_handler(const char* message) {
    velk::writeStderr("%s\n", message);
}

constexpr std::size_t kMessageSize = 4096;

// Composes prefix + formatted text in one bounded buffer and hands it on.
void deliver(VelkMessageHandler handler, const char* prefix, const char* format, va_list args) {
    char buffer[kMessageSize];
    std::size_t prefixLength = std::strlen(prefix);
    std::memcpy(buffer, prefix, prefixLength + 1);
    std::vsnprintf(buffer + prefixLength, kMessageSize - prefixLength, format, args);
    if (handler) handler(buffer);
}

}  // namespace

int velk_verbosity = 0;
VelkMessageHandler velk_info_handler = default_handler;
VelkMessageHandler velk_error_handler = default_handler;

int velk_info(const char* format, ...) {
    if (velk_verbosity == 0) return 0;
    va_list args;
    va_start(args, format);
    deliver(velk_info_handler, "VELK info: ", format, args);
    va_end(args);
    return 0;
}

int velk_error(const char* format, ...) {
    va_list args;
    va_start(args, format);
    deliver(velk_error_handler, "VELK error: ", format, args);
    va_end(args);
    return 0;
}

int velk_ioerror(const char* filename, const char* reason) {
    if (reason == nullptr) reason = std::strerror(errno);
    velk_error("can't open %s (%s)", filename, reason);
    return 0;
}

void velk::writeStderr(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
}

void velk::writeStdout(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

void velk::endProcess(int status) {
    std::exit(status);
}
