#include "entry/RawxWindowOpt.h"

#include <cstdlib>

#include "platform/Log.h"

#include <X11/Xlib.h>

namespace {
constexpr char MODULE_TAG[] = "UTILS";
constexpr int MESSAGE_FORMAT = 32;
/// The source indication of EWMH for a pager or a direct user action.
constexpr long SOURCE_PAGER = 2;
} // namespace

void RawxWindowOpt::ActivexWindow(int windowId)
{
    const char* name = std::getenv("DISPLAY");
    if (name == nullptr) {
        LOG_ERROR("Get display name failed.");
        return;
    }
    Display* display = XOpenDisplay(name);
    if (display == nullptr) {
        LOG_ERROR("Get window display failed.");
        return;
    }
    XClientMessageEvent message{};
    message.type = ClientMessage;
    message.display = display;
    message.window = static_cast<Window>(windowId);
    message.message_type = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    message.format = MESSAGE_FORMAT;
    message.data.l[0] = SOURCE_PAGER;

    XEvent event{};
    event.xclient = message;
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
    XCloseDisplay(display);
}
