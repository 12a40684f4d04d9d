#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <memory>

/// One X display from the user's side: reads windows and pixels, moves the pointer and presses keys through
/// the XTEST extension. Coordinates are root window pixels.
class XDesktop
{
public:
    struct Window
    {
        unsigned long id;
        QRect rect;
        QString title;
    };

    /// `display`: as in the variable DISPLAY. Ends the program if the display cannot be opened.
    explicit XDesktop(const QString& display);
    ~XDesktop();
    XDesktop(const XDesktop&) = delete;
    XDesktop& operator=(const XDesktop&) = delete;

    QSize Size() const;
    /// Return whether the screen has a window manager (EWMH) or a compositor.
    bool HasWindowManager() const;
    bool HasCompositor() const;

    /// Returns whether the window manager manages a window of our own (ICCCM). Call it until it returns true,
    /// because a window manager that is still starting may ignore existing windows.
    bool ManagesWindows() const;

    /// Sets X resources of the server, such as "Xft.dpi: 144".
    void SetResources(const QString& resources) const;
    /// Adds a panel of that thickness at an edge (EWMH). The panel exists as long as this object.
    void AddPanel(Qt::Edge edge, int thickness) const;
    /// Returns the screen area without panels (EWMH), or a null rectangle if the window manager reports none.
    QRect WorkArea() const;
    /// Returns the shown windows of a process, or of all processes for 0. The topmost window is last.
    QList<Window> WindowsOf(qint64 pid) const;
    /// Returns the property _NET_ACTIVE_WINDOW, or 0 if there is none.
    unsigned long ActiveWindow() const;
    /// Asks the window manager to close a window, as a pager does (EWMH).
    void CloseWindow(unsigned long id) const;
    /// Asks the window manager to minimise a window (ICCCM).
    void Minimise(unsigned long id) const;
    /// Returns whether the window is mapped and not minimised.
    bool IsShown(unsigned long id) const;

    /// Returns the first icon of a window, as task bars show it (EWMH), or a null image.
    QImage IconOf(unsigned long id) const;

    /// Returns the id of the program's window under the pointer, or 0 if there is none.
    unsigned long WindowUnderPointer() const;

    void MoveTo(const QPoint& pos) const;
    void Press(int button = 1) const;
    void Release(int button = 1) const;
    void Click(const QPoint& pos, int button = 1) const;
    /// Presses at `from`, moves to `to` in steps, and releases there.
    void Drag(const QPoint& from, const QPoint& to) const;
    /// Presses a key by its keysym's name, such as "Return" or "BackSpace".
    void Key(const QString& keysym) const;
    /// Types printable ASCII characters.
    void Type(const QString& text) const;

    /// Beat() changes the colour of a small window near the upper left corner of the screen. ShowsBeat()
    /// returns whether the screen shows this change. Some compositors show a change late, or only with the
    /// next change.
    void Beat() const;
    bool ShowsBeat() const;

    /// Returns the current content of the screen.
    QImage Screen() const;
    /// Returns the image of an area. Pixels outside the screen are undefined.
    QImage Area(const QRect& area) const;
    /// Returns the image of an area without the compositor's effects. The area must be inside
    /// the window.
    QImage AreaOf(const Window& window, const QRect& area) const;
    QRgb PixelAt(const QPoint& pos) const;

private:
    void PressKey(unsigned long symbol) const;

    struct Connection;
    std::unique_ptr<Connection> x;
};
