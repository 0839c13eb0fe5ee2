#ifndef VELK_CORE_OUTPUTCHANNEL_H
#define VELK_CORE_OUTPUTCHANNEL_H

// Every way a message leaves the library other than through the replaceable
// handlers of <velk/report.h>, in one place so a host can see them all:
//
//   writeStderr   image size and channel mismatches, "Not enough memory." of
//                 glue, PNM writes that cannot open their file, colour-map
//                 files, the fast convolution's kernel warnings. These go
//                 straight to the standard error stream, whatever the handlers.
//   writeStdout   the mean that writeHistogram prints.
//   endProcess    the fast convolution's kernel bound (exit status 1).
//
// The default message handlers of <velk/report.h> write through writeStderr too.

namespace velk {

// printf-style, written to stderr as is (the caller supplies any newline).
void writeStderr(const char* format, ...) __attribute__((format(printf, 1, 2)));

// printf-style, written to stdout as is.
void writeStdout(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the process with the given exit status.
[[noreturn]] void endProcess(int status);

}  // namespace velk

#endif
