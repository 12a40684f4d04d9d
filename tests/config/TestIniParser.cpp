#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <ctime>
#include <fstream>
#include <limits>
#include <memory>
#include <random>
#include <sys/inotify.h>
#include <unistd.h>

#include "IniModel.h"
#include "config/IniParser.h"
#include "support/EveryLine.h"
#include "support/Files.h"
#include "support/UnprivilegedUser.h"

using Brevora::Config::ConfigFile;
using Brevora::Config::IniParser;

namespace {
constexpr int LIMIT = 1048576;
constexpr int LONG_NAME = 500 * 1024;
const QString OVERSIZE = QStringLiteral("DEBUG UTILS file oversize!");

QMap<QByteArray, QByteArray> ToQt(const std::unordered_map<std::string, std::string>& map)
{
    QMap<QByteArray, QByteArray> result;
    for (const auto& [key, value] : map) {
        result[QByteArray::fromStdString(key)] = QByteArray::fromStdString(value);
    }
    return result;
}

QMap<QByteArray, QMap<QByteArray, QByteArray>> Sections(const ConfigFile& file)
{
    QMap<QByteArray, QMap<QByteArray, QByteArray>> result;
    for (const auto& [section, keys] : file.sections) {
        result[QByteArray::fromStdString(section)] = ToQt(keys);
    }
    return result;
}

/// Counts how often a file is opened.
class OpenCounter
{
public:
    explicit OpenCounter(const QString& path) : events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        // The kernel merges consecutive equal events. Close events between them prevent this.
        inotify_add_watch(events, Local(path).c_str(), IN_OPEN | IN_CLOSE);
    }
    ~OpenCounter() { close(events); }
    OpenCounter(const OpenCounter&) = delete;
    OpenCounter& operator=(const OpenCounter&) = delete;

    int Take() const
    {
        inotify_event event{};
        int count = 0;
        // The event of a watched file has no name, so all events have the same size.
        while (read(events, &event, sizeof event) == sizeof event) {
            count += (event.mask & IN_OPEN) != 0 ? 1 : 0;
        }
        return count;
    }

private:
    const int events;
};
} // namespace

class TestIniParser : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void instanceIsTheSameEachTime();
    void sizeIsLimited_data();
    void sizeIsLimited();
    void missingFileCountsAsOversize();
    void emptyPathIsRejected();
    void fileThatCannotBeOpenedIsNotFound();
    void unreadableFileKeepsTheLoadedEntry();
    void loadingReplacesTheLoadedEntry();
    void unreadableLineRejectsTheWholeFile_data();
    void unreadableLineRejectsTheWholeFile();
    void lineIsSplitIntoKeyValueAndComment_data();
    void lineIsSplitIntoKeyValueAndComment();
    void commentBeforeTheEqualsSignBelongsToKeyAndComment();
    void invalidKeyLineFails_data();
    void invalidKeyLineFails();
    void sectionNameIsParsed_data();
    void sectionNameIsParsed();
    void laterLinesReplaceEarlierLines();
    void streamIsParsedLikeAFile();

    void savingWritesTheLoadedText_data();
    void savingWritesTheLoadedText();
    void manyCommentLinesKeepTheirOrder();
    void keyNamedLikeACommentedSectionIsNotSaved();
    void keyNamedLikeACommentedKeyIsSaved();
    void savingAnEmptyEntryKeepsTheFile_data();
    void savingAnEmptyEntryKeepsTheFile();
    void savingIsLogged();
    void failedSaveIsNotReported();
    void savingRewritesTheFileInPlace();
    void allFilesAreSaved();
    void copyIsDeep();
    void spellingsOfAPathAreDifferentEntries();

    void emptyLookupsAreLogged();
    void textIsRead_data();
    void textIsRead();
    void integerIsRead_data();
    void integerIsRead();
    void booleanIsRead_data();
    void booleanIsRead();
    void missingKeyReturnsTheFailureValues_data();
    void missingKeyReturnsTheFailureValues();
    void unreadableFileReturnsTheFailureValuesAndIsKept_data();
    void unreadableFileReturnsTheFailureValuesAndIsKept();

    void valueIsStored_data();
    void valueIsStored();
    void emptyValueChangesNothing();
    void emptySectionOrKeyChangesNothing();
    void setterDoesNotCreateTheFile();
    void setterKeepsOtherValues();
    void everyAccessReadsTheFileAgain();
    void numbersAndBooleansReadTheFileTwice();

    void randomTextsAreReadAndSavedAsInTheModel_data();
    void randomTextsAreReadAndSavedAsInTheModel();

