#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QXmlStreamReader>
#include <QtTest>
#include <cmath>
#include <functional>

#include "support/ImageComparison.h"

namespace {
/// The accepted difference of a colour channel. The renderers of three Debian releases differ by up to 6, at
/// round edges.
constexpr int ROUNDING = 7;
/// The version of the renderer that created the stored images.
constexpr char RENDERED_WITH[] = " 2.54.";
const QString PREFIX = QStringLiteral(":/velo/");
const QStringList DOCUMENTS = {QStringLiteral("beginnerGuide"), QStringLiteral("freQuestions"),
                               QStringLiteral("serProtocal")};
const QString ADDRESS = QStringLiteral("http[s]{0,1}://[-A-Za-z0-9+&@#/%?=~_|!:,.;]+[-A-Za-z0-9+&@#/%=~_|]");

struct Group
{
    QSize size;
    QStringList names;
};

QStringList Words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

QList<Group> ImageGroups()
{
    return {
        {{56, 44}, Words("minNormal minHover minClick minDisabled setNormal setHover setClick")},
        {{56, 44}, Words("exitNormal exitHover exitClick exitDisabled")},
        {{56, 44}, Words("exitNormalShadow exitHoverShadow exitClickShadow exitDisabledShadow")},
        {{46, 32}, Words("close_normal close_hover close_pressed close_disabled")},
        {{46, 32},
         Words("close_normal_shadow close_hover_shadow close_pressed_shadow close_disabled_shadow")},
        {{40, 40}, Words("backNormal backHover backClick backDisabled")},
        {{40, 40}, Words("normalreturnbtn hoverreturnbtn pressreturnbtn")},
        {{40, 40}, Words("normalhelpbtn hoverhelpbtn presshelpbtn")},
        {{14, 14}, Words("normaleditbtn hovereditbtn presseditbtn")},
        {{172, 172}, Words("logo protocolicon")},
        {{64, 64}, Words("smallLogo")},
        {{308, 192}, Words("prescreen prescreensucess")},
        {{18, 16}, Words("tandra")},
        {{20, 20}, Words("aboutBtn")},
        {{51, 50}, Words("new_hand common_problem")},
        {{16, 14}, Words("warn_icon")},
        {{12, 12}, Words("agreeicon")},
        {{556, 2}, Words("splitter")},
    };
}

QStringList HelpImages()
{
    QStringList names;
    for (int i = 1; i <= 8; ++i) {
        names += QStringLiteral("resource/screenpage/tandraBeginnerGuide.files/image00%1.png").arg(i);
    }
    for (int i = 1; i <= 6; ++i) {
        names += QStringLiteral("resource/screenpage/tandraFreAskedQuestions.files/image00%1.png").arg(i);
    }
    return names;
}

QStringList AllNames()
{
    QStringList names = DOCUMENTS + HelpImages();
    for (const Group& group : ImageGroups()) {
        names += group.names;
    }
    names.sort();
    return names;
}

QByteArray Bytes(const QString& name)
{
    QFile file(PREFIX + name);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s is missing", qPrintable(name));
    }
    return file.readAll();
}

QStringList Matches(const QString& text, const QString& pattern, int group = 0)
{
    QStringList found;
    auto match = QRegularExpression(pattern).globalMatch(text);
    while (match.hasNext()) {
        found += match.next().captured(group);
    }
    return found;
}

QStringList ImagesOf(const QString& document)
{
    return Matches(QString::fromUtf8(Bytes(document)), QStringLiteral("<img src=\"([^\"]*)\""), 1);
}
} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void containsExactlyTheSpecifiedFiles();
    void imagesHaveSpecifiedSizeAndAlphaChannel_data();
    void imagesHaveSpecifiedSizeAndAlphaChannel();
    void closeButtonsAreTransparentOutsideOfTheRoundedCorner_data();
    void closeButtonsAreTransparentOutsideOfTheRoundedCorner();
    void imagesOfButtonStatesDiffer_data();
    void imagesOfButtonStatesDiffer();
    void renderingTheMastersGivesTheStoredImages();
    void comparisonAcceptsOnlyRounding();
    void comparisonAcceptsOnlyMovedLetters();
    void documentsAreWellFormed_data();
    void documentsAreWellFormed();
    void documentsContainExpectedNumberOfAddresses_data();
    void documentsContainExpectedNumberOfAddresses();
    void helpDocumentsShowAllImagesOfTheirFolder_data();
    void helpDocumentsShowAllImagesOfTheirFolder();
    void agreementHasExpectedLength();
    void guideHasSixSteps();
    void frequentQuestionsAreFifteen();
    void documentsContainExpectedPhrases_data();
    void documentsContainExpectedPhrases();
    void resourcesNamedInTheSourcesExist();
};

