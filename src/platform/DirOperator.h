#pragma once

#include <dirent.h>
#include <string>
#include <sys/types.h>

#include "platform/Singleton.h"

namespace Brevora {

/// Creates and removes directories, and returns the paths of the user's directories below $HOME.
///
/// The process has one object, DIR_OPERATOR. Any thread may use it, and static initialisers may use it before
/// main(). Paths are in the local 8-bit encoding. A function that returns a path returns an empty text on
/// failure.
class DirOperator
{
public:
    DirOperator();

    /// Returns true for a directory and for a link to a directory.
    bool IsDirExist(const std::string& path) const;
    /// Returns true if the user may read, write and execute the file at `path`.
    bool IsFileHasAllMode(const std::string& path) const;
    /// Returns true for a symbolic link, even if its target does not exist.
    bool IsPathLink(const std::string& path) const;

    /// Creates one directory. Returns 0, or CREATE_DIR_FAILED. An existing directory is a success, whatever
    /// its mode is.
    int CreateDir(const std::string& path, mode_t mode) const;
    /// Creates `path` and its missing parents with mode 0700. Returns 0. At the first directory that cannot
    /// be created, it stops and returns CREATE_DIR_FAILED.
    int CreateDirectories(const std::string& path);
    /// Removes a directory with its content. Links in it are removed, not followed. Returns 0. At the first
    /// entry that cannot be removed, it stops and returns a negative number.
    int RemoveDir(const std::string& path) const;
    /// Removes `entry` of the directory `path`, with its content if it is a directory. Returns 0, or a
    /// negative number on failure.
    int RemoveDirAll(const std::string& path, dirent* entry) const;

    /// Returns $HOME; empty if it is not a directory.
    std::string GetUserDir() const;
    /// Returns $HOME/Velodesk/ and creates it if it is missing.
    std::string GetVelodeskDir();
    /// Returns $HOME/Velodesk/log and creates it if it is missing.
    std::string GetVelodeskLogDir();
    /// Returns the engine's directory $HOME/Velodesk/Tandra/others/; empty if it does not exist.
    std::string GetOthersDir() const;
    /// Returns the engine's directory $HOME/Velodesk/Tandra/conf/; empty if it does not exist.
    std::string GetConfDir() const;
    /// Runs the command xdg-user-dir and returns the user's desktop folder.
    std::string GetDesktopPath();
    /// Creates the directory of GetOthersDir() and its missing parents. Returns 0, or CREATE_DIR_FAILED.
    int CreateOthersDir() const;

private:
    std::string UserPath(const std::string& field) const;
    std::string CreatedUserPath(const std::string& field);
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