private:
    std::string Path() const { return Local(path); }
    QString Warning(const char* format, const QString& argument) const
    {
        return QStringLiteral("WARNING UTILS ") +
               QString::fromLatin1(format).replace(QStringLiteral("%s"), argument);
    }

    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<EveryLine> lines;
    std::unique_ptr<IniParser> parser;
    QString path;
};

void TestIniParser::init()
{
    directory = std::make_unique<QTemporaryDir>();
    path = directory->filePath(QStringLiteral("test.conf"));
    parser = std::make_unique<IniParser>();
    lines = std::make_unique<EveryLine>();
}

void TestIniParser::cleanup()
{
    lines.reset();
    parser.reset();
    directory.reset();
}

void TestIniParser::instanceIsTheSameEachTime()
{
    QCOMPARE(&IniParser::GetInstance(), &IniParser::GetInstance());
}

void TestIniParser::sizeIsLimited_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("loads");
    QTest::newRow("empty") << 0 << true;
    QTest::newRow("largest") << LIMIT << true;
    QTest::newRow("one byte more") << LIMIT + 1 << false;
}

void TestIniParser::sizeIsLimited()
{
    QFETCH(int, size);
    QFETCH(bool, loads);
    WriteAll(path, QByteArray("a=").leftJustified(size, 'x', true));
    QCOMPARE(parser->CheckFileSize(Path()), loads);
    QCOMPARE(lines->Take(), QStringList());
    QCOMPARE(parser->LoadIniFile(Path()), loads ? 0 : -1);
    QCOMPARE(lines->Take(), loads ? QStringList() : QStringList(OVERSIZE));
}

void TestIniParser::missingFileCountsAsOversize()
{
    QVERIFY(!parser->CheckFileSize(Path()));
    QCOMPARE(parser->LoadIniFile(Path()), -1);
    QCOMPARE(lines->Take(), QStringList(OVERSIZE));
}

void TestIniParser::emptyPathIsRejected()
{
    QCOMPARE(parser->LoadIniFile(""), -1);
    QCOMPARE(lines->Take(), QStringList(QStringLiteral("DEBUG UTILS file path is empty!")));
}

void TestIniParser::fileThatCannotBeOpenedIsNotFound()
{
    WriteAll(path, "a=b\n");
    SetMode(path, 0200);
    const UnprivilegedUser user;
    QCOMPARE(parser->LoadIniFile(Path()), -1);
    QCOMPARE(lines->Take(), QStringList(QStringLiteral("DEBUG UTILS file not found!")));
}

void TestIniParser::unreadableFileKeepsTheLoadedEntry()
{
    WriteAll(path, "a=b\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    WriteAll(path, "c=d\n\n");
    QCOMPARE(parser->LoadIniFile(Path()), -1);
    QCOMPARE(lines->Take(),
             QStringList(QStringLiteral("DEBUG UTILS read wrong type ini file! file path: ") + path));
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), QByteArray("[default]\na=b\n"));
}

void TestIniParser::loadingReplacesTheLoadedEntry()
{
    WriteAll(path, ";one\n[s];two\na=b;three\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    WriteAll(path, "[s]\nc=d\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), QByteArray("[s]\nc=d\n"));
}

void TestIniParser::unreadableLineRejectsTheWholeFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("blank line only") << QByteArray("\n");
    QTest::newRow("blank line first") << QByteArray("\n[s]\na=b\n");
    QTest::newRow("blank line in the middle") << QByteArray("[s]\na=b\n\nc=d\n");
    QTest::newRow("blank line last") << QByteArray("[s]\na=b\n\n");
    QTest::newRow("equals sign first") << QByteArray("[s]\n=b\n");
    QTest::newRow("equals sign only") << QByteArray("[s]\n=\n");
    QTest::newRow("section without a name") << QByteArray("[]\na=b\n");
    QTest::newRow("bracket only") << QByteArray("[\na=b\n");
}

void TestIniParser::unreadableLineRejectsTheWholeFile()
{
    QFETCH(QByteArray, text);
    WriteAll(path, text);
    QCOMPARE(parser->LoadIniFile(Path()), -1);
    QCOMPARE(lines->Take(),
             QStringList(QStringLiteral("DEBUG UTILS read wrong type ini file! file path: ") + path));
    QVERIFY(parser->GetConfig(Path()) == nullptr);
    QCOMPARE(ReadAll(path), text);
}

