#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>

namespace Brevora {
namespace Config {

/// All that is known of one settings file.
struct ConfigFile
{
    /// By section, then by key.
    std::unordered_map<std::string, std::unordered_map<std::string, std::string>> sections;
    /// From the first ";" on; by section, or by section + "/" + key.
    std::unordered_map<std::string, std::string> inlineComments;
    /// Whole comment lines with their line feed; by section + index.
    std::unordered_map<std::string, std::string> commentLines;
};

/// Reads and writes a line-oriented INI text. Each get re-reads the whole file, each set re-reads and
/// rewrites it, so what other processes write between two calls is seen; two that set at once can lose one
/// change.
///
/// Main thread only, there is no lock. Texts are bytes, nothing is trimmed or escaped. A blank line, a line
/// that begins with "=" or a key line below "[]" makes the whole file unreadable: then gets return their
/// failure value and sets do nothing.
class IniParser
{
public:
    static IniParser& GetInstance();

    /// Parses a file of at most 1048576 bytes into the entry of that path, which is not normalised. Returns
    /// 0, or -1.
    int LoadIniFile(const std::string& filePath);
    /// Reads all that is left of a stream. 0, or -1 at the first line that cannot be read.
    int ParseFile(std::ifstream& stream, ConfigFile& configFile);
    int ParsingKeyValuePairs(ConfigFile& configFile, const std::string& section,
                             const std::string& line) const;
    /// True if the file is there and its size is in bounds.
    bool CheckFileSize(const std::string& filePath) const;
    /// True, with a warning logged, if no key of the section can be found.
    bool CheckMapEmpty(const std::string& filePath, const std::string& section);
    /// Rewrites the file in place from its entry. -1 if the entry is empty; a file that cannot be written
    /// gives 0.
    int Save(const std::string& filePath);
    /// Saves every entry. Always 0.
    int SaveAll();
    /// A copy of what the file holds; null if it cannot be loaded.
    std::unique_ptr<ConfigFile> GetConfig(const std::string& filePath);

    /// Empty on failure, and for an empty value.
    std::string GetKeyValueString(const std::string& filePath, const std::string& section,
                                  const std::string& key);
    /// -1 on failure, 0 for text that does not begin with a number, a limit of int for one beyond it.
    int GetKeyValueInt(const std::string& filePath, const std::string& section, const std::string& key);
    /// True for "true" alone.
    bool GetKeyValueBool(const std::string& filePath, const std::string& section, const std::string& key);

    /// An empty value, section or key changes nothing, and a missing file is not made.
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
