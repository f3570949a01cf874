#ifndef TVDATABASE_H
#define TVDATABASE_H

// TVDatabase: a file of objects, and the object that stands for the file.
//
// It owns every object of the file (in file order, with an id map), gives
// out ids, and is the one way in for editing, undo and the file's life:
// each finished operation is appended to the partial file
// (complete_operation), so what the user did survives a crash even between
// full saves, and saves go through renames that always leave a whole main
// file on disk. The work is done by one class per concept, each in its own
// files: TVDBEditor (the tree of objects), TVDBReader and TVDBWriter (the
// files' text, doc/file-format.md), TVDBLoader (opening, the replay, the
// undo rebuild), TVDBSaver (every save, rename and copy of the files),
// TVDBChangeJournal (what changed since the last write), and
// TVDBFileNames (the name of every side file).
//
// It is itself a TVDBObject, id 0 (the first id it allocates is its own),
// written first in its file in the class name that the application
// registered. It is also a TVThread, whose only work is recalculation.
//
// Threads: all of it runs on the thread that owns the database (the main
// thread), except func, which runs background_recalculate on the
// database's own thread, and the two flag calls, signal_recalc_complete
// and recalc_complete, which take their own mutexes. No lock is held
// across file work; the owner pauses the background work around saving
// and loading.
//
// Errors follow the framework: every fallible call returns an int and
// reports through tverror/tvwarning; messages name the file concerned.

#include "LibComms/thread/tvcondvar.h"
#include "LibComms/thread/tvmutex.h"
#include "LibComms/thread/tvthread.h"
#include "LibDatabase/db/tvdbindex.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDate/core/tvdate.h"

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class TVDBChecker;
class TVDBNote;
class TVExternalDB;
class TVObjectSpec;

class TVDatabase : public TVThread, public virtual TVDBObject
{
public:
    enum E_RecalcLevel { E_RecalcAll = 0, E_RecalcChanged = 1, E_RecalcNone = 2 };

    static int TVErrC_NotADatabase;
    static int TVErrC_InvalidDatabaseVersion;
    static int TVErrC_NewerAppVersion;
    static int TVErrC_ObjectIdNotFound;
    static int TVErrC_CorruptDatabase;
    static int TVErrC_CorruptPartial;
    static int TVErrC_Intermediate;
    static int TVErrC_DatabaseNotLoaded;
    static int TVErrC_DatabaseReadOnly;
    static int TVErrC_DatabaseAlreadyLoaded;
    static int TVErrC_WrongAppType;
    static int TVErrC_InvalidObjectSpec;
    static int TVErrC_UnfilledVariables;
    static int TVErrC_ExtraVariables;
    static int TVErrC_InvalidChild;
    // A layer that is not in this build: as a plain result, nothing was
    // done; as a warning, the action the user asked for can't be done.
    static int TVErrC_NotAvailable;

    // The file format. None of these may change: they stand in every file.
    static const char* const C_DlmtDBIdentifier; // "TVDatabase:7685", line 1
    static const char* const C_DlmtVersion;      // "Version", line 2
    static const char* const C_DlmtTransaction;  // "Transaction", a block's first field
    static const char* const C_ObjectStart;      // "O:", the tag of every object
    static constexpr int C_LatestFileVersion = 0;

    static const char* const C_IdMgr;            // "IM"
    static const char* const C_DatabaseService;  // "Database"
    static const char* const C_DatabaseTag;      // "DB"
    static const char* const C_SpecTag;          // "OS"
    static const char* const C_QueryTag;         // "QU"
    static const char* const C_NoteTag;          // "NO"
    static const char* const C_DefaultSpecName;  // "Default"
    static const char* const C_TopLevelSpecName; // "TopLevel"
    static const char* const C_DefaultChildName; // "Object"
    static const char* const C_SystemReference;  // "SYSTEM"
    static const char* const C_LastKnownGood;    // ".lkg"
    static const char* const C_DatabasePartDirParam; // "PartDir"
    static const char* const C_DatabasePartDirLabel; // "Temporary File Location"

