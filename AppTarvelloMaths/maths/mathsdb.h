#ifndef MATHSDB_H
#define MATHSDB_H

// MathsDB: the program's database. Its objects are the exercises ("E"),
// their runs ("G") and the sessions ("S"), all children of the database
// object itself; with them it keeps the reminder times and the rotation of
// the background image, and in memory only the list of questions that went
// wrong in this run of the program (for Repeat Incorrect).
//
// Sessions: the current one is the first incomplete session in container
// order, else the newest. update_session keeps one open Go per active
// exercise that is due in it; when no open Go remains the session is done
// and the next start() (or the next load) begins another.
//
// Serial form of the database record, under the body's prefix:
//   "reminder"     one line per reminder time, the distance from midnight
//   "imageDir"     the user's folder or single picture, "" for built-ins
//   "recentImage"  the picture on show
//   "viewed"       one line per bare file name shown in this rotation
//   then TVDatabase's own lines
//
// Pointers handed out (sessions, runs, exercises) are the database's and
// live until the next change of the tree (add_object, delete_object, load).
// Main thread only.

#include "AppTarvelloMaths/maths/mathsdbrecord.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbfactory.h"
#include "LibDate/core/tvdate.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

// The fields live in the base MathsDBRecord; see there for why.
class MathsDB : private MathsDBRecord, public TVDatabase, public TVDBFactory<MathsDB>
{
public:
    static constexpr const char* C_ClassName = "MathsDB";
    static constexpr const char* C_MathsDataType = "TVMaths";
    static constexpr const char* C_FileExtension = ".tvmaths";
    static constexpr const char* C_ExerciseTag = MathsDBRecord::C_ExerciseTag;
    static constexpr const char* C_GoTag = MathsDBRecord::C_GoTag;
    static constexpr const char* C_SessionTag = MathsDBRecord::C_SessionTag;
    static constexpr const char* C_ImageBookmark = "ImageBookmark";
    static constexpr int C_NBuiltinImages = 10;
    // The pictures that come with the program, in the order they rotate.
    static const char* const C_BuiltinImages[C_NBuiltinImages];

    MathsDB();
    ~MathsDB() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void dump(std::ostream& out, int indent) const override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void register_tvobject() override;
    // Its data is in compiled fields that no object spec describes.
    bool uses_spec() const override { return false; }
    bool has_user_data() const override;
    // The periodic update's hook: closes finished sessions and fills the
    // current one, making the first session if there is none. level is
    // not consulted.
    [[nodiscard]] int recalculate(E_RecalcLevel level) override;
    // An empty MathsDB of that type; the caller owns it.
    TVDatabase* create_verification_db(const std::string& app_type) const override;
    // The values that queries read, which live in compiled fields:
    //   Exercise  Name, Type (its text), Number, Minimum, Maximum, Values,
    //             Active (1 or 0), Best (seconds of the best run, "" if none)
    //   Go        Exercise (its name), Start (%Y-%m-%d %H:%M:%S), Time
    //             (seconds, "" until timed), Complete (1 or 0)
    //   Session   Start, Complete, Runs (how many)
    // Anything else is left to the framework.
    [[nodiscard]] int query_value(const std::vector<TVDBObject*>& chain,
                                  const std::string& field, std::string& out) const override;

    void set_defaults(bool constructing);

    // ---- Sessions -----------------------------------------------------------

    // Closes every session (dropping empty ones) and begins a new one,
    // filled. Does nothing while no file is loaded.
    [[nodiscard]] int start();
    // Deletes abandoned runs (started, unfinished, not open in a window),
    // then completes every session but the current one (with all, that
    // one too); a completed session without runs is deleted.
    [[nodiscard]] int cleanup_incomplete(bool all);
    // Brings session up to date: its start follows the present until a run
    // starts; stale open runs go; each active exercise that is due gets an
    // open Go.
    [[nodiscard]] int update_session(Session& session);
    // update_session on the current session, if any.
    [[nodiscard]] int update();
    // Null when there are no sessions.
    Session* current_session();
    const Session* current_session() const;
    // Open runs of the current session; a Go id with nothing behind it
    // counts as open. 0 without a session.
    int get_remaining_exercises() const;
    int get_nsessions() const;
    // Null for an index out of range.
    Session* get_session_no(int index) const;

    // ---- Runs and exercises -------------------------------------------------

    // Null unless id names an object of that class.
    Go* get_go_id(int id);
    const Go* get_go_id(int id) const;
    Exercise* get_exercise_id(int id);
    const Exercise* get_exercise_id(int id) const;
    int get_ngos() const;
    // Null for an index out of range.
    Go* get_go_no(int index) const;
    Exercise* get_exercise_no(int index) const;
    int get_nexercises() const;

    // A new run of exercise in the current session, which is open again
    // from here; goId gets its id. Without a session the run belongs to none.
    [[nodiscard]] int add_go(int exercise, int& goId);
    // A new exercise with the defaults, added; out points to it (the
    // database owns it), or is null after a failure.
    [[nodiscard]] int create_exercise(Exercise*& out);
    // Takes exercise over (owned from the call on, also after a failure).
    [[nodiscard]] int add_exercise(Exercise* exercise);
    // An exercise with runs stays for their history, made inactive; one
    // without is deleted. Either way one operation, "Remove Exercise".
    [[nodiscard]] int delete_exercise(int id);
    // Whether any run refers to the exercise.
    bool exercise_referenced(int id) const;

    // ---- Run logic ----------------------------------------------------------

    // Questions for go from its exercise (none if it has gone).
    [[nodiscard]] int fill_questions(Go& go);
    // Adds each question of go that had a wrong input to the incorrect list,
    // once per text. Nothing ever leaves the list while the program runs.
    void collate_incorrect(const Go& go);
    const TVPtrArray<Question>& get_incorrect() const;
    // The shortest positive run time of exercise, excludeGo left out when 0
    // or more; zero when there is none.
    TVDuration get_best_time(int exercise, int excludeGo) const;
    // Seconds of every timed run of go's exercise, go included, in
    // container order.
    std::vector<double> get_times(const Go& go) const;

    // ---- Reminders ----------------------------------------------------------

    const std::vector<TVDuration>& get_reminders() const;
    // Marks the database changed: the caller is about to write the list.
    std::vector<TVDuration>& edit_reminders();
    // A reminder time the user should hear of. A late one has passed today
    // with no session begun since; the other is the next time to come.
    struct Reminder
    {
        TVDate m_time;
        bool m_late = false;
    };
    // At most two, the late one first: the latest reminder of today that is
    // past and that no session has started since, and the next reminder
    // time to come. The window turns them into notifications.
    std::vector<Reminder> due_reminders() const;

    // ---- The background image -----------------------------------------------

    const std::string& get_imagedir() const;
    // A new folder or file restarts the rotation.
    void set_imagedir(const std::string& dir);
    // The picture to show now, repairing a vanished folder or picture.
    [[nodiscard]] int get_current_image(std::string& out);
    void set_current_image(const std::string& image);
    // Moves on to the next picture not yet shown in this rotation; a
    // single chosen file never moves. Doesn't mark the database changed:
    // the picture is stored with the next change.
    [[nodiscard]] int next_image(std::string& out);
    const std::vector<std::string>& get_viewed() const;

private:
    // Deletes the run and takes it out of every session.
    [[nodiscard]] int delete_go(int id);
    // A session starting now, added and filled.
    [[nodiscard]] int new_session();
};

std::ostream& operator<<(std::ostream& out, const MathsDB& db);

#endif // MATHSDB_H
