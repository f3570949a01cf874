#include "AppTarvelloMaths/maths/mathsdb.h"

#include "LibCore/fileutils/tvdirectory.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <ostream>

namespace {
const TVObjectPreReg s_preReg(MathsDB::C_ClassName, MathsDB::create_tvobject);

constexpr const char* C_ImageFilter = "*.jpg,*.png";
constexpr long C_SecondsPerDay = 86400;

// A picture the user chose by itself, as against a folder of them.
bool is_single_file(const std::string& path)
{
    return !path.empty() && !tv_dir_exists(path) && tv_file_exists(path);
}

// Paths of the pictures below dir, in the folder's order.
int list_images(const std::string& dir, std::vector<std::string>& out)
{
    out.clear();
    TVDirectory folder(dir);
    TV_PASS_ON(folder.load(C_ImageFilter, true));
    for (int i = 0; i < folder.get_nfiles(); ++i)
        out.push_back(folder.get_file_by_index(i)->get_pathname());
    return TVErrC_ok;
}
} // namespace

const char* const MathsDB::C_BuiltinImages[C_NBuiltinImages] = {
    ":/TarvelloMathsImages/images/original/giraffe.jpg",
    ":/TarvelloMathsImages/images/original/meerkat.jpg",
    ":/TarvelloMathsImages/images/original/ostrich.jpg",
    ":/TarvelloMathsImages/images/original/penguin.jpg",
    ":/TarvelloMathsImages/images/original/seal.jpg",
    ":/TarvelloMathsImages/images/original/dolphin.jpg",
    ":/TarvelloMathsImages/images/original/duck.jpg",
    ":/TarvelloMathsImages/images/original/hedgehog.jpg",
    ":/TarvelloMathsImages/images/original/monkey.jpg",
    ":/TarvelloMathsImages/images/original/sheep.jpg",
};

// ---- Construction -----------------------------------------------------------------

MathsDB::MathsDB()
{
    set_defaults(true);
    register_tvobject();
}

MathsDB::~MathsDB() = default;

int MathsDB::create_tvobject(TVObject*& out, const TVObject* source)
{
    out = nullptr;
    auto made = std::make_unique<MathsDB>();
    if (source != nullptr) {
        const int result = made->derived_assign(*source, 0);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    }
    out = made.release();
    return TVErrC_ok;
}

void MathsDB::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

void MathsDB::set_defaults(bool constructing)
{
    if (!constructing)
        TVDatabase::set_defaults(constructing);
    set_app_type(C_MathsDataType);
    m_reminder.clear();
    m_incorrect.clear();
    m_imageDir.clear();
    m_currentImage.clear();
    m_viewed.clear();
    register_tvobject();
    add_container(m_exercises);
    add_container(m_gos);
    add_container(m_sessions);
    (void)access_security_bookmark(C_ImageBookmark);
}

void MathsDB::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "MathsDB: " << m_exercises.size() << " exercises, " << m_gos.size()
        << " runs, " << m_sessions.size() << " sessions, " << m_incorrect.size()
        << " incorrect\n";
    out << pad << "    reminders";
    for (const TVDuration& reminder : m_reminder)
        out << ' ' << reminder;
    out << '\n'
        << pad << "    images \"" << m_imageDir << "\" now \"" << m_currentImage << "\", "
        << m_viewed.size() << " viewed\n";
    TVDatabase::dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const MathsDB& db)
{
    db.dump(out, 0);
    return out;
}

