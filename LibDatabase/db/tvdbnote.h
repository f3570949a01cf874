#ifndef TVDBNOTE_H
#define TVDBNOTE_H

// TVDBNote: a small text kept in the database (container "NO" of the
// database) that the user can make active, so that the next new object
// takes it (TVDatabase::apply_active_note, TVDBObject::apply_note). Only
// the text is stored ("t", the base under "TVDBObject"); the activity and
// the type start at their defaults with every load, so a note is never
// left active across sessions.

#include "LibDatabase/db/tvdbobject.h"

#include <iosfwd>
#include <string>

class TVDBNote : public TVDBObject
{
public:
    // What happens to a note once an object has taken it: E_ActiveOnce
    // deletes it, E_ActiveKeep keeps it (inactive again); E_Inactive waits.
    enum E_Active { E_ActiveOnce = 0, E_ActiveKeep = 1, E_Inactive = 2 };

    TVDBNote();
    explicit TVDBNote(const std::string& text);
    TVDBNote(const TVDBNote& other);
    TVDBNote& operator=(const TVDBNote& other);
    ~TVDBNote() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);
    // Notes are plain texts: no spec, no variables.
    bool uses_spec() const override;

    const std::string& get_text() const { return m_text; }
    void set_text(const std::string& text);
    // The first line of the text, as a list shows it.
    std::string get_note_line() const;
    E_Active get_active() const { return m_active; }
    void set_active(E_Active active) { m_active = active; }
    int get_type() const { return m_type; }
    void set_type(int type) { m_type = type; }

private:
    std::string m_text;
    E_Active m_active = E_Inactive;
    int m_type = -1;
};

#endif // TVDBNOTE_H
