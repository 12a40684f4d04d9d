#pragma once

#include <QFile>
#include <QObject>
#include <QTest>
#include <memory>

#include "DesktopWorld.h"
#include "Places.h"

using namespace Places;

/// The base class of the desktop tests. Each test function creates a new test environment.
class DesktopTest : public QObject
{
protected:
    /// Creates the test environment, and starts the assistant in it if `start` is true.
    void Begin(const DesktopWorld::Options& options = {}, bool start = true)
    {
        world = std::make_unique<DesktopWorld>(options);
        const QString missing = world->Start();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        if (start) {
            QVERIFY2(world->StartAssistant(), qPrintable(world->Describe()));
        }
    }

    /// Waits for the exit question, confirms it, and waits until the assistant has ended.
    void ConfirmQuit()
    {
        QVERIFY(DesktopWorld::WaitFor([this] { return world->SmallWindow().id != 0; }));
        world->ClickSmallCard(RIGHT_BUTTON);
        QVERIFY(world->WaitForDaemonEnd());
    }

    qint64 EngineTime(const QString& what) const { return DesktopWorld::TimeOf(world->EngineEvents(), what); }
    qint64 DaemonTime(const QString& what) const { return DesktopWorld::TimeOf(world->DaemonEvents(), what); }
    bool EngineDid(const QString& what) const
    {
        return DesktopWorld::WaitFor([this, &what] { return EngineTime(what) > 0; });
    }
    /// Creates a file in the home. The engine's step "await" waits for it.
    void Signal(const QString& name) const
    {
        QFile file(world->Home() + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    /// The engine in lines of the log about an application.
    const QString ENGINE = QStringLiteral("/Velodesk/TandraIpc]");

    std::unique_ptr<DesktopWorld> world;
};

/// Fails the test if the condition does not become true, and prints its text and `description`.
#define VERIFY_SOON_WITH(condition, text, description)                                                       \
    do {                                                                                                     \
        const bool isTrue = DesktopWorld::WaitFor([&] { return condition; });                                \
        if (!QTest::qVerify(isTrue, text, isTrue ? "" : qPrintable(description), __FILE__, __LINE__)) {      \
            return;                                                                                          \
        }                                                                                                    \
    } while (false)
#define VERIFY_SOON(condition) VERIFY_SOON_WITH(condition, #condition, world->Describe())
