#ifndef PLAINLOG_H
#define PLAINLOG_H

#ifdef __cplusplus
extern "C" {
#endif

/* A log line with the system calls that ours makes, and with nothing else: the size of the file by open, seek
   and close, and one write, all under a lock. */

void plainlog_open(const char* path);
void plainlog_line(const char* file, int line, const char* module, int number);
void plainlog_close(void);

#ifdef __cplusplus
}
#endif

#endif
