#ifndef VELK_LIC_PENDINGFILE_H
#define VELK_LIC_PENDINGFILE_H

#include <string>

// An output file that appears under its name only when it is complete: it is
// written under a temporary name in the same directory and renamed by
// commit(). Until then the temporary file is removed when the object dies, and
// also when the process is interrupted (SIGINT, SIGTERM, SIGHUP).
class PendingFile {
  public:
    // Throws ToolError when no file can be created next to `target`.
    explicit PendingFile(const std::string& target);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    const std::string& path() const { return temporary; }
    // Renames the temporary file to the target; throws ToolError on failure.
    void commit();

  private:
    std::string target;
    std::string temporary;
    int slot;
    bool committed;
};

#endif
