// A settings file of any content: it loads or is refused as a whole, and what was loaded, changed and saved
// is there again afterwards.

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

/// Whether a text comes back from a file as it went in.
bool IsPlain(const std::string& text, const char* forbidden)
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
    // What the format cannot hold does not come back, and may make the file unreadable; all else does.
    if (IsPlain(section, "]\n;") && IsPlain(key, "=\n;[") && IsPlain(value, "\n;")) {
        const auto saved = parser.GetConfig(path);
        if (saved != nullptr && all->commentLines.empty()) {
            REQUIRE(parser.GetKeyValueString(path, section, key) == value);
            for (const auto& [oldSection, keys] : all->sections) {
                for (const auto& [oldKey, oldValue] : keys) {
                    const bool changed = oldSection == section && oldKey == key;
                    // A line without "=" is its own key, and a ";" in it cuts the value when it is read
                    // again.
                    const bool comesBack = IsPlain(oldSection, "]\n;") && IsPlain(oldKey, ";[");
                    REQUIRE(changed || !comesBack || saved->sections[oldSection][oldKey] == oldValue);
                }
            }
        }
    }
    return 0;
}
