#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <memory>

/// One X display as a person has it: looks at windows and pixels, moves the pointer and presses keys through
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

    /// `display`: as in DISPLAY, for instance ":99". Ends the program if it cannot be opened.
    explicit XDesktop(const QString& display);
    ~XDesktop();
    XDesktop(const XDesktop&) = delete;
    XDesktop& operator=(const XDesktop&) = delete;

    QSize Size() const;
    /// Whether a window manager (EWMH) or a compositor answers for the screen.
    bool HasWindowManager() const;
    bool HasCompositor() const;

    /// Whether the window manager has taken charge of a window of our own (ICCCM), to be asked until it has:
    /// one that still starts may leave lying what it finds.
    bool ManagesWindows() const;

    /// Server-wide resources, such as "Xft.dpi: 144".
    void SetResources(const QString& resources) const;
    /// A panel that thick along an edge (EWMH), there as long as this object.
    void AddPanel(Qt::Edge edge, int thickness) const;
    /// What panels leave of the screen (EWMH), a null rectangle while the window manager does not tell.
    QRect WorkArea() const;
    /// The windows on show that belong to the process, or to any for 0; the topmost last.
    QList<Window> WindowsOf(qint64 pid) const;
    /// The property _NET_ACTIVE_WINDOW, 0 if there is none.
    unsigned long ActiveWindow() const;
    /// Asks the window manager to close a window, as its own close command does (EWMH).
    void CloseWindow(unsigned long id) const;
    /// Asks the window manager to minimise a window (ICCCM).
    void Minimise(unsigned long id) const;
    /// Mapped and not minimised.
    bool IsOnShow(unsigned long id) const;

    /// What a window is known by in a task bar (EWMH), its first icon; null if it has none.
    QImage IconOf(unsigned long id) const;

    /// The id of the program's window that the pointer is over; 0 over the desktop.
    unsigned long WindowUnderPointer() const;

    void MoveTo(const QPoint& pos) const;
    void Press(int button = 1) const;
    void Release(int button = 1) const;
    void Click(const QPoint& pos, int button = 1) const;
    /// Presses at `from`, goes to `to` in steps, releases there.
    void Drag(const QPoint& from, const QPoint& to) const;
    /// Presses a key by its keysym's name, such as "Return" or "BackSpace".
    void Key(const QString& keysym) const;
    /// Types printable characters of ASCII.
    void Type(const QString& text) const;

    /// Changes a speck near the screen's upper left corner, and whether the screen shows the last change. A
    /// compositor may be behind what programs have drawn, or keep it until something else changes.
    void Beat() const;
    bool ShowsBeat() const;

    /// What the screen shows now.
    QImage Screen() const;
    /// A part of the screen; what lies outside it is undefined.
    QImage Area(const QRect& area) const;
    /// The same of a window itself, whatever a compositor makes of it; the area lies within the window.
    QImage AreaOf(const Window& window, const QRect& area) const;
    QRgb PixelAt(const QPoint& pos) const;

private:
    void PressKey(unsigned long symbol) const;

    struct Connection;
    std::unique_ptr<Connection> x;
};
