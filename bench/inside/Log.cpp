#include <benchmark/benchmark.h>
#include <memory>
#include <unistd.h>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "inside/Scratch.h"
#include "platform/Log.h"
#include "baselines/plainlog.h"

namespace {
constexpr char MODULE_TAG[] = "VELODESK";
constexpr int MANY_THREADS = 8;

void StartOurs(const benchmark::State&)
{
    const std::string path = ScratchPath("ours.log");
    unlink(path.c_str());
    Singleton<Brevora::Logger>::GetInstance()->Init(path);
}

void Ours(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state) {
        LOG_INFO("count is %d", ++number);
    }
    state.SetItemsProcessed(state.iterations());
}

void StartPlain(const benchmark::State&)
{
    static const std::string path = ScratchPath("plain.log");
    unlink(path.c_str());
    plainlog_open(path.c_str());
}

void EndPlain(const benchmark::State&)
{
    plainlog_close();
}

void Plain(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state) {
        plainlog_line("Log.cpp", __LINE__, MODULE_TAG, ++number);
    }
    state.SetItemsProcessed(state.iterations());
}

std::shared_ptr<spdlog::logger> spdLogger;

void StartSpdlog(const benchmark::State&)
{
    const std::string path = ScratchPath("spdlog.log");
    unlink(path.c_str());
    spdLogger = spdlog::basic_logger_mt("bench", path);
    spdLogger->set_pattern("[%y-%m-%d %H:%M:%S.%f] [%l] [%s:%#] VELODESK: %v");
    spdLogger->flush_on(spdlog::level::info);
}

void EndSpdlog(const benchmark::State&)
{
    spdLogger.reset();
    spdlog::drop_all();
}

void Spdlog(benchmark::State& state)
{
    int number = 0;
    for (auto _ : state) {
        SPDLOG_LOGGER_INFO(spdLogger, "count is {}", ++number);
    }
    state.SetItemsProcessed(state.iterations());
}
} // namespace

BENCHMARK(Ours)->Name("log/ours")->Setup(StartOurs)->UseRealTime()->Threads(1)->Threads(MANY_THREADS);
BENCHMARK(Plain)
    ->Name("log/plain")
    ->Setup(StartPlain)
    ->Teardown(EndPlain)
    ->UseRealTime()
    ->Threads(1)
    ->Threads(MANY_THREADS);
BENCHMARK(Spdlog)
    ->Name("log/spdlog")
    ->Setup(StartSpdlog)
    ->Teardown(EndSpdlog)
    ->UseRealTime()
    ->Threads(1)
    ->Threads(MANY_THREADS);
