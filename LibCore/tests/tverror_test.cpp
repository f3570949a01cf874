#include "LibCore/error/tverror.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

#include "LibCore/error/tverrhandler.h"
#include "LibCore/error/tverrhandlerlogfile.h"
#include "LibCore/error/tverrhandlerptr.h"
#include "LibCore/error/tverrhandlerstream.h"
#include "LibDate/core/tvlocale.h"
#include "TestSupport/tvfiletest.h"

namespace {

// Each test gets a fresh error singleton whose echo goes to a string.
class ErrorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TVError::release();
        error = get_tverror();
        error->set_stream(&echo, TVSevAll);
        tvlocale()->set_day_format(7); // "%Y-%m-%d"
        error->set_deftime(TVDate(2026, 10, 21, 9, 5, 7, 123456, 0));
        ASSERT_TRUE(dir.isValid());
    }

    void TearDown() override { TVError::release(); }

    std::string log_path() const { return dir.filePath("app_error.log").toStdString(); }
    std::vector<std::string> log_lines() const { return tv_read_lines(log_path()); }

    static void write_lines(const std::string& path, int count)
    {
        std::ofstream out(path);
        for (int i = 1; i <= count; ++i)
            out << "old line " << i << "\n";
    }

    // Raises an error without letting the throw escape.
    static int raise_error(const char* text)
    {
        try {
            return tverror(TVErrC_FileOpen, "raise.cpp:1", "%s", text);
        } catch (const TVErrDetails& details) {
            return details.get_value();
        }
    }

    TVError* error = nullptr;
    std::ostringstream echo;
    QTemporaryDir dir;
};

// A handler that records what it saw and can consume errors.
class RecordingHandler : public TVErrHandler
{
public:
    RecordingHandler(std::vector<std::string>& seen, const std::string& name, bool immediate,
                     bool intermediate, bool delayed, bool consume = false)
        : TVErrHandler(immediate, intermediate, delayed, true), m_seen(seen), m_name(name), m_consume(consume)
    {
    }
    int handle(TVErrDetails& details) override
    {
        m_seen.push_back(m_name + ":" + details.get_location());
        return m_consume ? TVErrC_okHandled : details.get_value();
    }

private:
    std::vector<std::string>& m_seen;
    std::string m_name;
    bool m_consume;
};

struct CodeRow {
    int* global;
    int number;
    const char* name;
    const char* description;
};

} // namespace

