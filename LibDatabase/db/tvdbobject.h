#ifndef TVDBOBJECT_H
#define TVDBOBJECT_H

// TVDBObject: the base of everything stored in a database, the database
// itself included. To TVObject it adds an id, a place in the tree (a parent
// and the parent's container that lists it), links to other objects, a
// state, creation and modification stamps, managed children carried inside
// its own record, an update counter and an edit lock.
//
// Ownership: the database owns its objects. The parent and database
// pointers and the containers don't own. Managed children and scripts are
// owned by this object. An object's containers are members of its class,
// registered with add_container in each of its constructors; a copy never
// takes the original's containers.
//
// Serial form, under the body's prefix, in this order (defaults left out):
//
//   "I"  id, -1                   "O"  spec id, -1
//   "S"  state, 'N'               "V"  variables, "tag#1 value" per line
//   "P"  parent id, -1            "CT" create time, blank
//   "C"  container tag, if set    "CI" first id, -1
//   "M"  member tag, if set       "MT" modify time, when not the create time
//   "L"  links, "tag:id:" each    "MC" managed children, nested objects
//                                 "SC" scripts, nested objects
//
// "E" (a flag of old files) is read and dropped, never written.
//
// Threads: one thread at a time changes an object (the main thread, or the
// database's thread while the main thread waits). The lock (TVLockable)
// and the update stamp (TVUpdateCounter) may be asked from any thread.

#include "LibDatabase/db/tvdbobjectlink.h"
#include "LibDatabase/db/tvlockable.h"
#include "LibDatabase/db/tvupdatecounter.h"
#include "LibDate/core/tvdate.h"
#include "LibObject/core/tvid.h"
#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <cstddef>
#include <memory>
#include <map>
#include <string>
#include <vector>

class TVDatabase;
class TVDBContainerBase;
class TVDBNote;
class TVDBScript;
class TVObjectSpec;
class TVVariable;

class TVDBObject : public TVObject, public TVUpdateCounter, public TVLockable
{
public:
    // Stored as one character; see get_obj_state.
    enum E_ObjectState : char {
        E_StateNormal = 'N',
        E_StateDeleted = 'D', // a tombstone: kept so that a sync learns of the deletion
        E_StateEdited = 'E',
        E_StateLocked = 'L',
    };

    TVDBObject();
    // Copies the stored fields, the pointers and deep copies of the managed
    // children and scripts. The copy has no containers, no backup, a free
    // lock, and the original's update stamp.
    TVDBObject(const TVDBObject& other);
    // As the copy; this object's own containers, backup and lock stay.
    TVDBObject& operator=(const TVDBObject& other);
    ~TVDBObject() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    // Equal when both write the same bytes.
    bool operator==(const TVDBObject& other) const;
    bool operator!=(const TVDBObject& other) const { return !(*this == other); }

    void set_defaults(bool constructing);

    // ---- Virtual operations, in slot order ---------------------------------

    // Rewrites references to old_id (parent, spec, links); marks the object
    // changed when one moved. A new_id of -1 ends the references.
    virtual void remap_id(int old_id, int new_id);
    // Every reference to an id of ids goes to its value, all at once (a
    // whole file renumbered in one pass). A class that overrides remap_id
    // overrides this too.
    virtual void remap_ids(const std::map<int, int>& ids);
    // Which container of the parent lists this object; by default the
    // stored tag.
    virtual std::string get_container_tag() const;
    // For the application's classes; false here.
    virtual bool is_app_flagged() const;
    // The first child, over all containers, with that member tag; null if none.
    virtual TVDBObject* get_child_by_mtag(const std::string& tag) const;
    // Children with that member tag, each counted once.
    virtual int get_num_member_tag(const std::string& tag) const;
    // Hooks around removal from and addition to a database.
    [[nodiscard]] virtual int on_remove();
    [[nodiscard]] virtual int on_add();
    // One line for lists; empty here.
    virtual std::string get_summary() const;
    virtual bool uses_spec() const;
    // Gives the object a variable for each of spec's, linked to its
    // definition, drops variables the spec lacks that hold no value (one
    // with a value stays, for the checker to show), works the values out
    // and takes spec's id. TVDatabase::TVErrC_InvalidObjectSpec (a
    // warning) for an object that does not use specs.
    [[nodiscard]] virtual int apply_objectspec(const TVObjectSpec& spec);
    // System values (the schema layer); none here: empty, TVErrC_ok, false.
    virtual std::string get_sysvalue(const std::string& tag) const;
    virtual std::string get_sysvalue(const std::string& tag, const std::string& detail) const;
    [[nodiscard]] virtual int set_sysvalue(const std::string& tag, const std::string& value);
    [[nodiscard]] virtual int set_sysvalue(const std::string& tag, const std::string& detail,
                                           const std::string& value);
    virtual bool sysval_is_calculated(const std::string& tag) const;
    [[nodiscard]] virtual int pre_validate_value(const std::string& tag, const std::string& detail,
                                                 const std::string& value,
                                                 std::string& message) const;
    // Notes that a variable update is due (update_vars_due).
    virtual void trigger_update_vars();
    // Whether the object took the note; nothing is taken here.
    virtual bool apply_note(const TVDBNote& note);
    // Hands this object's stamp to the database as its last structure
    // change: a class calls it when a change alters what lists show.
    virtual void mark_structure_change();
    // For the application's classes; true here.
    virtual bool is_app_enabled() const;

