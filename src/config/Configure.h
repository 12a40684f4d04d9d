#pragma once

#include <cstdint>
#include <string>

#include "platform/Singleton.h"

/// The user's settings. Each getter reads the settings file and each setter rewrites it: nothing is cached,
/// and the engine reads the same file. Use it as Singleton<Configure> on the main thread.
///
/// No function reports a failure. If the file cannot be read, getters return their failure values and setters
/// do nothing. A name or path cannot be set to an empty text.
class Configure
{
public:
    Configure();

    /// Creates the file if it does not exist, and sets its mode to 0600.
    void Init();

    /// The PC's device name in UTF-8. The getter returns an empty text if no name is stored.
    void SetPCDeviceName(const std::string& name);
    std::string GetPCDeviceName() const;
    /// The acceptance of the agreement. The setter stores true.
    void SetStatementReadFlag();
    bool IsStatementRead() const;
    /// The number of trusted phones. ClearTrustDevices() stores 0.
    void ClearTrustDevices();
    uint32_t GetTrustDeviceNum() const;
    /// The folder for received files in local 8-bit. The getter returns an empty text if no folder is stored.
    std::string GetSavePath() const;
    void SetSavePath(std::string path);

private:
    std::string filePath;
    std::string serverSection;
    std::string engineSection;

public:
    /// The process id of the privileged daemon, passed on to the engine; 0 until the command line is read.
    int32_t daemonPid;
};
