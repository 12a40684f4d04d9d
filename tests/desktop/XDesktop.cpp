#include "XDesktop.h"

#include <QElapsedTimer>
#include <QThread>
#include <vector>

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

struct XDesktop::Connection
{
    Display* display = nullptr;
    ::Window root = 0;
    /// The window of ManagesWindows(), or 0.
    ::Window probe = 0;
    QElapsedTimer probeAge;
    /// The window of Beat(), or 0, and its colour.
    ::Window speck = 0;
    QRgb beat = 0;

    /// The maximum length of a property.
    static constexpr long MAX_LONGS = 1 << 20;

    /// Returns a property of format 32 as Xlib provides it.
    QList<unsigned long> Longs(::Window window, const char* name) const
    {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        QList<unsigned long> values;
        if (XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, MAX_LONGS, False,
                               AnyPropertyType, &type, &format, &count, &rest, &data) == Success &&
            format == 32) {
            const auto* longs = reinterpret_cast<const unsigned long*>(data);
            for (unsigned long i = 0; i < count; ++i) {
                values.append(longs[i]);
            }
        }
        if (data != nullptr) {
            XFree(data);
        }
        return values;
    }

    void SetProperty(::Window window, const char* name, Atom type,
                     const std::vector<unsigned long>& values) const
    {
        XChangeProperty(display, window, XInternAtom(display, name, False), type, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(values.data()),
                        static_cast<int>(values.size()));
    }

    QImage Copy(::Window drawable, const QRect& area) const
    {
        // Includes the child windows. XGetImage() may omit them.
        const auto width = static_cast<unsigned int>(area.width());
        const auto height = static_cast<unsigned int>(area.height());
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display, drawable, &attributes) == 0) {
            return {};
        }
        XGCValues values{};
        values.subwindow_mode = IncludeInferiors;
        GC context = XCreateGC(display, drawable, GCSubwindowMode, &values);
        const Pixmap copy =
            XCreatePixmap(display, drawable, width, height, static_cast<unsigned int>(attributes.depth));
        XCopyArea(display, drawable, copy, context, area.x(), area.y(), width, height, 0, 0);
        XImage* image = XGetImage(display, copy, 0, 0, width, height, AllPlanes, ZPixmap);
        const QImage result = QImage(reinterpret_cast<const uchar*>(image->data), area.width(), area.height(),
                                     image->bytes_per_line, QImage::Format_RGB32)
                                  .copy();
        XDestroyImage(image);
        XFreePixmap(display, copy);
        XFreeGC(display, context);
        return result;
    }

    QString Title(::Window window) const
    {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        QString title;
        if (XGetWindowProperty(display, window, XInternAtom(display, "_NET_WM_NAME", False), 0, 1024, False,
                               AnyPropertyType, &type, &format, &count, &rest, &data) == Success &&
            data != nullptr) {
            title = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(count));
            XFree(data);
        }
        return title;
    }

    bool Viewable(::Window window) const
    {
        XWindowAttributes attributes{};
        return XGetWindowAttributes(display, window, &attributes) != 0 && attributes.map_state == IsViewable;
    }

    QRect Rect(::Window window) const
    {
        XWindowAttributes attributes{};
        ::Window child = 0;
        int left = 0;
        int top = 0;
        if (XGetWindowAttributes(display, window, &attributes) == 0 ||
            XTranslateCoordinates(display, window, root, 0, 0, &left, &top, &child) == 0) {
            return QRect();
        }
        return QRect(left, top, attributes.width, attributes.height);
    }

    /// Appends all windows below `window` that belong to the process, or all for 0. The topmost window is
    /// last.
    void Collect(::Window window, unsigned long pid, QList<XDesktop::Window>& found) const
    {
        const QList<unsigned long> pids = Longs(window, "_NET_WM_PID");
        if (!pids.isEmpty() && (pid == 0 || pids.first() == pid)) {
            if (Viewable(window)) {
                found.append({window, Rect(window), Title(window)});
            }
            return;
        }
        ::Window rootWindow = 0;
        ::Window parent = 0;
        ::Window* children = nullptr;
        unsigned int count = 0;
        if (XQueryTree(display, window, &rootWindow, &parent, &children, &count) == 0) {
            return;
        }
        for (unsigned int i = 0; i < count; ++i) {
            Collect(children[i], pid, found);
        }
        if (children != nullptr) {
            XFree(children);
        }
    }

    void SendToRoot(::Window window, const char* type, long first) const
    {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(display, type, False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = first;
        event.xclient.data.l[1] = 2;
        XSendEvent(display, root, False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
        XSync(display, False);
    }
};

namespace {
/// Ignores X errors, because a program can destroy its windows at any time.
int IgnoreError(Display*, XErrorEvent*)
{
    return 0;
}

/// The pause between the steps of a gesture, so that a toolkit handles each step separately.
constexpr unsigned long STEP_MS = 12;
constexpr int DRAG_STEPS = 12;
/// If a window manager does not manage a window within this time, it has ignored the window.
constexpr int IGNORED_AFTER_MS = 200;
/// The window of Beat(): an area without panels and without windows of the program.
constexpr QRect BEAT_RECT(50, 50, 2, 2);
} // namespace

XDesktop::XDesktop(const QString& display) : x(std::make_unique<Connection>())
{
    XSetErrorHandler(IgnoreError);
    x->display = XOpenDisplay(display.toUtf8().constData());
    if (x->display == nullptr) {
        qFatal("the display %s cannot be opened", qUtf8Printable(display));
    }
    x->root = DefaultRootWindow(x->display);
}

XDesktop::~XDesktop()
{
    XCloseDisplay(x->display);
}

QSize XDesktop::Size() const
{
    return x->Rect(x->root).size();
}

bool XDesktop::HasWindowManager() const
{
    return !x->Longs(x->root, "_NET_SUPPORTING_WM_CHECK").isEmpty();
}

bool XDesktop::HasCompositor() const
{
    return XGetSelectionOwner(x->display, XInternAtom(x->display, "_NET_WM_CM_S0", False)) != 0;
}

void XDesktop::SetResources(const QString& resources) const
{
    const QByteArray text = resources.toLatin1() + '\n';
    XChangeProperty(x->display, x->root, XA_RESOURCE_MANAGER, XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.constData()), text.size());
    XSync(x->display, False);
}

