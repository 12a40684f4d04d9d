#include <benchmark/benchmark.h>
#include <chrono>
#include <fstream>

#include "Child.h"
#include "inside/Scratch.h"
#include "platform/RandomCode.h"

namespace {
constexpr std::size_t SIZE = 1048576;
constexpr int TIMES = 5;

template <typename Work>
void EraseAgain(benchmark::State& state, Work work)
{
    const std::string path = ScratchPath("trust");
    for (auto _ : state) {
        std::ofstream(path, std::ios::trunc) << std::string(SIZE, 'x');
        const auto start = std::chrono::steady_clock::now();
        work(path);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

void Ours(benchmark::State& state)
{
    EraseAgain(state, [](const std::string& path) { Brevora::RandomCode::SafeCoverRemove(path); });
}

void Shred(benchmark::State& state)
{
    EraseAgain(state, [](const std::string& path) {
        Child("shred", {"shred", "-n", "2", "-z", "-u", path}).Wait();
    });
}
} // namespace

BENCHMARK(Ours)->Name("erase/ours")->UseManualTime()->Iterations(TIMES);
BENCHMARK(Shred)->Name("erase/shred")->UseManualTime()->Iterations(TIMES);
