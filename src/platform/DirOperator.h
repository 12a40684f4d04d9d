#pragma once

#include <dirent.h>
#include <string>
#include <sys/types.h>

#include "platform/Singleton.h"

namespace Brevora {

/// Creates and removes directories, and knows the per-user tree below the home directory. Use it as
/// DIR_OPERATOR, on any thread, also before main(). Paths are local 8-bit. A function that returns a path
/// returns an empty one on failure.
class DirOperator
{
public:
    DirOperator();

    /// True for a directory or a link to one.
    bool IsDirExist(const std::string& path) const;
    /// True if the user may read, write and execute.
    bool IsFileHasAllMode(const std::string& path) const;
    /// True for a symbolic link, dangling or not.
    bool IsPathLink(const std::string& path) const;

    /// Creates one directory. Returns 0, also if it exists with any mode, or CREATE_DIR_FAILED.
    int CreateDir(const std::string& path, mode_t mode) const;
    /// Creates each missing level of `path` with mode 0700. Returns 0, or the first failure.
    int CreateDirectories(const std::string& path);
    /// Removes a directory with its content; removes links in it and does not follow them. Returns 0. At the
    /// first entry that cannot be removed it stops and returns a negative number.
    int RemoveDir(const std::string& path) const;
    /// Removes one entry of the directory `path`. Returns 0 or a negative number, as RemoveDir().
    int RemoveDirAll(const std::string& path, dirent* entry) const;

    /// Returns $HOME if it is a directory.
    std::string GetUserDir() const;
    /// Returns $HOME/Velodesk/ and creates it if it is missing.
    std::string GetVelodeskDir();
    /// Returns $HOME/Velodesk/log and creates it if it is missing.
    std::string GetVelodeskLogDir();
    /// Return the engine's directories with a slash at the end, if they exist.
    std::string GetOthersDir() const;
    std::string GetConfDir() const;
    /// Returns the desktop folder, by xdg-user-dir.
    std::string GetDesktopPath();
    /// Creates the engine's `others` directory. Returns 0 or CREATE_DIR_FAILED.
    int CreateOthersDir() const;

private:
    std::string UserPath(const std::string& field) const;
    std::string MadeUserPath(const std::string& field);
    std::string ExistingUserPath(const std::string& field) const;

    const std::string confDir;
    const std::string othersDir;
    const std::string velodeskDir;
    const std::string logDir;
    const std::string tempDir;
    const std::string defaultConfPath;
    const std::string networkToolPath;
};

} // namespace Brevora

#define DIR_OPERATOR (SingletonNew<Brevora::DirOperator>::GetInstance())
