#include "config/Constant.h"

#include "platform/DirOperator.h"

namespace {
constexpr char INSTALL_PREFIX[] = "/opt/apps/com.zelmora.velodesk/files";
} // namespace

template <>
std::map<Velodesk::IntConstName, int> Constant<Velodesk::IntConstName, int>::CreateConstMap()
{
    return {
        {Velodesk::APP_STOP_TIMEOUT_MS, 3000},
    };
}

template <>
std::map<Velodesk::StrConstName, std::string> Constant<Velodesk::StrConstName, std::string>::CreateConstMap()
{
    const std::string dataDir = DIR_OPERATOR.GetVelodeskDir();
    const std::string logDir = DIR_OPERATOR.GetVelodeskLogDir();
    return {
        {Velodesk::DATA_DIR, dataDir},
        {Velodesk::LOG_FILE, logDir + "/velodesk.log"},
        // The double slash is part of the name: the log and the parser's key for the file contain it.
        {Velodesk::CONF_FILE, dataDir + "/velodesk.conf"},
        {Velodesk::ENGINE_PATH, std::string(INSTALL_PREFIX) + "/tandra/bin/Tandra"},
        {Velodesk::ENGINE_IPC_NAME, dataDir + "TandraIpc"},
        {Velodesk::ENGINE_SECTION, "Tandra"},
        {Velodesk::SERVER_SECTION, "VelodeskServer"},
        {Velodesk::KEY_DEVICE_NAME, "devicename"},
        {Velodesk::KEY_STATEMENT, "statement"},
        {Velodesk::KEY_TRUST_NUM, "trustNum"},
        {Velodesk::KEY_FILE_STORE_PATH, "fileStorePath"},
    };
}

namespace {
/// Fills both tables before main(). Each start must create the user's directories, even if it ends early.
[[maybe_unused]] const bool TABLES_ARE_FILLED =
    GetConstant(Velodesk::APP_STOP_TIMEOUT_MS) != 0 && !GetConstant(Velodesk::DATA_DIR).empty();
} // namespace
