/* Preloaded into arm64 programs under emulation. The emulator cannot clone with a process descriptor and returns the
   child id -1 to Qt instead of a failure. This library reports that waiting for such descriptors is not supported, so
   that Qt uses fork(). */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#define PROCESS_DESCRIPTOR 3

int waitid(idtype_t type, id_t id, siginfo_t* info, int options)
{
    static int (*next)(idtype_t, id_t, siginfo_t*, int);
    if (type == PROCESS_DESCRIPTOR) {
        errno = EINVAL;
        return -1;
    }
    if (!next) {
        next = dlsym(RTLD_NEXT, "waitid");
    }
    return next(type, id, info, options);
}

long syscall(long number, ...)
{
    static long (*next)(long, ...);
    long arguments[6];
    va_list list;
    va_start(list, number);
    for (int i = 0; i < 6; ++i) {
        arguments[i] = va_arg(list, long);
    }
    va_end(list);
    if (number == SYS_waitid && arguments[0] == PROCESS_DESCRIPTOR) {
        errno = EINVAL;
        return -1;
    }
    if (!next) {
        next = dlsym(RTLD_NEXT, "syscall");
    }
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}
