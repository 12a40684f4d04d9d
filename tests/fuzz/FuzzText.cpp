// The functions on text: what they give fits together, and commands with a path out of here are not run.

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
    const auto pieces = Utils::Split(text, delimiter);
    for (size_t i = 0; i < pieces.size(); ++i) {
        MUST_HOLD(pieces[i].find(delimiter) == std::string::npos);
        joined += (i == 0 ? "" : delimiter) + pieces[i];
    }
    MUST_HOLD(joined == text || joined + delimiter == text);

    MUST_HOLD(Utils::DeleteSubStr(text, delimiter).find(delimiter) == std::string::npos);
    const std::string hex = Utils::String2HexString(text);
    MUST_HOLD(hex.size() == 2 * text.size());
    MUST_HOLD(hex.find_first_not_of("0123456789abcdef") == std::string::npos);
    MUST_HOLD(!Utils::IsValidUDID(text) || text.size() <= 64);
    MUST_HOLD(!Utils::IsNumberOnly(text) || Utils::IsStringAndNumberOnly(text));
    MUST_HOLD(!Utils::IsMacValid(text) || text.size() == 17);
    MUST_HOLD(!Utils::IsIpValid(text) || text.size() >= 7);
    MUST_HOLD(Utils::ExecutePopenAndReturn("./" + text).empty());
    return 0;
}