void TestResources::containsExactlyTheSpecifiedFiles()
{
    QStringList names;
    QDirIterator files(QStringLiteral(":/velo"), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        names += files.next().mid(PREFIX.size());
    }
    names.sort();
    QCOMPARE(names, AllNames());
}

void TestResources::imagesHaveSpecifiedSizeAndAlphaChannel_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    for (const Group& group : ImageGroups()) {
        for (const QString& name : group.names) {
            QTest::newRow(qPrintable(name)) << name << group.size;
        }
    }
    for (const QString& name : HelpImages()) {
        QTest::newRow(qPrintable(name)) << name << QSize();
    }
}

void TestResources::imagesHaveSpecifiedSizeAndAlphaChannel()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    const QByteArray bytes = Bytes(name);
    QVERIFY(bytes.startsWith("\x89PNG\r\n\x1a\n"));
    // The colour type in the header: 6 is red, green, blue and alpha.
    QCOMPARE(static_cast<int>(bytes.at(25)), 6);
    const QImage image = QImage::fromData(bytes, "PNG");
    QVERIFY(!image.isNull());
    if (!size.isValid()) {
        const bool divider = name.endsWith(QLatin1String("image001.png"));
        QCOMPARE(image.size(), divider ? QSize(556, 2) : QSize(480, 270));
    } else {
        QCOMPARE(image.size(), size);
    }
}

void TestResources::closeButtonsAreTransparentOutsideOfTheRoundedCorner_data()
{
    QTest::addColumn<QString>("name");
    for (const Group& group : ImageGroups()) {
        for (const QString& name : group.names) {
            if (name.endsWith(QLatin1String("hadow"))) {
                QTest::newRow(qPrintable(name)) << name;
            }
        }
    }
}

