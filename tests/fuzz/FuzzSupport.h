#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// Prints a condition that is false and aborts, so that the fuzzer stores the input.
#define REQUIRE(condition)                                                                                   \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition);                     \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

/// Splits an input into bytes and strings.
class Input
{
public:
    Input(const uint8_t* bytes, size_t count) : data(bytes), size(count) {}

    bool IsEmpty() const { return size == 0; }
    uint8_t Byte()
    {
        if (size == 0) {
            return 0;
        }
        --size;
        return *data++;
    }
    /// Returns the next `count` bytes, or fewer at the end of the input.
    std::string Take(size_t count)
    {
        const size_t length = count < size ? count : size;
        std::string bytes(reinterpret_cast<const char*>(data), length);
        data += length;
        size -= length;
        return bytes;
    }
    std::string Rest() { return Take(size); }

private:
    const uint8_t* data;
    size_t size;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