int MathsDB::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "reminder",
                                   TVSrlValueVector<TVDuration>(m_reminder)));
        TV_PASS_ON(serialise_string(in, out, prefix, "imageDir", m_imageDir, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "recentImage", m_currentImage, true));
        TV_PASS_ON(serialise_string_vector(in, out, prefix, "viewed", m_viewed));
        TV_PASS_ON(TVDatabase::serialise(in, out, prefix, version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool MathsDB::has_user_data() const
{
    return m_exercises.size() > 0 ||
           (m_sessions.size() > 0 && m_sessions[0]->get_ngos() > 0);
}

TVDatabase* MathsDB::create_verification_db(const std::string& app_type) const
{
    auto* db = new MathsDB;
    db->set_app_type(app_type);
    return db;
}

// ---- Sessions ---------------------------------------------------------------------

const Session* MathsDB::current_session() const
{
    TVDate latest(1970, 0, 0, 0, 0, 0, 0, TVDate::C_GMT);
    const Session* candidate = nullptr;
    for (const Session* session : m_sessions) {
        if (session->get_start() > latest) {
            candidate = session;
            latest = session->get_start();
        }
        if (!session->get_complete())
            return session;
    }
    return candidate;
}

Session* MathsDB::current_session()
{
    return const_cast<Session*>(static_cast<const MathsDB*>(this)->current_session());
}

int MathsDB::get_nsessions() const
{
    return m_sessions.size();
}

Session* MathsDB::get_session_no(int index) const
{
    return index >= 0 && index < m_sessions.size() ? m_sessions[index] : nullptr;
}

int MathsDB::start()
{
    if (!is_loaded())
        return TVErrC_ok;
    try {
        TV_PASS_ON(cleanup_incomplete(true));
        TV_PASS_ON(new_session());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::new_session()
{
    try {
        auto* session = new Session;
        session->set_start(TVDateUtils::now());
        TV_PASS_ON(add_object(session, this, C_SessionTag, "", -1, ""));
        TV_PASS_ON(update_session(*session));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::delete_go(int id)
{
    for (Session* session : m_sessions)
        session->remove_go(id);
    return delete_object(id, "");
}

int MathsDB::cleanup_incomplete(bool all)
{
    try {
        // Deleting refills the containers, but only behind the index we are at.
        for (int i = m_gos.size(); i-- > 0;) {
            const Go* go = m_gos[i];
            if (!go->is_complete() && go->is_started() && !go->is_active())
                TV_PASS_ON(delete_go(go->get_id()));
        }
        const Session* current = current_session();
        for (int i = m_sessions.size(); i-- > 0;) {
            Session* session = m_sessions[i];
            if (session == current && !all)
                continue;
            session->set_complete(true);
            if (session->get_ngos() == 0)
                TV_PASS_ON(delete_object(session->get_id(), ""));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::update_session(Session& session)
{
    try {
        // An untouched session keeps moving its start forward; the first run
        // started in it pins it.
        bool started = false;
        for (int i = 0; i < session.get_ngos(); ++i)
            if (const Go* go = get_go_id(session.get_go_no(i)))
                started = started || go->is_started();
        if (!started)
            session.set_start(TVDateUtils::now());

        // A Repeat Incorrect run opens again once there are more wrong
        // answers than it asked; a run read from the file has none at all.
        std::vector<int> done;
        for (int i = 0; i < session.get_ngos(); ++i) {
            Go* go = get_go_id(session.get_go_no(i));
            if (go == nullptr)
                continue;
            const Exercise* exercise = get_exercise_id(go->get_exercise());
            if (exercise != nullptr && exercise->get_type() == Exercise::C_TypeRepeatIncorrect &&
                go->get_nquestions() < m_incorrect.size())
                go->clear();
            if (go->is_complete())
                done.push_back(go->get_exercise());
        }

        // Open runs go when their exercise has gone or is inactive, or when
        // the exercise is already done in this session; a run in a window
        // stays whatever happens.
        for (int i = m_gos.size(); i-- > 0;) {
            const Go* go = m_gos[i];
            const Exercise* exercise = get_exercise_id(go->get_exercise());
            if (exercise != nullptr) {
                if (go->is_complete() || go->is_active())
                    continue;
                if (exercise->get_active() &&
                    std::find(done.begin(), done.end(), exercise->get_id()) == done.end())
                    continue;
            }
            TV_PASS_ON(delete_go(go->get_id()));
        }

        // Each active exercise that this session doesn't cover yet gets a run.
        for (int e = 0; e < m_exercises.size(); ++e) {
            const Exercise* exercise = m_exercises[e];
            if (!exercise->get_active())
                continue;
            bool covered = false;
            for (int i = 0; i < session.get_ngos() && !covered; ++i) {
                const Go* go = get_go_id(session.get_go_no(i));
                covered = go != nullptr && go->get_exercise() == exercise->get_id() &&
                          exercise->go_time_expired(*go, session.get_start());
            }
            if (covered || (exercise->get_type() == Exercise::C_TypeRepeatIncorrect &&
                            m_incorrect.empty()))
                continue;
            auto* go = new Go;
            go->set_exercise(exercise->get_id());
            TV_PASS_ON(add_object(go, this, C_GoTag, "", -1, ""));
            session.add_go(go->get_id());
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::update()
{
    try {
        if (Session* session = current_session())
            TV_PASS_ON(update_session(*session));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::recalculate(E_RecalcLevel level)
{
    try {
        TV_PASS_ON(TVDatabase::recalculate(level));
        TV_PASS_ON(cleanup_incomplete(false));
        if (Session* session = current_session())
            TV_PASS_ON(update_session(*session));
        else
            TV_PASS_ON(new_session());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::get_remaining_exercises() const
{
    const Session* session = current_session();
    if (session == nullptr)
        return 0;
    int remaining = session->get_ngos();
    for (int i = 0; i < session->get_ngos(); ++i)
        if (const Go* go = get_go_id(session->get_go_no(i)); go != nullptr && go->is_complete())
            --remaining;
    return remaining;
}

// ---- Runs and exercises -----------------------------------------------------------

Go* MathsDB::get_go_id(int id)
{
    return m_gos.find(id);
}

const Go* MathsDB::get_go_id(int id) const
{
    return m_gos.find(id);
}

Exercise* MathsDB::get_exercise_id(int id)
{
    return m_exercises.find(id);
}

const Exercise* MathsDB::get_exercise_id(int id) const
{
    return m_exercises.find(id);
}

int MathsDB::get_ngos() const
{
    return m_gos.size();
}

Go* MathsDB::get_go_no(int index) const
{
    return index >= 0 && index < m_gos.size() ? m_gos[index] : nullptr;
}

Exercise* MathsDB::get_exercise_no(int index) const
{
    return index >= 0 && index < m_exercises.size() ? m_exercises[index] : nullptr;
}

int MathsDB::get_nexercises() const
{
    return m_exercises.size();
}

int MathsDB::add_go(int exercise, int& goId)
{
    goId = -1;
    try {
        auto* go = new Go;
        go->set_exercise(exercise);
        TV_PASS_ON(add_object(go, this, C_GoTag, "", -1, ""));
        goId = go->get_id();
        if (Session* session = current_session()) {
            session->add_go(goId);
            session->set_complete(false);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::create_exercise(Exercise*& out)
{
    out = new Exercise;
    try {
        const int result = add_object(out, this, C_ExerciseTag, "", -1, "");
        if (istvwarn(result)) {
            out = nullptr;
            return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        out = nullptr;
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::add_exercise(Exercise* exercise)
{
    try {
        TV_PASS_ON(add_object(exercise, this, C_ExerciseTag, "", -1, ""));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsDB::delete_exercise(int id)
{
    try {
        if (!exercise_referenced(id)) {
            TV_PASS_ON(delete_object(id, "Remove Exercise"));
            return TVErrC_ok;
        }
        // Its runs keep their best times only while the exercise is there.
        Exercise* exercise = get_exercise_id(id);
        if (exercise == nullptr)
            return TVErrC_ok;
        exercise->set_active(false);
        TV_PASS_ON(complete_operation("Remove Exercise"));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool MathsDB::exercise_referenced(int id) const
{
    for (const Go* go : m_gos)
        if (go->get_exercise() == id)
            return true;
    return false;
}

// ---- Run logic --------------------------------------------------------------------

int MathsDB::fill_questions(Go& go)
{
    const Exercise* exercise = get_exercise_id(go.get_exercise());
    if (exercise == nullptr)
        return TVErrC_ok;
    try {
        TV_PASS_ON(exercise->generate_questions(go, m_incorrect));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void MathsDB::collate_incorrect(const Go& go)
{
    for (int i = 0; i < go.get_nquestions(); ++i) {
        const Question* question = go.get_question_no(i);
        if (question == nullptr || question->get_wrongcount() <= 0)
            continue;
        const auto same = [question](const Question* entry) {
            return entry->get_text() == question->get_text();
        };
        if (std::none_of(m_incorrect.begin(), m_incorrect.end(), same))
            m_incorrect.add(new Question(question->get_text(), question->get_solution()));
    }
}

const TVPtrArray<Question>& MathsDB::get_incorrect() const
{
    return m_incorrect;
}

TVDuration MathsDB::get_best_time(int exercise, int excludeGo) const
{
    TVDuration best;
    for (const Go* go : m_gos)
        Go::fold_best_time(best, *go, exercise, excludeGo);
    return best;
}

std::vector<double> MathsDB::get_times(const Go& go) const
{
    std::vector<double> times;
    for (const Go* other : m_gos)
        if (other->get_exercise() == go.get_exercise() && other->get_duration() > 0)
            times.push_back(other->get_duration().get_as_dseconds());
    return times;
}

// ---- Reminders --------------------------------------------------------------------

const std::vector<TVDuration>& MathsDB::get_reminders() const
{
    return m_reminder;
}

std::vector<TVDuration>& MathsDB::edit_reminders()
{
    mark_changed(TVLOCATION, true);
    return m_reminder;
}

std::vector<MathsDB::Reminder> MathsDB::due_reminders() const
{
    std::vector<Reminder> due;
    const TVDate now = TVDateUtils::now();
    const TVDate day = TVDateUtils::start_day(now);

    // Late: a reminder time of today that has passed with no session begun since.
    const Session* session = current_session();
    if (session != nullptr && session->get_start().is_ok()) {
        const TVDate* late = nullptr;
        TVDate latest;
        for (const TVDuration& reminder : m_reminder) {
            const TVDate t = day + reminder;
            if (t <= now && session->get_start() < t && (late == nullptr || latest < t)) {
                latest = t;
                late = &latest;
            }
        }
        if (late != nullptr)
            due.push_back({latest, true});
    }

    // Next: the coming reminder time, today's if still ahead, else tomorrow's.
    bool found = false;
    TVDate next;
    for (const TVDuration& reminder : m_reminder) {
        TVDate t = day + reminder;
        if (t <= now)
            t += TVDuration(C_SecondsPerDay);
        if (!found || t < next) {
            next = t;
            found = true;
        }
    }
    if (found)
        due.push_back({next, false});
    return due;
}

// ---- The background image ---------------------------------------------------------

const std::string& MathsDB::get_imagedir() const
{
    return m_imageDir;
}

void MathsDB::set_imagedir(const std::string& dir)
{
    if (m_imageDir == dir)
        return;
    (void)store_security_bookmark(C_ImageBookmark, dir);
    m_viewed.clear();
    m_imageDir = dir;
    mark_changed(TVLOCATION, true);
}

const std::vector<std::string>& MathsDB::get_viewed() const
{
    return m_viewed;
}

void MathsDB::set_current_image(const std::string& image)
{
    m_currentImage = image;
    mark_changed(TVLOCATION, true);
}

int MathsDB::get_current_image(std::string& out)
{
    out.clear();
    std::string& dir = m_imageDir;
    std::string& current = m_currentImage;
    // The folder or picture has gone: back to the built-ins, rotation forgotten.
    if (!dir.empty() && !tv_dir_exists(dir) && !tv_file_exists(dir)) {
        dir.clear();
        current.clear();
        m_viewed.clear();
        mark_changed(TVLOCATION, true);
    }
    if (dir.empty()) {
        if (current.empty()) {
            current = C_BuiltinImages[0];
            mark_changed(TVLOCATION, true);
        }
    } else if (tv_dir_exists(dir)) {
        if (!is_single_file(current))
            current.clear();
        if (current.empty()) {
            std::vector<std::string> images;
            TV_PASS_ON(list_images(dir, images));
            if (images.empty()) {
                dir.clear();
                current = C_BuiltinImages[0];
            } else {
                current = images.front();
                mark_changed(TVLOCATION, true);
            }
        }
    } else if (current != dir) {
        current = dir;
        mark_changed(TVLOCATION, true);
    }
    out = current;
    return TVErrC_ok;
}

int MathsDB::next_image(std::string& out)
{
    out.clear();
    std::string& dir = m_imageDir;
    if (is_single_file(dir)) {
        out = dir;
        return TVErrC_ok;
    }
    std::vector<std::string> candidates;
    if (!dir.empty())
        TV_PASS_ON(list_images(dir, candidates));
    if (candidates.empty()) {
        dir.clear();
        candidates.assign(C_BuiltinImages, C_BuiltinImages + C_NBuiltinImages);
    }

    // Each viewed name stands for one showing, so a name found twice in the
    // tree needs two entries before both pictures count as shown.
    m_viewed.push_back(tv_filename(m_currentImage));
    std::vector<std::string> unseen = m_viewed;
    m_currentImage.clear();
    for (const std::string& candidate : candidates) {
        const auto seen = std::find(unseen.begin(), unseen.end(), tv_filename(candidate));
        if (seen == unseen.end()) {
            m_currentImage = candidate;
            break;
        }
        unseen.erase(seen);
    }
    if (m_currentImage.empty()) {
        m_viewed.clear();
        m_currentImage = candidates.front();
    }
    out = m_currentImage;
    return TVErrC_ok;
}

// ---- Queries --------------------------------------------------------------------------

namespace {
// Dates as the date language reads them back, so that a condition's
// MinDate and a date column compare them.
constexpr const char* C_QueryDateFormat = "%Y-%m-%d %H:%M:%S";

std::string seconds_text(const TVDuration& duration)
{
    return tv_sprintf("%.1f", duration.get_as_dseconds());
}
} // namespace

int MathsDB::query_value(const std::vector<TVDBObject*>& chain, const std::string& field,
                         std::string& out) const
{
    if (chain.empty())
        return TVErrC_ok;
    const TVDBObject* object = chain.front();
    if (const auto* exercise = dynamic_cast<const Exercise*>(object)) {
        if (field == "Name")
            out = exercise->get_name();
        else if (field == "Type")
            out = Exercise::get_types().get_id_name(TVId(exercise->get_type(), -1, -1));
        else if (field == "Number")
            out = std::to_string(exercise->get_number());
        else if (field == "Minimum")
            out = std::to_string(exercise->get_minimum());
        else if (field == "Maximum")
            out = std::to_string(exercise->get_maximum());
        else if (field == "Values")
            out = exercise->get_values();
        else if (field == "Active")
            out = exercise->get_active() ? "1" : "0";
        else if (field == "Best") {
            const TVDuration best = get_best_time(exercise->get_id(), -1);
            out = best > TVDuration() ? seconds_text(best) : std::string();
        } else
            return TVErrC_ok;
        return TVErrC_okHandled;
    }
    if (const auto* go = dynamic_cast<const Go*>(object)) {
        if (field == "Exercise") {
            const Exercise* exercise = get_exercise_id(go->get_exercise());
            out = exercise != nullptr ? exercise->get_name() : std::string();
        } else if (field == "Start") {
            out = go->get_time().get_start().to_string(C_QueryDateFormat);
        } else if (field == "Time") {
            out = go->get_time().is_ok() ? seconds_text(go->get_duration()) : std::string();
        } else if (field == "Complete") {
            out = go->is_complete() ? "1" : "0";
        } else {
            return TVErrC_ok;
        }
        return TVErrC_okHandled;
    }
    if (const auto* session = dynamic_cast<const Session*>(object)) {
        if (field == "Start")
            out = session->get_start().to_string(C_QueryDateFormat);
        else if (field == "Complete")
            out = session->get_complete() ? "1" : "0";
        else if (field == "Runs")
            out = std::to_string(session->get_ngos());
        else
            return TVErrC_ok;
        return TVErrC_okHandled;
    }
    return TVErrC_ok;
}
