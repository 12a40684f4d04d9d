#include "support/EveryLine.h"

#include <QMutex>
#include <QMutexLocker>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/Logger.h"

namespace {
QMutex mutex;
bool isTaking = false;
QStringList lines;
} // namespace

void RealWrite(
    Brevora::Logger* logger, int level, const std::string& file, int line, const std::string& module,
    const char* format,
    ...) __asm__("__real__ZN7Brevora6Logger14WriteFormattedEiRKNSt7__cxx1112basic_stringIcSt11char_"
                 "traitsIcESaIcEEEiS8_PKcz");
void WrappedWrite(
    Brevora::Logger* logger, int level, const std::string& file, int line, const std::string& module,
    const char* format,
    ...) __asm__("__wrap__ZN7Brevora6Logger14WriteFormattedEiRKNSt7__cxx1112basic_stringIcSt11char_"
                 "traitsIcESaIcEEEiS8_PKcz");

void WrappedWrite(Brevora::Logger* logger, int level, const std::string& file, int line,
                  const std::string& module, const char* format, ...)
{
    std::array<char, 8192> text{};
    va_list args;
    va_start(args, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::vsnprintf(text.data(), text.size(), format, args);
#pragma GCC diagnostic pop
    va_end(args);
    {
        const QMutexLocker locker(&mutex);
        if (isTaking) {
            const QString word = QString::fromStdString(logger->GetLevelString(level));
            lines.append(QStringLiteral("%1 %2 ").arg(word, QString::fromStdString(module)) +
                         QString::fromUtf8(text.data()));
        }
    }
    RealWrite(logger, level, file, line, module, "%s", text.data());
}

EveryLine::EveryLine()
{
    const QMutexLocker locker(&mutex);
    isTaking = true;
    lines.clear();
}

EveryLine::~EveryLine()
{
    const QMutexLocker locker(&mutex);
    isTaking = false;
    lines.clear();
}

QStringList EveryLine::Take() const
{
    const QMutexLocker locker(&mutex);
    QStringList taken = lines;
    lines.clear();
    return taken;
}
