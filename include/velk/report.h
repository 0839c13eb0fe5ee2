#ifndef VELK_REPORT_H
#define VELK_REPORT_H

#include <velk/velk_export.h>

// Sink for finished messages (no trailing newline). A null handler drops them.
typedef void (*VelkMessageHandler)(const char* message);

// 0 (the default) silences velk_info; errors are never silenced by it.
extern VELK_EXPORT int velk_verbosity;
extern VELK_EXPORT VelkMessageHandler velk_info_handler;
extern VELK_EXPORT VelkMessageHandler velk_error_handler;

// printf-style; prefix "VELK info: ", long messages are cut at 4096 bytes. Returns 0.
VELK_EXPORT int velk_info(const char* format, ...) __attribute__((format(printf, 1, 2)));
// printf-style; prefix "VELK error: ", long messages are cut at 4096 bytes. Returns 0.
VELK_EXPORT int velk_error(const char* format, ...) __attribute__((format(printf, 1, 2)));
// "can't open <file> (<reason>)"; a null reason shows strerror(errno). Returns 0.
VELK_EXPORT int velk_ioerror(const char* filename, const char* reason);

#endif