void TestIniParser::lineIsSplitIntoKeyValueAndComment_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("comment");
    const auto add = [](const QByteArray& line, const char* key, const char* value, const char* comment) {
        QTest::newRow(line.toPercentEncoding(" =;[]#\"/\\"))
            << line << QByteArray(key) << QByteArray(value) << QByteArray(comment);
    };
    add("a=b", "a", "b", "");
    add("a=b;c", "a", "b", ";c");
    add("a=b=c", "a", "b=c", "");
    add("a=", "a", "", "");
    add("a=;c", "a", "", ";c");
    add("a=b;c;d", "a", "b", ";c;d");
    add("a=b;c=d", "a", "b", ";c=d");
    add("word", "word", "word", "");
    add("word;c", "word;c", "word", ";c");
    add(" a = b ", " a ", " b ", "");
    add(" ", " ", " ", "");
    add("\t=\t", "\t", "\t", "");
    add("#a=b", "#a", "b", "");
    add(" ;a=b", " ;a", "", ";a=b");
    add(" [s]", " [s]", " [s]", "");
    add("a=b\r", "a", "b\r", "");
    add("\r", "\r", "\r", "");
    add("a=\"b;c\"", "a", "\"b", ";c\"");
    add("a=b\\", "a", "b\\", "");
    add("a=[s]", "a", "[s]", "");
    QTest::newRow("zero bytes") << QByteArray("a\0x=b\0y;c\0z", 11) << QByteArray("a\0x", 3)
                                << QByteArray("b\0y", 3) << QByteArray(";c\0z", 4);
}

void TestIniParser::lineIsSplitIntoKeyValueAndComment()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, comment);
    ConfigFile direct;
    QCOMPARE(parser->ParsingKeyValuePairs(direct, "s", line.toStdString()), 0);
    for (const QByteArray& end : {QByteArray("\n"), QByteArray()}) {
        WriteAll(path, "[s]\n" + line + end);
        const std::unique_ptr<ConfigFile> file = parser->GetConfig(Path());
        QVERIFY(file != nullptr);
        for (const ConfigFile* config : {file.get(), &direct}) {
            QMap<QByteArray, QMap<QByteArray, QByteArray>> sections;
            sections["s"][key] = value;
            QCOMPARE(Sections(*config), sections);
            QMap<QByteArray, QByteArray> comments;
            if (!comment.isEmpty()) {
                comments["s/" + key] = comment;
            }
            QCOMPARE(ToQt(config->inlineComments), comments);
            QVERIFY(config->commentLines.empty());
        }
    }
}

void TestIniParser::commentBeforeTheEqualsSignBelongsToKeyAndComment()
{
    WriteAll(path, "[s]\na;b=c\n");
    const std::unique_ptr<ConfigFile> file = parser->GetConfig(Path());
    QVERIFY(file != nullptr);
    QCOMPARE(file->sections["s"].count("a;b"), std::size_t(1));
    QCOMPARE(file->inlineComments["s/a;b"], std::string(";b=c"));
}

void TestIniParser::invalidKeyLineFails_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("no section") << QByteArray() << QByteArray("a=b;c");
    QTest::newRow("no key") << QByteArray("s") << QByteArray("=b;c");
    QTest::newRow("empty line") << QByteArray("s") << QByteArray();
}

void TestIniParser::invalidKeyLineFails()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, line);
    ConfigFile file;
    QCOMPARE(parser->ParsingKeyValuePairs(file, section.toStdString(), line.toStdString()), -1);
    QVERIFY(file.sections.empty());
    // The comment is stored before the line is checked.
    QCOMPARE(file.inlineComments.size(), std::size_t(line.contains(';') ? 1 : 0));
}

void TestIniParser::sectionNameIsParsed_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("saved");
    const auto add = [](const QByteArray& line, const char* section, const char* saved) {
        QTest::newRow(line.toPercentEncoding(" =;[]/")) << line << QByteArray(section) << QByteArray(saved);
    };
    add("[s]", "s", "[s]");
    add("[s", "s", "[s]");
    add("[ s ]", " s ", "[ s ]");
    add("[s]ignored", "s", "[s]");
    add("[s];c", "s", "[s];c");
    add("[s] ignored ;c ;d", "s", "[s];c ;d");
    add("[s]t]", "s", "[s]");
    add("[[s]]", "[s", "[[s]");
    add("[a;b]", "a;b", "[a;b];b]");
    add("[s=t]", "s=t", "[s=t]");
    add("[s;c", "s;c", "[s;c];c");
    add("[s]\r", "s", "[s]");
    add("[s\r", "s\r", "[s\r]");
    add("[default]", "default", "[default]");
}

