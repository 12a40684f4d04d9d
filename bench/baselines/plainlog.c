#define _GNU_SOURCE
#include "baselines/plainlog.h"

#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static const char* log_path;
static int log_fd = -1;
static off_t log_size;

static off_t current_size(void)
{
    const int fd = open(log_path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return -1;
    }
    const off_t size = lseek(fd, 0, SEEK_END);
    close(fd);
    return size;
}

void plainlog_open(const char* path)
{
    log_path = path;
    log_fd = open(path, O_WRONLY | O_CREAT | O_APPEND, 0600);
}

void plainlog_line(const char* file, int line, const char* module, int number)
{
    pthread_mutex_lock(&lock);
    log_size = current_size();
    struct timeval now;
    gettimeofday(&now, NULL);
    struct tm local;
    localtime_r(&now.tv_sec, &local);
    char time[32];
    strftime(time, sizeof time, "%y-%m-%d %H:%M:%S", &local);
    char text[4096];
    const int length = snprintf(text, sizeof text, "[%s.%06ld] [%s] [%s:%d] %s: count is %d\n", time,
                                (long)now.tv_usec, "INFO", file, line, module, number);
    if (length > 0 && write(log_fd, text, (size_t)length) < 0) {
        log_size = -1;
    }
    pthread_mutex_unlock(&lock);
}

void plainlog_close(void)
{
    close(log_fd);
    log_fd = -1;
}
