#pragma once

#include <cstdlib>
#include <new>

/// One object of T for the whole process, made at the first GetInstance() and destroyed at process exit, in
/// the reverse order of creation among all singletons.
///
/// No lock is taken: the first GetInstance() of each T must not race with another one. main() makes those
/// first calls before any thread exists.
template <typename T>
class Singleton
{
public:
    /// The object; null only if memory for it could not be had.
    static T* GetInstance()
    {
        if (sm_ins != nullptr) {
            return sm_ins;
        }
        try {
            sm_ins = new T();
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        static_cast<void>(std::atexit(&Singleton<T>::Destroy));
        return sm_ins;
    }

    /// Destroys the object, if there is one. A later GetInstance() makes a new one.
    static void Destroy()
    {
        if (sm_ins != nullptr) {
            delete sm_ins;
            sm_ins = nullptr;
        }
    }

private:
    static T* sm_ins;
};

template <typename T>
T* Singleton<T>::sm_ins = nullptr;

/// One object of T for the whole process as a function-local static: its first use may race, the language
/// guards it.
template <typename T>
class SingletonNew
{
public:
    static T& GetInstance()
    {
        static T instance;
        return instance;
    }
};
