// Input: a text and a level. The log writes the text as one line, or drops it if it is too long.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "fuzz/FuzzSupport.h"
#include "platform/Logger.h"
#include "platform/Singleton.h"

namespace {
constexpr size_t LONGEST = 4095;
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path =
        std::filesystem::temp_directory_path() / ("velodesk-fuzz-" + std::to_string(getpid()) + ".log");
    Input input(data, size);
    const uint8_t repeats = input.Byte();
    const int level = input.Byte() % 8;
    const std::string part = input.Rest();
    std::string text;
    for (int i = 0; i <= repeats && text.size() <= 2 * LONGEST; ++i) {
        text += part;
    }
    truncate(path.c_str(), 0);
    auto* logger = Singleton<Brevora::Logger>::GetInstance();
    static const bool opened = [logger] {
        logger->Init(path);
        return true;
    }();
    REQUIRE(opened);
    logger->WriteLog(level, "File.cpp", 1, "TAG", "%s", text.c_str());
    CLogInfo("TAG", "File.cpp", "%s", text.c_str());
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    // A C string ends at its first zero byte.
    const std::string message = "TAG: " + std::string(text.c_str()) + "\n";
    const bool fits = message.size() - 6 <= LONGEST;
    size_t lines = 0;
    for (size_t at = content.str().find(message); at != std::string::npos;
         at = content.str().find(message, at + message.size())) {
        ++lines;
    }
    const size_t expected = fits ? (level > 1 ? 2 : 1) : 0;
    REQUIRE(lines == expected);
    return 0;
}