void TestIniParser::sectionNameIsParsed()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, saved);
    WriteAll(path, line + "\na=b\n");
    QCOMPARE(parser->GetKeyValueString(Path(), section.toStdString(), "a"), std::string("b"));
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), saved + "\na=b\n");
}

void TestIniParser::laterLinesReplaceEarlierLines()
{
    WriteAll(path, "[s]\na=1\nb=1\n[t]\na=2\n[s]\na=3\n");
    const std::unique_ptr<ConfigFile> file = parser->GetConfig(Path());
    QMap<QByteArray, QMap<QByteArray, QByteArray>> sections;
    sections["s"] = {{"a", "3"}, {"b", "1"}};
    sections["t"] = {{"a", "2"}};
    QCOMPARE(Sections(*file), sections);
}

void TestIniParser::streamIsParsedLikeAFile()
{
    WriteAll(path, "a=1\n;c\n[s]\nb=2");
    std::ifstream stream(Path());
    ConfigFile file;
    QCOMPARE(parser->ParseFile(stream, file), 0);
    QMap<QByteArray, QMap<QByteArray, QByteArray>> sections;
    sections["default"] = {{"a", "1"}};
    sections["s"] = {{"b", "2"}};
    QCOMPARE(Sections(file), sections);
    QCOMPARE(ToQt(file.commentLines), (QMap<QByteArray, QByteArray>{{"s0", ";c\n"}}));
    WriteAll(path, "=1\n");
    std::ifstream unreadable(Path());
    QCOMPARE(parser->ParseFile(unreadable, file), -1);
}

void TestIniParser::savingWritesTheLoadedText_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const auto add = [](const char* name, const char* before, const char* after) {
        QTest::newRow(name) << QByteArray(before) << QByteArray(after);
    };
    add("plain", "[s]\na=b\n", "[s]\na=b\n");
    add("no line feed at the end", "[s]\na=b", "[s]\na=b\n");
    add("inline comments", "[s];one\na=b;two\n", "[s];one\na=b;two\n");
    add("word", "[s]\nword\n", "[s]\nword=word\n");
    add("before any section", "a=b\n", "[default]\na=b\n");
    add("comments above a section", ";one\n; two\n[s]\na=b\n", ";one\n; two\n[s]\na=b\n");
    add("comment above a key moves down", "[s]\n;one\na=b\n[s]\n", ";one\n[s]\na=b\n");
    add("comment after the last section is lost", "[s]\na=b\n;one\n", "[s]\na=b\n");
    add("comments alone above keys are lost", ";one\na=b\n", "[default]\na=b\n");
    add("empty section is lost with its comments", ";one\n[t];two\n[s]\na=b\n", "[s]\na=b\n");
    add("inline comment outlives its line", "[s]\na=b;one\na=c\n", "[s]\na=c;one\n");
    add("fewer comments overwrite the first", ";one\n;two\n[s]\na=b\n;three\n[s]\n",
        ";three\n;two\n[s]\na=b\n");
    add("carriage returns", "[s]\r\na=b\r\n", "[s]\na=b\r\n");
}

void TestIniParser::savingWritesTheLoadedText()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    WriteAll(path, before);
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(ReadAll(path), before);
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), after);
}

void TestIniParser::manyCommentLinesKeepTheirOrder()
{
    QByteArray text;
    for (int i = 0; i < 25; ++i) {
        text += ";" + QByteArray::number(i) + "\n";
    }
    text += "[s]\na=b\n";
    WriteAll(path, text);
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), text);
}

