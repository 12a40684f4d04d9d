#include <benchmark/benchmark.h>
#include <chrono>
#include <fstream>

#include "Child.h"
#include "inside/Scratch.h"
#include "platform/Logger.h"

namespace {
constexpr std::size_t SIZE = 33554432;
constexpr int TIMES = 3;

void Fill(const std::string& path)
{
    const std::string line = "[26-11-21 08:00:00.123456] [INFO] [Logger.cpp:140] VELODESK: count is 4\n";
    std::string text;
    text.reserve(SIZE + line.size());
    while (text.size() < SIZE) {
        text += line;
    }
    text.resize(SIZE);
    std::ofstream(path, std::ios::trunc) << text;
}

template <typename Work>
void Timed(benchmark::State& state, Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

void Ours(benchmark::State& state)
{
    const std::string path = ScratchPath("rotated.log");
    Brevora::Logger logger;
    logger.Init(path);
    for (auto _ : state) {
        Fill(path);
        Timed(state, [&logger] { logger.SaveAndOpenNewFile(); });
    }
}

void Copy(benchmark::State& state)
{
    const std::string path = ScratchPath("copied.log");
    for (auto _ : state) {
        Fill(path);
        Timed(state, [&path] { Child("cp", {"cp", path, path + ".old"}).Wait(); });
    }
}
} // namespace

// In both benchmarks, the first iteration creates the copy, and the others overwrite it.
BENCHMARK(Ours)->Name("rotation/ours")->UseManualTime()->Iterations(TIMES);
BENCHMARK(Copy)->Name("rotation/cp")->UseManualTime()->Iterations(TIMES);
