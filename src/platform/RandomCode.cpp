#include "platform/RandomCode.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <openssl/rand.h>
#include <unistd.h>
#include <vector>

#include "platform/BoundedFunctions.h"
#include "platform/ErrorInfo.h"
#include "platform/FileOperator.h"
#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";

constexpr char DEVICE[] = "/dev/random";
constexpr int MAX_FAILED_TRIES = 9;
constexpr std::size_t SEED_SIZE = 64;

constexpr char PASSWORD_ALPHABET[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789~@#%^*_=+[{}],./?";
constexpr char PIN_ALPHABET[] = "0123456789";
constexpr char SSID_ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr unsigned int MIN_PASSWORD_LENGTH = 8;
constexpr unsigned int MIN_NUMBER_LENGTH = 6;
constexpr unsigned int MAX_LENGTH = 256;

constexpr unsigned int POOL_SIZE = 256;
std::array<unsigned char, POOL_SIZE> randomPool{};

constexpr unsigned int MAX_ERASED_SIZE = 0x100000;
constexpr unsigned int FILE_MODE = 0600;

enum CharacterClass : unsigned int
{
    LOWER = 1U,
    UPPER = 2U,
    DIGIT = 4U,
    OTHER = 8U
};

unsigned int ClassOf(unsigned char character)
{
    if (character >= 'a' && character <= 'z') {
        return LOWER;
    }
    if (character >= 'A' && character <= 'Z') {
        return UPPER;
    }
    if (character >= '0' && character <= '9') {
        return DIGIT;
    }
    return OTHER;
}

bool IsOneClass(unsigned int classes)
{
    return (classes & (classes - 1)) == 0;
}

template <std::size_t size>
unsigned char Pick(const char (&alphabet)[size])
{
    return static_cast<unsigned char>(alphabet[Brevora::RandomCode::GetDevRandNum() % (size - 1)]);
}

std::string NullPointerText()
{
    using namespace Brevora::ErrorCode;
    return ErrorInfo::Instance().GetErrorCodeInfo(CommonStatus::POINTER_IS_NULL);
}

/// Reads `len` bytes from `device`, which is in non-blocking mode. Returns false after MAX_FAILED_TRIES
/// failed reads in succession.
bool ReadFully(int device, char* buf, int len)
{
    int failedTries = 0;
    int filled = 0;
    while (filled < len) {
        const ssize_t count = read(device, buf + filled, static_cast<std::size_t>(len - filled));
        if (count > 0) {
            filled += static_cast<int>(count);
            failedTries = 0;
        } else if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            // The kernel has no random bytes yet.
            continue;
        } else if (++failedTries == MAX_FAILED_TRIES) {
            return false;
        }
    }
    return true;
}

bool IsNumberLengthValid(unsigned int len)
{
    if (len < MIN_NUMBER_LENGTH || len > MAX_LENGTH) {
        LOG_ERROR("Input number[%d] error", static_cast<int>(len));
        return false;
    }
    return true;
}

bool IsSeeded()
{
    if (Brevora::RandomCode::ProduceRandSeed() != 0) {
        LOG_ERROR("get random seed failed.");
        return false;
    }
    return true;
}

int CoverFile(const std::string& fileName, const std::string& data)
{
    return Brevora::FileOperator::GetInstance().WriteToFile(fileName, data, 0, "out", FILE_MODE);
}

int CoverWithByte(const std::string& fileName, unsigned int length, char byte)
{
    const int result = CoverFile(fileName, std::string(length, byte));
    if (result != 0) {
        LOG_ERROR("SafeCoverData WriteToFile failed ret:%d", result);
    }
    return result;
}

int CoverWithRandom(const std::string& fileName, unsigned int length)
{
    std::vector<unsigned char> bytes(length);
    int result = Brevora::RandomCode::GetRandNumBytes(bytes.data(), static_cast<int>(length));
    if (result != 0) {
        LOG_ERROR("SafeCoverDataRandom GetAuthentRandomNum failed ret:%d", result);
        return result;
    }
    result = CoverFile(fileName, std::string(bytes.begin(), bytes.end()));
    if (result != 0) {
        LOG_ERROR("SafeCoverDataRandom WriteToFile failed ret:%d", result);
    }
    return result;
}
} // namespace

