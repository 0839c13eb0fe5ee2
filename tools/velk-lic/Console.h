#ifndef VELK_LIC_CONSOLE_H
#define VELK_LIC_CONSOLE_H

#include <string>

// Everything the tool says on the standard error stream: the library's messages,
// warnings, and a progress line that is shown only on a terminal.
// Lines may come from several threads; the progress line is the main thread's.
namespace console {

// Routes the library's messages through the console: informational ones are
// shown when `verbose` is set, errors are kept for libraryFailure().
void init(bool verbose);
bool verbose();

// "velk-lic: " + text, on its own line.
void note(const std::string& text);
void warn(const std::string& text);

// Throws a ToolError naming `what` and the library's last error message on
// this thread, if any.
[[noreturn]] void libraryFailure(const std::string& what);
// Forgets the library's last error message.
void clearLibraryError();

// A self-updating status line for long work; silent when the standard error
// stream is not a terminal or the work is short.
class Progress {
  public:
    explicit Progress(bool longWork);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const std::string& text);
    void done();

  private:
    bool enabled;
};

}  // namespace console

#endif