void TestIniParser::keyNamedLikeACommentedSectionIsNotSaved()
{
    WriteAll(path, "[s]\na=b\n;one\n[s/a]\n[s]\nc=d\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), QByteArray("[s]\nc=d\n"));
}

void TestIniParser::keyNamedLikeACommentedKeyIsSaved()
{
    // The inline comment of k0 and a comment line above a section [s/k] have the same internal name, "s/k0".
    // The parser must not confuse them.
    WriteAll(path, "[s]\nk=1\nk0=2;c\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->Save(Path()), 0);
    const QByteArray text = ReadAll(path);
    QVERIFY2(text == "[s]\nk=1\nk0=2;c\n" || text == "[s]\nk0=2;c\nk=1\n", text.constData());
}

void TestIniParser::savingAnEmptyEntryKeepsTheFile_data()
{
    QTest::addColumn<bool>("isLoaded");
    QTest::newRow("loaded") << true;
    QTest::newRow("never loaded") << false;
}

void TestIniParser::savingAnEmptyEntryKeepsTheFile()
{
    QFETCH(bool, isLoaded);
    WriteAll(path, ";one\n[s]\n");
    if (isLoaded) {
        QCOMPARE(parser->LoadIniFile(Path()), 0);
    }
    QCOMPARE(parser->Save(Path()), -1);
    QCOMPARE(lines->Take(), QStringList(QStringLiteral("DEBUG UTILS the config file is empty!")));
    QCOMPARE(ReadAll(path), QByteArray(";one\n[s]\n"));
    // The parser now has an entry without sections.
    QVERIFY(parser->CheckMapEmpty(Path(), "s"));
    QCOMPARE(lines->Take(), QStringList(Warning("config file %s is empty!", path)));
}

void TestIniParser::savingIsLogged()
{
    WriteAll(path, "a=b\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(lines->Take(), QStringList(QStringLiteral("INFO UTILS ready to save %1.").arg(path)));
}

void TestIniParser::failedSaveIsNotReported()
{
    WriteAll(path, "a=b;c\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    SetMode(path, 0400);
    const UnprivilegedUser user;
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), QByteArray("a=b;c\n"));
}

void TestIniParser::savingRewritesTheFileInPlace()
{
    WriteAll(path, "a=b\n" + QByteArray(1000, 'x'));
    SetMode(path, 0640);
    struct stat before
    {
    }, after{};
    QCOMPARE(stat(Path().c_str(), &before), 0);
    parser->SetKeyValue(Path(), "default", "a", "c");
    QCOMPARE(stat(Path().c_str(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(ModeOf(path), mode_t(0640));
}

void TestIniParser::allFilesAreSaved()
{
    const QString other = directory->filePath(QStringLiteral("other.conf"));
    WriteAll(path, "a=b\n");
    WriteAll(other, "c=d\n");
    QCOMPARE(parser->SaveAll(), 0);
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QCOMPARE(parser->LoadIniFile(Local(other)), 0);
    QCOMPARE(parser->SaveAll(), 0);
    QCOMPARE(ReadAll(path), QByteArray("[default]\na=b\n"));
    QCOMPARE(ReadAll(other), QByteArray("[default]\nc=d\n"));
}

void TestIniParser::copyIsDeep()
{
    WriteAll(path, "a=b\n");
    const std::unique_ptr<ConfigFile> file = parser->GetConfig(Path());
    file->sections["default"]["a"] = "changed";
    QCOMPARE(parser->Save(Path()), 0);
    QCOMPARE(ReadAll(path), QByteArray("[default]\na=b\n"));
    QVERIFY(parser->GetConfig("") == nullptr);
}

void TestIniParser::spellingsOfAPathAreDifferentEntries()
{
    const QString other = directory->path() + QStringLiteral("//test.conf");
    WriteAll(path, "a=b\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QVERIFY(!parser->CheckMapEmpty(Path(), "default"));
    QVERIFY(parser->CheckMapEmpty(Local(other), "default"));
    QCOMPARE(lines->Take(), QStringList(Warning("filePath %s is invalid!", other)));
}

void TestIniParser::emptyLookupsAreLogged()
{
    QVERIFY(parser->CheckMapEmpty(Path(), "s"));
    QCOMPARE(lines->Take(), QStringList(Warning("filePath %s is invalid!", path)));
    WriteAll(path, "[s]\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QVERIFY(parser->CheckMapEmpty(Path(), "s"));
    QCOMPARE(lines->Take(), QStringList(Warning("config file %s is empty!", path)));
    WriteAll(path, "[s]\n[t]\na=b\n");
    QCOMPARE(parser->LoadIniFile(Path()), 0);
    QVERIFY(parser->CheckMapEmpty(Path(), "s"));
    QCOMPARE(lines->Take(), QStringList(Warning("section %s is invalid!", QStringLiteral("s"))));
    QVERIFY(!parser->CheckMapEmpty(Path(), "t"));
    QCOMPARE(lines->Take(), QStringList());
}

void TestIniParser::textIsRead_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("value") << QByteArray("s") << QByteArray("a") << QByteArray(" b ");
    QTest::newRow("empty value") << QByteArray("s") << QByteArray("empty") << QByteArray();
    QTest::newRow("missing key") << QByteArray("s") << QByteArray("missing") << QByteArray();
    QTest::newRow("key of another section") << QByteArray("s") << QByteArray("c") << QByteArray();
    QTest::newRow("missing section") << QByteArray("missing") << QByteArray("a") << QByteArray();
    QTest::newRow("empty section") << QByteArray() << QByteArray("a") << QByteArray();
    QTest::newRow("empty key") << QByteArray("s") << QByteArray() << QByteArray();
    QTest::newRow("default section") << QByteArray("default") << QByteArray("c") << QByteArray("d");
}

void TestIniParser::textIsRead()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    WriteAll(path, "c=d\n[s]\na= b ;c\nempty=\n");
    QCOMPARE(parser->GetKeyValueString(Path(), section.toStdString(), key.toStdString()),
             value.toStdString());
    QCOMPARE(lines->Take(), section == "missing"
                                ? QStringList(Warning("section %s is invalid!", QStringLiteral("missing")))
                                : QStringList());
}

void TestIniParser::integerIsRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("number");
    const auto add = [](const char* text, int number) {
        QTest::addRow("'%s'", text) << QByteArray(text) << number;
    };
    add("0", 0);
    add("5", 5);
    add(" 5", 5);
    add("\t5", 5);
    add("5x", 5);
    add("5 6", 5);
    add("x", 0);
    add("x5", 0);
    add(" ", 0);
    add("-5", -5);
    add("+5", 5);
    add("007", 7);
    add("5.9", 5);
    add("0x10", 0);
    add("", -1);
    add("2147483647", std::numeric_limits<int>::max());
    add("2147483648", std::numeric_limits<int>::max());
    add("99999999999999999999", std::numeric_limits<int>::max());
    add("-2147483648", std::numeric_limits<int>::min());
    add("-99999999999", std::numeric_limits<int>::min());
}

void TestIniParser::integerIsRead()
{
    QFETCH(QByteArray, text);
    WriteAll(path, "[s]\na=" + text + "\n");
    QTEST(parser->GetKeyValueInt(Path(), "s", "a"), "number");
}

void TestIniParser::booleanIsRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("flag");
    for (const char* text : {"false", "1", "TRUE", "True", "true ", " true", "truex", "true\r", "yes", ""}) {
        QTest::addRow("'%s'", text) << QByteArray(text) << false;
    }
    QTest::newRow("true") << QByteArray("true") << true;
    QTest::newRow("true with a comment") << QByteArray("true;c") << true;
}

void TestIniParser::booleanIsRead()
{
    QFETCH(QByteArray, text);
    WriteAll(path, "[s]\na=" + text + "\n");
    QTEST(parser->GetKeyValueBool(Path(), "s", "a"), "flag");
}

void TestIniParser::missingKeyReturnsTheFailureValues_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("missing key") << QByteArray("s") << QByteArray("missing");
    QTest::newRow("missing section") << QByteArray("missing") << QByteArray("a");
    QTest::newRow("empty section") << QByteArray() << QByteArray("a");
    QTest::newRow("empty key") << QByteArray("s") << QByteArray();
}

void TestIniParser::missingKeyReturnsTheFailureValues()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, key);
    WriteAll(path, "[s]\na=1\n");
    QCOMPARE(parser->GetKeyValueString(Path(), section.toStdString(), key.toStdString()), std::string());
    QCOMPARE(parser->GetKeyValueInt(Path(), section.toStdString(), key.toStdString()), -1);
    QCOMPARE(parser->GetKeyValueBool(Path(), section.toStdString(), key.toStdString()), false);
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=1\n"));
}

