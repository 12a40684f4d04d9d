#pragma once

#include <QString>

/// Style sheets of all dialogs, with and without shadow. They are initialised at the start of the program, so
/// static initialisers must not use them.
namespace DialogStyle {
/// The card with shadow. Without shadow, the form's own style applies.
const QString CARD = QStringLiteral("border-radius:20px;background-color: rgb(247, 247, 247);");

const QString CLOSE_BTN_SHADOW = QStringLiteral(R"(QPushButton{
border-radius:0px;
border-top-right-radius:20px;
border-image:url(:/velo/close_normal_shadow);
}
QPushButton:hover{
border-image:url(:/velo/close_hover_shadow);
}
QPushButton:pressed{
border-image:url(:/velo/close_pressed_shadow);
})");
const QString CLOSE_BTN = QStringLiteral(R"(QPushButton{
border-radius:0px;
border-image:url(:/velo/close_normal);
}
QPushButton:hover{
border-image:url(:/velo/close_hover);
}
QPushButton:pressed{
border-image:url(:/velo/close_pressed);
})");
} // namespace DialogStyle
