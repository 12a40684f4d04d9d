#pragma once

#include <QWidget>

/// A widget that shows the image of a phone.
class PhoneImage : public QWidget
{
public:
    explicit PhoneImage(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