void TestIniParser::unreadableFileReturnsTheFailureValuesAndIsKept_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("blank line") << QByteArray("[s]\na=true\n\n");
    QTest::newRow("equals sign first") << QByteArray("[s]\na=5\n=b\n");
    QTest::newRow("oversize") << QByteArray("[s]\na=5\nb=").leftJustified(LIMIT + 1, 'x');
}

void TestIniParser::unreadableFileReturnsTheFailureValuesAndIsKept()
{
    QFETCH(QByteArray, text);
    // The content that was loaded earlier is not used.
    WriteAll(path, "[s]\na=true\n");
    QCOMPARE(parser->GetKeyValueBool(Path(), "s", "a"), true);
    WriteAll(path, text);
    QCOMPARE(parser->GetKeyValueString(Path(), "s", "a"), std::string());
    QCOMPARE(parser->GetKeyValueInt(Path(), "s", "a"), -1);
    QCOMPARE(parser->GetKeyValueBool(Path(), "s", "a"), false);
    lines->Take();
    parser->SetKeyValue(Path(), "s", "a", std::string("b"));
    parser->SetKeyValue(Path(), "s", "a", "b");
    parser->SetKeyValue(Path(), "s", "a", 5);
    parser->SetKeyValue(Path(), "s", "a", true);
    QVERIFY(ReadAll(path) == text);
    // Each call logs only the line of its load.
    const QStringList taken = lines->Take();
    QCOMPARE(taken.size(), 4);
    QCOMPARE(taken.count(taken.first()), 4);
    QVERIFY(taken.first().startsWith(QStringLiteral("DEBUG UTILS ")));
}