    // ---- Identity -----------------------------------------------------------

    int get_id() const;
    // (id, seq, -1).
    TVId get_ids(int seq) const;
    // Gives the object its id and creation time. The first id it had is
    // kept as the create id (unless reset_create_id), since id and create
    // time together name the object in every copy of the database.
    void set_id(int id, const TVDate& created, bool reset_create_id);
    // The first id, else the id.
    int get_create_id() const;
    // Added for the edit in progress: cancelling it must remove the object.
    bool get_created() const;
    const TVDate& get_create_time() const;
    const TVDate& get_modify_time() const;
    // Source position of the last change; not stored.
    const std::string& get_modify_loc() const;
    int get_spec_id() const;
    void set_spec_id(int spec_id);

    // ---- Tree ---------------------------------------------------------------

    int get_parent_id() const;
    // Null until resolve_containers (or set_parent) has run.
    TVDBObject* get_parent() const;
    // The parent, or for a top-level object its database; null for the
    // database itself and for a free object. Variables are looked up this way.
    TVDBObject* get_upper() const;
    // With a parent, takes its id and the tags; without, clears all three.
    // The database is stored in either case. A change of the parent id or
    // a tag marks the object changed.
    void set_parent(TVDBObject* parent, const std::string& container_tag,
                    const std::string& member_tag, TVDatabase* db);
    // The pointers alone; nothing is marked.
    void set_parent_ptr(TVDBObject* parent, TVDatabase* db);
    const std::string& get_member_tag() const;
    TVDatabase* get_database() const;
    // Registers a container of this object's class under its tag; it must
    // live as long as this object. A second container of a tag is ignored.
    void add_container(TVDBContainerBase& container);
    // Null when this object has no container of that tag.
    TVDBContainerBase* get_container(const std::string& tag) const;
    // False when old_tag is unknown or new_tag is taken.
    bool remap_container(const std::string& old_tag, const std::string& new_tag);
    // Empties every container; they stay registered.
    void clear_containers();
    int get_ncontainers() const;
    TVDBContainerBase* get_container_by_index(int index) const;
    // Appends every child with that member tag, each once (not owned).
    void get_children_by_mtag(const std::string& tag, TVPtrArray<TVDBObject>& found) const;

    // ---- Changes ------------------------------------------------------------

    // Stamps a change: with now the modify time becomes the present,
    // otherwise it moves on one second (a scripted series stays in order
    // without jumping to the present); then the update counter ticks.
    void mark_changed(const std::string& location, bool now);
    // Puts the modify time back after bookkeeping that is no change of the
    // object (a new number for it or for an object it refers to); the
    // update counter ticks, so that the next write takes the object.
    void set_modify_time(const TVDate& time);
    void set_state(char state);
    // 'D', 'E' or 'L' as stored; anything else reads as 'N'.
    char get_obj_state() const;
    bool is_deleted() const { return get_obj_state() == E_StateDeleted; }
    // An edit is in progress (a backup exists).
    bool is_edited() const;
    // Locks for lock_id and keeps a copy for revert.
    [[nodiscard]] int edit(int lock_id, bool created);
    // Drops the copy, unlocks and stamps the change.
    [[nodiscard]] int commit();
    // Restores the copy through the serial form, id kept, and unlocks. The
    // update stamp is not touched: a reverted object is not changed.
    [[nodiscard]] int revert();

    // ---- Links --------------------------------------------------------------

    void add_link(int id, const std::string& tag);
    // Removes every link of that id and tag. None: with warn the warning
    // TVErrC_InvalidValue, else TVErrC_ok.
    [[nodiscard]] int remove_link(int id, const std::string& tag, bool warn);
    // The target ids of the links of that tag, in order.
    std::vector<int> get_links(const std::string& tag) const;
    const std::vector<TVDBObjectLink>& get_all_links() const;

    // ---- Managed children ---------------------------------------------------

    // Takes child and puts it first.
    void add_managed_child(TVDBObject* child);
    // Takes out the first child and gives it to the caller; null when none.
    TVDBObject* extract_managed_child();
    int get_nmanaged_children() const;

    // ---- Scripts ------------------------------------------------------------

