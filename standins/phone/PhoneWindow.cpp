#include "PhoneWindow.h"

#include <QGuiApplication>
#include <QScreen>

#include "ui_PhoneWindow.h"

namespace {
constexpr int LEFT = 4;
}

PhoneWindow::PhoneWindow() : form(std::make_unique<Ui::PhoneWindow>())
{
    form->setupUi(this);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    move(screen.left() + LEFT, screen.center().y() - height() / 2);
}

PhoneWindow::~PhoneWindow() = default;

#include "moc_PhoneWindow.cpp"
