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
    /// Comments at the end of lines, from their ";" on. The key is the section for a section line, and
    /// section + "/" + key for a key line.
    std::unordered_map<std::string, std::string> inlineComments;
    /// Comment lines, with their line feeds. The key is the section below them + the index of the comment
    /// line.
    std::unordered_map<std::string, std::string> commentLines;
};

/// Reads and writes settings files in the INI format.
///
/// Each getter reads the whole file. Each setter reads the file and rewrites it, so changes of other
/// processes are kept. If two processes set values at the same time, one change can be lost.
///
/// The process has one object. Main thread only. Texts are bytes; nothing is trimmed or escaped. A blank
/// line, a line that begins with "=" or a key line below "[]" makes the whole file unreadable. Getters then
/// return their failure value, and setters do nothing.
class IniParser
{
public:
    static IniParser& GetInstance();

    /// Parses a file of at most 1048576 bytes and stores its content in memory under `filePath`. Two
    /// spellings of a path are two entries. Returns 0, or -1 on failure; the stored content then does not
    /// change.
    int LoadIniFile(const std::string& filePath);
    /// Parses a stream to its end. Returns 0, or -1 at the first line that cannot be parsed.
    int ParseFile(std::ifstream& stream, ConfigFile& configFile);
    /// Parses one key line of `section` and stores key, value and comment. Returns 0, or -1 if the section or
    /// the key is empty.
    int ParsingKeyValuePairs(ConfigFile& configFile, const std::string& section,
                             const std::string& line) const;
    /// Returns true if the file exists and has at most 1048576 bytes.
    bool CheckFileSize(const std::string& filePath) const;
    /// Returns true and logs a warning if the stored content of the file has no such section or no keys in
    /// it.
    bool CheckMapEmpty(const std::string& filePath, const std::string& section);
    /// Overwrites the file with its stored content. Returns -1 if that is empty, otherwise 0, even if the
    /// file cannot be written.
    int Save(const std::string& filePath);
    /// Calls Save() for each stored file. Returns 0.
    int SaveAll();
    /// Loads the file and returns a copy of its content; null if the file cannot be loaded.
    std::unique_ptr<ConfigFile> GetConfig(const std::string& filePath);

    /// Returns the value; empty on failure.
    std::string GetKeyValueString(const std::string& filePath, const std::string& section,
                                  const std::string& key);
    /// Returns the number; -1 on failure. Returns 0 for a text that does not begin with a number, and the
    /// smallest or largest int for a number out of range.
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
