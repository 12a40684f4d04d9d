#pragma once

#include <QFont>
#include <QString>
#include <QWidget>
#include <memory>

#include "shell/SerProEdit.h"

class Ui_AboutWin;

/// The about page, which is the last page of the main window. It has two views: name and version, and the
/// agreement. `parent` must be a VeloWin, which owns the page; the back button calls its CloseAboutWin().
/// Main thread only.
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
