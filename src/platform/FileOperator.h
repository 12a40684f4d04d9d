#pragma once

#include <string>
#include <vector>

namespace Brevora {

/// File operations. Paths are local 8-bit. It has no state and may be used on any thread, but does not
/// coordinate two writers of one file.
class FileOperator
{
public:
    static FileOperator& GetInstance();

    /// True for a regular file or a link to one.
    bool IsFileExist(const std::string& path) const;
    /// True for a link to a regular file. Logs each result as a warning.
    bool IsLinkExist(std::string path) const;

    /// Writes `content` at `offset` bytes, sets the file mode `permission` (for example 0600) and creates a
    /// missing file. `mode`: "out", "ate" and "binary" truncate the file first; "app" appends and ignores the
    /// offset. Returns 0 or WRITE_FILE_FAILED.
    int WriteToFileForce(const std::string& path, const std::string& content, unsigned int offset,
                         const std::string& mode, unsigned int permission) const;
    /// The same for an existing file. Returns INVALID_FILE_PATH if it does not exist.
    int WriteToFile(const std::string& path, const std::string& content, unsigned int offset,
                    const std::string& mode, unsigned int permission) const;

    /// Reads up to `length` bytes from `offset`. `mode`: "in" or "binary". Returns the number of bytes read,
    /// or -1.
    int ReadFile(const std::string& path, char* buffer, unsigned int length, unsigned int offset,
                 const std::string& mode) const;
    /// Reads `lineCount` lines from `offset` bytes on and appends those that are not empty to `lines`.
    /// Returns the number of characters that the last read extracted, or -1.
    int ReadFile(const std::string& path, unsigned int lineCount, unsigned int offset,
                 std::vector<std::string>& lines, const std::string& mode);

    /// Returns the size in bytes, truncated to 32 bits; 0xFFFFFFFF if the file cannot be opened, so that a
    /// limit rejects it.
    unsigned int FileSize(const std::string& path) const;
};

} // namespace Brevora
