#ifndef VELK_LIC_TOOLERROR_H
#define VELK_LIC_TOOLERROR_H

#include <stdexcept>
#include <string>

// A failure that ends the run with a one-line message. Usage errors (bad
// options) exit with status 2, everything else with status 1.
class ToolError : public std::runtime_error {
  public:
    explicit ToolError(const std::string& message, int exitStatus = 1)
        : std::runtime_error(message), status(exitStatus) {}
    int exitStatus() const { return status; }

  private:
    int status;
};

class UsageError : public ToolError {
  public:
    explicit UsageError(const std::string& message) : ToolError(message, 2) {}
};

#endif
