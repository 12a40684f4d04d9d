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

/// A settings file as it stands after some use, or one of many keys that is `size` bytes long.
std::string MakeFile(const char* name, std::size_t size = 0)
{
    std::string text = "[VelodeskServer]\nstatement=true\ntrustNum=0\n[Tandra]\ndevicename=MyPC\n"
                       "fileStorePath=/home/a/Desktop\n";
    for (int number = 0; text.size() + 32 <= size; ++number) {
        std::string line = "key" + std::to_string(number) + "=";
        line.resize(31, 'v');
        text += line + "\n";
    }
    const std::string path = ScratchPath(name);
    std::ofstream(path, std::ios::trunc) << text;
    return path;
}

void Get(benchmark::State& state, const std::string& path)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(IniParser::GetInstance().GetKeyValueString(path, SECTION, KEY));
    }
}

void Set(benchmark::State& state, const std::string& path)
{
    int number = 0;
    for (auto _ : state) {
        IniParser::GetInstance().SetKeyValue(path, SECTION, KEY, "PC" + std::to_string(++number % 10));
    }
}

void GetOurs(benchmark::State& state)
{
    Get(state, MakeFile("velodesk.conf"));
}

void SetOurs(benchmark::State& state)
{
    Set(state, MakeFile("velodesk.conf"));
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

void GetLarge(benchmark::State& state)
{
    Get(state, MakeFile("large.conf", static_cast<std::size_t>(state.range(0))));
}

void SetLarge(benchmark::State& state)
{
    Set(state, MakeFile("large.conf", static_cast<std::size_t>(state.range(0))));
}

constexpr int SMALLEST = 1 << 10;
constexpr int LARGEST = 1 << 20;
constexpr int STEP = 4;
} // namespace

BENCHMARK(GetOurs)->Name("settings/get/ours")->UseRealTime();
BENCHMARK(GetQt)->Name("settings/get/qsettings")->UseRealTime();
BENCHMARK(SetOurs)->Name("settings/set/ours")->UseRealTime();
BENCHMARK(SetQt)->Name("settings/set/qsettings")->UseRealTime();
BENCHMARK(GetLarge)->Name("growth/get")->UseRealTime()->RangeMultiplier(STEP)->Range(SMALLEST, LARGEST);
BENCHMARK(SetLarge)->Name("growth/set")->UseRealTime()->RangeMultiplier(STEP)->Range(SMALLEST, LARGEST);
