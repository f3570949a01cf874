#ifndef TVDBCLIPBOARD_H
#define TVDBCLIPBOARD_H

// TVDBClipboard: cut, copy and paste of objects within one database's
// tree. The clipboard holds ids, not objects: a cut moves the objects
// themselves at the paste (reparent, same ids), a copy adds clones under
// new ids. Either paste is one operation ("Paste objects") that undo takes
// back. Objects that no longer resolve at the paste are passed over.
//
// The ids marked for a move are static (m_cutID), so that every view can
// show them as cut (is_cut) until the paste or a new cut or copy.
// TVDBClipboardQt (LibDatabase/qt) adds the system clipboard.
//
// The database must outlive the clipboard; main thread only.

#include "LibCore/ptrarray/tvptrarray.h"
#include "LibObject/core/tvidlist.h"

#include <string>
#include <vector>

class TVDatabase;
class TVDBObject;

class TVDBClipboard
{
public:
    // A kind of child the target may take: its member tag and the spec
    // the child would have.
    struct ListEntry
    {
        std::string m_tag;
        std::string m_specName;
        int m_specId = -1;
        // Alphabetical by tag, then by spec name.
        static bool greater(const ListEntry& a, const ListEntry& b);
    };

    explicit TVDBClipboard(TVDatabase& db) : m_db(db) {}
    TVDBClipboard(const TVDBClipboard&) = delete;
    TVDBClipboard& operator=(const TVDBClipboard&) = delete;
    virtual ~TVDBClipboard() = default;

    // Puts the objects on the clipboard for a move / for clones.
    virtual void cut(const TVIdList& ids);
    virtual void copy(const TVIdList& ids);
    const TVIdList& get_ids() const { return m_ids; }

    // Pastes under target with the container and member tag tag; added
    // (made non-owning) receives the objects moved or made. Each object
    // needs a spec and tag must not be empty: otherwise TVErrC_NullPointer,
    // and the paste stops there.
    [[nodiscard]] int do_paste(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                               const std::string& tag);
    // The same, the pasted objects put on the spec named spec_name (empty:
    // each keeps its own).
    [[nodiscard]] int do_paste_as(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                                  const std::string& tag, const std::string& spec_name);
    bool get_was_copied() const { return m_wasCopied; }
    static bool is_cut(int id);
    virtual bool clipboard_has_object() const;
    // The tags of target's spec that every object on the clipboard fits
    // (its spec derives from the child's); empty when none.
    std::vector<std::string> get_matching_children(TVDBObject& target) const;
    static void finalise_list(std::vector<ListEntry>& list);
    // The children object's spec offers, in ListEntry::greater order.
    static std::vector<ListEntry> get_possible_children(TVDatabase& db, TVDBObject& object);

protected:
    TVDatabase& m_db;

private:
    [[nodiscard]] int paste(TVDBObject& target, TVPtrArray<TVDBObject>& added,
                            const std::string& tag, int spec_id);

    static TVIdList m_cutID;
    TVIdList m_ids;
    bool m_wasCopied = false;
};

#endif // TVDBCLIPBOARD_H
