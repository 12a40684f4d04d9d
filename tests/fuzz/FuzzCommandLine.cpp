// Input: a command line. It is accepted exactly if it has two words, the first is the program's name, and the
// second begins with a number in the range of int.

#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

#include "entry/VeloMain.cpp"
#include "fuzz/FuzzSupport.h"

namespace {
bool BeginsWithNumber(const char* text, int& number)
{
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    number = static_cast<int>(value);
    return end != text && errno == 0 && value >= INT_MIN && value <= INT_MAX;
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    std::vector<std::string> words;
    const uint8_t count = input.Byte() % 4;
    for (uint8_t i = 0; i < count; ++i) {
        // Half of the command lines have the right name, because CheckArgs() rejects all others.
        const uint8_t length = input.Byte();
        words.push_back(length < 128 && i == 0 ? "Velodesk" : input.Take(length % 32));
    }
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    const bool accepted = CheckArgs(static_cast<int>(words.size()), argv.data());
    int number = 0;
    const bool expected =
        words.size() == 2 && std::strcmp(argv[0], "Velodesk") == 0 && BeginsWithNumber(argv[1], number);
    REQUIRE(accepted == expected);
    REQUIRE(!accepted ||
            (Singleton<Configure>::GetInstance()->daemonPid == number && Brevora::g_velodeskdPid == number));
    return 0;
}
