#pragma once

#include <QPoint>
#include <QRgb>
#include <QString>
#include <functional>

struct _XDisplay;

/// Reads single pixels of the screen through the X server.
class PixelWatch
{
public:
    /// `display`: as in the variable DISPLAY. Ends the program if the display cannot be opened.
    explicit PixelWatch(const QString& display);
    ~PixelWatch();
    PixelWatch(const PixelWatch&) = delete;
    PixelWatch& operator=(const PixelWatch&) = delete;

    QRgb At(const QPoint& pos) const;
    /// Waits until `passes` returns true for the pixel. Returns the time of the monotonic clock in
    /// nanoseconds, or -1 after ten seconds.
    qint64 WaitFor(const QPoint& pos, const std::function<bool(QRgb)>& passes) const;

    static qint64 Now();

private:
    _XDisplay* display;
};
