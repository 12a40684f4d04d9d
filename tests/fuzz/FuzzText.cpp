// Input: a text. The results of the text functions are consistent, and commands with a relative path do not
// run.

#include "fuzz/FuzzSupport.h"
#include "platform/Utils.h"

using Brevora::Utils;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const std::string delimiter = input.Take(1 + input.Byte() % 3);
    const std::string text = input.Rest();
    if (delimiter.empty()) {
        return 0;
    }
    std::string joined;
    const auto parts = Utils::Split(text, delimiter);
    for (size_t i = 0; i < parts.size(); ++i) {
        REQUIRE(parts[i].find(delimiter) == std::string::npos);
        joined += (i == 0 ? "" : delimiter) + parts[i];
    }
    REQUIRE(joined == text || joined + delimiter == text);

    REQUIRE(Utils::DeleteSubStr(text, delimiter).find(delimiter) == std::string::npos);
    const std::string hex = Utils::String2HexString(text);
    REQUIRE(hex.size() == 2 * text.size());
    REQUIRE(hex.find_first_not_of("0123456789abcdef") == std::string::npos);
    REQUIRE(!Utils::IsValidUDID(text) || text.size() <= 64);
    REQUIRE(!Utils::IsNumberOnly(text) || Utils::IsStringAndNumberOnly(text));
    REQUIRE(!Utils::IsMacValid(text) || text.size() == 17);
    REQUIRE(!Utils::IsIpValid(text) || text.size() >= 7);
    REQUIRE(Utils::ExecutePopenAndReturn("./" + text).empty());
    return 0;
}
