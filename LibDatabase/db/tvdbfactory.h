#ifndef TVDBFACTORY_H
#define TVDBFACTORY_H

// TVDBFactory<T>: the second base by which an application's database class
// declares itself, as in
//
//     class MathsDB : public TVDatabase, public TVDBFactory<MathsDB>
//
// It keeps the list of the live databases of type T, so that code that
// knows only the class (a window, a command) can reach the one the
// application made. The application adds its object once it is built; a
// database leaves the list by itself when it is destroyed, so the list never
// holds a dangling pointer. The list doesn't own its entries.
//
// Main thread only, as every database call.

#include <algorithm>
#include <utility>
#include <vector>

template <class T>
class TVDBFactory
{
public:
    TVDBFactory(const TVDBFactory&) = delete;
    TVDBFactory& operator=(const TVDBFactory&) = delete;

    // Adds database (not owned) to the list; a second add changes nothing.
    static void add_database(T* database)
    {
        // The key is taken while database is whole: in ~TVDBFactory only the
        // base part is left, and casting back to T there is not allowed.
        const TVDBFactory* key = database;
        for (const auto& entry : m_database)
            if (entry.first == key)
                return;
        m_database.emplace_back(key, database);
    }
    static void remove_database(const T* database) { remove_key(database); }
    static int get_nlive_databases() { return static_cast<int>(m_database.size()); }
    // The index-th database in the order they were added; null for a bad index.
    // (Not get_database: every TVDBObject has one, its own database.)
    static T* get_live_database(int index)
    {
        if (index < 0 || index >= get_nlive_databases())
            return nullptr;
        return m_database[static_cast<size_t>(index)].second;
    }

protected:
    TVDBFactory() = default;
    ~TVDBFactory() { remove_key(this); }

private:
    static void remove_key(const TVDBFactory* key)
    {
        m_database.erase(std::remove_if(m_database.begin(), m_database.end(),
                                        [key](const auto& entry) { return entry.first == key; }),
                         m_database.end());
    }

    // The live databases of type T, each under the address of its factory part.
    static inline std::vector<std::pair<const TVDBFactory*, T*>> m_database;
};

#endif // TVDBFACTORY_H
