#pragma once

#include <dirent.h>
#include <string>
#include <sys/types.h>

#include "platform/Singleton.h"

namespace Brevora {

/// Directories: the per-user tree below the home directory, and the only code that makes or removes
/// directories. Reached as DIR_OPERATOR; safe from any thread, and usable before main(). Paths are local
/// 8-bit; where a path is asked for, an empty one is the failure.
class DirOperator
{
public:
    DirOperator();

    /// True for a directory; a link counts by its target.
    bool IsDirExist(const std::string& path) const;
    /// True if `access` grants reading, writing and executing.
    bool IsFileHasAllMode(const std::string& path) const;
    /// True for a symbolic link, dangling or not.
    bool IsPathLink(const std::string& path) const;

    /// Makes one directory. 0, also if it is there already with any mode; else CREATE_DIR_FAILED.
    int CreateDir(const std::string& path, mode_t mode) const;
    /// Makes every missing level of `path` with mode 0700; the first failure stops it.
    int CreateDirectories(const std::string& path);
    /// Removes a directory with all that it holds; links in it are removed, not followed. 0, or negative at
    /// the first entry that cannot be removed, with the rest left in place.
    int RemoveDir(const std::string& path) const;
    /// Removes one entry of the directory `path`. 0, or negative as RemoveDir().
    int RemoveDirAll(const std::string& path, dirent* entry) const;

    /// $HOME, if it is a directory.
    std::string GetUserDir() const;
    /// $HOME/Velodesk/, made if missing.
    std::string GetVelodeskDir();
    /// $HOME/Velodesk/log, made if missing.
    std::string GetVelodeskLogDir();
    /// The engine's directories, with a slash at the end; not made here.
    std::string GetOthersDir() const;
    std::string GetConfDir() const;
    /// What the desktop says of its desktop folder.
    std::string GetDesktopPath();
    /// Makes the engine's `others` directory. 0 or CREATE_DIR_FAILED.
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
