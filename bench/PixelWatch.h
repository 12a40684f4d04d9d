#pragma once

#include <QPoint>
#include <QRgb>
#include <QString>
#include <functional>

struct _XDisplay;

/// Looks at one pixel of the screen over and over, as cheaply as the X server allows.
class PixelWatch
{
public:
    /// `display`: as in DISPLAY. Ends the program if it cannot be opened.
    explicit PixelWatch(const QString& display);
    ~PixelWatch();
    PixelWatch(const PixelWatch&) = delete;
    PixelWatch& operator=(const PixelWatch&) = delete;

    QRgb At(const QPoint& pos) const;
    /// Waits until the pixel passes the test; the time of the monotonic clock in nanoseconds, or -1 after
    /// ten seconds.
    qint64 WaitFor(const QPoint& pos, const std::function<bool(QRgb)>& passes) const;

    static qint64 Now();

private:
    _XDisplay* display;
};
