#include <benchmark/benchmark.h>
#include <unistd.h>

#include "baselines/plainlog.h"
#include "inside/Scratch.h"
#include "platform/Log.h"

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

} // namespace

BENCHMARK(Ours)->Name("log/ours")->Setup(StartOurs)->UseRealTime()->Threads(1)->Threads(MANY_THREADS);
BENCHMARK(Plain)
    ->Name("log/plain")
    ->Setup(StartPlain)
    ->Teardown(EndPlain)
    ->UseRealTime()
    ->Threads(1)
    ->Threads(MANY_THREADS);
