#pragma once

#include <QWidget>

/// A drawn phone, as high as the widget.
class PhonePicture : public QWidget
{
public:
    explicit PhonePicture(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
