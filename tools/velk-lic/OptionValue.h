#ifndef VELK_LIC_OPTIONVALUE_H
#define VELK_LIC_OPTIONVALUE_H

#include <initializer_list>
#include <string>
#include <vector>

#include "Options.h"

// The text given to one option, and the reading of it. Every complaint throws
// a UsageError "option --NAME: ...", so that it names the option.
struct OptionValue {
    const char* option;  // long name without the dashes
    std::string text;

    [[noreturn]] void fail(const std::string& why) const;

    // The parts between the separators, each still naming the option.
    std::vector<OptionValue> split(char separator) const;
    // A file name, which must not be empty.
    std::string path() const;
    // A finite number in lo..hi.
    float number(double lo, double hi) const;
    // A whole number in lo..hi.
    int integer(long lo, long hi) const;
    // `n` comma-separated numbers in lo..hi.
    void numbers(float* out, int n, double lo = -1e6, double hi = 1e6) const;
    // "WxH", or "N" for a square; both sides in lo..hi.
    Size size(int lo, int hi) const;

    // The enumerator at the position of the text among `names`.
    template <typename E>
    E choice(std::initializer_list<const char*> names) const {
        return static_cast<E>(position(names));
    }
    int position(std::initializer_list<const char*> names) const;
};

#endif
