#ifndef GO_H
#define GO_H

// Go: one run of an exercise. It holds the run's questions, owning them,
// and the slot from the first judged input to the last.
//
// States (complete, active, slot, questions):
//   waiting    false  false  blank  none
//   prepared   false  true   blank  filled, then restart()
//   running    false  true   valid  being answered
//   finished   true   false  valid  kept, never stored
//   abandoned  false  false  blank  none, through clear()
// A finished Go is never run again; the program makes a new one.
//
// Serial form, under the body's prefix, defaults left out:
//   "exercise"  exercise id, -1
//   "time"      the run's slot, blank
//   "complete"  0 or 1, 0
//   "TVDBObject" block
// m_active and the questions are not stored: a Go read back is inactive
// and empty, whatever its state.

#include "LibDatabase/db/tvdbobject.h"
#include "LibDate/core/tvdateslot.h"

#include <iosfwd>
#include <memory>
#include <string>

class Question;

class Go : public TVDBObject
{
public:
    static constexpr const char* C_ClassName = "Go";

    Go();
    // Deep copy: the copy owns copies of the questions.
    Go(const Go& other);
    Go& operator=(const Go& other);
    ~Go() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void dump(std::ostream& out, int indent) const override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void register_tvobject() override;
    // Its data is in compiled fields that no object spec describes.
    bool uses_spec() const override { return false; }
    // Also follows the exercise's id.
    void remap_id(int old_id, int new_id) override;
    void remap_ids(const std::map<int, int>& ids) override;

    void set_defaults(bool constructing);

    int get_exercise() const;
    void set_exercise(int exercise);
    const TVDateSlot& get_time() const;
    void set_time(const TVDateSlot& time);
    bool is_complete() const;
    // The clock has started: the first judged input has come in.
    bool is_started() const;
    // Open in a run window: from restart() until the run is seen complete.
    bool is_active() const;

    // Takes ownership of question.
    void add_question(Question* question);
    int get_nquestions() const;
    // Null for an index out of range; nothing is reported.
    Question* get_question_no(int index);
    const Question* get_question_no(int index) const;

    // Sees whether every question is complete, and with stamp moves the
    // slot on to the present (starting it if blank). A run without
    // questions is left alone.
    void update(bool stamp);
    // End minus start of the slot; zero while it is blank.
    TVDuration get_duration() const;
    // One step of an exercise's best time over runs in container order:
    // best starts at zero (no time) and takes go's duration if go is of
    // exercise, isn't excludeGo (when that is 0 or more), lasted more than
    // zero and beat best. Unfinished runs are not asked about: a blank slot
    // has no duration.
    static void fold_best_time(TVDuration& best, const Go& go, int exercise, int excludeGo);
    // A record beats an earlier best strictly: never the first time, never a tie.
    bool is_record(const TVDuration& best) const;

    // Blank slot, not complete, active; the questions stay.
    void restart();
    // Blank slot, not complete, inactive; the questions are destroyed.
    void clear();

private:
    struct GoImpl;
    std::unique_ptr<GoImpl> d;
};

std::ostream& operator<<(std::ostream& out, const Go& go);

#endif // GO_H
