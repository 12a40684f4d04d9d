#include <QCoreApplication>
#include <benchmark/benchmark.h>

#include "inside/Scratch.h"
#include "platform/Logger.h"

int main(int argc, char** argv)
{
    Singleton<Brevora::Logger>::GetInstance()->Init(ScratchPath("velodesk.log"));
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
