#pragma once

#include <QFile>
#include <QObject>
#include <QTest>
#include <memory>

#include "DesktopWorld.h"

/// What the desktop's test classes share: a fresh world for each test function, and the places on the
/// windows.
class DesktopTest : public QObject
{
    Q_OBJECT

protected:
    // On the card.
    static constexpr QPoint AGREE_TICK{98, 399};
    static constexpr QPoint AGREE_WORDS{150, 399};
    static constexpr QPoint BEGIN_EDGE{410, 456};
    static constexpr QPoint BEGIN_BUTTON{448, 456};
    static constexpr QPoint MINIMISE_BUTTON{812, 22};
    static constexpr QPoint CLOSE_BUTTON{868, 22};
    static constexpr QPoint TITLE_STRIP{400, 10};
    // On the page.
    static constexpr QPoint CAST_BUTTON{616, 36};
    static constexpr QPoint BACK_BUTTON{76, 36};
    static constexpr QPoint EMPTY_PLACE{650, 300};
    // On a small card.
    static constexpr QPoint LEFT_BUTTON{101, 132};
    static constexpr QPoint RIGHT_BUTTON{199, 132};
    static constexpr QPoint ONLY_BUTTON{150, 132};
    static constexpr QPoint SMALL_CLOSE_BUTTON{277, 16};

    static constexpr QRgb BLUE = qRgb(0x2B, 0x6F, 0xF2);
    static constexpr QRgb GREY_BUTTON = qRgb(0xC5, 0xC5, 0xC5);

    /// Makes a world, and starts the assistant in it unless that is left to the test.
    void Begin(const DesktopWorld::Options& options = {}, bool start = true)
    {
        world = std::make_unique<DesktopWorld>(options);
        const QString missing = world->Start();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        if (start) {
            QVERIFY2(world->StartAssistant(), qPrintable(world->Log().join(QLatin1Char('\n'))));
            // The window is shown first and moved to its place then: only what is drawn there can be clicked.
            QVERIFY(DesktopWorld::WaitFor([this, &options] {
                return options.agreed ? world->ShowsIdle()
                                      : world->Desktop().PixelAt(world->OnCard(BEGIN_EDGE)) == GREY_BUTTON;
            }));
        }
    }

    /// Confirms the question that is on show, and waits for the end.
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
    /// A file in the home that the engine's script may await.
    void Signal(const QString& name) const
    {
        QFile file(world->Home() + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    std::unique_ptr<DesktopWorld> world;
};

/// Fails the test with the log beside the condition.
#define VERIFY_SOON(condition)                                                                               \
    QVERIFY2(DesktopWorld::WaitFor([&] { return condition; }),                                               \
             qPrintable(world->Log().join(QLatin1Char('\n'))))
