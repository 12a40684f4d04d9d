#include "config/IniParser.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/Logger.h"

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr off_t MAX_FILE_SIZE = 1048576;
/// A section's name of half a megabyte and a comment at each of its keys would take a hundred gigabytes.
constexpr std::size_t MAX_COMMENT_NAMES = std::size_t{256} * 1024 * 1024;
constexpr char DEFAULT_SECTION[] = "default";
constexpr char COMMENT_MARK = ';';

const std::string& TextOf(const std::unordered_map<std::string, std::string>& texts, const std::string& name)
{
    static const std::string NONE;
    const auto found = texts.find(name);
    return found == texts.end() ? NONE : found->second;
}

/// The name under which the comment of a key is kept.
std::string NameOf(const std::string& section, const std::string& key)
{
    std::string name = section;
    name += '/';
    name += key;
    return name;
}

/// FNV-1a, which can be continued: what names of one section have in common is gone through once.
class NameHash
{
public:
    NameHash Then(std::string_view text) const
    {
        NameHash longer = *this;
        for (const char character : text) {
            longer.state = (longer.state ^ static_cast<unsigned char>(character)) * PRIME;
        }
        return longer;
    }
    std::uint64_t Value() const { return state; }

private:
    static constexpr std::uint64_t PRIME = 1099511628211U;

    std::uint64_t state = 14695981039346656037U;
};

/// Tells for nearly all names without a comment that they have none.
class CommentedNames
{
public:
    explicit CommentedNames(const Brevora::Config::ConfigFile& file)
    {
        for (const auto* comments : {&file.inlineComments, &file.commentLines}) {
            for (const auto& comment : *comments) {
                hashes.insert(NameHash().Then(comment.first).Value());
            }
        }
    }
    bool MayHold(const NameHash& name) const { return hashes.count(name.Value()) != 0; }

private:
    std::unordered_set<std::uint64_t> hashes;
};
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
    Progress progress;
    std::vector<std::string> pendingComments;
    std::string line;
    while (std::getline(stream, line)) {
        const char first = line.empty() ? '\0' : line.front();
        if (first == COMMENT_MARK) {
            pendingComments.push_back(line);
            continue;
        }
        if (first != '[') {
            if (TakeKeyLine(configFile, section, progress, line) != 0) {
                return -1;
            }
            continue;
        }
        section = line.substr(1, line.find(']') - 1);
        progress.keys = nullptr;
        progress.commentNames += pendingComments.size() * section.size();
        if (progress.commentNames > MAX_COMMENT_NAMES) {
            return -1;
        }
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
    Progress progress;
    return TakeKeyLine(configFile, section, progress, line);
}

int IniParser::TakeKeyLine(ConfigFile& configFile, const std::string& section, Progress& progress,
                           const std::string& line) const
{
    const std::size_t equals = line.find('=');
    const std::size_t comment = line.find(COMMENT_MARK);
    std::string key = line.substr(0, equals);
    // Without "=" the line is its own value.
    const std::size_t start = equals == std::string::npos ? 0 : equals + 1;
    // Up to the comment, or to the end; nothing if the comment comes first.
    std::string value = line.substr(start, std::max(start, comment) - start);
    if (comment != std::string::npos) {
        progress.commentNames += section.size();
        if (progress.commentNames > MAX_COMMENT_NAMES) {
            return -1;
        }
        configFile.inlineComments[NameOf(section, key)] = line.substr(comment);
    }
    if (section.empty() || key.empty()) {
        return -1;
    }
    // Not looked up for each key: a long name would be gone through every time.
    if (progress.keys == nullptr) {
        progress.keys = &configFile.sections[section];
    }
    (*progress.keys)[std::move(key)] = std::move(value);
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
    const ConfigFile& configFile = files[filePath];
    if (configFile.sections.empty()) {
        LOG_DEBUG("the config file is empty!");
        return -1;
    }
    LOG_INFO("ready to save %s.", filePath.c_str());
    std::ofstream stream(filePath, std::ios::out | std::ios::trunc);
    const CommentedNames commented(configFile);
    for (const auto& [section, keys] : configFile.sections) {
        WriteComments(stream, configFile, section);
        stream << '[' << section << ']' << TextOf(configFile.inlineComments, section) << '\n' << std::flush;
        const NameHash ofSection = NameHash().Then(section).Then("/");
        for (const auto& [key, value] : keys) {
            const NameHash name = ofSection.Then(key);
            // A comment can stand here only if it belongs to a section of that name; the key is then left
            // out.
            if (commented.MayHold(name.Then("0")) &&
                !TextOf(configFile.commentLines, NameOf(section, key).append("0")).empty()) {
                continue;
            }
            stream << key << '=' << value;
            if (commented.MayHold(name)) {
                stream << TextOf(configFile.inlineComments, NameOf(section, key));
            }
            stream << '\n' << std::flush;
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

void IniParser::WriteComments(std::ofstream& stream, const ConfigFile& configFile,
                              const std::string& section) const
{
    for (std::size_t i = 0;; ++i) {
        const std::string key = section + std::to_string(i);
        const std::string& comment = TextOf(configFile.commentLines, key);
        if (comment.empty()) {
            return;
        }
        stream << comment;
    }
}

} // namespace Config
} // namespace Brevora
