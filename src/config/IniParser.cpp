#include "config/IniParser.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "platform/Log.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr off_t MAX_FILE_SIZE = 1048576;
constexpr char DEFAULT_SECTION[] = "default";
constexpr char COMMENT_MARK = ';';
} // namespace

namespace Brevora {
namespace Config {

IniParser& IniParser::GetInstance()
{
    static IniParser instance;
    return instance;
}

int IniParser::LoadIniFile(const std::string& filePath)
{
    if (filePath.empty()) {
        LOG_DEBUG("file path is empty!");
        return -1;
    }
    if (!CheckFileSize(filePath)) {
        LOG_DEBUG("file oversize!");
        return -1;
    }
    std::ifstream stream(filePath);
    if (stream.fail()) {
        LOG_DEBUG("file not found!");
        return -1;
    }
    ConfigFile loaded;
    const int result = ParseFile(stream, loaded);
    stream.close();
    if (result != 0) {
        LOG_DEBUG("read wrong type ini file! file path: %s", filePath.c_str());
        return -1;
    }
    files[filePath] = std::move(loaded);
    return 0;
}

int IniParser::ParseFile(std::ifstream& stream, ConfigFile& configFile)
{
    std::string section = DEFAULT_SECTION;
    std::vector<std::string> pendingComments;
    std::string line;
    while (std::getline(stream, line)) {
        const char first = line.empty() ? '\0' : line.front();
        if (first == COMMENT_MARK) {
            pendingComments.push_back(line);
            continue;
        }
        if (first != '[') {
            if (ParsingKeyValuePairs(configFile, section, line) != 0) {
                return -1;
            }
            continue;
        }
        section = line.substr(1, line.find(']') - 1);
        const std::size_t comment = line.find(COMMENT_MARK);
        if (comment != std::string::npos) {
            configFile.inlineComments[section] = line.substr(comment);
        }
        // Comment lines belong to the next section line, never to the next key line.
        for (std::size_t i = 0; i < pendingComments.size(); ++i) {
            configFile.commentLines[section + std::to_string(i)] = pendingComments[i] + "\n";
        }
        pendingComments.clear();
    }
    return 0;
}

int IniParser::ParsingKeyValuePairs(ConfigFile& configFile, const std::string& section,
                                    const std::string& line) const
{
    const std::size_t equals = line.find('=');
    const std::size_t comment = line.find(COMMENT_MARK);
    const std::string key = line.substr(0, equals);
    // Without "=", the line is both key and value.
    const std::size_t start = equals == std::string::npos ? 0 : equals + 1;
    if (comment != std::string::npos) {
        configFile.inlineComments[section + "/" + key] = line.substr(comment);
    }
    if (section.empty() || key.empty()) {
        return -1;
    }
    // The value ends at the comment, and is empty if the comment comes before the "=".
    configFile.sections[section][key] = line.substr(start, std::max(start, comment) - start);
    return 0;
}

bool IniParser::CheckFileSize(const std::string& filePath) const
{
    struct stat status
    {};
    return stat(filePath.c_str(), &status) == 0 && status.st_size >= 0 && status.st_size <= MAX_FILE_SIZE;
}

bool IniParser::CheckMapEmpty(const std::string& filePath, const std::string& section)
{
    const auto file = files.find(filePath);
    if (file == files.end()) {
        LOG_WARNING("filePath %s is invalid!", filePath.c_str());
        return true;
    }
    const auto& sections = file->second.sections;
    if (sections.empty()) {
        LOG_WARNING("config file %s is empty!", filePath.c_str());
        return true;
    }
    const auto found = sections.find(section);
    if (found == sections.end()) {
        LOG_WARNING("section %s is invalid!", section.c_str());
        return true;
    }
    if (found->second.empty()) {
        LOG_WARNING("section %s is empty!", section.c_str());
        return true;
    }
    return false;
}

int IniParser::Save(const std::string& filePath)
{
    ConfigFile& configFile = files[filePath];
    if (configFile.sections.empty()) {
        LOG_DEBUG("the config file is empty!");
        return -1;
    }
    LOG_INFO("ready to save %s.", filePath.c_str());
    std::ofstream stream(filePath, std::ios::out | std::ios::trunc);
    for (const auto& [section, keys] : configFile.sections) {
        std::string comment;
        for (int i = 0; !(comment = configFile.commentLines[section + std::to_string(i)]).empty(); ++i) {
            stream << comment;
        }
        stream << '[' << section << ']' << configFile.inlineComments[section] << '\n' << std::flush;
        for (const auto& [key, value] : keys) {
            std::string name = section;
            name.append("/").append(key);
            // The comment lines above a section [S/K] are stored under the name of the key K of section S. If
            // there are any, this key is intentionally not written.
            if (configFile.commentLines[name + "0"].empty()) {
                stream << key << '=' << value << configFile.inlineComments[name] << '\n' << std::flush;
            }
        }
    }
    stream.close();
    return 0;
}

int IniParser::SaveAll()
{
    for (const auto& file : files) {
        Save(file.first);
    }
    return 0;
}

std::unique_ptr<ConfigFile> IniParser::GetConfig(const std::string& filePath)
{
    if (LoadIniFile(filePath) != 0) {
        return nullptr;
    }
    return std::make_unique<ConfigFile>(files[filePath]);
}

std::string IniParser::GetKeyValueString(const std::string& filePath, const std::string& section,
                                         const std::string& key)
{
    if (LoadIniFile(filePath) != 0 || section.empty() || key.empty() || CheckMapEmpty(filePath, section)) {
        return "";
    }
    return files[filePath].sections[section][key];
}

int IniParser::GetKeyValueInt(const std::string& filePath, const std::string& section, const std::string& key)
{
    if (LoadIniFile(filePath) != 0 || section.empty() || key.empty()) {
        return -1;
    }
    const std::string text = GetKeyValueString(filePath, section, key);
    if (text.empty()) {
        return -1;
    }
    int value = 0;
    std::istringstream(text) >> value;
    return value;
}

bool IniParser::GetKeyValueBool(const std::string& filePath, const std::string& section,
                                const std::string& key)
{
    if (LoadIniFile(filePath) != 0 || section.empty() || key.empty()) {
        return false;
    }
    return GetKeyValueString(filePath, section, key) == "true";
}

void IniParser::SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                            const std::string& value)
{
    if (LoadIniFile(filePath) != 0 || section.empty() || key.empty() || value.empty()) {
        return;
    }
    files[filePath].sections[section][key] = value;
    Save(filePath);
}

void IniParser::SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                            const char* value)
{
    SetKeyValue(filePath, section, key, std::string(value == nullptr ? "" : value));
}

void IniParser::SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                            int value)
{
    SetKeyValue(filePath, section, key, std::to_string(value));
}

void IniParser::SetKeyValue(const std::string& filePath, const std::string& section, const std::string& key,
                            bool value)
{
    SetKeyValue(filePath, section, key, std::string(value ? "true" : "false"));
}

} // namespace Config
} // namespace Brevora
