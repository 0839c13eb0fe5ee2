#include "PendingFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "ToolError.h"

namespace {

// Temporary names the signal handler removes; a fixed table, because the
// handler may only touch async-signal-safe state.
constexpr int kSlots = 4;
constexpr std::size_t kPathMax = 4096;
char pendingPaths[kSlots][kPathMax];
volatile std::sig_atomic_t pendingUsed[kSlots];

extern "C" void removePendingAndDie(int signal) {
    for (int i = 0; i < kSlots; i++)
        if (pendingUsed[i]) unlink(pendingPaths[i]);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void installHandlers() {
    static bool installed = false;
    if (installed) return;
    installed = true;
    for (int s : {SIGINT, SIGTERM, SIGHUP}) std::signal(s, removePendingAndDie);
}

int claimSlot(const std::string& path) {
    if (path.size() >= kPathMax) return -1;
    for (int i = 0; i < kSlots; i++) {
        if (pendingUsed[i]) continue;
        std::memcpy(pendingPaths[i], path.c_str(), path.size() + 1);
        pendingUsed[i] = 1;
        return i;
    }
    return -1;
}

mode_t currentUmask() {
    mode_t mask = umask(0);
    umask(mask);
    return mask;
}

}  // namespace

PendingFile::PendingFile(const std::string& target) : target(target), slot(-1), committed(false) {
    installHandlers();
    std::string::size_type slash = target.rfind('/');
    std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    if (base.empty()) throw ToolError("cannot write '" + target + "': it names a directory");

    struct stat st;
    if (stat(target.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        throw ToolError("cannot write '" + target + "': it is a directory");

    std::string pattern = dir + "." + base + ".XXXXXX";
    std::string buffer = pattern;
    int fd = mkstemp(&buffer[0]);
    if (fd < 0) throw ToolError("cannot write '" + target + "': " + std::strerror(errno));
    temporary = buffer;
    slot = claimSlot(temporary);
    fchmod(fd, 0666 & ~currentUmask());
    close(fd);
}

PendingFile::~PendingFile() {
    if (!committed) unlink(temporary.c_str());
    if (slot >= 0) pendingUsed[slot] = 0;
}

void PendingFile::commit() {
    if (std::rename(temporary.c_str(), target.c_str()) != 0)
        throw ToolError("cannot write '" + target + "': " + std::strerror(errno));
    committed = true;
    if (slot >= 0) pendingUsed[slot] = 0;
}
