// Input: the content of a settings file, and a value to set. The file is loaded or rejected as a whole. After
// a value is set, the file contains the new value and all values that were loaded.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "config/IniParser.h"
#include "fuzz/FuzzSupport.h"

using Brevora::Config::ConfigFile;
using Brevora::Config::IniParser;

namespace {
std::string Read(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

/// Returns whether a text is unchanged after it was saved and loaded.
bool RoundTrips(const std::string& text, const char* forbidden)
{
    return !text.empty() && text.find_first_of(forbidden) == std::string::npos;
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path =
        std::filesystem::temp_directory_path() / ("velodesk-fuzz-" + std::to_string(getpid()) + ".conf");
    Input input(data, size);
    const std::string section = input.Take(input.Byte() % 16);
    const std::string key = input.Take(input.Byte() % 16);
    const std::string value = input.Take(input.Byte() % 32);
    const std::string content = input.Rest();
    {
        std::ofstream file(path, std::ios::binary);
        file << content;
    }
    IniParser parser;
    const bool loaded = parser.LoadIniFile(path) == 0;
    REQUIRE(Read(path) == content);
    const std::string before = parser.GetKeyValueString(path, section, key);
    if (!loaded) {
        REQUIRE(before.empty());
        REQUIRE(!parser.GetKeyValueBool(path, section, key));
        REQUIRE(parser.GetKeyValueInt(path, section, key) == -1);
        parser.SetKeyValue(path, section, key, value);
        REQUIRE(Read(path) == content);
        return 0;
    }
    const auto all = parser.GetConfig(path);
    REQUIRE(all != nullptr);
    parser.SetKeyValue(path, section, key, value);
    if (section.empty() || key.empty() || value.empty()) {
        REQUIRE(Read(path) == content);
        return 0;
    }
    // Texts with these characters are not read back, and can make the file unreadable.
    if (RoundTrips(section, "]\n;") && RoundTrips(key, "=\n;[") && RoundTrips(value, "\n;")) {
        const auto saved = parser.GetConfig(path);
        if (saved != nullptr && all->commentLines.empty()) {
            REQUIRE(parser.GetKeyValueString(path, section, key) == value);
            for (const auto& [oldSection, keys] : all->sections) {
                for (const auto& [oldKey, oldValue] : keys) {
                    const bool changed = oldSection == section && oldKey == key;
                    // A line without "=" is both key and value. If it contains ";", the value is cut when it
                    // is read back.
                    const bool roundTrips = RoundTrips(oldSection, "]\n;") && RoundTrips(oldKey, ";[");
                    REQUIRE(changed || !roundTrips || saved->sections[oldSection][oldKey] == oldValue);
                }
            }
        }
    }
    return 0;
}
