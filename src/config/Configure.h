#pragma once

#include <cstdint>
#include <string>

#include "platform/Singleton.h"

/// The one door to the user's settings. Every getter reads the settings file and every setter rewrites it:
/// nothing is cached, and the engine reads the same file. Reached as Singleton<Configure>; main thread only.
///
/// Nothing tells a failure: an unreadable file gives the getters' failure values, and setters then do
/// nothing. Names and paths cannot be blanked.
class Configure
{
public:
    Configure();

    /// Makes sure that the file exists and has mode 0600.
    void Init();

    /// The PC's device name, UTF-8; empty where none is stored.
    void SetPCDeviceName(const std::string& name);
    std::string GetPCDeviceName() const;
    /// Whether the user has accepted the agreement.
    void SetStatementReadFlag();
    bool IsStatementRead() const;
    /// The number of trusted phones.
    void ClearTrustDevices();
    uint32_t GetTrustDeviceNum() const;
    /// The folder for received files, local 8-bit; empty where none is stored.
    std::string GetSavePath() const;
    void SetSavePath(std::string path);

private:
    std::string filePath;
    std::string serverSection;
    std::string engineSection;

public:
    /// The process id of the privileged daemon, handed on to the engine; 0 until the command line was read.
    int32_t daemonPid;
};
