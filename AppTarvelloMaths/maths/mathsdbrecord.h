#ifndef MATHSDBRECORD_H
#define MATHSDBRECORD_H

// MathsDBRecord: the fields of MathsDB, in stored order, as a base that
// MathsDB lists before TVDatabase.
//
// The three containers are registered with the database object, and
// ~TVDatabase empties every registered container as it destroys the
// objects. Members of MathsDB itself would be gone by then; a base listed
// ahead of TVDatabase is destroyed after it, so the containers outlive
// that last use.

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/maths/session.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvdbcontainer.h"
#include "LibDate/core/tvduration.h"

#include <string>
#include <vector>

class MathsDBRecord
{
public:
    // Container and object tags, as they stand in the file.
    static constexpr const char* C_ExerciseTag = "E";
    static constexpr const char* C_GoTag = "G";
    static constexpr const char* C_SessionTag = "S";

    MathsDBRecord(const MathsDBRecord&) = delete;
    MathsDBRecord& operator=(const MathsDBRecord&) = delete;

protected:
    MathsDBRecord() = default;
    ~MathsDBRecord() = default;

    // Not owning: the database owns the objects and refills these.
    TVDBContainer<Exercise> m_exercises{C_ExerciseTag};
    TVDBContainer<Go> m_gos{C_GoTag};
    TVDBContainer<Session> m_sessions{C_SessionTag};
    // Reminder times, each the distance from the start of the day.
    std::vector<TVDuration> m_reminder;
    // Questions that went wrong in this run of the program; never stored.
    TVPtrArray<Question> m_incorrect{true};
    // The user's folder or single picture; empty for the built-in pictures.
    std::string m_imageDir;
    // Path of the picture on show.
    std::string m_currentImage;
    // Bare file names shown in this rotation, one entry per showing.
    std::vector<std::string> m_viewed;
};

#endif // MATHSDBRECORD_H
