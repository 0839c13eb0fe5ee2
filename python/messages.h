#ifndef VELK_PYTHON_MESSAGES_H
#define VELK_PYTHON_MESSAGES_H

#include <string>
#include <vector>

namespace velkpy {

// Routes the library's messages to the thread that caused them. The library's
// handlers are process-wide, so they are set once and hand each message to the
// collector of the calling thread; concurrent calls never see each other's text.
// Messages from threads without a collector are dropped.
class Messages {
  public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    // The errors reported so far, without their prefix, joined by "; ".
    std::string errors() const;
    // Passes the info messages to logging.getLogger("velk"). Needs the GIL.
    void log() const;

    static void install();

  private:
    static void onInfo(const char* message);
    static void onError(const char* message);

    std::vector<std::string> infos;
    std::vector<std::string> errorList;
    Messages* previous;
};

}  // namespace velkpy

#endif
