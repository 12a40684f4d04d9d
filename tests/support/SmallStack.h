#pragma once

#include <QtGlobal>
#include <functional>
#include <pthread.h>
#include <unistd.h>

#ifdef VELODESK_HEAVY
constexpr std::size_t SMALL_STACK_SIZE = 524288;
#else
constexpr std::size_t SMALL_STACK_SIZE = 65536;
#endif

/// Runs `work` on a thread with a stack of 64 KiB, or the minimum of this processor. A recursion for each
/// byte of a long text overflows it.
inline void RunOnSmallStack(std::function<void()> work)
{
    const auto size = qMax(SMALL_STACK_SIZE, static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN)));
    pthread_attr_t attributes;
    pthread_t thread{};
    const auto begin = [](void* given) -> void* {
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, size) != 0 ||
        pthread_create(&thread, &attributes, begin, &work) != 0 || pthread_join(thread, nullptr) != 0) {
        qFatal("no thread with a small stack");
    }
    pthread_attr_destroy(&attributes);
}
