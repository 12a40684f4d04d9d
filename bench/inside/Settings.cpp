#include <QSettings>
#include <benchmark/benchmark.h>
#include <fstream>
#include <string>

#include "config/IniParser.h"
#include "inside/Scratch.h"

using Brevora::Config::IniParser;

namespace {
constexpr char SECTION[] = "Tandra";
constexpr char KEY[] = "devicename";

/// Writes a typical settings file.
std::string MakeFile(const char* name)
{
    const std::string path = ScratchPath(name);
    std::ofstream(path, std::ios::trunc)
        << "[VelodeskServer]\nstatement=true\ntrustNum=0\n[Tandra]\ndevicename=MyPC\n"
           "fileStorePath=/home/a/Desktop\n";
    return path;
}

void GetOurs(benchmark::State& state)
{
    const std::string path = MakeFile("velodesk.conf");
    for (auto _ : state) {
        benchmark::DoNotOptimize(IniParser::GetInstance().GetKeyValueString(path, SECTION, KEY));
    }
}

void SetOurs(benchmark::State& state)
{
    const std::string path = MakeFile("velodesk.conf");
    int number = 0;
    for (auto _ : state) {
        IniParser::GetInstance().SetKeyValue(path, SECTION, KEY, "PC" + std::to_string(++number % 10));
    }
}

void GetQt(benchmark::State& state)
{
    const QString path = QString::fromStdString(MakeFile("qsettings.conf"));
    for (auto _ : state) {
        QSettings settings(path, QSettings::IniFormat);
        settings.sync();
        benchmark::DoNotOptimize(settings.value(QStringLiteral("Tandra/devicename")).toString());
    }
}

void SetQt(benchmark::State& state)
{
    const QString path = QString::fromStdString(MakeFile("qsettings.conf"));
    int number = 0;
    for (auto _ : state) {
        QSettings settings(path, QSettings::IniFormat);
        settings.setValue(QStringLiteral("Tandra/devicename"), QStringLiteral("PC%1").arg(++number % 10));
        settings.sync();
    }
}
} // namespace

BENCHMARK(GetOurs)->Name("settings/get/ours")->UseRealTime();
BENCHMARK(GetQt)->Name("settings/get/qsettings")->UseRealTime();
BENCHMARK(SetOurs)->Name("settings/set/ours")->UseRealTime();
BENCHMARK(SetQt)->Name("settings/set/qsettings")->UseRealTime();
