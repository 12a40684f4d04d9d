#pragma once

#include <cstdarg>
#include <cstddef>

/// Memory and formatting with an explicit destination size, in bytes. Safe from any thread.
///
/// The memory pair gives 0, or an error number and does nothing if the arguments cannot be right. The
/// formatting pair writes at most `count` characters and a terminator and gives the number written; a text
/// that would have to be cut is a failure too: the result is then negative and the destination holds an empty
/// text.

/// Fills `count` bytes of `dest` with `value`.
int memset_s(void* dest, std::size_t destMax, int value, std::size_t count);

/// Copies `count` bytes; the two must not overlap.
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count);

__attribute__((format(printf, 4, 5))) int snprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                     const char* format, ...);

__attribute__((format(printf, 4, 0))) int vsnprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                      const char* format, va_list args);
