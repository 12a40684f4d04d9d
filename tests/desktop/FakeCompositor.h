#pragma once

#include <QString>
#include <atomic>
#include <thread>

/// Simulates KWin's compositor on a session bus: the property "active" of "org.kde.kwin.Compositing" at
/// "/Compositor".
class FakeCompositor
{
public:
    /// Serves the property until the object is destroyed. `busAddress`: as in DBUS_SESSION_BUS_ADDRESS.
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