void TestIniParser::valueIsStored_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("file with another value") << QByteArray("[s]\na=old\n");
    QTest::newRow("section without keys") << QByteArray("[s]\n");
}

void TestIniParser::valueIsStored()
{
    QFETCH(QByteArray, before);
    WriteAll(path, before);
    parser->SetKeyValue(Path(), "s", "a", std::string("text"));
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=text\n"));
    parser->SetKeyValue(Path(), "s", "a", "characters");
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=characters\n"));
    parser->SetKeyValue(Path(), "s", "a", std::numeric_limits<int>::min());
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=-2147483648\n"));
    parser->SetKeyValue(Path(), "s", "a", 0);
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=0\n"));
    parser->SetKeyValue(Path(), "s", "a", true);
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=true\n"));
    parser->SetKeyValue(Path(), "s", "a", false);
    QCOMPARE(ReadAll(path), QByteArray("[s]\na=false\n"));
}

void TestIniParser::emptyValueChangesNothing()
{
    const QByteArray before("[s]\n;c\na=b");
    WriteAll(path, before);
    parser->SetKeyValue(Path(), "s", "a", std::string());
    parser->SetKeyValue(Path(), "s", "a", "");
    parser->SetKeyValue(Path(), "s", "a", static_cast<const char*>(nullptr));
    QCOMPARE(ReadAll(path), before);
    QCOMPARE(lines->Take(), QStringList());
}

void TestIniParser::emptySectionOrKeyChangesNothing()
{
    const QByteArray before("[s]\n;c\na=b");
    WriteAll(path, before);
    for (const auto& [section, key] : {std::pair("", "a"), std::pair("s", "")}) {
        parser->SetKeyValue(Path(), section, key, std::string("c"));
        parser->SetKeyValue(Path(), section, key, "c");
        parser->SetKeyValue(Path(), section, key, 5);
        parser->SetKeyValue(Path(), section, key, true);
    }
    QCOMPARE(ReadAll(path), before);
}

void TestIniParser::setterDoesNotCreateTheFile()
{
    parser->SetKeyValue(Path(), "s", "a", "b");
    parser->SetKeyValue(Path(), "s", "a", 5);
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(lines->Take(), QStringList({OVERSIZE, OVERSIZE}));
}

void TestIniParser::setterKeepsOtherValues()
{
    WriteAll(path, "x=y;one\n;two\n[s];three\na=b;four\nc=d\n[t]\na=e\n");
    parser->SetKeyValue(Path(), "s", "a", "new");
    QCOMPARE(IniModel::Split(ReadAll(path)),
             IniModel::Split("[default]\nx=y;one\n;two\n[s];three\na=new;four\nc=d\n[t]\na=e\n"));
    parser->SetKeyValue(Path(), "u", "f", 1);
    QCOMPARE(IniModel::Split(ReadAll(path)),
             IniModel::Split("[default]\nx=y;one\n;two\n[s];three\na=new;four\nc=d\n[t]\na=e\n[u]\nf=1\n"));
}

void TestIniParser::everyAccessReadsTheFileAgain()
{
    WriteAll(path, "[s]\na=1\n");
    QCOMPARE(parser->GetKeyValueInt(Path(), "s", "a"), 1);
    WriteAll(path, "[s]\na=2\nb=true\n");
    QCOMPARE(parser->GetKeyValueInt(Path(), "s", "a"), 2);
    QCOMPARE(parser->GetKeyValueBool(Path(), "s", "b"), true);
    WriteAll(path, "[t]\nc=3\n");
    parser->SetKeyValue(Path(), "s", "a", 4);
    QCOMPARE(IniModel::Split(ReadAll(path)), IniModel::Split("[s]\na=4\n[t]\nc=3\n"));
    QVERIFY(QFile::remove(path));
    QCOMPARE(parser->GetKeyValueInt(Path(), "s", "a"), -1);
}

