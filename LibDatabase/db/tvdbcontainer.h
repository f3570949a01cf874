#ifndef TVDBCONTAINER_H
#define TVDBCONTAINER_H

// TVDBContainer<T>: a container of an object's children of type T, in the
// order they were added, found by id. Non-owning: the database owns the
// objects and refills the containers (resolve_containers) whenever the
// tree changes, so a pointer taken from here lives until the next change.

#include "LibCore/error/tverror.h"
#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibDatabase/db/tvdbcontainerbase.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibCore/log/tvdump.h"

#include <ostream>
#include <string>
#include <type_traits>

template <class T>
class TVDBContainer : public TVDBContainerBase
{
public:
    explicit TVDBContainer(const std::string& tag) : TVDBContainerBase(tag) {}
    // A copy lists the same objects; an object's copy gets fresh containers
    // from its class, not these.
    TVDBContainer(const TVDBContainer&) = default;
    TVDBContainer& operator=(const TVDBContainer&) = default;
    ~TVDBContainer() override = default;

    void dump(std::ostream& out, int indent) const override
    {
        TVDBContainerBase::dump(out, indent);
        const std::string pad = TVDump::indent_string(indent);
        for (const T* object : m_objects)
            out << pad << "    " << object->get_id() << ' ' << object->get_member_tag() << '\n';
    }

    // Not a T (or null): the warning TVErrC_DynamicCast. An id already
    // listed is left as it is.
    int add_object(TVDBObject* object) override
    {
        // Here rather than at class scope: a class may hold a container of itself.
        static_assert(std::is_base_of<TVDBObject, T>::value, "a container holds stored objects");
        T* typed = dynamic_cast<T*>(object);
        if (typed == nullptr)
            return tvwarning(TVErrC_DynamicCast, TVLOCATION,
                             "Could not cast object ID %d to TVDBObject.",
                             object == nullptr ? -1 : object->get_id());
        (void)m_objects.add(std::to_string(typed->get_id()), typed);
        return TVErrC_ok;
    }

    bool accepts(const TVDBObject& object) const override
    {
        return dynamic_cast<const T*>(&object) != nullptr;
    }

    int clear() override
    {
        m_objects.clear();
        return TVErrC_ok;
    }

    TVDBObject* find_member_tag(const std::string& tag) const override
    {
        for (T* object : m_objects)
            if (object->get_member_tag() == tag)
                return object;
        return nullptr;
    }

    void find_all_member_tag(const std::string& tag, TVPtrArray<TVDBObject>& found) const override
    {
        for (T* object : m_objects)
            if (object->get_member_tag() == tag)
                found.add(object);
    }

    int get_num_member_tag(const std::string& tag) const override
    {
        int count = 0;
        for (const T* object : m_objects)
            if (object->get_member_tag() == tag)
                ++count;
        return count;
    }

    int size() const { return m_objects.size(); }
    // Unchecked; 0 <= index < size().
    T* operator[](int index) const { return m_objects[index]; }
    // Null when no member has that id.
    T* find(int id) const { return m_objects.find(std::to_string(id)); }

    using const_iterator = typename TVPtrArrayIndex<T>::const_iterator;
    const_iterator begin() const { return m_objects.begin(); }
    const_iterator end() const { return m_objects.end(); }

private:
    // Keyed by the id's decimal text; iteration is in order of addition.
    TVPtrArrayIndex<T> m_objects{false};
};

#endif // TVDBCONTAINER_H
