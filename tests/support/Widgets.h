#pragma once

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

#include "shell/Shadow.h"

/// Selects the appearance (with or without shadow) of windows that are constructed while the object exists.
class Appearance
{
public:
    explicit Appearance(bool shadow) : before(Shadow::useShadow) { Shadow::useShadow = shadow; }
    ~Appearance() { Shadow::useShadow = before; }
    Appearance(const Appearance&) = delete;
    Appearance& operator=(const Appearance&) = delete;

private:
    bool before;
};

/// Adds the column and the rows of both appearances to a data-driven test.
inline void AddBothAppearances()
{
    QTest::addColumn<bool>("shadow");
    QTest::newRow("shadow") << true;
    QTest::newRow("plain") << false;
}

/// Returns the child widget with that object name. Aborts the test program if there is none.
template <typename Widget = QWidget>
Widget* Find(const QWidget& window, const char* name)
{
    auto* widget = window.findChild<Widget*>(QLatin1String(name));
    if (widget == nullptr) {
        qFatal("there is no %s", name);
    }
    return widget;
}

/// Sends a press, a move or a release at a point of the widget, as the window system does.
inline void SendMouse(QWidget& widget, QEvent::Type type, const QPoint& pos,
                      Qt::MouseButton button = Qt::LeftButton)
{
    const Qt::MouseButtons buttons =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
    QMouseEvent event(type, pos, widget.mapToGlobal(pos), type == QEvent::MouseMove ? Qt::NoButton : button,
                      buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

/// Returns whether a press at the position `offset` of the card, followed by a move, drags the window.
inline bool Drags(QWidget& window, const QPoint& offset)
{
    const QPoint press = Find(window, "widget_bg")->pos() + offset;
    const QPoint before = window.pos();
    SendMouse(window, QEvent::MouseButtonPress, press);
    SendMouse(window, QEvent::MouseMove, press + QPoint(20, 30));
    SendMouse(window, QEvent::MouseButtonRelease, press);
    return window.pos() != before;
}

/// Returns the style sheet of a button in the upper right corner of a card, with its normal, hovered and
/// pressed image. With shadow, the corner is rounded like the card's.
inline QString CornerButtonStyle(bool shadow, const char* normal, const char* hover, const char* pressed)
{
    return QStringLiteral("QPushButton{\nborder-radius:0px;\n%1border-image:url(:/velo/%2);\n}\n"
                          "QPushButton:hover{\nborder-image:url(:/velo/%3);\n}\n"
                          "QPushButton:pressed{\nborder-image:url(:/velo/%4);\n}")
        .arg(shadow ? QStringLiteral("border-top-right-radius:20px;\n") : QString(), QLatin1String(normal),
             QLatin1String(hover), QLatin1String(pressed));
}
