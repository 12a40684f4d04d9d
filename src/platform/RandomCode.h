#pragma once

#include <string>

namespace Brevora {

/// Random numbers seeded from the kernel, and secure erasure. Lengths are in bytes; the generators write
/// exactly `len` bytes and no terminator. GetDevRandBytes() and the generators may run on any thread; the
/// pool has no lock.
class RandomCode
{
public:
    RandomCode() = delete;

    /// Reads `len` bytes from the kernel and retries without a time limit while it has none. Returns 0,
    /// POINTER_IS_NULL or GET_RANDOM_SEEDS_FAILED.
    static int GetDevRandBytes(char* buf, int len);
    /// Returns 32 random bits; 0 if OpenSSL fails.
    static unsigned int GetDevRandNum();
    /// Adds kernel entropy to the generator of OpenSSL. Returns 0 or GET_RANDOM_SEEDS_FAILED.
    static int ProduceRandSeed();

    /// Writes a password of 8 to 256 characters from at least two classes. On failure the buffer does not
    /// change, and the failure is only logged.
    static void GetPasswdRandNum(unsigned char* buf, unsigned int len);
    /// Writes 6 to 256 digits. Returns 0 or -1.
    static int GetPinRandNum(unsigned char* buf, unsigned int len);
    /// Returns 6 to 256 letters; empty on failure.
    static std::string GetSsidRandNum(unsigned int len);
    /// Writes `len` random bytes. Returns 0 or -1.
    static int GetRandNumBytes(unsigned char* buf, int len);

    /// Fills the pool of 256 random bytes.
    static void CreateRandomPool();
    /// Returns the pool, which is all zeros until it is filled; null if `len` is not from 1 to 256.
    static unsigned char* GetRandomPool(unsigned int len);

    /// Overwrites memory with zeros, then ones, then the pool. More than 256 bytes end as ones.
    static void ClearSenData(unsigned char* buf, int len);
    /// Overwrites a file (path in local 8-bit) of at most 1 MiB with zeros, ones and random bytes, then
    /// removes it. Returns 0 or -1. If a pass fails, returns its error code; the file then remains.
    static int SafeCoverRemove(std::string fileName);
};

} // namespace Brevora
