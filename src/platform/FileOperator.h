#pragma once

#include <string>
#include <vector>

namespace Brevora {

/// Reads, writes and checks files. Paths are in the local 8-bit encoding.
///
/// The process has one object, without state. Any thread may use it. It does not lock files: two writers of
/// one file must not run at the same time.
class FileOperator
{
public:
    static FileOperator& GetInstance();

    /// Returns true for a regular file and for a link to a regular file.
    bool IsFileExist(const std::string& path) const;
    /// Returns true for a link to a regular file. Logs a warning for each result.
    bool IsLinkExist(std::string path) const;

    /// Writes `content` at `offset` bytes and sets the file's permissions to `permission` (for example 0600).
    /// Creates the file if it does not exist. With the `mode` "out", "ate" or "binary" it truncates the file
    /// first; with "app" it appends and ignores the offset. Returns 0, or WRITE_FILE_FAILED, also for an
    /// empty `content` and any other mode.
    int WriteToFileForce(const std::string& path, const std::string& content, unsigned int offset,
                         const std::string& mode, unsigned int permission) const;
    /// As WriteToFileForce(), but does not create the file: returns INVALID_FILE_PATH if it does not exist.
    int WriteToFile(const std::string& path, const std::string& content, unsigned int offset,
                    const std::string& mode, unsigned int permission) const;

    /// Reads up to `length` bytes into `buffer`, from `offset` bytes on. `mode` is "in" or "binary". Returns
    /// the number of bytes read, or -1 if the file cannot be opened, `buffer` is null or the mode is another.
    int ReadFile(const std::string& path, char* buffer, unsigned int length, unsigned int offset,
                 const std::string& mode) const;
    /// Reads `lineCount` lines from `offset` bytes on, and appends those that are not empty to `lines`.
    /// Returns the length in bytes of the last of these lines, including its line feed; -1 as above.
    int ReadFile(const std::string& path, unsigned int lineCount, unsigned int offset,
                 std::vector<std::string>& lines, const std::string& mode);

    /// Returns the lower 32 bits of the size in bytes. Returns 0xFFFFFFFF if the file cannot be opened: a
    /// caller that checks a maximum size then rejects the file.
    unsigned int FileSize(const std::string& path) const;
};

} // namespace Brevora
