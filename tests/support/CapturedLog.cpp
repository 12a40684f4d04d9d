#include "support/CapturedLog.h"

#include <QFile>
#include <QRegularExpression>

#include "platform/Logger.h"

CapturedLog::CapturedLog()
{
    Clear();
}

CapturedLog::~CapturedLog()
{
    Singleton<Brevora::Logger>::GetInstance()->Init(std::string());
}

QString CapturedLog::Path() const
{
    return directory.filePath(QStringLiteral("test.log"));
}

QList<CapturedLog::Line> CapturedLog::Lines() const
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\[[^\\]]*\\] \\[([^\\]]*)\\] \\[([^:\\]]*):(\\d+)\\] (\\w+): (.*)$"));
    QList<Line> lines;
    QFile file(Path());
    if (!file.open(QIODevice::ReadOnly)) {
        return lines;
    }
    const QStringList texts =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), QString::SkipEmptyParts);
    for (const QString& text : texts) {
        const QRegularExpressionMatch match = pattern.match(text);
        lines.append({match.captured(1), match.captured(2), match.captured(3).toInt(), match.captured(4),
                      match.captured(5), text});
    }
    return lines;
}

QStringList CapturedLog::Messages(const QString& part) const
{
    QStringList messages;
    const QList<Line> lines = Lines();
    for (const Line& line : lines) {
        if (line.text.contains(part)) {
            messages.append(line.message);
        }
    }
    return messages;
}

bool CapturedLog::Contains(const QString& level, const QString& module, const QString& message) const
{
    const QList<Line> lines = Lines();
    for (const Line& line : lines) {
        if (line.level == level && line.module == module && line.message == message) {
            return true;
        }
    }
    return false;
}

int CapturedLog::Count(const QString& message) const
{
    return Messages().count(message);
}

void CapturedLog::Clear()
{
    // Removes the line in which Init() logs the path.
    QFile::remove(Path());
    auto* logger = Singleton<Brevora::Logger>::GetInstance();
    logger->Init(Path().toLocal8Bit().toStdString());
    QFile::resize(Path(), 0);
}