void TestResources::closeButtonsAreTransparentOutsideOfTheRoundedCorner()
{
    QFETCH(QString, name);
    const QImage image(PREFIX + name);
    constexpr double RADIUS = 20;
    const QPointF centre(image.width() - RADIUS, RADIUS);
    for (int y = 0; y < RADIUS; ++y) {
        for (int x = image.width() - static_cast<int>(RADIUS); x < image.width(); ++x) {
            // The distance of the pixel's nearest corner: the arc may cover a part of a pixel.
            const double distance = std::hypot(x - centre.x(), centre.y() - (y + 1));
            if (distance >= RADIUS) {
                QVERIFY2(qAlpha(image.pixel(x, y)) == 0, qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
            }
        }
    }
}

void TestResources::imagesOfButtonStatesDiffer_data()
{
    QTest::addColumn<QStringList>("names");
    for (const Group& group : ImageGroups()) {
        if (group.names.size() >= 3) {
            QTest::newRow(qPrintable(group.names.first())) << group.names;
        }
    }
}

void TestResources::imagesOfButtonStatesDiffer()
{
    QFETCH(QStringList, names);
    for (int i = 0; i < names.size(); ++i) {
        for (int j = i + 1; j < names.size(); ++j) {
            QVERIFY2(QImage(PREFIX + names.at(i)) != QImage(PREFIX + names.at(j)),
                     qPrintable(names.at(i) + QLatin1Char(' ') + names.at(j)));
        }
    }
}

void TestResources::comparisonAcceptsOnlyRounding()
{
    const QImage icon(PREFIX + QStringLiteral("setNormal"));
    QCOMPARE(LargestDifference(icon, icon), 0);
    QImage rounded = icon.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage coloured = rounded;
    const QPoint middle(icon.width() / 2, icon.height() / 2);
    const QColor there = rounded.pixelColor(middle);
    const auto shade = [&there](int by) {
        return QColor(there.red(), (there.green() + by) % 256, there.blue());
    };
    rounded.setPixelColor(middle, shade(6));
    coloured.setPixelColor(middle, shade(8));
    QVERIFY(LargestDifference(icon, rounded) <= ROUNDING);
    QVERIFY(LargestDifference(icon, coloured) > ROUNDING);
    QVERIFY(LargestDifference(icon, rounded.copy(1, 0, icon.width(), icon.height())) > ROUNDING);
}

void TestResources::comparisonAcceptsOnlyMovedLetters()
{
    const QImage stored(QStringLiteral(VELODESK_SOURCE_DIR "/src/resources/pictures/resource/screenpage/"
                                                           "tandraBeginnerGuide.files/image006.png"));
    const auto isAccepted = [&stored](const QPoint& move, const std::function<void(QPainter&)>& change) {
        QImage image = stored.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        const QRect digits(100, 115, 140, 40);
        painter.drawImage(digits.translated(move), stored, digits);
        change(painter);
        painter.end();
        return FindDifference(image, stored, OTHER_RELEASE).isEmpty();
    };
    const auto nothing = [](QPainter& /*painter*/) {
    };
    QVERIFY(isAccepted({0, 0}, nothing));
    QVERIFY(isAccepted({2, 0}, nothing));
    QVERIFY(!isAccepted({5, 0}, nothing));
    // The background of the tick, and a dot on an empty area.
    QVERIFY(!isAccepted(
        {0, 0}, [](QPainter& painter) { painter.fillRect(78, 175, 12, 12, QColor(0x1F, 0x9D, 0x55)); }));
    QVERIFY(!isAccepted({0, 0}, [](QPainter& painter) { painter.fillRect(20, 20, 5, 5, Qt::darkBlue); }));
}

void TestResources::renderingTheMastersGivesTheStoredImages()
{
    const QString resources = QStringLiteral(VELODESK_SOURCE_DIR "/src/resources/");
    const QTemporaryDir rendered;
    QProcess render;
    render.start(QStringLiteral("python3"),
                 {resources + QStringLiteral("art/render"), QStringLiteral("--into"), rendered.path()});
    QVERIFY(render.waitForFinished());
    QVERIFY2(render.exitCode() == 0, render.readAllStandardError().constData());
    QProcess versionQuery;
    versionQuery.start(QStringLiteral("rsvg-convert"), {QStringLiteral("--version")});
    QVERIFY(versionQuery.waitForFinished());
    // On another processor, the last bit may differ even with the same renderer.
    const bool sameRenderer = versionQuery.readAllStandardOutput().contains(RENDERED_WITH);
    int compared = 0;
    QDirIterator files(rendered.path(), {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString name = files.next().mid(rendered.path().size() + 1);
        const QImage rendering(files.filePath());
        const QImage stored(resources + QStringLiteral("pictures/") + name);
        // Each version of the renderer rounds differently, and places the letters of the illustrations
        // differently.
        const bool same = sameRenderer || !name.startsWith(QLatin1String("resource/"))
                              ? LargestDifference(rendering, stored) <= (sameRenderer ? 1 : ROUNDING)
                              : FindDifference(rendering, stored, OTHER_RELEASE).isEmpty();
        QVERIFY2(same, qPrintable(name));
        ++compared;
    }
    QCOMPARE(compared, AllNames().size() - DOCUMENTS.size());
}

void TestResources::documentsAreWellFormed_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : DOCUMENTS) {
        QTest::newRow(qPrintable(name)) << name;
    }
}

void TestResources::documentsAreWellFormed()
{
    QFETCH(QString, name);
    const QByteArray bytes = Bytes(name);
    QVERIFY(!bytes.contains('\0'));
    QCOMPARE(QString::fromUtf8(bytes).toUtf8(), bytes);
    const QStringList allowed = Words("html head meta title style body div p span img");
    // `meta` and `img` have no end tag in HTML. All other elements must be nested as in XML.
    QString xml = QString::fromUtf8(bytes);
    xml.replace(QRegularExpression(QStringLiteral("<(meta|img)([^>]*)>")), QStringLiteral("<\\1\\2/>"));
    QXmlStreamReader reader(xml);
    bool styled = false;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            QVERIFY2(allowed.contains(reader.name().toString()), qPrintable(reader.name().toString()));
            styled = styled || reader.name() == QLatin1String("style");
        }
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QVERIFY(styled);
}