TEST(ErrorCodeTable, EveryPlainCodeHasItsNumberNameAndDescription)
{
    const CodeRow rows[] = {
        {&TVErrC_ok, 0, "TVErrC_ok", "Success."},
        {&TVErrC_okEndOfFile, 2, "TVErrC_okEndOfFile", "Reached the end of the file."},
        {&TVErrC_okEndOfRecord, 3, "TVErrC_okEndOfRecord", "Reached the end of the current record."},
        {&TVErrC_okFileChanged, 4, "TVErrC_okFileChanged", "The file was changed."},
        {&TVErrC_okFileNotChanged, 5, "TVErrC_okFileNotChanged", "The file was not changed."},
        {&TVErrC_okOK, 6, "TVErrC_okOK", "The user pressed the OK button."},
        {&TVErrC_okCancel, 7, "TVErrC_okCancel", "The used pressed the Cancel button."},
        {&TVErrC_okCreate, 8, "TVErrC_okCreate", "The user chose to create a new file."},
        {&TVErrC_okEdit, 9, "TVErrC_okEdit", "The used pressed the Edit button."},
        {&TVErrC_okShutdown, 10, "TVErrC_okShutdown", "The user pressed the Shutdown button."},
        {&TVErrC_okRestart, 11, "TVErrC_okRestart", "The process needs to be restarted."},
        {&TVErrC_okNext, 12, "TVErrC_okNext", "The user pressed the Next button."},
        {&TVErrC_okPrevious, 13, "TVErrC_okPrevious", "The user pressed the Previous button."},
        {&TVErrC_okDelete, 14, "TVErrC_okDelete", "The user pressed the Delete button."},
        {&TVErrC_okFinished, 15, "TVErrC_okFinished", "The operation is complete."},
        {&TVErrC_okNotFinished, 16, "TVErrC_okNotFinished", "The operation is not complete."},
        {&TVErrC_okSucceeded, 17, "TVErrC_okSucceeded", "The operation succeeded."},
        {&TVErrC_okFailed, 18, "TVErrC_okFailed", "The operation failed."},
        {&TVErrC_okHandled, 19, "TVErrC_okHandled", "The error was handled by one of the error handlers."},
        {&TVErrC_Error, 20, "TVErrC_Error", "Error."},
        {&TVErrC_Assert, 21, "TVErrC_Assert", "Assertion failure."},
        {&TVErrC_StringNull, 22, "TVErrC_StringNull", "The supplied string pointer was null."},
        {&TVErrC_StringBounds, 23, "TVErrC_StringBounds", "The position is outside the length of the string."},
        {&TVErrC_StringFormat, 24, "TVErrC_StringFormat", "The string contains unknown characters."},
        {&TVErrC_ArrayBounds, 25, "TVErrC_ArrayBounds", "The supplied array index is out of bounds."},
        {&TVErrC_ArrayFull, 26, "TVErrC_ArrayFull", "The array is already full."},
        {&TVErrC_ArrayEmpty, 27, "TVErrC_ArrayEmpty", "The array contains no records."},
        {&TVErrC_ArrayWrongLength, 28, "TVErrC_ArrayWrongLength",
         "The array is the wrong length for the current operation."},
        {&TVErrC_MapCorrupt, 29, "TVErrC_MapCorrupt", "The map refers to a record that does not exist."},
        {&TVErrC_NullPointer, 30, "TVErrC_NullPointer", "Null pointer supplied."},
        {&TVErrC_NullSingleton, 31, "TVErrC_NullSingleton", "The requested singleton has not been set up."},
        {&TVErrC_DynamicCast, 32, "TVErrC_DynamicCast", "Dynamic cast failed."},
        {&TVErrC_CaseMissing, 33, "TVErrC_CaseMissing", "One of the case options is not handled."},
        {&TVErrC_UnknownReturnCode, 34, "TVErrC_UnknownReturnCode",
         "Not a recognised return code from the function."},
        {&TVErrC_VirtualOverride, 35, "TVErrC_VirtualOverride",
         "This function should be overridden the derived class."},
        {&TVErrC_InvalidState, 36, "TVErrC_InvalidState", "This object is currently in an invalid state."},
        {&TVErrC_InvalidValue, 37, "TVErrC_InvalidValue", "This object has an invalid value."},
        {&TVErrC_RecordEdited, 38, "TVErrC_RecordEdited", "There is already a record being edited."},
        {&TVErrC_RecordNotEdited, 39, "TVErrC_RecordNotEdited", "There are no records being edited."},
        {&TVErrC_FileName, 40, "TVErrC_FileName", "The supplied file name is invalid."},
        {&TVErrC_FileOpen, 41, "TVErrC_FileOpen", "Could not open the requested file."},
        {&TVErrC_FileCreate, 42, "TVErrC_FileCreate", "Could not create the requested file."},
        {&TVErrC_FileRename, 43, "TVErrC_FileRename", "Could not rename the requested file."},
        {&TVErrC_FileDelete, 44, "TVErrC_FileDelete", "Could not delete the requested file."},
        {&TVErrC_FileExists, 45, "TVErrC_FileExists", "The file to write already exists."},
        {&TVErrC_FileNotExist, 46, "TVErrC_FileNotExist", "The requested files does not exist."},
        {&TVErrC_FileAlreadyOpen, 47, "TVErrC_FileAlreadyOpen", "The file to read is already open."},
        {&TVErrC_FileNotOpen, 48, "TVErrC_FileNotOpen", "The requested file has not been opened yet."},
        {&TVErrC_FileRead, 49, "TVErrC_FileRead", "Could not read from the file."},
        {&TVErrC_FileWrite, 50, "TVErrC_FileWrite", "Could not write to the file."},
        {&TVErrC_FileClose, 51, "TVErrC_FileClose", "Could not close the file."},
        {&TVErrC_FileLineInvalid, 52, "TVErrC_FileLineInvalid", "The current line from the file is invalid."},
        {&TVErrC_FileLineTooShort, 53, "TVErrC_FileLineTooShort", "Expected more data on the supplied file line."},
        {&TVErrC_FileTooShort, 54, "TVErrC_FileTooShort", "Expected more records in the file."},
        {&TVErrC_FileInvalid, 55, "TVErrC_FileInvalid", "The file contained unrecognised information."},
        {&TVErrC_FileMissingRecord, 56, "TVErrC_FileMissingRecord", "The requested record is missing from the file."},
        {&TVErrC_OutOfMemory, 57, "TVErrC_OutOfMemory", "The system has run out of memory."},
        {&TVErrC_ProcessStart, 58, "TVErrC_ProcessStart", "Could not start a new thread or process."},
        {&TVErrC_EnvVar, 59, "TVErrC_EnvVar", "An environment variable has not been set."},
    };
    for (const CodeRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(*row.global, row.number);
        const TVErrCode& code = get_tverror()->get_code(row.number);
        EXPECT_EQ(code.get_code(), row.number);
        EXPECT_EQ(code.get_name(), row.name);
        EXPECT_EQ(code.get_description(), row.description);
    }
}

