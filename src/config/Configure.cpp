#include "config/Configure.h"

#include <fstream>
#include <sys/stat.h>

#include "config/Constant.h"
#include "config/IniParser.h"
#include "platform/Log.h"

using Brevora::Config::IniParser;

namespace {
constexpr char MODULE_TAG[] = "VELODESK";
constexpr mode_t FILE_MODE = 0600;
} // namespace

Configure::Configure()
    : filePath(GetConstant(Velodesk::CONF_FILE)),
      serverSection(GetConstant(Velodesk::SERVER_SECTION)),
      engineSection(GetConstant(Velodesk::ENGINE_SECTION)),
      daemonPid(0)
{
    Init();
}

void Configure::Init()
{
    std::ofstream(filePath, std::ios::app).close();
    LOG_INFO("chmod %s.", filePath.c_str());
    if (chmod(filePath.c_str(), FILE_MODE) != 0) {
        LOG_ERROR("chmod fail!");
    }
}

void Configure::SetPCDeviceName(const std::string& name)
{
    IniParser::GetInstance().SetKeyValue(filePath, engineSection, GetConstant(Velodesk::KEY_DEVICE_NAME),
                                         name);
}

std::string Configure::GetPCDeviceName() const
{
    return IniParser::GetInstance().GetKeyValueString(filePath, engineSection,
                                                      GetConstant(Velodesk::KEY_DEVICE_NAME));
}

void Configure::SetStatementReadFlag()
{
    IniParser::GetInstance().SetKeyValue(filePath, serverSection, GetConstant(Velodesk::KEY_STATEMENT), true);
}

bool Configure::IsStatementRead() const
{
    return IniParser::GetInstance().GetKeyValueBool(filePath, serverSection,
                                                    GetConstant(Velodesk::KEY_STATEMENT));
}

void Configure::ClearTrustDevices()
{
    IniParser::GetInstance().SetKeyValue(filePath, serverSection, GetConstant(Velodesk::KEY_TRUST_NUM), 0);
}

uint32_t Configure::GetTrustDeviceNum() const
{
    const int count = IniParser::GetInstance().GetKeyValueInt(filePath, serverSection,
                                                              GetConstant(Velodesk::KEY_TRUST_NUM));
    return count < 0 ? 0U : static_cast<uint32_t>(count);
}

std::string Configure::GetSavePath() const
{
    return IniParser::GetInstance().GetKeyValueString(filePath, engineSection,
                                                      GetConstant(Velodesk::KEY_FILE_STORE_PATH));
}

void Configure::SetSavePath(std::string path)
{
    IniParser::GetInstance().SetKeyValue(filePath, engineSection, GetConstant(Velodesk::KEY_FILE_STORE_PATH),
                                         path);
}
