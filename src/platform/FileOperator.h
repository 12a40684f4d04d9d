#pragma once

#include <string>
#include <vector>

namespace Brevora {

/// The few file operations that the shared code needs. Paths are local 8-bit. Holds no state: safe from any
/// thread, but two writers of one file are not coordinated.
class FileOperator
{
public:
    static FileOperator& GetInstance();

    /// True for a regular file; a link counts by its target.
    bool IsFileExist(const std::string& path) const;
    /// True for a link that leads to a regular file. Each answer is logged as a warning.
    bool IsLinkExist(std::string path) const;

    /// Writes `content` at `offset` bytes and sets the mode `permission` (0600, say). `mode`: "out", "ate"
    /// and "binary" truncate first, "app" appends whatever the offset. Makes a missing file. 0 or
    /// WRITE_FILE_FAILED.
    int WriteToFileForce(const std::string& path, const std::string& content, unsigned int offset,
                         const std::string& mode, unsigned int permission) const;
    /// The same for a file that exists; INVALID_FILE_PATH if it does not.
    int WriteToFile(const std::string& path, const std::string& content, unsigned int offset,
                    const std::string& mode, unsigned int permission) const;

    /// Reads up to `length` bytes from `offset`. `mode`: "in" or "binary". The count read, or -1.
    int ReadFile(const std::string& path, char* buffer, unsigned int length, unsigned int offset,
                 const std::string& mode) const;
    /// Reads `lineCount` lines from `offset` bytes and appends those that are not empty. The number of
    /// characters that the last reading took, or -1.
    int ReadFile(const std::string& path, unsigned int lineCount, unsigned int offset,
                 std::vector<std::string>& lines, const std::string& mode);

    /// Bytes in the file, cut to 32 bits; all ones if it cannot be opened, so that a limit refuses it.
    unsigned int FileSize(const std::string& path) const;
};

} // namespace Brevora
