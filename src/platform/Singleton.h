#pragma once

#include <cstdlib>
#include <new>

/// One object of T for the whole process. The first GetInstance() creates it. It is destroyed at process
/// exit; all singletons are destroyed in the reverse order of their creation.
///
/// There is no lock: two threads must not call GetInstance() of a T at the same time while the object does
/// not exist. main() makes the first calls before it starts threads.
template <typename T>
class Singleton
{
public:
    /// Returns the object; null if there is no memory for it.
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
        std::atexit(&Singleton<T>::Destroy);
        return sm_ins;
    }

    /// Destroys the object if it exists. The next GetInstance() creates a new one.
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

/// One object of T for the whole process, as a function-local static. Any thread may make the first call.
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
