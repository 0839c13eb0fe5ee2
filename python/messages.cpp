#include "messages.h"

#include <cstring>

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <velk/report.h>

namespace nb = nanobind;

namespace velkpy {

namespace {

thread_local Messages* current = nullptr;

// The library's own prefixes; the logger name and exception type say as much.
std::string withoutPrefix(const char* message, const char* prefix) {
    const std::size_t n = std::strlen(prefix);
    return std::strncmp(message, prefix, n) == 0 ? std::string(message + n) : message;
}

}  // namespace

Messages::Messages() : previous(current) {
    current = this;
}

Messages::~Messages() {
    current = previous;
}

void Messages::onInfo(const char* message) {
    if (current) current->infos.push_back(withoutPrefix(message, "VELK info: "));
}

void Messages::onError(const char* message) {
    if (current) current->errorList.push_back(withoutPrefix(message, "VELK error: "));
}

void Messages::install() {
    velk_info_handler = onInfo;
    velk_error_handler = onError;
    velk_verbosity = 1;
}

std::string Messages::errors() const {
    std::string text;
    for (const std::string& e : errorList) text += (text.empty() ? "" : "; ") + e;
    return text;
}

void Messages::log() const {
    if (infos.empty()) return;
    nb::object logger = nb::module_::import_("logging").attr("getLogger")("velk");
    for (const std::string& m : infos) logger.attr("info")(m);
}

}  // namespace velkpy
