/* The platform's process library: crash logging and the system log. */
#ifndef L7PROC_H
#define L7PROC_H

#ifdef __cplusplus
extern "C" {
#endif

/* Log severities (RFC 5424 section 6.2.1). */
enum {
  L7PROC_EMERGENCY = 0,
  L7PROC_ALERT = 1,
  L7PROC_CRITICAL = 2,
  L7PROC_ERROR = 3,
  L7PROC_WARNING = 4,
  L7PROC_NOTICE = 5,
  L7PROC_INFO = 6,
  L7PROC_DEBUG = 7
};

/* Makes a crash of this process leave a record (signal, time, backtrace addresses) in the log before it dies.
 * May be called before anything else. */
void l7proc_crashlog_register(void);

/* Logs one line.
 *   severity   L7PROC_*
 *   component  0
 *   file       source unit that logs, for the reader
 *   line       its line
 *   format     as printf(3); line breaks in the result are replaced by blanks */
void l7proc_logf(int severity, int component, const char *file, int line, const char *format, ...)
    __attribute__((format(printf, 5, 6)));

#ifdef __cplusplus
}
#endif
#endif
