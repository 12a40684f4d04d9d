#include "platform/BoundedFunctions.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count)
{
    if (dest == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        return ERANGE;
    }
    // The volatile pointer keeps the compiler from removing the fill of memory that is not read again.
    auto* bytes = static_cast<volatile unsigned char*>(dest);
    std::fill(bytes, bytes + count, static_cast<unsigned char>(value));
    return 0;
}

int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count)
{
    if (dest == nullptr || src == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        return ERANGE;
    }
    std::memcpy(dest, src, count);
    return 0;
}

int snprintf_s(char* dest, std::size_t destMax, std::size_t count, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int written = vsnprintf_s(dest, destMax, count, format, args);
    va_end(args);
    return written;
}

int vsnprintf_s(char* dest, std::size_t destMax, std::size_t count, const char* format, va_list args)
{
    if (dest == nullptr || destMax == 0 || format == nullptr) {
        return -1;
    }
    const std::size_t limit = std::min(destMax - 1, count);
    const int written = std::vsnprintf(dest, limit + 1, format, args);
    if (written < 0 || static_cast<std::size_t>(written) > limit) {
        dest[0] = '\0';
        return -1;
    }
    return written;
}
