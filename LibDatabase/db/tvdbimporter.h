#ifndef TVDBIMPORTER_H
#define TVDBIMPORTER_H

// TVDBImporter: takes the objects of another database file (or its text)
// into a loaded database. The two files number their objects and specs
// independently, so the other file is read into a scratch database of the
// same application class, renumbered there, and only then moved over:
//
//   specs   same name and text: the target's spec is used; same name,
//           other text: the incoming one is renamed ("Default" becomes
//           "Default0", "Default1", ...) and added; a new name is added.
//           The top-level spec is never duplicated: the incoming text is
//           appended to the target's, so its object kinds may exist.
//   ids     every incoming id goes to a fresh id of the target, and every
//           reference follows, all by one map at once (remap_ids), so that
//           an old number and a new one can never be confused; links
//           between the incoming objects keep resolving.
//   objects parents before children, each under its renumbered parent or
//           the target's root, with its own container and member tags.
//
// The import is one operation ("Import" and the file's base name), which
// undo takes back whole. A failure part-way drops the open operation, so
// the target is as it was; the files on disk are never touched before the
// operation completes. Tombstones of the other file are not taken.
//
// Cost: one pass over the incoming objects for the ids, a map lookup per
// reference.
//
// A view of one database, made per call; the database must outlive it.
// Main thread only.

#include <map>
#include <string>

class TVDatabase;

class TVDBImporter
{
public:
    explicit TVDBImporter(TVDatabase& target) : m_target(target) {}

    // file not empty: that file, read-only through the normal load with its
    // partial file (a file
    // that isn't a database, or is of another application type, gives the
    // load's message and changes nothing); otherwise *text. count, if
    // given, receives the number of objects that came in.
    [[nodiscard]] int import_db(const std::string& file, const std::string* text, int* count);

private:
    [[nodiscard]] int import_all(TVDatabase& scratch, const std::string& source, int& count);
    // Matches, renames and adds the scratch database's specs; spec_map
    // takes each scratch spec id to the target's.
    [[nodiscard]] int take_specs(TVDatabase& scratch, std::map<int, int>& spec_map);
    void drop_open_operation();

    TVDatabase& m_target;
};

#endif // TVDBIMPORTER_H