TEST(ErrorCodeTable, CodesOfHigherLibrariesKeepTheirNumbers)
{
    const std::pair<int, const char*> rows[] = {
        {1, "TVThread::TVErrC_ThreadStart"},
        {60, "TVParam::TVErrC_ParamAmbiguous"},
        {63, "TVParam::TVErrC_okNotHandled"},
        {64, "TVDatabase::TVErrC_NotADatabase"},
        {69, "TVDatabase::TVErrC_CorruptPartial"},
        {78, "TVDatabase::TVErrC_InvalidChild"},
        {79, "TVLockable::TVErrC_ObjectNotLocked"},
        {80, "TVLockable::TVErrC_ObjectLocked"},
        {81, "TVQuery::TVErrC_MissingObjectType"},
        {82, "TVImageExif::TVErrC_NotJPEG"},
        {83, "TVImageExif::TVErrC_InvalidEXIF"},
        {84, "TVObject::TVErrC_ObjectFuncNotRegistered"},
        {86, "TVObject::TVErrC_ObjectNotRegistered"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(tv_builtin_code(row.second), row.first) << row.second;
        EXPECT_EQ(get_tverror()->get_code(row.first).get_name(), row.second);
    }
    EXPECT_EQ(get_tverror()->get_code(1).get_description(), "Could not start a new thread.");
    EXPECT_EQ(get_tverror()->get_code(69).get_description(), "Corrupt database session file.");
    EXPECT_EQ(tv_builtin_code("TVErrC_NoSuchCode"), -1);
}

TEST_F(ErrorTest, TableHoldsExactlyTheBuiltinsAndNewCodesGoAtTheEnd)
{
    EXPECT_EQ(error->code_count(), 87u);
    EXPECT_EQ(allocate_code("TVErrC_Extra", "An extra code."), 87);
    EXPECT_EQ(error->get_code(87).get_description(), "An extra code.");
}

TEST_F(ErrorTest, UnknownCodeNamesItselfMissing)
{
    for (int code : {-1, 5000}) {
        EXPECT_EQ(error->get_code(code).get_name(), "MissingCode");
        EXPECT_EQ(error->get_code(code).get_description(), "Missing error code.");
    }
    error->set_action(TVActContinue, TVSevAll);
    tvwarning(4000, "x.cpp:1", "bad code");
    EXPECT_NE(echo.str().find("(MissingCode)"), std::string::npos);
}

TEST(ErrorValue, SeverityAndCodeAreSplitOnlyInsideTheirRange)
{
    EXPECT_EQ(TVErrDetails::compute_combination(41, 3), 300041);
    EXPECT_EQ(TVErrDetails::compute_severity(499999), 4);
    EXPECT_EQ(TVErrDetails::compute_code(499999), 99999);
    EXPECT_EQ(TVErrDetails::compute_severity(500000), 0);
    EXPECT_EQ(TVErrDetails::compute_code(500000), -1);
    EXPECT_EQ(TVErrDetails::compute_severity(-5), 0);
    EXPECT_EQ(TVErrDetails::compute_code(-5), -1);
    EXPECT_FALSE(istvwarn(TVErrC_okCancel));
    EXPECT_TRUE(istvwarn(100000 + TVErrC_Error));
    EXPECT_FALSE(istverr(200000 + TVErrC_Error));
    EXPECT_TRUE(istverr(300000 + TVErrC_Error));
}

TEST_F(ErrorTest, NegativeArgumentAsksTheStack)
{
    EXPECT_FALSE(istvwarn(-1));
    EXPECT_FALSE(istverr(-1));
    EXPECT_EQ(tvwarning(TVErrC_FileRead, "a.cpp:3", "read failed"), 200000 + TVErrC_FileRead);
    EXPECT_TRUE(istvwarn(-1));
    EXPECT_FALSE(istverr(-1));
    EXPECT_EQ(tverrorvalue(), 200000 + TVErrC_FileRead);
}

TEST_F(ErrorTest, SeverityDecidesWhatHappens)
{
    EXPECT_EQ(tvwarning(TVErrC_FileRead, "a.cpp:1", "w"), 200000 + TVErrC_FileRead);
    try {
        tverror(TVErrC_FileWrite, "a.cpp:2", "disk full");
        FAIL() << "an error must throw";
    } catch (const TVErrDetails& details) {
        EXPECT_EQ(details.get_value(), 300000 + TVErrC_FileWrite);
        EXPECT_EQ(details.get_details(TVAspectSystem), "disk full");
        EXPECT_EQ(details.get_details(TVAspectUser), "Internal program error.");
    }
    // The thrown error stays pending, newest first.
    ASSERT_EQ(error->error_count(), 2u);
    EXPECT_EQ(error->get_code(), TVErrC_FileWrite);
    EXPECT_EQ(error->error_at(1)->get_code(), TVErrC_FileRead);
}

TEST_F(ErrorTest, FatalErrorAndDetailsWithNothingPendingStopTheProcess)
{
    EXPECT_DEATH(tvfatal(TVErrC_OutOfMemory, "a.cpp:1", "gone"), "Assertion");
    EXPECT_DEATH(tvuserinfo_set("nothing to describe"), "Assertion");
}

TEST_F(ErrorTest, UserWarningCarriesItsTextOnBothAspectsAndIsNotLogged)
{
    write_lines(log_path(), 3);
    TVErrHandlerPtr logfile(new TVErrHandlerLogfile(log_path(), true, true, true, true));
    EXPECT_EQ(tvwarnuser(TVErrC_FileName, "a.cpp:1", "Name %s is taken", "x"), 100000 + TVErrC_FileName);
    EXPECT_EQ(tvuserinfo_get(), "Name x is taken");
    EXPECT_EQ(tvsysinfo_get(), "Name x is taken");
    EXPECT_EQ(log_lines().size(), 3u);
}

TEST_F(ErrorTest, DefaultsAnswerWhenNothingIsPending)
{
    EXPECT_EQ(tvsysinfo_get(), "Error: No details supplied.");
    EXPECT_EQ(tvuserinfo_get(), "Internal program error.");
    EXPECT_EQ(tverrorlocation_get(), "");
    EXPECT_EQ(tverrorvalue(), 0);
    EXPECT_EQ(tvsysinfo_append("a.cpp:1", "%s", "no error"), 0);
    EXPECT_EQ(tvusererror_handle(true), TVErrC_ok);
    EXPECT_EQ(error->error_details(), nullptr);
}

TEST_F(ErrorTest, StreamAndActionTakeAllOrOneAndIgnoreOtherNumbers)
{
    error->set_action(TVActThrow, TVSevAll);
    for (int s = 0; s <= 4; ++s)
        EXPECT_EQ(error->get_action(s), TVActThrow) << s;
    std::ostringstream other;
    error->set_stream(&other, 6);
    for (int s = 0; s <= 4; ++s)
        EXPECT_EQ(error->get_stream(s), &echo) << s;
    error->set_stream(&other, TVSevWarning);
    EXPECT_EQ(error->get_stream(TVSevWarning), &other);
    EXPECT_EQ(error->get_stream(TVSevError), &echo);
}

TEST_F(ErrorTest, HandleErrorClearsEveryPendingEntryButASuccessLeavesThem)
{
    raise_error("first");
    raise_error("second");
    ASSERT_EQ(error->error_count(), 2u);
    EXPECT_EQ(error->error_details()->get_details(TVAspectSystem), "second");
    EXPECT_EQ(tvhandle_error(TVErrC_okCancel, TVSevWarning), 0);
    EXPECT_EQ(error->error_count(), 2u);
    EXPECT_EQ(tvhandle_error(tverrorvalue(), TVSevWarning), 3);
    EXPECT_EQ(error->error_count(), 0u);
}

TEST_F(ErrorTest, HandleErrorShowsTheDialogOnlyWhenTheUiIsOn)
{
    static std::vector<int> shown;
    shown.clear();
    TVError::set_dialog_fn([](TVErrDetails* details, TVErrSeverity severity) {
        shown.push_back(details->get_code() * 10 + severity);
    });
    raise_error("one");
    tvhandle_error(tverrorvalue(), TVSevError);
    error->set_errorui(false);
    raise_error("two");
    tvhandle_error(tverrorvalue(), TVSevError);
    TVError::set_dialog_fn(nullptr);
    EXPECT_EQ(shown, std::vector<int>{TVErrC_FileOpen * 10 + 3});
}

TEST_F(ErrorTest, HandlersRunNewestFirstAndAConsumingOneStopsTheWalk)
{
    std::vector<std::string> seen;
    error->add_handler(new RecordingHandler(seen, "first", true, false, false));
    error->add_handler(new RecordingHandler(seen, "consumer", true, false, false, true));
    error->add_handler(new RecordingHandler(seen, "last", true, false, false));
    EXPECT_EQ(tverror(TVErrC_FileOpen, "a.cpp:1", "x"), 0); // consumed: no throw
    EXPECT_EQ(seen, (std::vector<std::string>{"last:a.cpp:1", "consumer:a.cpp:1"}));
    EXPECT_FALSE(error->is_error());
    EXPECT_EQ(echo.str(), ""); // a consumed error is not echoed
}

TEST_F(ErrorTest, TriggersPickTheMomentsOfAnErrorsLife)
{
    std::vector<std::string> seen;
    error->set_action(TVActContinue, TVSevAll);
    error->add_handler(new RecordingHandler(seen, "delayed", false, false, true));
    error->add_handler(new RecordingHandler(seen, "intermediate", false, true, false));
    error->add_handler(new RecordingHandler(seen, "immediate", true, false, false));
    tvwarning(TVErrC_FileRead, "a.cpp:1", "x");
    EXPECT_EQ(seen, (std::vector<std::string>{"immediate:a.cpp:1", "intermediate:a.cpp:1"}));
    seen.clear();
    tvsysinfo_append("b.cpp:2", "");
    EXPECT_EQ(seen, (std::vector<std::string>{"intermediate:a.cpp:1, b.cpp:2"}));
    seen.clear();
    tvhandle_error(tverrorvalue(), TVSevWarning);
    EXPECT_EQ(seen, (std::vector<std::string>{"intermediate:a.cpp:1, b.cpp:2", "delayed:a.cpp:1, b.cpp:2"}));
}

TEST_F(ErrorTest, UserErrorHandleRunsImmediateOrDelayedHandlers)
{
    std::vector<std::string> seen;
    error->set_action(TVActContinue, TVSevAll);
    tvwarning(TVErrC_FileRead, "a.cpp:1", "x");
    error->add_handler(new RecordingHandler(seen, "delayed", false, false, true));
    error->add_handler(new RecordingHandler(seen, "immediate", true, false, false));
    EXPECT_EQ(tvusererror_handle(false), 200000 + TVErrC_FileRead);
    EXPECT_EQ(tvusererror_handle(true), 200000 + TVErrC_FileRead);
    EXPECT_EQ(seen, (std::vector<std::string>{"immediate:a.cpp:1", "delayed:a.cpp:1"}));
}

TEST_F(ErrorTest, RemovingAHandlerDeletesOnlyThoseItManages)
{
    std::vector<std::string> seen;
    RecordingHandler kept(seen, "kept", true, false, false);
    kept.set_manage_deletion(false);
    error->add_handler(&kept);
    {
        TVErrHandlerPtr scoped(new RecordingHandler(seen, "scoped", true, false, false));
        EXPECT_EQ(error->handler_count(), 2u);
    } // removed and deleted here; ASan would report a leak otherwise
    EXPECT_EQ(error->handler_count(), 1u);
    EXPECT_EQ(error->remove_handler(&kept), TVErrC_ok);
    EXPECT_EQ(error->remove_handler(&kept), TVErrC_ok);
    EXPECT_EQ(error->handler_count(), 0u);
}

TEST(ErrorDetails, ExtraAndLocationJoinWithSeparators)
{
    TVErrDetails details;
    details.append_extra("Active Window", "MathsMain");
    EXPECT_EQ(details.get_extra(), "Active Window: MathsMain");
    details.append_extra("File", "a.tvmaths");
    EXPECT_EQ(details.get_extra(), "Active Window: MathsMain, File: a.tvmaths");
    details.set_location("a.cpp:1");
    details.append_location("b.cpp:2");
    EXPECT_EQ(details.get_location(), "a.cpp:1, b.cpp:2");
}

TEST(ErrorDetails, AspectsAreSetSinglyOrTogetherAndBadAspectsIgnored)
{
    TVErrDetails details;
    details.set_details("both", TVAspectBoth);
    details.set_details("ignored", 7);
    details.append_details("+sys", TVAspectSystem);
    EXPECT_EQ(details.get_details(TVAspectSystem), "both+sys");
    EXPECT_EQ(details.get_details(TVAspectUser), "both");
    EXPECT_EQ(details.get_details(TVAspectBoth), "");
    TVErrDetails other;
    other.set_details("!", TVAspectBoth);
    details += other;
    EXPECT_EQ(details.get_details(TVAspectSystem), "both+sys!");
    EXPECT_EQ(details.get_details(TVAspectUser), "both!");
}

TEST(ErrorLocation, KeepsOnlyTheLastPathComponent)
{
    EXPECT_EQ(tvlocation("/src/LibCore/error/tverror.cpp", 12), "tverror.cpp:12");
    EXPECT_EQ(tvlocation("C:\\src\\tvdate.cpp", 7), "tvdate.cpp:7");
    EXPECT_EQ(tvlocation("plain.cpp", 1), "plain.cpp:1");
}

TEST_F(ErrorTest, TextFormOfAnErrorAndOfALogLine)
{
    error->set_action(TVActContinue, TVSevAll);
    error->set_program("Tarvello Maths", "1.2");
    error->set_vendor("Tarvello");
    tvwarning(TVErrC_FileOpen, "a.cpp:1", "No such file: %s", "x.tvmaths");
    tvuserinfo_set("The file could not be opened.");
    std::ostringstream text;
    text << *error;
    EXPECT_EQ(text.str(),
              "Tarvello Maths (1.2) - Tarvello\n"
              " TVError Code (TVErrC_FileOpen) at 2026-11-22 09:05:07.123456\n"
              "  \"Could not open the requested file.\"\n"
              "  Aspect 0: No such file: x.tvmaths\n"
              "  Aspect 1: The file could not be opened.\n"
              "  Location: a.cpp:1\n"
              "  Extra: \n");

    TVErrDetails log;
    error->populate_error(log, TVErrC_ok, TVSevLog, "started", TVAspectSystem, TVDate(), "main.cpp:9");
    std::ostringstream line;
    line << log;
    EXPECT_EQ(line.str(), "Log: 2026-11-22 09:05:07.123456:main.cpp:9:started\n");
}

TEST_F(ErrorTest, ActiveWindowIsRecordedAsExtra)
{
    TVError::set_active_window_fn([]() { return std::string("MathsMainQt"); });
    tvwarning(TVErrC_FileRead, "a.cpp:1", "x");
    TVError::set_active_window_fn(nullptr);
    EXPECT_EQ(error->error_details()->get_extra(), "Active Window: MathsMainQt");
}

// ---------------------------------------------------------------------------
// The trail of an error through its callers.

namespace {
int g_innerLine = 0, g_middleLine = 0;

int inner_open()
{
    g_innerLine = __LINE__ + 1;
    return tverror(TVErrC_FileOpen, TVLOCATION, "cannot open %s", "x.tvmaths");
}

int middle_load()
{
    int result = TVErrC_ok;
    try {
        result = inner_open();
        if (istvwarn(result)) {
            tvsysinfo_append(TVLOCATION, "");
            return tverrorvalue();
        }
    } catch (TVErrDetails&) {
        g_middleLine = __LINE__ + 1;
        tvsysinfo_append(TVLOCATION, "while loading");
        throw TVErrDetails(*get_tverror()->error_details());
    }
    return result;
}
} // namespace

TEST_F(ErrorTest, TrailGrowsThroughThreeLevelsAndTheLogHoldsABlockPerLevel)
{
    TVErrHandlerPtr logfile(new TVErrHandlerLogfile(log_path(), true, true, true, true));
    int value = TVErrC_ok;
    int topLine = 0;
    try {
        value = middle_load();
    } catch (TVErrDetails&) {
        value = get_tverror()->get_value();
        topLine = __LINE__ + 1;
        tvsysinfo_append(TVLOCATION, "");
    }
    EXPECT_EQ(value, 300000 + TVErrC_FileOpen);
    const std::string expected = "tverror_test.cpp:" + std::to_string(g_innerLine) + ", tverror_test.cpp:" +
                                 std::to_string(g_middleLine) + ", tverror_test.cpp:" + std::to_string(topLine);
    EXPECT_EQ(tverrorlocation_get(), expected);
    EXPECT_EQ(tvsysinfo_get(), "cannot open x.tvmaths\nwhile loading");
    EXPECT_EQ(tvhandle_error(value, TVSevError), 3);

    // Reported, two breadcrumbs, settled: four blocks, each trail longer.
    std::vector<std::string> locations;
    for (const std::string& line : log_lines())
        if (line.rfind("  Location: ", 0) == 0)
            locations.push_back(line.substr(12));
    ASSERT_EQ(locations.size(), 4u);
    EXPECT_EQ(std::count(locations[0].begin(), locations[0].end(), ','), 0);
    EXPECT_EQ(std::count(locations[1].begin(), locations[1].end(), ','), 1);
    EXPECT_EQ(locations[2], expected);
    EXPECT_EQ(locations[3], expected);
}

// ---------------------------------------------------------------------------
// The log file.

TEST_F(ErrorTest, LogFileIsTrimmedToItsLastHundredLinesAtTheFirstErrorOfARun)
{
    for (const int old : {100, 101}) {
        SCOPED_TRACE(old);
        write_lines(log_path(), old);
        TVErrHandlerPtr logfile(new TVErrHandlerLogfile(log_path(), true, false, false, true));
        raise_error("first");
        raise_error("second");
        const std::vector<std::string> lines = log_lines();
        ASSERT_GE(lines.size(), 102u);
        EXPECT_EQ(lines[0], "old line " + std::to_string(old - 99));
        EXPECT_EQ(lines[99], "old line " + std::to_string(old));
        EXPECT_EQ(lines[100], "==================");
        EXPECT_EQ(lines[101].rfind(" TVError Code (TVErrC_FileOpen)", 0), 0u);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "=================="), 1);
        error->clear_all();
    }
}

