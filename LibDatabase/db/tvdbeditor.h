#ifndef TVDBEDITOR_H
#define TVDBEDITOR_H

// TVDBEditor: the changes to a database's tree of objects: adding (with
// the children a record carries), extracting and deleting (leaving
// tombstones), replacing, cloning, taking in another database's object,
// moving, renumbering and merging. TVDatabase's editing calls come here;
// see their contracts in tvdatabase.h. The editor calls back through the
// database's own operations and hooks, so that a program's overrides
// (specs, triggers, renumbering) take part.
//
// A view of one database, made where it is needed; the database must
// outlive it. Main thread only.

#include "LibDatabase/db/tvdatabase.h"

#include <string>

class TVDBEditor
{
public:
    explicit TVDBEditor(TVDatabase& db);

    [[nodiscard]] int add_object(TVDBObject* object, TVDBObject* parent,
                                 const std::string& container_tag, const std::string& member_tag,
                                 int spec_id, const std::string& operation, int id);
    [[nodiscard]] int extract_object(int id, TVDBObject*& copy, bool resolve);
    [[nodiscard]] int delete_object(int id, const std::string& operation);
    [[nodiscard]] int replace_object(int id, TVDBObject* object, const std::string& container_tag,
                                     const std::string& member_tag, int spec_id,
                                     const std::string& operation);
    [[nodiscard]] int clone_object(int id, TVDBObject*& copy) const;
    [[nodiscard]] int clone_external_object(const TVDBObject& object, int next_id);
    [[nodiscard]] int reparent(TVDBObject* object, TVDBObject* parent,
                               const std::string& container_tag);
    [[nodiscard]] int change_id(TVDBObject& object, int new_id);
    [[nodiscard]] int merge_objects(int from, int to);

private:
    TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBEDITOR_H
