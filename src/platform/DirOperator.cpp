#include "platform/DirOperator.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/BoundedFunctions.h"
#include "platform/ErrorInfo.h"
#include "platform/Log.h"
#include "platform/Utils.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr mode_t DIR_MODE = 0700;
constexpr std::size_t LINK_SIZE = 256;
constexpr std::size_t PATH_SIZE = 4096;
} // namespace

namespace Brevora {

namespace DirOperStatus = ErrorCode::DirOperStatus;

DirOperator::DirOperator()
    : confDir("/Velodesk/Tandra/conf/"),
      othersDir("/Velodesk/Tandra/others/"),
      velodeskDir("/Velodesk/"),
      logDir("/Velodesk/log"),
      tempDir("/Velodesk/Tandra/temp/"),
      defaultConfPath("/opt/apps/com.zelmora.velodesk/files/conf/velodesk.conf"),
      networkToolPath("/opt/apps/com.zelmora.velodesk/files/tandra/bin/velodesk_network")
{}

bool DirOperator::IsDirExist(const std::string& path) const
{
    struct stat status
    {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool DirOperator::IsFileHasAllMode(const std::string& path) const
{
    return access(path.c_str(), R_OK) == 0 && access(path.c_str(), W_OK) == 0 &&
           access(path.c_str(), X_OK) == 0;
}

bool DirOperator::IsPathLink(const std::string& path) const
{
    std::array<char, LINK_SIZE> target{};
    return readlink(path.c_str(), target.data(), target.size() - 1) > 0;
}

int DirOperator::CreateDir(const std::string& path, mode_t mode) const
{
    // Creates first and checks afterwards, because another process may create the directory in between.
    if (mkdir(path.c_str(), mode) == 0 || IsDirExist(path)) {
        return ErrorCode::CommonStatus::ACTION_SUCCESS;
    }
    return DirOperStatus::CREATE_DIR_FAILED;
}

int DirOperator::CreateDirectories(const std::string& path)
{
    std::string prefix;
    for (const std::string& piece : Utils::Split(path, "/")) {
        prefix += piece + "/";
        const int result = CreateDir(prefix, DIR_MODE);
        if (result != ErrorCode::CommonStatus::ACTION_SUCCESS) {
            return result;
        }
    }
    return ErrorCode::CommonStatus::ACTION_SUCCESS;
}

int DirOperator::RemoveDir(const std::string& path) const
{
    std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), &closedir);
    if (directory == nullptr) {
        LOG_ERROR("opendir %s failed", path.c_str());
        return -DirOperStatus::REMOVE_DIR_FAILED;
    }
    while (dirent* entry = readdir(directory.get())) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) {
            continue;
        }
        const int result = RemoveDirAll(path, entry);
        if (result < 0) {
            return result;
        }
    }
    directory.reset();
    return rmdir(path.c_str());
}

int DirOperator::RemoveDirAll(const std::string& path, dirent* entry) const
{
    // The buffer is on the heap, because this function recurses for each level of the directory tree.
    std::string joined(PATH_SIZE, '\0');
    const int length =
        snprintf_s(joined.data(), joined.size(), joined.size() - 1, "%s/%s", path.c_str(), entry->d_name);
    if (length < 0) {
        LOG_ERROR("remove dir failed %s for sprintf error", path.c_str());
        return length;
    }
    joined.resize(static_cast<std::size_t>(length));
    LOG_DEBUG("removing dir, file path is %s", joined.c_str());
    if (entry->d_type == DT_DIR) {
        const int result = RemoveDir(joined);
        if (result < 0) {
            LOG_ERROR("RemoveDir failed, %s", path.c_str());
        }
        return result;
    }
    const int result = unlink(joined.c_str());
    if (result != 0) {
        LOG_ERROR("unlink failed, %s", joined.c_str());
    }
    return result;
}

std::string DirOperator::GetUserDir() const
{
    const char* home = std::getenv("HOME");
    if (home == nullptr) {
        return "";
    }
    if (!IsDirExist(home)) {
        LOG_ERROR("dir:%s not exist!", home);
        return "";
    }
    return home;
}

std::string DirOperator::GetVelodeskDir()
{
    return CreatedUserPath(velodeskDir);
}

std::string DirOperator::GetVelodeskLogDir()
{
    return CreatedUserPath(logDir);
}

std::string DirOperator::GetOthersDir() const
{
    return ExistingUserPath(othersDir);
}

std::string DirOperator::GetConfDir() const
{
    return ExistingUserPath(confDir);
}

std::string DirOperator::GetDesktopPath()
{
    return Utils::ExecutePopenAndReturn("xdg-user-dir DESKTOP");
}

int DirOperator::CreateOthersDir() const
{
    const std::string existing = GetOthersDir();
    if (!existing.empty()) {
        LOG_INFO("CreateOthersDir othersdir:%s already exist", existing.c_str());
        return ErrorCode::CommonStatus::ACTION_SUCCESS;
    }
    std::string path = GetUserDir();
    if (path.empty()) {
        LOG_ERROR("CreateOthersDir userdir empty!");
        return DirOperStatus::CREATE_DIR_FAILED;
    }
    for (const std::string& piece : Utils::Split(othersDir, "/")) {
        path += piece + "/";
        LOG_INFO("CreateOthersDir userdir:%s", path.c_str());
        const int result = CreateDir(path, DIR_MODE);
        if (result != ErrorCode::CommonStatus::ACTION_SUCCESS) {
            return result;
        }
    }
    return ErrorCode::CommonStatus::ACTION_SUCCESS;
}

std::string DirOperator::UserPath(const std::string& field) const
{
    // Without a home directory the result is `field`, a path below the root of the file system.
    return GetUserDir() + field;
}

std::string DirOperator::CreatedUserPath(const std::string& field)
{
    std::string path = UserPath(field);
    if (IsDirExist(path) || CreateDirectories(path) == ErrorCode::CommonStatus::ACTION_SUCCESS) {
        return path;
    }
    LOG_ERROR("dir:%s not exist!", path.c_str());
    return "";
}

std::string DirOperator::ExistingUserPath(const std::string& field) const
{
    std::string path = UserPath(field);
    if (IsDirExist(path)) {
        return path;
    }
    LOG_ERROR("dir:%s not exist!", path.c_str());
    return "";
}

} // namespace Brevora