TEST_F(ErrorTest, UserWarningFirstSuppressesTheSeparatorForTheRun)
{
    TVErrHandlerPtr logfile(new TVErrHandlerLogfile(log_path(), true, false, false, true));
    tvwarnuser(TVErrC_FileName, "a.cpp:1", "bad name");
    raise_error("later");
    const std::vector<std::string> lines = log_lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "=================="), 0);
    EXPECT_EQ(lines[0].rfind(" TVError Code", 0), 0u);
}

TEST_F(ErrorTest, LogLinesReachLogFilesOnlyAndNeverTheStack)
{
    std::ostringstream userEcho;
    TVErrHandlerPtr logfile(new TVErrHandlerLogfile(log_path(), true, false, false, true));
    TVErrHandlerPtr stream(new TVErrHandlerStream(userEcho, false, true, true, true));
    tvlog("main.cpp:3", "opened %d files", 2);
    EXPECT_FALSE(error->is_error());
    EXPECT_EQ(userEcho.str(), "");
    const std::vector<std::string> lines = log_lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "==================");
    EXPECT_EQ(lines[1], "Log: 2026-11-22 09:05:07.123456:main.cpp:3:opened 2 files");
}

TEST_F(ErrorTest, UnwritableLogFileIsSilentAndKeepsTheFirstErrorFlag)
{
    const std::string path = dir.filePath("no/such/dir/app_error.log").toStdString();
    auto* handler = new TVErrHandlerLogfile(path, true, false, false, true);
    TVErrHandlerPtr logfile(handler);
    raise_error("lost");
    EXPECT_TRUE(handler->is_first_error());
    EXPECT_EQ(error->error_count(), 1u);
}

TEST_F(ErrorTest, StreamHandlerWritesTheUserText)
{
    std::ostringstream out;
    TVErrHandlerPtr stream(new TVErrHandlerStream(out, true, false, false, true));
    tvwarnuser(TVErrC_FileName, "a.cpp:1", "Choose another name.");
    EXPECT_EQ(out.str(), "Choose another name.\n");
}