void XDesktop::AddPanel(Qt::Edge edge, int thickness) const
{
    QRect rect(QPoint(0, 0), Size());
    // The reserved widths at the left, right, top and bottom edge, then the start and end on each edge.
    std::vector<unsigned long> reserved(12, 0);
    const bool upright = edge == Qt::LeftEdge || edge == Qt::RightEdge;
    size_t side = 0;
    switch (edge) {
    case Qt::LeftEdge:
        rect.setWidth(thickness);
        side = 0;
        break;
    case Qt::RightEdge:
        rect.setLeft(rect.right() - thickness + 1);
        side = 1;
        break;
    case Qt::TopEdge:
        rect.setHeight(thickness);
        side = 2;
        break;
    case Qt::BottomEdge:
        rect.setTop(rect.bottom() - thickness + 1);
        side = 3;
        break;
    }
    reserved[side] = static_cast<unsigned long>(thickness);
    reserved[4 + 2 * side + 1] = static_cast<unsigned long>(upright ? rect.bottom() : rect.right());
    const ::Window panel =
        XCreateSimpleWindow(x->display, x->root, rect.x(), rect.y(), static_cast<unsigned int>(rect.width()),
                            static_cast<unsigned int>(rect.height()), 0, 0, 0);
    x->SetProperty(panel, "_NET_WM_WINDOW_TYPE", XA_ATOM,
                   {XInternAtom(x->display, "_NET_WM_WINDOW_TYPE_DOCK", False)});
    x->SetProperty(panel, "_NET_WM_STRUT_PARTIAL", XA_CARDINAL, reserved);
    // Without this hint, a window manager may place the panel itself.
    XSizeHints hints{};
    hints.flags = USPosition | USSize;
    XSetWMNormalHints(x->display, panel, &hints);
    XMapWindow(x->display, panel);
    XSync(x->display, False);
}

QRect XDesktop::WorkArea() const
{
    const QList<unsigned long> area = x->Longs(x->root, "_NET_WORKAREA");
    if (area.size() < 4) {
        return QRect();
    }
    return QRect(static_cast<int>(area[0]), static_cast<int>(area[1]), static_cast<int>(area[2]),
                 static_cast<int>(area[3]));
}

bool XDesktop::ManagesWindows() const
{
    const bool managed = x->probe != 0 && !x->Longs(x->probe, "WM_STATE").isEmpty();
    const bool overlooked = x->probe != 0 && x->probeAge.hasExpired(IGNORED_AFTER_MS);
    if (managed || overlooked) {
        XDestroyWindow(x->display, x->probe);
        x->probe = 0;
    }
    if (!managed && x->probe == 0) {
        x->probe = XCreateSimpleWindow(x->display, x->root, 0, 0, 1, 1, 0, 0, 0);
        XMapWindow(x->display, x->probe);
        x->probeAge.start();
    }
    XSync(x->display, False);
    return managed;
}

QList<XDesktop::Window> XDesktop::WindowsOf(qint64 pid) const
{
    QList<Window> found;
    x->Collect(x->root, static_cast<unsigned long>(pid), found);
    return found;
}

unsigned long XDesktop::ActiveWindow() const
{
    const QList<unsigned long> active = x->Longs(x->root, "_NET_ACTIVE_WINDOW");
    return active.isEmpty() ? 0 : active.first();
}

void XDesktop::CloseWindow(unsigned long id) const
{
    x->SendToRoot(id, "_NET_CLOSE_WINDOW", 0);
}

void XDesktop::Minimise(unsigned long id) const
{
    x->SendToRoot(id, "WM_CHANGE_STATE", IconicState);
}

