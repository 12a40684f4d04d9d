#pragma once

#include <QWidget>

/// Draws a phone of the widget's height.
class PhonePicture : public QWidget
{
public:
    explicit PhonePicture(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
