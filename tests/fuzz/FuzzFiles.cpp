// Input: names and contents of files and directories. Created directories exist, written content is read
// back, and RemoveDir() removes everything in a directory except the targets of links.

#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "fuzz/FuzzSupport.h"
#include "platform/DirOperator.h"
#include "platform/FileOperator.h"

using Brevora::FileOperator;

namespace {
constexpr size_t LONGEST_PATH = 4000;

/// Returns a file name that can contain each byte that the file system accepts.
std::string Name(Input& input)
{
    std::string name = input.Take(input.Byte());
    for (char& byte : name) {
        byte = byte == '/' || byte == '\0' ? '%' : byte;
    }
    return name == "." || name == ".." ? "%n" : name;
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string base =
        std::filesystem::temp_directory_path() / ("velodesk-fuzz-" + std::to_string(getpid()));
    Input input(data, size);
    std::string path = base + "/tree";
    for (uint8_t levels = input.Byte() % 8; levels > 0 && path.size() < LONGEST_PATH; --levels) {
        path += "/" + Name(input);
    }
    const bool created = DIR_OPERATOR.CreateDirectories(path) == 0;
    REQUIRE(created == DIR_OPERATOR.IsDirExist(path));
    DIR_OPERATOR.CreateDirectories(base + "/tree");
    std::ofstream(base + "/kept") << "kept";

    const auto& files = FileOperator::GetInstance();
    const std::string name = Name(input);
    const std::string file = (created ? path : base + "/tree") + "/" + name;
    const std::string content = input.Take(1 + input.Byte());
    const bool wasDirectory = DIR_OPERATOR.IsDirExist(file);
    const bool written = files.WriteToFileForce(file, content, 0, "out", 0600) == 0;
    REQUIRE(written == files.IsFileExist(file));
    REQUIRE(!(written && wasDirectory));
    REQUIRE(!files.IsLinkExist(file));
    if (written) {
        std::string read(content.size() + 1, 'x');
        REQUIRE(files.ReadFile(file, read.data(), static_cast<unsigned int>(read.size()), 0, "binary") ==
                static_cast<int>(content.size()));
        REQUIRE(read.substr(0, content.size()) == content);
        REQUIRE(files.FileSize(file) == content.size());
    } else {
        REQUIRE(wasDirectory || files.FileSize(file) == 0xFFFFFFFFU);
    }
    const std::string link = base + "/tree/" + Name(input);
    if (symlink((base + "/kept").c_str(), link.c_str()) == 0) {
        REQUIRE(DIR_OPERATOR.IsPathLink(link));
        REQUIRE(files.IsLinkExist(link));
    }
    REQUIRE(DIR_OPERATOR.RemoveDir(base + "/tree") == 0);
    REQUIRE(!DIR_OPERATOR.IsDirExist(base + "/tree"));
    REQUIRE(files.FileSize(base + "/kept") == 4);
    return 0;
}
