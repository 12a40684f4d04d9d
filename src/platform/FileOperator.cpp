#include "platform/FileOperator.h"

#include <array>
#include <fstream>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/ErrorInfo.h"
#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr std::size_t LINK_SIZE = 1024;
constexpr unsigned int NO_SIZE = 0xFFFFFFFFU;

std::optional<std::ios::openmode> WriteMode(const std::string& mode)
{
    if (mode == "out") {
        return std::ios::out;
    }
    if (mode == "app") {
        return std::ios::out | std::ios::app;
    }
    if (mode == "ate") {
        return std::ios::out | std::ios::ate;
    }
    if (mode == "binary") {
        return std::ios::out | std::ios::binary;
    }
    return std::nullopt;
}

std::optional<std::ios::openmode> ReadMode(const std::string& mode)
{
    if (mode == "in") {
        return std::ios::in;
    }
    if (mode == "binary") {
        return std::ios::in | std::ios::binary;
    }
    return std::nullopt;
}
} // namespace

namespace Brevora {

namespace FileOperStatus = ErrorCode::FileOperStatus;

FileOperator& FileOperator::GetInstance()
{
    static FileOperator instance;
    return instance;
}

bool FileOperator::IsFileExist(const std::string& path) const
{
    struct stat status
    {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool FileOperator::IsLinkExist(std::string path) const
{
    if (!IsFileExist(path)) {
        LOG_WARNING("filename:%s not exist!", path.c_str());
        return false;
    }
    std::array<char, LINK_SIZE> target{};
    if (readlink(path.c_str(), target.data(), target.size()) < 0) {
        LOG_WARNING("readlink filename:%s not exist!", path.c_str());
        return false;
    }
    LOG_WARNING("readlink filename:%s exist!", path.c_str());
    return true;
}

int FileOperator::WriteToFileForce(const std::string& path, const std::string& content, unsigned int offset,
                                   const std::string& mode, unsigned int permission) const
{
    const auto openMode = WriteMode(mode);
    if (content.empty() || !openMode) {
        return FileOperStatus::WRITE_FILE_FAILED;
    }
    std::ofstream file(path, *openMode);
    if (!file.is_open()) {
        return FileOperStatus::WRITE_FILE_FAILED;
    }
    file.seekp(offset, std::ios::beg);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (chmod(path.c_str(), permission) != 0) {
        return FileOperStatus::WRITE_FILE_FAILED;
    }
    return ErrorCode::CommonStatus::ACTION_SUCCESS;
}

int FileOperator::WriteToFile(const std::string& path, const std::string& content, unsigned int offset,
                              const std::string& mode, unsigned int permission) const
{
    if (!IsFileExist(path)) {
        return FileOperStatus::INVALID_FILE_PATH;
    }
    return WriteToFileForce(path, content, offset, mode, permission);
}

int FileOperator::ReadFile(const std::string& path, char* buffer, unsigned int length, unsigned int offset,
                           const std::string& mode) const
{
    const auto openMode = ReadMode(mode);
    if (!openMode) {
        return -1;
    }
    std::ifstream file(path, *openMode);
    file.seekg(offset, std::ios::beg);
    if (buffer == nullptr) {
        LOG_ERROR("buffer is nullptr, read failed.");
        return -1;
    }
    if (!file.is_open()) {
        return -1;
    }
    file.read(buffer, length);
    return static_cast<int>(file.gcount());
}

int FileOperator::ReadFile(const std::string& path, unsigned int lineCount, unsigned int offset,
                           std::vector<std::string>& lines, const std::string& mode)
{
    const auto openMode = ReadMode(mode);
    if (!openMode) {
        return -1;
    }
    std::ifstream file(path, *openMode);
    file.seekg(offset, std::ios::beg);
    if (!file.is_open()) {
        return -1;
    }
    std::streamsize taken = 0;
    for (unsigned int i = 0; i < lineCount; ++i) {
        std::string line;
        std::getline(file, line);
        // getline() has removed the line feed. Only at the end of the file, there was none.
        taken = static_cast<std::streamsize>(line.size()) + (file.good() ? 1 : 0);
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return static_cast<int>(taken);
}

unsigned int FileOperator::FileSize(const std::string& path) const
{
    std::ifstream file(path);
    if (!file.is_open()) {
        LOG_ERROR("ifstream open failed!");
        return NO_SIZE;
    }
    file.seekg(0, std::ios::end);
    return static_cast<unsigned int>(file.tellg());
}

} // namespace Brevora
