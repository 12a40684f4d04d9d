#include "PixelWatch.h"

#include <ctime>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {
constexpr qint64 NS_PER_S = 1000000000;
constexpr qint64 TIMEOUT_NS = 10 * NS_PER_S;
/// The pause between two reads: the X server and the measured program need the processors.
constexpr long PAUSE_NS = 200000;
} // namespace

PixelWatch::PixelWatch(const QString& name) : display(XOpenDisplay(name.toUtf8().constData()))
{
    if (display == nullptr) {
        qFatal("the display %s cannot be opened", qUtf8Printable(name));
    }
}

PixelWatch::~PixelWatch()
{
    XCloseDisplay(display);
}

QRgb PixelWatch::At(const QPoint& pos) const
{
    XImage* image =
        XGetImage(display, DefaultRootWindow(display), pos.x(), pos.y(), 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) {
        return 0;
    }
    const auto pixel = static_cast<QRgb>(XGetPixel(image, 0, 0)) | 0xFF000000U;
    XDestroyImage(image);
    return pixel;
}

qint64 PixelWatch::WaitFor(const QPoint& pos, const std::function<bool(QRgb)>& passes) const
{
    const qint64 end = Now() + TIMEOUT_NS;
    while (!passes(At(pos))) {
        if (Now() > end) {
            return -1;
        }
        const timespec pause{0, PAUSE_NS};
        nanosleep(&pause, nullptr);
    }
    return Now();
}

qint64 PixelWatch::Now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * NS_PER_S + now.tv_nsec;
}
