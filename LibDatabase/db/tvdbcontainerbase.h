#ifndef TVDBCONTAINERBASE_H
#define TVDBCONTAINERBASE_H

// TVDBContainerBase: a named group of an object's children. The object's
// class owns its containers as members and registers them with
// TVDBObject::add_container; resolve_containers fills them. A container
// never owns the objects it lists: the database does.
//
// This base lists nothing; TVDBContainer<T> holds children of one type.

#include "LibCore/ptrarray/tvptrarray.h"

#include <iosfwd>
#include <string>

class TVDBObject;

class TVDBContainerBase
{
public:
    explicit TVDBContainerBase(const std::string& tag) : m_tag(tag) {}
    TVDBContainerBase(const TVDBContainerBase&) = default;
    TVDBContainerBase& operator=(const TVDBContainerBase&) = default;
    virtual ~TVDBContainerBase() = default;

    virtual void dump(std::ostream& out, int indent) const;

    [[nodiscard]] virtual int add_object(TVDBObject* object);
    [[nodiscard]] virtual int clear();
    // The first member with that member tag; null when none.
    virtual TVDBObject* find_member_tag(const std::string& tag) const;
    // Appends every member with that member tag to found (not owned).
    virtual void find_all_member_tag(const std::string& tag, TVPtrArray<TVDBObject>& found) const;
    virtual int get_num_member_tag(const std::string& tag) const;
    // Whether add_object would take object; false here.
    virtual bool accepts(const TVDBObject& object) const;

    const std::string& get_tag() const { return m_tag; }
    // Only TVDBObject::remap_container renames, so that its map follows.
    void set_tag(const std::string& tag) { m_tag = tag; }

private:
    std::string m_tag;
};

std::ostream& operator<<(std::ostream& out, const TVDBContainerBase& container);

#endif // TVDBCONTAINERBASE_H
