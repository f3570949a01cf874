#include "LibGui/qt/tverrorqt.h"

#include <gtest/gtest.h>

#include <QLabel>

#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "TestSupport/tvraise.h"

namespace {

class ErrorQtTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        TVErrorQt::install();
    }
    void TearDown() override
    {
        TVErrorQt::uninstall();
        TVQuietErrorTest::TearDown();
    }
};

} // namespace

TEST_F(ErrorQtTest, ASettledErrorIsShownOnceAndTheStackCleared)
{
    TVMessageBoxScript script({"Ok"});
    int value = TVErrC_ok;
    try {
        tverror(TVErrC_FileOpen, "tvfile.cpp:12", "Could not open %s", "a.tvmaths");
    } catch (const TVErrDetails&) {
        value = tvsysinfo_append("appmaths.cpp:40", "");
    }
    tvuserinfo_set("The maths file could not be opened.");
    EXPECT_EQ(tvhandle_error(value, TVSevWarning), TVSevError);

    ASSERT_EQ(script.boxes().size(), 1u);
    EXPECT_EQ(script.boxes()[0].title, "Error");
    EXPECT_EQ(script.boxes()[0].text, "The maths file could not be opened.\n"
                                      "Details: Could not open a.tvmaths\n"
                                      "Location: tvfile.cpp:12, appmaths.cpp:40");
    EXPECT_EQ(script.boxes()[0].labels, (std::vector<std::string>{"Ok"}));
    EXPECT_FALSE(get_tverror()->is_error());

    // Nothing pending any more: the same value shows nothing again.
    EXPECT_EQ(tvhandle_error(value, TVSevWarning), 0);
    EXPECT_EQ(script.boxes().size(), 1u);
    EXPECT_TRUE(script.done());
}

TEST_F(ErrorQtTest, HeadingsFollowTheSeverity)
{
    EXPECT_EQ(TVErrorQt::heading(TVSevUser, TVSevWarning), "Warning");
    EXPECT_EQ(TVErrorQt::heading(TVSevWarning, TVSevError), "Warning");
    EXPECT_EQ(TVErrorQt::heading(TVSevError, TVSevWarning), "Error");
    EXPECT_EQ(TVErrorQt::heading(TVSevFatal, TVSevWarning), "Fatal Error");
    EXPECT_EQ(TVErrorQt::heading(TVSevWarning, TVSevFatal), "Fatal Error");

    TVMessageBoxScript script({"Ok"});
    const int value = tvwarning(TVErrC_FileWrite, "tvfile.cpp:80", "Disk full");
    tvhandle_error(value, TVSevWarning);
    ASSERT_EQ(script.boxes().size(), 1u);
    EXPECT_EQ(script.boxes()[0].title, "Warning");
    EXPECT_NE(script.boxes()[0].text.find("\nDetails: Disk full\nLocation: tvfile.cpp:80"), std::string::npos);
}

TEST_F(ErrorQtTest, TheDialogHasItsSections)
{
    TVErrDetails details;
    get_tverror()->populate_error(details, TVErrC_FileRead, TVSevError, "Short read", TVAspectSystem, TVDate(),
                                  "tvfile.cpp:99");
    TVErrorQt dialog(details, TVSevWarning, nullptr);
    EXPECT_EQ(dialog.windowTitle(), QString("Error"));
    EXPECT_EQ(dialog.findChild<QLabel*>("heading")->text(), QString("Error"));
    EXPECT_EQ(dialog.findChild<QLabel*>("details")->text(), QString("Details: Short read"));
    EXPECT_EQ(dialog.findChild<QLabel*>("location")->text(), QString("Location: tvfile.cpp:99"));
}
