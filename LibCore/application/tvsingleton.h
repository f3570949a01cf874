#ifndef TVSINGLETON_H
#define TVSINGLETON_H

// Holder of one process-wide instance of T. Each singleton has a free
// accessor (get_tverror(), tvlocale(), ...) that creates the instance on
// first use with m_manageDeletion true. An object may instead install
// itself from its constructor with m_manageDeletion false (the running
// application object); shutdown code then must not delete it.
//
// Not thread-safe: singletons are created on the main thread, or during
// static initialisation, before any worker thread starts.
template <class T>
class TVSingleton
{
public:
    static T* m_object;
    static bool m_manageDeletion;

    static bool has_object() { return m_object != nullptr; }

    // Installs obj if no instance exists yet; returns the instance in force.
    static T* install(T* obj, bool manageDeletion)
    {
        if (m_object == nullptr) {
            m_object = obj;
            m_manageDeletion = manageDeletion;
        }
        return m_object;
    }

    // Creates the instance on first use.
    static T* instance()
    {
        if (m_object == nullptr) {
            m_object = new T;
            m_manageDeletion = true;
        }
        return m_object;
    }

    // Deletes the instance if the holder manages it, and forgets it either way.
    static void release()
    {
        if (m_manageDeletion)
            delete m_object;
        m_object = nullptr;
        m_manageDeletion = false;
    }

    // Puts obj in place of the present instance, deleting that one if managed.
    static void replace(T* obj, bool manageDeletion)
    {
        if (m_object != obj)
            release();
        m_object = obj;
        m_manageDeletion = manageDeletion;
    }

protected:
    TVSingleton() = default;
    TVSingleton(const TVSingleton&) = default;
    TVSingleton& operator=(const TVSingleton&) = default;
    ~TVSingleton() = default;
};

template <class T>
T* TVSingleton<T>::m_object = nullptr;
template <class T>
bool TVSingleton<T>::m_manageDeletion = false;

#endif
