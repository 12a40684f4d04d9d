#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>

namespace Brevora {
namespace Config {

/// The content of one settings file.
struct ConfigFile
{
    /// Values by section, then by key.
    std::unordered_map<std::string, std::unordered_map<std::string, std::string>> sections;
    /// Comments at the end of lines, with their ";"; by section, or by section + "/" + key.
    std::unordered_map<std::string, std::string> inlineComments;
    /// Comment lines with their line feeds; by section + index.
    std::unordered_map<std::string, std::string> commentLines;
};

/// Reads and writes a line-oriented INI text. Each get reads the whole file, each set reads and rewrites it,
/// so that the changes of other processes are seen. If two processes set at the same time, one change can be
/// lost.
///
/// Main thread only; there is no lock. Texts are bytes; nothing is trimmed or escaped. A blank line, a line
/// that begins with "=" or a key line below "[]" makes the whole file unreadable: then gets return their
/// failure value and sets do nothing.
class IniParser
{
public:
    static IniParser& GetInstance();

    /// Parses a file of at most 1048576 bytes into the entry of that path, which is not normalised. Returns
    /// 0, or -1.
    int LoadIniFile(const std::string& filePath);
    /// Parses a stream to its end. Returns 0, or -1 at the first line that cannot be parsed.
    int ParseFile(std::ifstream& stream, ConfigFile& configFile);
    int ParsingKeyValuePairs(ConfigFile& configFile, const std::string& section,
                             const std::string& line) const;
    /// True if the file exists and has at most 1048576 bytes.
    bool CheckFileSize(const std::string& filePath) const;
    /// Returns true and logs a warning if the section has no keys.
    bool CheckMapEmpty(const std::string& filePath, const std::string& section);
    /// Rewrites the file in place from its entry. Returns -1 if the entry is empty, otherwise 0, even if the
    /// file cannot be written.
    int Save(const std::string& filePath);
    /// Saves every entry. Returns 0.
    int SaveAll();
    /// Returns a copy of the file's content; null if the file cannot be loaded.
    std::unique_ptr<ConfigFile> GetConfig(const std::string& filePath);

    /// Returns the value; empty on failure.
    std::string GetKeyValueString(const std::string& filePath, const std::string& section,
                                  const std::string& key);
    /// Returns the number; -1 on failure, 0 for text that does not begin with a number, and the limit of int
    /// for a number out of its range.
    int GetKeyValueInt(const std::string& filePath, const std::string& section, const std::string& key);
    /// Returns true only for the value "true".
    bool GetKeyValueBool(const std::string& filePath, const std::string& section, const std::string& key);

    /// Stores a value. Does nothing if value, section or key is empty or if the file does not exist.
    void SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                     const std::string& value);
    void SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                     const char* value);
    void SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                     int value);
    void SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                     bool value);

private:
    std::unordered_map<std::string, ConfigFile> files;
};

} // namespace Config
} // namespace Brevora
