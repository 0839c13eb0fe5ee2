#include "OptionValue.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "ToolError.h"

void OptionValue::fail(const std::string& why) const {
    throw UsageError("option --" + std::string(option) + ": " + why);
}

std::vector<OptionValue> OptionValue::split(char separator) const {
    std::vector<OptionValue> parts;
    std::string::size_type start = 0, end;
    do {
        end = text.find(separator, start);
        parts.push_back({option, text.substr(start, end - start)});
        start = end + 1;
    } while (end != std::string::npos);
    return parts;
}

std::string OptionValue::path() const {
    if (text.empty()) fail("the file name is empty");
    return text;
}

float OptionValue::number(double lo, double hi) const {
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || errno == ERANGE || !std::isfinite(v))
        fail("'" + text + "' is not a number");
    if (v < lo || v > hi) {
        char range[96];
        std::snprintf(range, sizeof range, " is out of range (%g to %g)", lo, hi);
        fail(text + range);
    }
    return static_cast<float>(v);
}

int OptionValue::integer(long lo, long hi) const {
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || *end != '\0' || errno == ERANGE)
        fail("'" + text + "' is not a whole number");
    if (v < lo || v > hi)
        fail(text + " is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) + ")");
    return static_cast<int>(v);
}

void OptionValue::numbers(float* out, int n, double lo, double hi) const {
    const std::vector<OptionValue> parts = split(',');
    if (static_cast<int>(parts.size()) != n)
        fail("expected " + std::to_string(n) + " comma-separated numbers, got '" + text + "'");
    for (int i = 0; i < n; i++) out[i] = parts[i].number(lo, hi);
}

Size OptionValue::size(int lo, int hi) const {
    std::vector<OptionValue> parts = split('x');
    if (parts.size() == 1) parts.push_back(parts[0]);
    if (parts.size() != 2) fail("expected a size WIDTHxHEIGHT, got '" + text + "'");
    return {parts[0].integer(lo, hi), parts[1].integer(lo, hi)};
}

int OptionValue::position(std::initializer_list<const char*> names) const {
    std::string list;
    int i = 0;
    for (const char* name : names) {
        if (text == name) return i;
        list += (i++ ? ", " : "") + std::string(name);
    }
    fail("'" + text + "' is not one of " + list);
}