    int get_nscripts() const;
    // Null for a bad index.
    TVDBScript* get_script_no(int index) const;
    // Takes script.
    void add_script(TVDBScript* script);
    // Deletes the script; false for a bad index.
    bool remove_script(int index);
    void clear_scripts();
    // This object's own script of that name; null when it has none.
    TVDBScript* get_own_script(const std::string& name) const;
    // The script of that name this object runs: its own, else its spec's
    // (inherited scripts are copied into the spec); null when neither has one.
    TVDBScript* get_script(const std::string& name) const;
    // Runs the trigger script "on_" + name (C_Trigger + a trigger name)
    // within the current operation; TVErrC_ok when there is none.
    [[nodiscard]] int run_trigger_script(const std::string& name);

    static constexpr const char* C_Trigger = "on_";
    static constexpr const char* C_CreateTrigger = "create";
    static constexpr const char* C_EditTrigger = "edit";
    static constexpr const char* C_RecalculateTrigger = "recalculate";
    static constexpr const char* C_StartupTrigger = "startup";

    // ---- Variables ------------------------------------------------------------
    //
    // An object that uses_spec carries variables (TVVariable), each linked to
    // its spec's definition once the spec is applied. Values are worked out
    // by update_vars: "$<NAME>" in a definition's text stands for the value
    // of NAME, looked up on this object and then its parents ("$<^NAME>"
    // starts at the parent, "$<%UNAME>" upper-cases, "%L" lower-cases), and
    // "$=(...)" is evaluated once no reference is left
    // (tv_evaluate_expression, tvdbexpression.h).

    // Owned variables, in order; with visible_only the private ones are skipped.
    int get_nvariables() const;
    int get_nvars(bool visible_only) const;
    // Null for a bad index.
    TVVariable* get_var_by_index(int index, bool visible_only) const;
    // With search, the parents are asked too, nearest first. Null when none has it.
    TVVariable* get_var_by_tag(const std::string& tag, bool search) const;
    // Takes var; appended.
    void add_var(TVVariable* var);
    bool remove_var_by_index(int index);
    void clear_vars();
    // The value of tag; "$<tag>" when there is no such variable. An auto
    // variable, with increment, hands out its value and keeps the next
    // number, zero-padded to the same width ("007" gives "007", keeps "008").
    std::string get_var_value(const std::string& tag, bool search, bool increment);
    // Sets the value as final (a new variable when there is none), passes
    // it to set_sysvalue and stamps the object holding it. The same value
    // changes nothing.
    [[nodiscard]] int set_var_value(const std::string& tag, const std::string& value, bool search);
    // Derived, or a system value that the class computes.
    bool var_is_calculated(const std::string& tag) const;
    // Works out every variable that is not final, in passes until one
    // makes no progress (variables may refer to each other in any order;
    // two that refer to each other stay unworked, their references in view).
    [[nodiscard]] int update_vars();
    // One expansion of the variable's value; it becomes final when every
    // reference was replaced (TVErrC_okFinished).
    [[nodiscard]] int expand_var(TVVariable& var);
    // Replaces the references in text and then its expressions; gives
    // TVErrC_okFinished, or TVErrC_okNotFinished while a reference is
    // unknown or not yet final (it stays in the text). owner, which may be
    // null, is the variable whose expressions these are. With increment an
    // auto variable referred to counts on.
    [[nodiscard]] int apply_vars(std::string& text, bool increment, TVVariable* owner);
    // A reference: [begin, end] spans "$<" to ">" in the text.
    struct TVVarRef {
        size_t begin = 0;
        size_t end = 0;
        std::string tag;
        char modifier = 0; // 'L', 'U' (either case) or 0
        int levels = 0;    // how many parents up the lookup starts
    };
    // Every reference of text, in order.
    static std::vector<TVVarRef> locate_vars(const std::string& text);
    // The next reference at or after from; false when there is none.
    static bool locate_next_var(const std::string& text, size_t from, TVVarRef& ref);
    // Reads the prefixes ("%X", "^") and the tag out of the text between
    // "$<" and ">"; false when no tag is left.
    static bool extract_var(const std::string& inner, TVVarRef& ref);
    // "tag#1 value" (or "#0" when not final), the value stream-escaped: the
    // "V" line of the serial form.
    static std::string var_to_string(const TVVariable& var);
    // Applies one "V" line; TVErrC_FileLineInvalid if it is malformed.
    [[nodiscard]] int var_from_string(const std::string& line);
    // Whether every variable of spec has a variable here that shares its
    // definition.
    bool linked_to(const TVObjectSpec& spec) const;

    // ---- Display state --------------------------------------------------------

    // Set once the object has been read from a stream, until a spec is
    // applied to it: variables a spec adds to a restored object start final.
    bool is_serialised() const;
    bool update_vars_due() const;
    void clear_update_vars_due();
    int get_alert_state() const;
    void set_alert_state(int state);

protected:
    // Tells the database (through the host) that this object changed.
    void stamped() override;

private:
    struct TVDBObjectImpl;

    void copy_fields(const TVDBObject& other);
    void finish_read();

    std::unique_ptr<TVDBObjectImpl> d;
};

std::ostream& operator<<(std::ostream& out, const TVDBObject& object);

#endif // TVDBOBJECT_H
