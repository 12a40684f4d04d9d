#pragma once

#include <QString>
#include <atomic>
#include <thread>

/// Answers on a session bus whether a KWin compositor is active, as a KWin does: the property "active" of
/// "org.kde.kwin.Compositing" at "/Compositor".
class FakeCompositor
{
public:
    /// `busAddress`: as in DBUS_SESSION_BUS_ADDRESS. Serves until the object dies.
    FakeCompositor(const QString& busAddress, bool active);
    ~FakeCompositor();
    FakeCompositor(const FakeCompositor&) = delete;
    FakeCompositor& operator=(const FakeCompositor&) = delete;

private:
    void Serve(const std::string& address, int active);

    std::atomic<bool> ready{false};
    std::atomic<bool> ending{false};
    std::thread server;
};
