#pragma once

#include <QElapsedTimer>
#include <QtGlobal>
#include <functional>
#include <pthread.h>

/// Runs `work` on a thread with a stack of 64 KiB and gives the milliseconds that it took: what takes a piece
/// of the stack for each byte of a long text does not survive it.
inline qint64 RunOnSmallStack(std::function<void()> work)
{
    constexpr std::size_t STACK_SIZE = 65536;
    pthread_attr_t attributes;
    pthread_t thread{};
    QElapsedTimer timer;
    timer.start();
    const auto begin = [](void* given) -> void* {
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, STACK_SIZE) != 0 ||
        pthread_create(&thread, &attributes, begin, &work) != 0 || pthread_join(thread, nullptr) != 0) {
        qFatal("no thread with a small stack");
    }
    pthread_attr_destroy(&attributes);
    return timer.elapsed();
}