void TestIniParser::numbersAndBooleansReadTheFileTwice()
{
    WriteAll(path, "[s]\na=1\n");
    const OpenCounter opens(path);
    parser->GetKeyValueString(Path(), "s", "a");
    QCOMPARE(opens.Take(), 1);
    parser->GetKeyValueInt(Path(), "s", "a");
    QCOMPARE(opens.Take(), 2);
    parser->GetKeyValueBool(Path(), "s", "a");
    QCOMPARE(opens.Take(), 2);
    parser->SetKeyValue(Path(), "s", "a", 2);
    QCOMPARE(opens.Take(), 2);
}

void TestIniParser::randomTextsAreReadAndSavedAsInTheModel_data()
{
    QTest::addColumn<unsigned int>("seed");
    for (unsigned int seed = 0; seed < 20; ++seed) {
        QTest::addRow("%u", seed) << seed;
    }
}

void TestIniParser::randomTextsAreReadAndSavedAsInTheModel()
{
    constexpr int TEXTS = 30;
    QFETCH(unsigned int, seed);
    std::mt19937 random(seed);
    const auto upTo = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned int>(limit));
    };
    // A few names are often equal. Digits and slashes cause collisions of combined names.
    const QList<QByteArray> tokens{"a",           "b", "a/b", "a1", "0",  "/", ";",
                                   "=",           "[", "]",   " ",  "\r", "#", QByteArray(1, '\0'),
                                   "\xe8\xbf\x9e"};
    const QList<QByteArray> names{"a", "b", "a/b", "a1", "a1", "default"};
    const auto any = [&tokens, &upTo] {
        QByteArray text;
        for (int i = upTo(6); i > 0; --i) {
            text += tokens.at(upTo(tokens.size()));
        }
        return text;
    };
    int valid = 0;
    for (int i = 0; i < TEXTS; ++i) {
        QByteArray text;
        for (int line = upTo(12); line > 0; --line) {
            const QByteArray name = names.at(upTo(names.size()));
            switch (upTo(8)) {
            case 0:
            case 1:
                text += '[' + name + ']' + any();
                break;
            case 2:
            case 3:
                text += ';' + any();
                break;
            case 4:
            case 5:
            case 6:
                text += name + '=' + any();
                break;
            default:
                text += any();
                break;
            }
            if (line > 1 || upTo(4) > 0) {
                text += '\n';
            }
        }
        const QByteArray description = text.toPercentEncoding("\n ;=[]/#");
        IniModel model(text);
        // Removes the file first, because the file system would flush a rewritten file to disk.
        QFile::remove(path);
        WriteAll(path, text);
        const std::unique_ptr<ConfigFile> file = parser->GetConfig(Path());
        QVERIFY2((file != nullptr) == model.valid, description.constData());
        if (!model.valid) {
            parser->SetKeyValue(Path(), "a", "b", "value");
            QVERIFY2(ReadAll(path) == text, description.constData());
            continue;
        }
        ++valid;
        QVERIFY2(Sections(*file) == model.sections, description.constData());
        QVERIFY2(ToQt(file->inlineComments) == model.inlineComments, description.constData());
        QVERIFY2(ToQt(file->commentLines) == model.commentLines, description.constData());
        QVERIFY2(parser->Save(Path()) == (model.sections.isEmpty() ? -1 : 0), description.constData());
        if (model.sections.isEmpty()) {
            QVERIFY2(ReadAll(path) == text, description.constData());
        } else {
            QVERIFY2(IniModel::Split(ReadAll(path)) == model.Saved(), description.constData());
        }
        // Repeats the test with a change of one value.
        QFile::remove(path);
        WriteAll(path, text);
        parser->SetKeyValue(Path(), "a", "b", "value");
        model.sections["a"]["b"] = "value";
        QVERIFY2(IniModel::Split(ReadAll(path)) == model.Saved(), description.constData());
    }
    QVERIFY2(valid > TEXTS / 5, qPrintable(QString::number(valid)));
    QVERIFY2(valid < TEXTS, qPrintable(QString::number(valid)));
}

QTEST_GUILESS_MAIN(TestIniParser)
#include "TestIniParser.moc"
