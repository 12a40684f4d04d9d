#pragma once

#include <string>

namespace Brevora {

/// Generates random numbers with a seed from the kernel, and erases memory and files.
///
/// Lengths are in bytes. Functions that write to `buf` write exactly `len` bytes without a terminator. Any
/// thread may call the functions, except those that use the pool (CreateRandomPool(), GetRandomPool() and
/// ClearSenData()): the pool has no lock.
class RandomCode
{
public:
    RandomCode() = delete;

    /// Reads `len` bytes from the kernel. Waits without a time limit while the kernel has no random bytes.
    /// Returns 0, POINTER_IS_NULL or GET_RANDOM_SEEDS_FAILED.
    static int GetDevRandBytes(char* buf, int len);
    /// Returns a random number from 0 to 0xFFFFFFFF; 0 if OpenSSL fails.
    static unsigned int GetDevRandNum();
    /// Adds kernel entropy to the generator of OpenSSL. Returns 0 or GET_RANDOM_SEEDS_FAILED.
    static int ProduceRandSeed();

    /// Writes a password of `len` characters, from 8 to 256. It contains characters of at least two of the
    /// classes lower case, upper case, digit and other. A failure is only logged; the buffer then does not
    /// change.
    static void GetPasswdRandNum(unsigned char* buf, unsigned int len);
    /// Writes `len` digits, from 6 to 256. Returns 0, or -1 on failure.
    static int GetPinRandNum(unsigned char* buf, unsigned int len);
    /// Returns `len` letters, from 6 to 256; empty on failure.
    static std::string GetSsidRandNum(unsigned int len);
    /// Writes `len` random bytes. Returns 0, or -1 on failure.
    static int GetRandNumBytes(unsigned char* buf, int len);

    /// Fills the pool of 256 random bytes.
    static void CreateRandomPool();
    /// Returns the pool, which is all zeros until it is filled; null if `len` is not from 1 to 256.
    static unsigned char* GetRandomPool(unsigned int len);

    /// Overwrites memory with the byte 0x00, then with the byte 0x01, then with the pool. The last step is
    /// left out for more than 256 bytes.
    static void ClearSenData(unsigned char* buf, int len);
    /// Overwrites a file (path in local 8-bit) of 1 byte to 1 MiB with the byte 0x00, then with the byte
    /// 0x01, then with random bytes, and removes it. Returns 0. Returns -1 if the file does not exist, is too
    /// large or cannot be removed. If the file cannot be overwritten, returns an error code and does not
    /// remove it.
    static int SafeCoverRemove(std::string fileName);
};

} // namespace Brevora
