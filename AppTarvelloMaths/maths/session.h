#ifndef SESSION_H
#define SESSION_H

// Session: a stretch of practice, the list of runs (Go ids) to do or done
// in it. The main window's list of the session is exactly that list.
//
// The run list is changed without marking the session changed: adding or
// deleting the Go objects around it carries the change into the file.
//
// Serial form, under the body's prefix, defaults left out:
//   "go"        one line per Go id, in order
//   "start"     when the session began, blank
//   "complete"  0 or 1, 0
//   "TVDBObject" block

#include "LibDatabase/db/tvdbobject.h"
#include "LibDate/core/tvdate.h"

#include <iosfwd>
#include <memory>
#include <string>

class Session : public TVDBObject
{
public:
    static constexpr const char* C_ClassName = "Session";

    Session();
    Session(const Session& other);
    Session& operator=(const Session& other);
    ~Session() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void dump(std::ostream& out, int indent) const override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void register_tvobject() override;
    // Its data is in compiled fields that no object spec describes.
    bool uses_spec() const override { return false; }
    // Follows a Go's change of id; a deleted Go leaves -1 behind, which
    // every reader passes over.
    void remap_id(int old_id, int new_id) override;
    void remap_ids(const std::map<int, int>& ids) override;

    void set_defaults(bool constructing);

    int get_ngos() const;
    // -1 for an index out of range.
    int get_go_no(int index) const;
    bool has_go(int id) const;
    void add_go(int id);
    // Removes every occurrence of id.
    void remove_go(int id);
    void clear_gos();

    const TVDate& get_start() const;
    void set_start(const TVDate& start);
    bool get_complete() const;
    void set_complete(bool complete);

private:
    struct SessionImpl;
    std::unique_ptr<SessionImpl> d;
};

std::ostream& operator<<(std::ostream& out, const Session& session);

#endif // SESSION_H
