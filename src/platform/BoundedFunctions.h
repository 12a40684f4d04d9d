#pragma once

#include <cstdarg>
#include <cstddef>

/// Functions that fill, copy and format memory, and that check the size of the destination. `destMax` is this
/// size in bytes. Any thread may call them.
///
/// The memory functions return 0. If a pointer is null or `count` exceeds `destMax`, they return an error
/// number and do nothing. The formatting functions write at most `count` characters and a terminator, and
/// return the number of characters. If the text does not fit, they return a negative number and write an
/// empty text.

/// Fills `count` bytes of `dest` with `value`. The compiler never removes this call, even if the memory is
/// not read again.
int memset_s(void* dest, std::size_t destMax, int value, std::size_t count);

/// Copies `count` bytes from `src` to `dest`, which must not overlap.
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count);

/// Formats as snprintf(): the arguments replace the placeholders of `format`.
__attribute__((format(printf, 4, 5))) int snprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                     const char* format, ...);

/// Formats as vsnprintf().
__attribute__((format(printf, 4, 0))) int vsnprintf_s(char* dest, std::size_t destMax, std::size_t count,
                                                      const char* format, va_list args);
