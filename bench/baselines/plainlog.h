#ifndef PLAINLOG_H
#define PLAINLOG_H

#ifdef __cplusplus
extern "C" {
#endif

/* Writes log lines with the same system calls as our log and nothing else: under a lock, it opens, seeks and
   closes the file to get its size, and writes the line. */

void plainlog_open(const char* path);
void plainlog_line(const char* file, int line, const char* module, int number);
void plainlog_close(void);

#ifdef __cplusplus
}
#endif

#endif
