#pragma once

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

#include "shell/Shadow.h"

/// Lets windows be built in one of the two looks, for as long as the object lives.
class Look
{
public:
    explicit Look(bool shadow) : before(Shadow::useShadow) { Shadow::useShadow = shadow; }
    ~Look() { Shadow::useShadow = before; }
    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;

private:
    bool before;
};

/// The column of both looks for a data-driven test.
inline void AddBothLooks()
{
    QTest::addColumn<bool>("shadow");
    QTest::newRow("shadow") << true;
    QTest::newRow("plain") << false;
}

/// The widget of that object name; the test fails at once if there is none.
template <typename Widget = QWidget>
Widget* Find(const QWidget& window, const char* name)
{
    auto* widget = window.findChild<Widget*>(QLatin1String(name));
    if (widget == nullptr) {
        qFatal("there is no %s", name);
    }
    return widget;
}

/// A press, a move or a release at a point of the widget, as the window system would send it.
inline void SendMouse(QWidget& widget, QEvent::Type type, const QPoint& pos,
                      Qt::MouseButton button = Qt::LeftButton)
{
    const Qt::MouseButtons held =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
    QMouseEvent event(type, pos, widget.mapToGlobal(pos), type == QEvent::MouseMove ? Qt::NoButton : button,
                      held, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

/// Whether the window goes along with a pointer that is pressed at that place of its card.
inline bool Drags(QWidget& window, const QPoint& offset)
{
    const QPoint press = Find(window, "widget_bg")->pos() + offset;
    const QPoint before = window.pos();
    SendMouse(window, QEvent::MouseButtonPress, press);
    SendMouse(window, QEvent::MouseMove, press + QPoint(20, 30));
    SendMouse(window, QEvent::MouseButtonRelease, press);
    return window.pos() != before;
}

/// The style sheet of a button in the upper right corner of a card, with its pictures at rest, under the
/// pointer and pressed; rounded like the card in the look with shadow.
inline QString CornerButtonStyle(bool shadow, const char* normal, const char* hover, const char* pressed)
{
    return QStringLiteral("QPushButton{\nborder-radius:0px;\n%1border-image:url(:/velo/%2);\n}\n"
                          "QPushButton:hover{\nborder-image:url(:/velo/%3);\n}\n"
                          "QPushButton:pressed{\nborder-image:url(:/velo/%4);\n}")
        .arg(shadow ? QStringLiteral("border-top-right-radius:20px;\n") : QString(), QLatin1String(normal),
             QLatin1String(hover), QLatin1String(pressed));
}
