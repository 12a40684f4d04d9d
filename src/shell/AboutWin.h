#pragma once

#include <QFont>
#include <QString>
#include <QWidget>
#include <memory>

#include "shell/SerProEdit.h"

class Ui_AboutWin;

/// The about page, the last page of the main window: a view with name and version, and one with the
/// agreement. Its parent at construction is the VeloWin that owns it, and to which its back button returns.
/// Interface thread only.
class AboutWin : public QWidget
{
    Q_OBJECT

public:
    explicit AboutWin(QWidget* parent);
    ~AboutWin() override;

    /// Returns a font with the family, pixel size and weight, and with a letter spacing of `spacing` pixels.
    QFont FontStyle(QString family, int pixelSize, int weight, double spacing) const;

public slots:
    /// Shows the agreement from its top.
    void ShowSerProWin();
    /// Shows name and version.
    void BackToAboutWin() const;

private:
    void InitUi();
    void InitConnect() const;

    std::unique_ptr<Ui_AboutWin> ui;
    SerProEdit serProEdit;
};
