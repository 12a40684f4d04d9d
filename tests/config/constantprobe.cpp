#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

#include "config/Constant.h"

namespace {
/// Initialised with this file's static objects, possibly before the tables.
const std::string EARLY = GetConstant(Velodesk::ENGINE_SECTION);

void PrintExistence(const char* name)
{
    struct stat status
    {};
    const bool isThere = stat(name, &status) == 0 && S_ISDIR(status.st_mode);
    std::printf("%s\n", isThere ? "there" : "not there");
}
} // namespace

/// constantprobe COUNT [DIRECTORY...]: prints whether the directories existed before main(), then COUNT
/// texts.
int main(int argc, char* argv[])
{
    for (int i = 2; i < argc; ++i) {
        PrintExistence(argv[i]);
    }
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        std::printf("%d %s\n", i, GetConstant(static_cast<Velodesk::StrConstName>(i)).c_str());
    }
    std::printf("early %s\n", EARLY.c_str());
    return 0;
}
