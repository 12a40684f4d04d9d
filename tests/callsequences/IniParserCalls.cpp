// The getters return the content of the file. The parser keeps the values that were read or set last, and
// Save() writes them to the file.

#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <algorithm>
#include <optional>

#include "callsequences/CallSequence.h"
#include "config/IniParser.h"
#include "support/Files.h"

using Brevora::Config::IniParser;

namespace {
using Sections = QMap<QByteArray, QMap<QByteArray, QByteArray>>;

class IniParserCalls : public CallSequence
{
public:
    explicit IniParserCalls(quint32 seed) : CallSequence(seed) {}

    void Step() override;

private:
    /// The content of a file (no value if it is missing or unreadable) and the parser's copy.
    struct Model
    {
        std::optional<Sections> file;
        std::optional<Sections> entry;
    };

    void ReplaceFile(const QString& path, Model& model);
    void Set(const std::string& path, Model& model);
    void Get(const std::string& path, Model& model);
    void Save(const std::string& path, Model& model);
    void Compare(const std::string& path, Model& model);
    static bool Load(Model& model)
    {
        if (model.file) {
            model.entry = model.file;
        }
        return model.file.has_value();
    }
    QByteArray Word()
    {
        static const QList<QByteArray> WORDS{"", "a", "b", "long word", "\xe4\xb8\xad", "c#", "7", "true"};
        return Any(WORDS);
    }

    QTemporaryDir directory;
    IniParser parser;
    QMap<QString, Model> models;
};

void IniParserCalls::ReplaceFile(const QString& path, Model& model)
{
    switch (Pick(4)) {
    case 0:
        QFile::remove(path);
        model.file.reset();
        return;
    case 1:
        WriteAll(path, OneIn(2) ? "\n" : "[s]\n=x\n");
        model.file.reset();
        return;
    case 2:
        WriteAll(path, "");
        model.file = Sections();
        return;
    default:
        WriteAll(path, "; kept\n[a]\nb=1;c\nword\n[b]\na=x\n[a]\nb=2\n");
        model.file = Sections{{"a", {{"b", "2"}, {"word", "word"}}}, {"b", {{"a", "x"}}}};
        return;
    }
}

void IniParserCalls::Set(const std::string& path, Model& model)
{
    const QByteArray section = Word();
    const QByteArray key = Word();
    QByteArray value = Word();
    switch (Pick(4)) {
    case 0:
        parser.SetKeyValue(path, section.toStdString(), key.toStdString(), value.toStdString());
        break;
    case 1:
        value = OneIn(4) ? QByteArray() : value;
        parser.SetKeyValue(path, section.toStdString(), key.toStdString(),
                           value.isEmpty() ? nullptr : value.constData());
        break;
    case 2: {
        const int number = Pick(1000) - 500;
        value = QByteArray::number(number);
        parser.SetKeyValue(path, section.toStdString(), key.toStdString(), number);
        break;
    }
    default: {
        const bool yes = OneIn(2);
        value = yes ? "true" : "false";
        parser.SetKeyValue(path, section.toStdString(), key.toStdString(), yes);
        break;
    }
    }
    if (Load(model) && !section.isEmpty() && !key.isEmpty() && !value.isEmpty()) {
        (*model.entry)[section][key] = value;
        model.file = model.entry;
    }
}

void IniParserCalls::Get(const std::string& path, Model& model)
{
    const QByteArray section = Word();
    const QByteArray key = Word();
    const bool loads = Load(model);
    const QByteArray value =
        loads && !section.isEmpty() ? model.entry->value(section).value(key) : QByteArray();
    REQUIRE(parser.GetKeyValueString(path, section.toStdString(), key.toStdString()) == value.toStdString());
    REQUIRE(parser.GetKeyValueBool(path, section.toStdString(), key.toStdString()) == (value == "true"));
    if (loads && !key.isEmpty() && model.entry->contains(section)) {
        // A getter adds the key with an empty value, and Save() would write it.
        (*model.entry)[section][key];
    }
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    REQUIRE(parser.GetKeyValueInt(path, section.toStdString(), key.toStdString()) == (value.isEmpty() ? -1
                                                                                      : isNumber      ? number
                                                                                                      : 0));
}

void IniParserCalls::Save(const std::string& path, Model& model)
{
    const bool hasContent = model.entry && !model.entry->isEmpty();
    if (OneIn(4)) {
        REQUIRE(parser.SaveAll() == 0);
        for (Model& each : models) {
            if (each.entry && !each.entry->isEmpty()) {
                each.file = each.entry;
            }
        }
        return;
    }
    REQUIRE(parser.Save(path) == (hasContent ? 0 : -1));
    if (hasContent) {
        model.file = model.entry;
    }
}

void IniParserCalls::Compare(const std::string& path, Model& model)
{
    const auto config = parser.GetConfig(path);
    REQUIRE((config != nullptr) == Load(model));
    if (config == nullptr) {
        return;
    }
    Sections sections;
    for (const auto& [section, keys] : config->sections) {
        for (const auto& [key, value] : keys) {
            sections[QByteArray::fromStdString(section)][QByteArray::fromStdString(key)] =
                QByteArray::fromStdString(value);
        }
    }
    REQUIRE(sections == *model.file);
    const QByteArray section = Word();
    REQUIRE(parser.CheckMapEmpty(path, section.toStdString()) == !sections.contains(section));
}

void IniParserCalls::Step()
{
    static const QList<QString> NAMES{QStringLiteral("x.conf"), QStringLiteral("y.conf"),
                                      QStringLiteral("no/z.conf")};
    const QString path = directory.filePath(Any(NAMES));
    Model& model = models[path];
    const std::string local = Local(path);
    const bool folderExists = !path.contains(QLatin1String("no/"));
    switch (Pick(6)) {
    case 0:
        if (folderExists) {
            ReplaceFile(path, model);
        }
        break;
    case 1:
    case 2:
        Set(local, model);
        break;
    case 3:
        Get(local, model);
        break;
    case 4:
        Save(local, model);
        break;
    default:
        Compare(local, model);
        break;
    }
}
} // namespace

std::unique_ptr<CallSequence> MakeIniParserCalls(quint32 seed)
{
    return std::make_unique<IniParserCalls>(seed);
}