void TestResources::documentsContainExpectedNumberOfAddresses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("count");
    QTest::newRow("agreement") << "serProtocal" << 0;
    QTest::newRow("guide") << "beginnerGuide" << 0;
    QTest::newRow("problems") << "freQuestions" << 1;
}

void TestResources::documentsContainExpectedNumberOfAddresses()
{
    QFETCH(QString, name);
    QFETCH(int, count);
    // SerProEdit searches the whole source for addresses, including the HTML head.
    QCOMPARE(Matches(QString::fromUtf8(Bytes(name)), ADDRESS).size(), count);
}

void TestResources::helpDocumentsShowAllImagesOfTheirFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("folder");
    QTest::newRow("guide") << "beginnerGuide"
                           << "tandraBeginnerGuide.files";
    QTest::newRow("problems") << "freQuestions"
                              << "tandraFreAskedQuestions.files";
}

void TestResources::helpDocumentsShowAllImagesOfTheirFolder()
{
    QFETCH(QString, name);
    QFETCH(QString, folder);
    QStringList expected;
    for (const QString& image : HelpImages()) {
        if (image.contains(folder)) {
            expected += PREFIX + image;
        }
    }
    QStringList actual = ImagesOf(name);
    for (const QString& image : actual) {
        QVERIFY2(QFile::exists(image), qPrintable(image));
    }
    actual.sort();
    QCOMPARE(actual, expected);
    int dividers = 0;
    for (const QString& image : actual) {
        dividers += QImage(image).size() == QSize(556, 2) ? 1 : 0;
    }
    QCOMPARE(dividers, 1);
    QVERIFY(ImagesOf(QStringLiteral("serProtocal")).isEmpty());
}

void TestResources::agreementHasExpectedLength()
{
    const int size = Bytes(QStringLiteral("serProtocal")).size();
    QVERIFY2(size > 12300 && size < 13300, qPrintable(QString::number(size)));
}

void TestResources::guideHasSixSteps()
{
    const QString text = QString::fromUtf8(Bytes(QStringLiteral("beginnerGuide")));
    QCOMPARE(text.count(QStringLiteral("class=\"step\"")), 6);
}

void TestResources::frequentQuestionsAreFifteen()
{
    QTextDocument document;
    document.setHtml(QString::fromUtf8(Bytes(QStringLiteral("freQuestions"))));
    const QString text = document.toPlainText();
    QCOMPARE(Matches(text, QStringLiteral("(?m)^\\d+\\. ")).size(), 15);
    QVERIFY(text.contains(QStringLiteral("\n15. ")));
}

void TestResources::documentsContainExpectedPhrases_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("phrase");
    const auto row = [](const char* document, const char* phrase) {
        QTest::newRow(phrase) << document << QString::fromUtf8(phrase);
    };
    row("beginnerGuide", "信任此设备，下次快捷连接");
    row("beginnerGuide", "开始投屏");
    row("beginnerGuide", "结束投屏");
    row("freQuestions", "暂不兼容您的网卡，使用中可能出现兼容性问题");
    row("freQuestions", "您的网卡不支持创建 Wi-Fi 5G 频段，请使用兼容网卡");
    row("freQuestions", "未检测到 Wi-Fi 网卡");
    row("freQuestions", "网络异常，请重新连接");
    row("freQuestions", "“_”、“—”");
}

void TestResources::documentsContainExpectedPhrases()
{
    QFETCH(QString, name);
    QFETCH(QString, phrase);
    QTextDocument document;
    document.setHtml(QString::fromUtf8(Bytes(name)));
    QVERIFY(document.toPlainText().contains(phrase));
}

void TestResources::resourcesNamedInTheSourcesExist()
{
    QStringList named;
    QDirIterator sources(QStringLiteral(VELODESK_SOURCE_DIR "/src"),
                         {QStringLiteral("*.cpp"), QStringLiteral("*.h"), QStringLiteral("*.ui")},
                         QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile file(sources.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        named += Matches(QString::fromUtf8(file.readAll()), QStringLiteral(":/velo/([A-Za-z_]+)"), 1);
    }
    QVERIFY(named.size() > 40);
    for (const QString& name : named) {
        QVERIFY2(QFile::exists(PREFIX + name), qPrintable(name));
    }
}

QTEST_MAIN(TestResources)
#include "TestResources.moc"