    static constexpr int C_DefaultBackupCount = 5;
    // Backups rotate at most this often, so frequent saves keep few copies.
    static constexpr long C_BackupIntervalSeconds = 7200;
    // save_snapshot's rotation depth when backups are off.
    static constexpr int C_SnapshotBackupCount = 10;
    // Tombstones stay in the main file for this many days of saves.
    static constexpr int C_TombstoneDays = 7;
    static constexpr int C_RecalcWaitMs = 10000;
    static constexpr int C_SaveStatusDelayMicro = 1000000;

    TVDatabase();
    TVDatabase(const TVDatabase&) = delete;
    TVDatabase& operator=(const TVDatabase&) = delete;
    // Stops the recalculation thread and destroys the objects. Files are
    // not touched: a database dropped without unload leaves its side files
    // for the next load, as a crash would.
    ~TVDatabase() override;

    // Makes a fresh database; a source hands over its record only.
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);

    // ---- Objects and ids ------------------------------------------------------

    // Returns the next id and moves past it; the database is marked changed.
    int allocate_id();
    int next_id() const;
    // This database for its own id, else the map's; null when absent.
    TVDBObject* get_object_by_id(int id) const;
    int get_nobjects() const;
    // In file order; null for a bad index.
    TVDBObject* get_object_by_index(int index) const;
    // Rebuilds every container from the parent ids, then containers_resolved.
    int resolve_containers();

    // ---- Editing ------------------------------------------------------------
    //
    // Every change goes through these. A non-empty operation names the
    // change and finishes it (complete_operation): that name is what undo
    // and redo show. An empty one leaves the operation open, so several
    // calls make one undo step when the caller completes it. A step that
    // fails leaves what it had done in memory; nothing is rolled back.

    // Takes object into the database (owned from here on, also on failure).
    // id -1 allocates one; a given id is used as it is. With a parent,
    // container_tag names the parent's container; an empty member_tag is
    // the first child tag of the parent's spec. Managed children carried
    // in the object come alive as objects of their own, with new ids.
    [[nodiscard]] int add_object(TVDBObject* object, TVDBObject* parent,
                                 const std::string& container_tag, const std::string& member_tag,
                                 int spec_id, const std::string& operation, int id = -1);
    // Leaves a tombstone ('D') of the object and of its live children,
    // which a later full save drops after C_TombstoneDays; references to
    // the object end (remap_id to -1).
    [[nodiscard]] int delete_object(int id, const std::string& operation);
    // Tombstones the object and its live subtree and hands the caller
    // (owner) a copy carrying that subtree as managed children, ready for
    // add_object elsewhere. copy is null on failure.
    [[nodiscard]] int extract_object(int id, TVDBObject*& copy, bool resolve);
    // object (owned from here on) takes the id, parent and file place of
    // the object of that id; its children stay under the id. The old
    // object leaves the file but stays alive, for a window that still
    // holds it, until the objects are next dropped (undo, unload).
    [[nodiscard]] int replace_object(int id, TVDBObject* object, const std::string& container_tag,
                                     const std::string& member_tag, int spec_id,
                                     const std::string& operation);
    // A copy for the caller to own; null on failure.
    [[nodiscard]] int clone_object(int id, TVDBObject*& copy) const;
    // Takes in a copy of another database's object under its own id and
    // creation stamps; a local object holding that id moves to a new one.
    // ids at or above next_id stay free for the other database's objects.
    [[nodiscard]] int clone_external_object(const TVDBObject& object, int next_id);
    // Moves object under parent (null: to the top); the member tag stays.
    [[nodiscard]] int reparent(TVDBObject* object, TVDBObject* parent,
                               const std::string& container_tag);
    // Renumbers object; its create id keeps the first id, and every
    // reference follows.
    [[nodiscard]] virtual int change_id(TVDBObject& object, int new_id);
    // from takes to's values and references; to is deleted.
    [[nodiscard]] virtual int merge_objects(int from, int to);

    // An edit: edit_object locks the object for lock_id and keeps a copy;
    // the caller changes the object; commit_object or revert_object ends
    // it. created says the object was added for this edit, so reverting
    // removes it. A second edit of a locked object is refused.
    [[nodiscard]] int edit_object(int id, bool created, int lock_id);
    [[nodiscard]] int commit_object(int id, const std::string& operation);
    [[nodiscard]] int revert_object(int id);
    // Some object (or the database) is being edited.
    bool object_edited() const;

    // ---- Undo and redo ------------------------------------------------------
    //
    // There is no undo stack: undo marks the last active transaction undone
    // in the index and rebuilds the database from the base file, replaying
    // the partial file without the undone transactions; redo does the same
    // for the first undone one. A new operation after an undo clears
    // nothing: the undone ones stay available, in their old places in the
    // replay. A failed rebuild leaves the database unloaded, as a failed load.

    bool can_undo() const;
    bool can_redo() const;
    // The operation texts the undo and redo actions show; empty when none.
    std::string get_undo_operation() const;
    std::string get_redo_operation() const;
    [[nodiscard]] int undo();
    [[nodiscard]] int redo();

    // ---- Object specs and variables (TVDBSchema, tvdbschema.h) ---------------
    //
    // Specs are objects of the database (TVObjectSpec, container tag
    // C_SpecTag) whose text says which variables, children and scripts the
    // objects that follow them have. A database takes part once it holds a
    // spec; the first brings "Default" and "TopLevel" along at the next
    // apply_objectspecs. Editing calls update_vars and apply_objectspec_to_db.

    // Recomputes the variables of an object and of the objects below it
    // (-1: of all, the database included); without force only those due
    // (update_vars_due). An object read afresh (a revert, a replay) is
    // linked to its spec again first.
    [[nodiscard]] virtual int update_vars(int id, bool force);
    // Puts object on the spec of spec_id (a negative id: "Default"), moves
    // children that no longer fit, and makes mandatory children (with
    // add_create also the "[^]" ones). Objects that don't use specs and
    // tombstones are left alone.
    [[nodiscard]] virtual int apply_objectspec_to_db(TVDBObject* object, int spec_id,
                                                     bool add_create);
    // Offers the active notes to the new object (TVDBObject::apply_note);
    // the first it takes is used: deleted if it was active once, otherwise
    // made inactive again.
    [[nodiscard]] virtual int apply_active_note(TVDBObject& object);
    // Runs the object's trigger script of that name (C_CreateTrigger, ...);
    // nothing for an object that doesn't use specs (a spec's scripts are
    // its objects' triggers).
    [[nodiscard]] virtual int run_trigger(TVDBObject& object, const std::string& trigger);
    // The member tag of the first child of the parent's spec; empty if none.
    virtual std::string spec_child_member_tag(const TVDBObject& parent) const;
    // A child made for a mandatory child of a spec, on spec_id: here an
    // object of the parent's own class, or else a plain TVDBObject, in the
    // parent's first container that takes it (at the top level for the
    // database). out, if given, receives it (not owned).
    [[nodiscard]] virtual int create_object(TVDBObject* parent, const std::string& member_tag,
                                            int spec_id, TVDBObject** out);
    // Declares the compiled fields a spec's text may refer to, as bare
    // system TVVarSpecs; none here.
    [[nodiscard]] virtual int add_sysquants(TVObjectSpec& spec);

    // Takes spec (owned from here on, also on failure) as a child of the database.
    [[nodiscard]] int add_objectspec(TVObjectSpec* spec, const std::string& operation);
    // Each of these ends in apply_objectspecs. A spec whose text fails is
    // still committed, and the failure returned.
    [[nodiscard]] int delete_objectspec(int id);
    [[nodiscard]] int edit_objectspec(int id, int lock_id);
    [[nodiscard]] int commit_objectspec(int id, const std::string& operation);
    [[nodiscard]] int revert_objectspec(int id);
    // Renames the spec and the mentions of it in every spec's text.
    [[nodiscard]] int rename_spec(const std::string& from, const std::string& to);
    // Live specs only; null when there is none.
    TVObjectSpec* get_objectspec_by_id(int id) const;
    TVObjectSpec* get_objectspec_by_name(const std::string& name) const;
    TVObjectSpec* get_objectspec_by_index(int index) const;
    // -1 when there is none.
    int get_objectspec_id_for_name(const std::string& name) const;
    int get_nobjectspecs() const;
    int default_spec_id() const;
    // Compiles one spec: its text, the system values, what inherited
    // specs bring, the children's spec ids. A failure stays on the spec
    // (TVObjectSpec::get_parse_error) as well.
    [[nodiscard]] int parse_objectspec(TVObjectSpec& spec, int* error_line);
    // Every spec; strict stops at the first failure, otherwise failures
    // stay on the specs and only errors end it.
    [[nodiscard]] int parse_objectspecs(bool strict);
    // The default specs, then every object and the database on its spec,
    // then every variable worked out.
    [[nodiscard]] int apply_objectspecs();
    [[nodiscard]] int create_default_spec();
    // The ids are equal, or spec_id's spec inherits base_id's.
    bool is_spec_derived_from(int base_id, int spec_id) const;
    bool objectspec_in_use(int id) const;
    // Another spec's text names name; by receives that spec's name.
    bool objectspec_referenced(const std::string& name, std::string& by) const;
    std::vector<int> get_derived_specs(int base_id) const;
    // With all, every live spec; otherwise those offered for new objects
    // (neither baseOnly nor defunct).
    std::vector<TVObjectSpec*> get_specs(bool all) const;
    std::vector<TVObjectSpec*> get_allowable_specs(int base_id, bool all) const;
    // The spec id that object must derive from, by its parent's spec; -1
    // when nothing says.
    int get_child_base_spec(const TVDBObject& object) const;
    // The values of tag over the live objects, each once, in file order.
    void get_var_values(const std::string& tag, std::vector<std::string>& values) const;

    // The checker's questions: variables the object's spec lacks (a
    // stray one kept for its value), variables without a value (a prompt
    // left empty, a reference never resolved), and whether the object's
    // member tag is missing from its parent's spec.
    std::vector<std::string> extra_variables(int id) const;
    std::vector<std::string> unfilled_vars(int id) const;
    bool is_bastard(int id) const;

    // The ".tvo" spec file (doc/schema-language.md). export_specs writes
    // every spec whole or not at all; import_specs takes the file's specs
    // in by name (text only: compile and apply after); validate_specfile
    // tries the file on a scratch copy of the specs; do_import validates,
    // imports, compiles and applies as one operation. A file holding a
    // query ("<") is refused: queries are not in this build.
    [[nodiscard]] int export_specs(const std::string& path) const;
    [[nodiscard]] int import_specs(const std::string& path);
    [[nodiscard]] int validate_specfile(const std::string& path) const;
    [[nodiscard]] int do_import(const std::string& file);

    // Gives from the values of to's variables that from lacks or holds
    // empty; from's own values stay (merge_objects).
    [[nodiscard]] virtual int append_values(TVDBObject& from, const TVDBObject& to);

    static const char* const C_CreateTrigger; // "create"
    static const char* const C_EditTrigger;   // "edit"

    // Runs the trigger of that name on every live object that uses specs,
    // in the database's order, within the current operation; the first
    // warning (a script the time limit stopped) ends it.
    [[nodiscard]] int run_trigger_script(const std::string& name);
    // The first script, over all objects and specs, whose last run raised:
    // its name, the id of the object that holds it, the line and, when
    // asked, the message; false when none did.
    bool get_error_script(std::string& script, int& id, int& line,
                          std::string* message = nullptr) const;
    // Drops the changes of the open operation by rebuilding from the files,
    // as undo does: objects held from before are stale afterwards.
    [[nodiscard]] int discard_operation();

    // The highest update counter of this object and all objects.
    long get_last_db_update() const;
    bool db_has_changed_since(long counter) const;
    long get_last_structure_change() const;
    void set_last_structure_change(long counter);
    // Anything changed since the last partial write.
    bool needs_save() const;
    // Anything changed since the main file was last written whole (or
    // loaded without a replay): the main file is behind, though every
    // finished operation may be safe in the partial file.
    bool changed_since_full_write() const;
    // The object of that id was stamped: the objects tell their database
    // (through the host), so that a partial write finds what changed
    // without looking at every object.
    void note_changed(int id);

    // ---- Identity of the file -----------------------------------------------

    // The application sets its type before loading; a file of another type
    // won't load.
    void set_app_type(const std::string& type);
    const std::string& get_app_type() const;
    const std::string& get_comment() const;
    void set_comment(const std::string& comment);
    int get_appfileversion() const;
    int get_database_file_version() const;
    const TVDate& get_last_write() const;
    const std::string& get_write_host() const;
    bool is_loaded() const;
    bool is_read_only() const;
    TVDBIndex& get_index();

    // ---- File names ---------------------------------------------------------

    // Sets main, partial and index names at once; the base name is empty
    // until the first save.
    void set_filename(const std::string& file);
    const std::string& get_filename() const;
    const std::string& get_partial_filename() const;
    const std::string& get_base_filename() const;
    const std::string& get_index_filename() const;
    // See tvcachename.h.
    static std::string get_cache_name(const std::string& path, bool force);
    // The application's scratch directory, "/" and path's base name.
    static std::string get_scratch_name(const std::string& path);
    static std::string partial_name(const std::string& path);

    // ---- Formats ------------------------------------------------------------

    // Writes the header (unless since is non-zero and not first), a
    // transaction line (with a transaction and since above 0; the
    // transaction is added to the index, and save_partial logs it once the
    // block is on the disk), this database's record if
    // it changed since since (always with since 0), and the objects: since
    // 0, all but tombstones older than C_TombstoneDays; since above 0, those
    // changed since then; since below 0, all.
    [[nodiscard]] int write(std::ostream& out, long since, bool first,
                            const std::string& transaction, int version) const;
    // Reads what write wrote, onto this database. partial reads the blocks
    // of a partial file, which replace objects by id; skip_saved leaves out
    // the blocks that the last full save holds. A partial block is all or
    // nothing: a block that doesn't read stops the read with the blocks
    // before it applied, and get_partial_good_bytes() tells where it began.
    [[nodiscard]] int read(std::istream& in, bool partial, bool skip_saved);
    // The same from the file's text in memory.
    [[nodiscard]] int read_text(std::string_view text, bool partial, bool skip_saved);
    // Bytes of the partial file that the last read applied whole.
    long get_partial_good_bytes() const;

    // ---- Loading ------------------------------------------------------------

    [[nodiscard]] int load(const std::string& file, bool read_only, bool create,
                           const std::string& default_file, bool keep_partial, bool use_partial,
                           bool remove_intermediate, bool no_clean);
    [[nodiscard]] int load(const std::string& file, bool create, const std::string& default_file,
                           bool keep_partial, bool use_partial, bool remove_intermediate);
    // Opens read-only and creates nothing.
    [[nodiscard]] int read(const std::string& file, bool keep_partial, bool use_partial);
    [[nodiscard]] int create(const std::string& file, bool overwrite);
    [[nodiscard]] int unload();
    [[nodiscard]] int load_partial(bool skip_saved);
    // Rebuilds the database from the base file and the partial file.
    [[nodiscard]] int load_base();
    bool has_partial(const std::string& file) const;
    // Without remove it only reports leftovers. With remove it deletes
    // ".new", ".old" and, unless keep_partial, the partial file; the index
    // and base go too, except while a kept partial file needs them.
    [[nodiscard]] int clean_intermediate(bool keep_partial, bool remove);
    // The text of the first object of a file; empty if it can't be read or
    // is no database file.
    static std::string first_object(const std::string& file);

    // ---- Saving -------------------------------------------------------------

    [[nodiscard]] int save(bool mark_write, bool manual, bool verify);
    [[nodiscard]] int save_partial(const std::string& transaction);
    // The end of an operation: appends what changed, under a new
    // transaction, if anything did. TVErrC_ok means it is on the disk.
    [[nodiscard]] int complete_operation(const std::string& operation);
    [[nodiscard]] int verify(const std::string& file, const std::string& app_type) const;
    [[nodiscard]] int save_as(const std::string& file, bool manual);
    [[nodiscard]] int save_snapshot(bool manual);
    // backup receives the name of the safety copy of the present state.
    [[nodiscard]] int restore_snapshot(const std::string& snapshot, std::string& backup);
    // Replaces the whole database by text (an import, a merge's result).
    // The text is read and checked first: a damaged one, one of another
    // application type or of a newer release is refused with the load's
    // message (naming source, where the text came from) and nothing on the
    // disk or in memory changes. Otherwise the text becomes the main file
    // by the save's steps, the undo history starts afresh from it, and the
    // file it replaced is kept as the newest backup (".bk0"), which
    // restore_snapshot can bring back.
    [[nodiscard]] int replace_file(const std::string& text,
                                   const std::string& source = std::string());
    // A full write of the database (tombstones older than C_TombstoneDays
    // left out) to file, whole or not at all (see tv_db_save_file), and
    // with text given to *text as well; with an empty file only to *text.
    // app_type, if not empty, is the type the copy claims; this database's
    // own stays. With check the written file is loaded back to prove it.
    // The index and the counters don't change; a read-only database exports.
    [[nodiscard]] int export_db(const std::string& file, std::string* text, bool check,
                                const std::string& app_type);
    [[nodiscard]] int remove_partial(const std::string& file);
    void set_backup_count(int count);
    int get_backup_count() const;
    void set_autosave(bool on);
    bool get_autosave() const;

    // ---- Sync ----------------------------------------------------------------
    //
    // Links to shared copies of this database (TVExternalDB) and the four
    // operations on them: push writes the whole database to a link, pull
    // reads a peer's copy and ignores, replaces or merges it (TVDBSync,
    // tvdbsync.h, says how). A stamped save pushes; the workspace pulls in
    // its periodic update.

    // Links a shared copy of the given type (TVCloudInstance::E_FileType)
    // and name; mode 0 pushes to it, 1 takes the shared data in (this
    // database holding nothing of the user's yet), any other pulls all.
    // out is the new link, owned by the database.
    [[nodiscard]] int add_external(int type, const std::string& name, int mode,
                                   TVExternalDB*& out);
    // Drops every link of that type.
    void remove_external(int type);
    int get_nexternals() const;
    // Null when out of range / when there is none.
    TVExternalDB* get_external_no(int index) const;
    TVExternalDB* get_external_type(int type) const;
    TVExternalDB* get_external_name(const std::string& name) const;
    [[nodiscard]] int push(TVExternalDB& link, bool force);
    // Brings in what linked copies hold; a replace only with can_replace.
    [[nodiscard]] virtual int pull_all(bool can_replace);
    // Writes this database to every linked copy (manual ones too with
    // include_manual); force pushes also where a copy says it can't take one.
    [[nodiscard]] virtual int push_all(bool include_manual, bool force);
    [[nodiscard]] int pull(TVExternalDB& link, bool can_replace, std::string& details);
    // After a pull changed the data: the result saved whole, the old
    // session's log dropped, everything counted as written.
    [[nodiscard]] virtual int pull_complete();
    // What a merge takes of the peer database's own record: here its next
    // id, when higher.
    [[nodiscard]] virtual int pull_db_data(const TVDatabase& other);
    // 0 after a load, 1 while a pull pass found nothing, 2 replaced, 3 merged.
    virtual int sync_state() const;
    // A transfer to or from a linked copy is under way.
    virtual bool is_syncing() const;
    // Something changed since this database was last written whole.
    virtual bool needs_push() const;
    // Some linked copy has new data waiting to be pulled.
    virtual bool has_ext_data() const;
    // The links' states in one (TVCloudFile::E_State): off over
    // initialising over uploading over downloading; idle, or 4 with none.
    int get_cloud_state() const;
    // The text of "Cloud Merge Information": each link's last pull and
    // history, then the database service's log.
    std::string get_merge_details() const;

    // ---- Import and checks --------------------------------------------------

    // Takes the objects of another database file (or of text, when file is
    // empty) into this one under new ids, as one operation (TVDBImporter,
    // tvdbimporter.h, says how the numbers and specs meet).
    [[nodiscard]] virtual int import_db(const std::string& file, const std::string* text);
    // The objects the last successful import_db brought in.
    int get_import_count() const;
    // TVErrC_ok when every object spec compiled at its last compile;
    // otherwise the first failure's message, as a warning for the user.
    [[nodiscard]] virtual int validate_specs() const;
    // TVErrC_ok when every script parses; otherwise the first failure's
    // script name, line and message.
    [[nodiscard]] virtual int validate_queries(std::string& script, int& line,
                                               std::string& message) const;

    // One object that a check found wrong.
    struct TVCheckIssue
    {
        int id = -1;
        std::string short_message;
    };
    // Checks the objects (TVDBChecker::periodic_check on the present time)
    // and gives what is wrong now.
    [[nodiscard]] virtual int periodic_check(long seconds, bool force,
                                             std::vector<TVCheckIssue>& issues);
    // The checker of this database, made at the first call; it lives as
    // long as the database's present load.
    TVDBChecker& get_checker() const;

    // ---- Notes (TVDBNote, container C_NoteTag of the database) ---------------

    int get_nnotes() const;
    // Null for a bad index / an id that is no note.
    TVDBNote* get_note_no(int index) const;
    TVDBNote* get_note_id(int id) const;
    // A new note of that text, as the operation "Add note"; out, if given,
    // receives it (not owned).
    [[nodiscard]] int add_note(const std::string& text, TVDBNote** out = nullptr);
    [[nodiscard]] int delete_note(int id);
    // Every note goes inactive; then, for an id of a note, that note takes
    // active (a TVDBNote::E_Active) and type. Another id: TVErrC_NullPointer.
    [[nodiscard]] int set_active_note(int id, int active, int type);
    bool is_active_note(int id) const;
    // The place notes are fetched from (the record's "NoteURL"); several
    // places are kept one per line.
    std::string get_noteurl() const;
    std::vector<std::string> get_noteurls() const;
    void set_noteurl(const std::string& url);

    // ---- Recalculation thread -----------------------------------------------

    [[nodiscard]] int start_recalc_thread(TVThread::E_ThreadPriority priority);
    void signal_recalc_thread();
    void stop_recalc_thread();
    // On the database's thread, at most every C_RecalcWaitMs; nothing here.
    [[nodiscard]] virtual int background_recalculate();
    void signal_recalc_complete();
    // Whether a pass finished since the last call; clears the flag.
    bool recalc_complete();
    void pause_background(bool pause);
    // The schema layer's variable update; nothing yet in this layer.
    [[nodiscard]] virtual int recalculate(E_RecalcLevel level);

    // ---- What an application overrides --------------------------------------

    virtual int current_appfileversion() const;
    [[nodiscard]] virtual int upgrade_appfileversion();
    [[nodiscard]] virtual int initialise(bool all);
    virtual void containers_resolved();
    // An empty database of the application's class; the caller owns it.
    virtual TVDatabase* create_verification_db(const std::string& app_type) const;
    // Whether the file holds the user's work, so that every save verifies.
    virtual bool has_user_data() const;

protected:
    int func() override;

private:
    struct TVDatabaseImpl;
    // The classes of the engine's concepts work on the private record
    // (tvdatabase_p.h): the editor of the tree, the files' reader and
    // writer, the loader and the saver.
    friend class TVDBEditor;
    friend class TVDBReader;
    friend class TVDBWriter;
    friend class TVDBLoader;
    friend class TVDBSaver;
    friend class TVDBSync;
    friend class TVDBSchema;
    friend class TVDBImporter;

    // Destroys every object; the names and flags stay.
    void clear_objects();
    TVDBObject* find_object(int id) const;
    [[nodiscard]] int check_writable(bool loaded) const;
    [[nodiscard]] int rebuild_after(int index_result);
    void mark_partial_written();
    std::vector<const TVDBObject*> changed_objects(long since) const;
    // Loaded and holding id (the database included); otherwise reports
    // and returns null.
    TVDBObject* find_for_edit(int id) const;

    std::unique_ptr<TVDatabaseImpl> d;
};

std::ostream& operator<<(std::ostream& out, const TVDatabase& db);

#endif // TVDATABASE_H