bool XDesktop::IsShown(unsigned long id) const
{
    // A compositing window manager may keep a minimised window mapped.
    const QList<unsigned long> state = x->Longs(id, "WM_STATE");
    return x->Viewable(id) && (state.isEmpty() || state.first() == NormalState);
}

QImage XDesktop::IconOf(unsigned long id) const
{
    const QList<unsigned long> values = x->Longs(id, "_NET_WM_ICON");
    const QSize size(static_cast<int>(values.value(0)), static_cast<int>(values.value(1)));
    QImage icon(size, QImage::Format_ARGB32);
    for (int y = 0; y < icon.height(); ++y) {
        for (int column = 0; column < icon.width(); ++column) {
            icon.setPixel(column, y, static_cast<QRgb>(values.value(2 + y * icon.width() + column)));
        }
    }
    return icon;
}

unsigned long XDesktop::WindowUnderPointer() const
{
    ::Window root = 0;
    ::Window child = x->root;
    int rootX = 0;
    int rootY = 0;
    int x1 = 0;
    int y1 = 0;
    unsigned int buttons = 0;
    // Skips the window manager's windows around and below the program's windows.
    while (child != 0) {
        if (!x->Longs(child, "WM_STATE").isEmpty()) {
            return child;
        }
        if (XQueryPointer(x->display, child, &root, &child, &rootX, &rootY, &x1, &y1, &buttons) == 0) {
            return 0;
        }
    }
    return 0;
}

void XDesktop::MoveTo(const QPoint& pos) const
{
    XTestFakeMotionEvent(x->display, -1, pos.x(), pos.y(), 0);
    XSync(x->display, False);
}

void XDesktop::Press(int button) const
{
    XTestFakeButtonEvent(x->display, static_cast<unsigned int>(button), True, 0);
    XSync(x->display, False);
}

void XDesktop::Release(int button) const
{
    XTestFakeButtonEvent(x->display, static_cast<unsigned int>(button), False, 0);
    XSync(x->display, False);
}

void XDesktop::Click(const QPoint& pos, int button) const
{
    MoveTo(pos);
    QThread::msleep(STEP_MS);
    Press(button);
    QThread::msleep(STEP_MS);
    Release(button);
}

void XDesktop::Drag(const QPoint& from, const QPoint& to) const
{
    MoveTo(from);
    QThread::msleep(STEP_MS);
    Press();
    for (int step = 1; step <= DRAG_STEPS; ++step) {
        QThread::msleep(STEP_MS);
        MoveTo(from + (to - from) * step / DRAG_STEPS);
    }
    QThread::msleep(STEP_MS);
    Release();
}

void XDesktop::Key(const QString& keysym) const
{
    PressKey(XStringToKeysym(keysym.toLatin1().constData()));
}

void XDesktop::PressKey(unsigned long symbol) const
{
    const KeyCode code = XKeysymToKeycode(x->display, symbol);
    const bool shifted = XkbKeycodeToKeysym(x->display, code, 0, 0) != symbol;
    const KeyCode shift = XKeysymToKeycode(x->display, XK_Shift_L);
    if (shifted) {
        XTestFakeKeyEvent(x->display, shift, True, 0);
    }
    XTestFakeKeyEvent(x->display, code, True, 0);
    XTestFakeKeyEvent(x->display, code, False, 0);
    if (shifted) {
        XTestFakeKeyEvent(x->display, shift, False, 0);
    }
    XSync(x->display, False);
    QThread::msleep(STEP_MS);
}

void XDesktop::Type(const QString& text) const
{
    for (const QChar letter : text) {
        // The keysym of a Latin-1 character equals its code.
        PressKey(letter.unicode());
    }
}

void XDesktop::Beat() const
{
    if (x->speck == 0) {
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        x->speck = XCreateWindow(x->display, x->root, BEAT_RECT.x(), BEAT_RECT.y(),
                                 static_cast<unsigned int>(BEAT_RECT.width()),
                                 static_cast<unsigned int>(BEAT_RECT.height()), 0, CopyFromParent,
                                 InputOutput, CopyFromParent, CWOverrideRedirect, &attributes);
    }
    x->beat = qRgb(0xC0, 0x20, (qBlue(x->beat) + 1) % 256);
    XSetWindowBackground(x->display, x->speck, x->beat & 0xFFFFFFU);
    XMapRaised(x->display, x->speck);
    XClearWindow(x->display, x->speck);
    XSync(x->display, False);
}

bool XDesktop::ShowsBeat() const
{
    return PixelAt(BEAT_RECT.topLeft()) == x->beat;
}

QImage XDesktop::Screen() const
{
    return Area(QRect(QPoint(0, 0), Size()));
}

QImage XDesktop::Area(const QRect& area) const
{
    return x->Copy(x->root, area);
}

QImage XDesktop::AreaOf(const Window& window, const QRect& area) const
{
    return x->Copy(window.id, area.translated(-window.rect.topLeft()));
}

QRgb XDesktop::PixelAt(const QPoint& pos) const
{
    return Area(QRect(pos, QSize(1, 1))).pixel(0, 0);
}
