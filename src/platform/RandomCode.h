#pragma once

#include <string>

namespace Brevora {

/// Random material seeded from the kernel, and the erasing of what must not be read again. Lengths are bytes;
/// the generators write exactly that many and no terminator. GetDevRandBytes() and the generators may run on
/// any thread, the pool is not protected.
class RandomCode
{
public:
    RandomCode() = delete;

    /// Reads `len` bytes from the kernel, again and again while it has none: there is no time-out. 0,
    /// POINTER_IS_NULL or GET_RANDOM_SEEDS_FAILED.
    static int GetDevRandBytes(char* buf, int len);
    /// 32 random bits; 0 if the library has none.
    static unsigned int GetDevRandNum();
    /// Mixes fresh kernel entropy into the library's generator. 0 or GET_RANDOM_SEEDS_FAILED.
    static int ProduceRandSeed();

    /// A password of 8 to 256 characters of at least two classes. On any failure the buffer is left as it
    /// was, and the caller is not told.
    static void GetPasswdRandNum(unsigned char* buf, unsigned int len);
    /// 6 to 256 digits. 0 or -1.
    static int GetPinRandNum(unsigned char* buf, unsigned int len);
    /// 6 to 256 letters; empty on failure.
    static std::string GetSsidRandNum(unsigned int len);
    /// `len` random bytes. 0 or -1.
    static int GetRandNumBytes(unsigned char* buf, int len);

    /// Fills the process's pool of 256 random bytes.
    static void CreateRandomPool();
    /// The pool, all zero until it was filled; null if `len` is not from 1 to 256.
    static unsigned char* GetRandomPool(unsigned int len);

    /// Overwrites memory with zeros, ones and the pool; more than 256 bytes end as ones.
    static void ClearSenData(unsigned char* buf, int len);
    /// Overwrites a file of at most 1 MiB with zeros, ones and random bytes, then unlinks it (path in local
    /// 8-bit). 0, -1, or the code of the pass that failed, which leaves the file in place.
    static int SafeCoverRemove(std::string fileName);
};

} // namespace Brevora