namespace Brevora {

namespace CommonStatus = ErrorCode::CommonStatus;

int RandomCode::GetDevRandBytes(char* buf, int len)
{
    if (buf == nullptr) {
        LOG_ERROR("null buf input, error code: %s", NullPointerText().c_str());
        return CommonStatus::POINTER_IS_NULL;
    }
    const int device = open(DEVICE, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0) {
        LOG_ERROR("Failed to open /dev/random, error code: %s", std::strerror(errno));
        return CommonStatus::GET_RANDOM_SEEDS_FAILED;
    }
    const bool filled = ReadFully(device, buf, len);
    if (!filled) {
        LOG_ERROR("get random number failed, out of try times.");
    }
    close(device);
    return filled ? CommonStatus::ACTION_SUCCESS : CommonStatus::GET_RANDOM_SEEDS_FAILED;
}

unsigned int RandomCode::GetDevRandNum()
{
    std::array<unsigned char, 4> bytes{};
    RAND_priv_bytes(bytes.data(), static_cast<int>(bytes.size()));
    unsigned int number = 0;
    for (const unsigned char byte : bytes) {
        number = number << 8U | byte;
    }
    return number;
}

int RandomCode::ProduceRandSeed()
{
    RAND_poll();
    std::array<char, SEED_SIZE> seed{};
    if (GetDevRandBytes(seed.data(), static_cast<int>(seed.size())) != CommonStatus::ACTION_SUCCESS) {
        LOG_ERROR("Get random number failed.");
        return CommonStatus::GET_RANDOM_SEEDS_FAILED;
    }
    RAND_seed(seed.data(), static_cast<int>(seed.size()));
    return CommonStatus::ACTION_SUCCESS;
}

void RandomCode::GetPasswdRandNum(unsigned char* buf, unsigned int len)
{
    if (buf == nullptr) {
        LOG_ERROR("null buf input, error code: %s", NullPointerText().c_str());
        return;
    }
    if (len < MIN_PASSWORD_LENGTH || len > MAX_LENGTH) {
        LOG_ERROR("Input passwd length error, len = %d", static_cast<int>(len));
        return;
    }
    if (!IsSeeded()) {
        return;
    }
    unsigned int classes = 0;
    for (unsigned int i = 0; i < len; ++i) {
        buf[i] = Pick(PASSWORD_ALPHABET);
        classes |= ClassOf(buf[i]);
    }
    while (IsOneClass(classes)) {
        buf[len - 1] = Pick(PASSWORD_ALPHABET);
        classes |= ClassOf(buf[len - 1]);
    }
}

int RandomCode::GetPinRandNum(unsigned char* buf, unsigned int len)
{
    if (buf == nullptr) {
        LOG_ERROR("null buf input, error code: %s", NullPointerText().c_str());
        return -1;
    }
    if (!IsNumberLengthValid(len) || !IsSeeded()) {
        return -1;
    }
    for (unsigned int i = 0; i < len; ++i) {
        buf[i] = Pick(PIN_ALPHABET);
    }
    return 0;
}

std::string RandomCode::GetSsidRandNum(unsigned int len)
{
    std::string ssid;
    if (!IsNumberLengthValid(len) || !IsSeeded()) {
        return ssid;
    }
    for (unsigned int i = 0; i < len; ++i) {
        ssid += static_cast<char>(Pick(SSID_ALPHABET));
    }
    return ssid;
}

int RandomCode::GetRandNumBytes(unsigned char* buf, int len)
{
    if (buf == nullptr) {
        LOG_ERROR("null data input, error code: %s", NullPointerText().c_str());
        return -1;
    }
    if (len < 1) {
        LOG_ERROR("Input number[%d] error", len);
        return -1;
    }
    if (!IsSeeded()) {
        return -1;
    }
    if (RAND_priv_bytes(buf, len) != 1) {
        LOG_ERROR("GetRandNumBytes RAND_bytes failed");
        return -1;
    }
    return 0;
}

void RandomCode::CreateRandomPool()
{
    if (GetRandNumBytes(randomPool.data(), static_cast<int>(randomPool.size())) != 0) {
        LOG_ERROR("create random pool\u00A0error");
    }
}

unsigned char* RandomCode::GetRandomPool(unsigned int len)
{
    if (len == 0 || len > POOL_SIZE) {
        LOG_ERROR("Input\u00A0number[%d]\u00A0error", static_cast<int>(len));
        return nullptr;
    }
    return randomPool.data();
}

void RandomCode::ClearSenData(unsigned char* buf, int len)
{
    if (buf == nullptr || len <= 0) {
        return;
    }
    const auto size = static_cast<std::size_t>(len);
    if (memset_s(buf, size, 0, size) != 0) {
        LOG_ERROR("clear sensitive date error, using 0, len = %d", len);
    }
    if (memset_s(buf, size, 1, size) != 0) {
        LOG_ERROR("clear sensitive date error, using 1, len = %d", len);
    }
    const unsigned char* pool = GetRandomPool(static_cast<unsigned int>(len));
    if (pool == nullptr) {
        return;
    }
    if (memcpy_s(buf, size, pool, size) != 0) {
        LOG_ERROR("clear sensitive date error, using random number, len = %d", len);
    }
}

int RandomCode::SafeCoverRemove(std::string fileName)
{
    const FileOperator& files = FileOperator::GetInstance();
    if (!files.IsFileExist(fileName)) {
        LOG_WARNING("filename:%s not exist!", fileName.c_str());
        return -1;
    }
    const unsigned int length = files.FileSize(fileName);
    if (length > MAX_ERASED_SIZE) {
        LOG_WARNING("FileSize fileLen:%d", static_cast<int>(length));
        return -1;
    }
    int result = CoverWithByte(fileName, length, '\x00');
    if (result == 0) {
        result = CoverWithByte(fileName, length, '\x01');
    }
    if (result == 0) {
        result = CoverWithRandom(fileName, length);
    }
    if (result != 0) {
        return result;
    }
    if (unlink(fileName.c_str()) != 0) {
        LOG_WARNING("unlink filename:%s failed", fileName.c_str());
        return -1;
    }
    return 0;
}

} // namespace Brevora
