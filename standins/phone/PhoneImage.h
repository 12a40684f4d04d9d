#pragma once

#include <QWidget>

/// Draws a phone of the widget's height.
class PhoneImage : public QWidget
{
public:
    explicit PhoneImage(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
