#pragma once

#include <QFont>
#include <QString>
#include <QWidget>
#include <memory>

#include "shell/SerProEdit.h"

class Ui_AboutWin;

/// The about page, last in the main window's stack: a view with name and version, and one with the agreement.
/// The parent at construction is the VeloWin to which its back button leads. Interface thread only.
class AboutWin : public QWidget
{
    Q_OBJECT

public:
    explicit AboutWin(QWidget* parent);
    ~AboutWin() override;

    /// A default font with the family, pixel size, weight and letters `spacing` pixels apart.
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
