#pragma once

#include <map>
#include <string>

namespace Velodesk {

/// Names of fixed texts: the user's paths, the engine's path, and the sections and keys of the settings file.
/// Only Constant.cpp contains the texts.
enum StrConstName : int
{
    /// $HOME/Velodesk/; empty if it could not be created.
    DATA_DIR,
    LOG_FILE,
    CONF_FILE,
    ENGINE_PATH,
    ENGINE_IPC_NAME,
    ENGINE_SECTION,
    SERVER_SECTION,
    KEY_DEVICE_NAME,
    KEY_STATEMENT,
    KEY_TRUST_NUM,
    KEY_FILE_STORE_PATH,
};

enum IntConstName : int
{
    /// The time in milliseconds after which a child that is asked to end is killed.
    APP_STOP_TIMEOUT_MS,
};

} // namespace Velodesk

/// A table of constants. The first GetConstant() fills it. This happens before main(), so that any thread may
/// read the table afterwards.
template <typename Name, typename Value>
class Constant
{
public:
    /// Returns a copy of the value; an empty text or 0 for a name that is not in the table.
    static Value GetConstant(Name name)
    {
        static const std::map<Name, Value> constMap = CreateConstMap();
        const auto found = constMap.find(name);
        return found == constMap.end() ? Value() : found->second;
    }

private:
    /// Returns the content of the table. For the texts, it also creates the user's directories.
    static std::map<Name, Value> CreateConstMap();
};

template <>
std::map<Velodesk::IntConstName, int> Constant<Velodesk::IntConstName, int>::CreateConstMap();
template <>
std::map<Velodesk::StrConstName, std::string> Constant<Velodesk::StrConstName, std::string>::CreateConstMap();

inline std::string GetConstant(Velodesk::StrConstName name)
{
    return Constant<Velodesk::StrConstName, std::string>::GetConstant(name);
}

inline int GetConstant(Velodesk::IntConstName name)
{
    return Constant<Velodesk::IntConstName, int>::GetConstant(name);
}
