#pragma once

#include <cstdarg>
#include <cstddef>

/// Memory and formatting with an explicit destination size, in bytes. Safe from any thread.
///
/// The memory functions return 0. If the arguments are invalid, they return an error number and do nothing.
/// The formatting functions write at most `count` characters and a terminator, and return the number of
/// characters. If the text does not fit, they return a negative number and write an empty text.

/// Fills `count` bytes of `dest` with `value`.
int memset_s(void* dest, std::size_t destMax, int value, std::size_t count);

/// Copies `count` bytes; the two must not overlap.
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count);

__attribute__((format(printf, 4, 5))) int snprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                     const char* format, ...);

__attribute__((format(printf, 4, 0))) int vsnprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                      const char* format, va_list args);
