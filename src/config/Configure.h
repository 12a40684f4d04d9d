#pragma once

#include <cstdint>
#include <string>

#include "platform/Singleton.h"

/// The user's settings. Use it as Singleton<Configure>, which owns it, on the main thread.
///
/// Each getter reads the settings file and each setter rewrites it. Nothing is cached, because the engine
/// changes the same file. No function reports a failure. If the file cannot be read, getters return the
/// values for an absent key and setters do nothing. Setting an empty text has no effect.
class Configure
{
public:
    Configure();

    /// Creates the file if it does not exist, and sets its mode to 0600.
    void Init();

    /// Stores the PC's device name (UTF-8).
    void SetPCDeviceName(const std::string& name);
    /// Returns the PC's device name (UTF-8); empty if none is stored.
    std::string GetPCDeviceName() const;
    /// Stores that the user has accepted the agreement.
    void SetStatementReadFlag();
    /// Returns true if the user has accepted the agreement.
    bool IsStatementRead() const;
    /// Sets the number of trusted phones to 0.
    void ClearTrustDevices();
    /// Returns the number of trusted phones; 0 if none is stored.
    uint32_t GetTrustDeviceNum() const;
    /// Returns the folder for received files (local 8-bit); empty if none is stored.
    std::string GetSavePath() const;
    /// Stores the folder for received files (local 8-bit).
    void SetSavePath(std::string path);

private:
    std::string filePath;
    std::string serverSection;
    std::string engineSection;

public:
    /// The daemon's process id, which is the engine's argument. main() sets it; before, it is 0.
    int32_t daemonPid;
};
