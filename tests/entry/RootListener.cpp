#include "RootListener.h"

#include <X11/Xlib.h>

struct RootListener::Connection
{
    Display* display = nullptr;
};

RootListener::RootListener() : x(std::make_unique<Connection>())
{
    x->display = XOpenDisplay(nullptr);
    if (x->display == nullptr) {
        qFatal("there is no display");
    }
    XSelectInput(x->display, DefaultRootWindow(x->display), SubstructureNotifyMask);
    XSync(x->display, False);
}

RootListener::~RootListener()
{
    XCloseDisplay(x->display);
}

QList<RootListener::Message> RootListener::Take()
{
    QList<Message> messages;
    XSync(x->display, False);
    while (XPending(x->display) > 0) {
        XEvent event{};
        XNextEvent(x->display, &event);
        if (event.type != ClientMessage) {
            continue;
        }
        const XClientMessageEvent& client = event.xclient;
        char* type = XGetAtomName(x->display, client.message_type);
        Message message{client.send_event != False, client.window, QByteArray(type), client.format, {}};
        XFree(type);
        for (const long value : client.data.l) {
            message.data.append(value);
        }
        messages.append(message);
    }
    return messages;
}
