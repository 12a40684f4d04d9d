#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "SettingsFile.h"
#include "multiscreen/MultiScreen.h"
#include "support/CapturedLog.h"
#include "support/ProgramMain.h"
#include "support/Sandbox.h"
#include "support/Widgets.h"

namespace {
constexpr int WIDE_FIELD_WIDTH = 400;

QImage OnWhite(QWidget& widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    widget.render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// Returns whether `actual` contains every non-background pixel of `expected`. It can contain additional
/// pixels, such as a cursor.
bool ContainsInk(const QImage& actual, const QImage& expected)
{
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            const QRgb ink = expected.pixel(x, y);
            if (ink != qRgb(0xFF, 0xFF, 0xFF) && (!actual.valid(x, y) || actual.pixel(x, y) != ink)) {
                return false;
            }
        }
    }
    return true;
}

int LastInk(const QImage& image)
{
    for (int x = image.width() - 1; x >= 0; --x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != qRgb(0xFF, 0xFF, 0xFF)) {
                return x;
            }
        }
    }
    return -1;
}
} // namespace

/// Verifies that the field shows all pixels of the name.
class TestNameRow : public QObject
{
    Q_OBJECT

private slots:
    void init() { log = std::make_unique<CapturedLog>(); }
    void cleanup()
    {
        page.reset();
        log.reset();
    }

    void nameIsShownCompletely_data();
    void nameIsShownCompletely();
    void nameIsShownCompletelyAfterEachTypedLetter_data() { nameIsShownCompletely_data(); }
    void nameIsShownCompletelyAfterEachTypedLetter();
    void pencilDoesNotCoverTheName_data() { nameIsShownCompletely_data(); }
    void pencilDoesNotCoverTheName();
    void widgetsOnThePageKeepTheApplicationsFont();

private:
    QLineEdit& Field() { return *Find<QLineEdit>(*page, "ComputerNameEdit"); }
    void Start(const QString& name);
    /// Returns the text as the field paints it in a wider field.
    QImage Expected(const QString& text);

    std::unique_ptr<CapturedLog> log;
    std::unique_ptr<MultiScreen> page;
};

void TestNameRow::Start(const QString& name)
{
    SettingsFile::Write("[Tandra]\ndevicename=" + name.toUtf8() + "\n");
    page = std::make_unique<MultiScreen>(nullptr);
    page->show();
    QVERIFY(QTest::qWaitForWindowActive(page.get()));
    QCOMPARE(Field().text(), name);
}

QImage TestNameRow::Expected(const QString& text)
{
    QLineEdit wide(Field().parentWidget());
    wide.setStyleSheet(Field().styleSheet());
    wide.setFont(Field().font());
    wide.setAlignment(Field().alignment());
    wide.setEnabled(false);
    wide.setText(text);
    wide.resize(WIDE_FIELD_WIDTH, Field().height());
    return OnWhite(wide);
}

void TestNameRow::nameIsShownCompletely_data()
{
    QTest::addColumn<QString>("name");
    const QString letters = QStringLiteral("iWmj_-1gQ");
    for (const QChar letter : letters) {
        for (const int count : {1, 2, 7, 15}) {
            const QString name(count, letter);
            QTest::newRow(qPrintable(name)) << name;
        }
    }
    for (const char* name : {"Study-PC_1", "My_PC-1", "abcdefghijklmno", "0123456789-_-_-", "客", "客厅电脑",
                             "客厅电脑一", "龥龥龥龥龥", "书房PC-2_a", "W一二三jj", "j客", "客W客W客W"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void TestNameRow::nameIsShownCompletely()
{
    QFETCH(QString, name);
    Start(name);
    QVERIFY(ContainsInk(OnWhite(Field()), Expected(name)));
}

void TestNameRow::nameIsShownCompletelyAfterEachTypedLetter()
{
    QFETCH(QString, name);
    Start(QStringLiteral("Old"));
    QTest::mouseClick(Find<QPushButton>(*page, "NameEditBtn"), Qt::LeftButton);
    Field().selectAll();
    for (int length = 1; length <= name.size(); ++length) {
        QInputMethodEvent event;
        event.setCommitString(name.mid(length - 1, 1));
        QCoreApplication::sendEvent(&Field(), &event);
        QCOMPARE(Field().text(), name.left(length));
        QVERIFY2(ContainsInk(OnWhite(Field()), Expected(Field().text())), qPrintable(Field().text()));
    }
}

void TestNameRow::pencilDoesNotCoverTheName()
{
    QFETCH(QString, name);
    Start(name);
    const auto& pencil = *Find<QPushButton>(*page, "NameEditBtn");
    // The first column of the pencil's image is empty.
    QVERIFY(Field().x() + LastInk(Expected(name)) <= pencil.x());
}

void TestNameRow::widgetsOnThePageKeepTheApplicationsFont()
{
    Start(QStringLiteral("Old"));
    const QFont application = QApplication::font();
    for (const char* name : {"ScreenWidget", "frame", "NameEditBtn", "StatusFrame", "page3", "setBack"}) {
        const QFont font = Find(*page, name)->font();
        QCOMPARE(font.pixelSize(), application.pixelSize());
        QCOMPARE(font.letterSpacing(), 0.0);
    }
    QVERIFY(page->font().letterSpacing() > Field().font().letterSpacing());
}

int main(int argc, char** argv)
{
    EnterSandbox(argc, argv);
    return RunAsProgram<TestNameRow>(argc, argv);
}

#include "TestNameRow.moc"
