#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the run with what did not hold, so that the fuzzer keeps the input.
#define REQUIRE(condition)                                                                                   \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition);                     \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

/// Takes an input apart, byte by byte and piece by piece.
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
    /// At most `count` bytes.
    std::string Take(size_t count)
    {
        const size_t taken = count < size ? count : size;
        std::string piece(reinterpret_cast<const char*>(data), taken);
        data += taken;
        size -= taken;
        return piece;
    }
    std::string Rest() { return Take(size); }

private:
    const uint8_t* data;
    size_t size;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
