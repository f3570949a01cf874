#include "LibGui/qt/tvmessageboxqt.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include "LibCore/error/tverror.h"
#include "LibGui/base/tvmessagebox.h"
#include "LibGui/qt/tverrorqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "TestSupport/tvraise.h"

namespace {

// Takes the answers of boxes opened without waiting.
class Receiver : public QObject
{
    Q_OBJECT

public slots:
    void got_key(std::string key) { m_keys.push_back(key); }
    void got_id(std::string key, TVId id)
    {
        m_keys.push_back(key);
        m_id = id;
    }
    void got_file(std::string file) { m_keys.push_back(file); }

public:
    std::vector<std::string> m_keys;
    TVId m_id;
};

// Runs f on the box that start() shows, once it is up; a box that f
// leaves open fails the test and is closed, so a fault can't hang the run.
template <class F>
void when_shown(F f)
{
    QTimer::singleShot(0, [f] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<TVMessageBoxQt*>(w);
            if (box == nullptr || !box->isVisible())
                continue;
            f(box);
            if (box->isVisible()) {
                ADD_FAILURE() << "the box stayed open";
                box->done(QDialog::Rejected);
            }
            return;
        }
        ADD_FAILURE() << "no box shown";
    });
}

} // namespace

TEST(MessageBox, ButtonStringsParseAndBuildAlike)
{
    struct Row {
        std::string key;
        std::string label;
        bool isDefault, isEscape;
        std::string tooltip, shortcut;
    } rows[] = {
        {TVMessageBox::C_Ok, "Ok", true, false, "", ""},
        {TVMessageBox::C_Cancel, "Cancel", false, true, "", ""},
        {TVMessageBox::C_Yes, "Yes", true, false, "", "y"},
        {TVMessageBox::C_No, "No", false, true, "", "n"},
        {TVMessageBox::C_Quit, "Quit", false, false, "", "q"},
        {"Find It#Tooltip:Look for the file#Shortcut:f", "Find It", false, false, "Look for the file", "f"},
        {"", "", false, false, "", ""},
        {"Open Anyway#Unknown#Default", "Open Anyway", true, false, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        const TVMessageBox::Button b = TVMessageBox::parse_key(row.key);
        EXPECT_EQ(b.label, row.label);
        EXPECT_EQ(b.isDefault, row.isDefault);
        EXPECT_EQ(b.isEscape, row.isEscape);
        EXPECT_EQ(b.tooltip, row.tooltip);
        EXPECT_EQ(b.shortcut, row.shortcut);
    }
    EXPECT_EQ(TVMessageBox::construct_key("Yes", true, false, "", "y"), TVMessageBox::C_Yes);
    EXPECT_EQ(TVMessageBox::construct_key("Cancel", false, true, "", ""), TVMessageBox::C_Cancel);
    EXPECT_EQ(TVMessageBox::construct_key("Merge", false, false, "Join both", "m"), "Merge#Tooltip:Join both#Shortcut:m");
}

TEST(MessageBox, ButtonsTakeTheirOptionsAndEmptyOnesHide)
{
    TVMessageBoxQt box(nullptr, "Missing File", "Where is it?", "Find It#Default#Tooltip:Look", "",
                       TVMessageBox::C_Cancel, TVMessageBox::C_No);
    EXPECT_EQ(box.labels(), (std::vector<std::string>{"Find It", "Cancel", "No"}));
    QPushButton* find = box.button("Find It");
    ASSERT_NE(find, nullptr);
    EXPECT_TRUE(find->isDefault());
    EXPECT_EQ(find->toolTip(), QString("Look"));
    EXPECT_EQ(box.button("No")->shortcut(), QKeySequence("n"));
    EXPECT_EQ(box.button(""), nullptr);
}

TEST(MessageBox, PressedButtonGivesItsLabelAndEscapeTheEscapeButton)
{
    TVMessageBoxQt::ShowUnattended shown;
    when_shown([](TVMessageBoxQt* box) { QTest::mouseClick(box->button("Open Anyway"), Qt::LeftButton); });
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Locked", "Open it?", "Open Anyway", TVMessageBox::C_Cancel),
              "Open Anyway");

    when_shown([](TVMessageBoxQt* box) { QTest::keyClick(box, Qt::Key_Escape); });
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Locked", "Open it?", "Open Anyway", TVMessageBox::C_Cancel), "Cancel");

    when_shown([](TVMessageBoxQt* box) { QTest::keyClick(box, Qt::Key_Escape); });
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Locked", "Open it?", "Open Anyway", "Previous"), "");

    when_shown([](TVMessageBoxQt* box) { QTest::mouseClick(box->button("Yes"), Qt::LeftButton); });
    EXPECT_EQ(TVMessageBoxQt::question(nullptr, "Save", "Save now?", TVMessageBox::C_Yes, TVMessageBox::C_No), "Yes");
}

// With no screen and no answerer, nothing waits: a box gives its Escape
// label, a chooser cancels, the error dialog returns, and each says on
// standard error what it asked.
TEST(MessageBox, UnattendedDialogsAnswerAtOnceAndSayWhatTheyAsked)
{
    ASSERT_TRUE(TVMessageBoxQt::unattended());
    // Were any of them to wait, this closes it and the case fails.
    QTimer guard;
    QObject::connect(&guard, &QTimer::timeout, [] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            ADD_FAILURE() << "a dialog waited";
            modal->close();
        }
    });
    guard.start(1000);

    testing::internal::CaptureStderr();
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Load File", "a.tvmaths is gone.", "Find It", TVMessageBox::C_Cancel),
              "Cancel");
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Sync", "Merge?", "Merge", "Replace"), "");
    EXPECT_EQ(TVFileSelectQt::get_open_file(nullptr, "Find a.tvmaths", "/d", "*.tvmaths"), "");
    TVErrDetails details;
    details.set_code(TVErrC_FileOpen);
    details.set_severity(TVSevError);
    details.set_details("Could not open a.tvmaths", TVAspectUser);
    TVErrorQt::start(&details, TVSevWarning, nullptr);
    Receiver receiver;
    ASSERT_NE(TVMessageBoxQt::open_key(nullptr, "Save", "Save now?", TVMessageBox::C_Yes, TVMessageBox::C_No, "",
                                       "", &receiver, SLOT(got_key(std::string))),
              nullptr);
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.m_keys, (std::vector<std::string>{"No"}));
    const std::string err = testing::internal::GetCapturedStderr();
    for (const char* said : {"\"Load File\" answered \"Cancel\": a.tvmaths is gone.", "\"Sync\" answered \"\"",
                             "Find a.tvmaths", "\"Error\" answered \"Ok\": Could not open a.tvmaths",
                             "\"Save\" answered \"No\""})
        EXPECT_NE(err.find(said), std::string::npos) << said << " in\n" << err;

    TVMessageBoxQt::ShowUnattended shown;
    EXPECT_FALSE(TVMessageBoxQt::unattended());
}

TEST(MessageBox, DetailsShowsAPaneWithoutClosing)
{
    TVMessageBoxQt box(nullptr, "Error", "It failed.", TVMessageBox::C_Ok, "", "", "", "line 1\nline 2");
    box.show();
    QPushButton* details = box.button(TVMessageBox::C_Details);
    ASSERT_NE(details, nullptr);
    EXPECT_FALSE(box.details_visible());
    QTest::mouseClick(details, Qt::LeftButton);
    EXPECT_TRUE(box.isVisible());
    EXPECT_TRUE(box.details_visible());
    EXPECT_EQ(box.get_key(), "");
    const int height = box.details_pane()->height();
    EXPECT_GE(height, TVMessageBoxQt::C_DetailsMinHeight);
    EXPECT_LE(height, TVMessageBoxQt::C_DetailsMaxHeight);
    EXPECT_EQ(box.details_pane()->toPlainText(), QString("line 1\nline 2"));
    QTest::mouseClick(details, Qt::LeftButton);
    EXPECT_FALSE(box.details_visible());
    EXPECT_EQ(box.labels(), (std::vector<std::string>{"Ok"})); // Details is no answer
}

TEST(MessageBox, ScriptAnswersInOrderAndRecordsWhatWasAsked)
{
    TVMessageBoxScript script({"Find It", "Ok"});
    EXPECT_EQ(TVMessageBoxQt::start(nullptr, "Missing File", "a.tvmaths is gone.", "Find It", "Create New",
                                    TVMessageBox::C_Cancel),
              "Find It");
    TVMessageBoxQt::information("Found", "Loaded b.tvmaths.", nullptr);
    EXPECT_TRUE(script.done());
    EXPECT_EQ(script.titles(), (std::vector<std::string>{"Missing File", "Found"}));
    EXPECT_EQ(script.texts(), (std::vector<std::string>{"a.tvmaths is gone.", "Loaded b.tvmaths."}));
    EXPECT_EQ(script.boxes()[0].labels, (std::vector<std::string>{"Find It", "Create New", "Cancel"}));

    // Past the script: closed without a button, and counted.
    EXPECT_EQ(TVMessageBoxQt::question(nullptr, "More", "?", TVMessageBox::C_Yes, TVMessageBox::C_No), "");
    EXPECT_EQ(script.unexpected(), 1);
    EXPECT_FALSE(script.done());
}

TEST(MessageBox, AnAnswerThatIsNoButtonRaises)
{
    TVError::release();
    get_tverror()->set_stream(nullptr, TVSevAll);
    TVMessageBoxScript script({"Merge"});
    const TVRaised raised =
        tv_catch_raise([] { TVMessageBoxQt::start(nullptr, "Sync", "?", "Replace", TVMessageBox::C_Cancel); });
    EXPECT_TRUE(raised.thrown);
    EXPECT_EQ(raised.code, TVErrC_InvalidValue);
    TVError::release();
}

TEST(MessageBox, ScriptsPutBackTheAnswererBeforeThem)
{
    {
        TVMessageBoxScript outer({"Yes"});
        {
            TVMessageBoxScript inner({"No"});
            EXPECT_EQ(TVMessageBoxQt::question(nullptr, "t", "x", TVMessageBox::C_Yes, TVMessageBox::C_No), "No");
        }
        EXPECT_EQ(TVMessageBoxQt::question(nullptr, "t", "x", TVMessageBox::C_Yes, TVMessageBox::C_No), "Yes");
    }
    EXPECT_FALSE(TVMessageBoxQt::has_answerer());
}

TEST(MessageBox, BoxForAnIdDeliversTheAnswerAndTheIdLater)
{
    qRegisterMetaType<TVId>("TVId");
    Receiver receiver;
    TVMessageBoxScript script({"Delete"});
    QPointer<TVMessageBoxQt> box =
        TVMessageBoxQt::open_id(nullptr, "Delete", "Delete this exercise?", TVMessageBox::C_Delete,
                                TVMessageBox::C_Cancel, "", "", TVId(4, 2, 0), &receiver, SLOT(got_id(std::string, TVId)));
    ASSERT_FALSE(box.isNull());
    EXPECT_TRUE(receiver.m_keys.empty()); // not inside the caller
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.m_keys, (std::vector<std::string>{"Delete"}));
    EXPECT_EQ(receiver.m_id, TVId(4, 2, 0));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(box.isNull());

    EXPECT_EQ(TVMessageBoxQt::open_key(nullptr, "t", "x", TVMessageBox::C_Ok, "", "", "", &receiver,
                                       SLOT(no_such_slot(std::string))),
              nullptr);
}

TEST(FileSelect, ChooserAnswersEveryKindAndEmptyMeansCancelled)
{
    std::vector<TVFileSelectQt::Kind> kinds;
    TVFileSelectQt::Scoped scoped([&](TVFileSelectQt::Kind kind, const std::string& caption, const std::string& dir,
                                      const std::string& filter) {
        kinds.push_back(kind);
        return kind == TVFileSelectQt::E_Save ? std::string() : dir + "/" + caption + filter;
    });
    EXPECT_EQ(TVFileSelectQt::get_open_file(nullptr, "a", "/d", "*.x"), "/d/a*.x");
    EXPECT_EQ(TVFileSelectQt::get_save_file(nullptr, "b", "/d", "*.x"), "");
    EXPECT_EQ(TVFileSelectQt::get_directory(nullptr, "c", "/d"), "/d/c");
    EXPECT_EQ(kinds, (std::vector<TVFileSelectQt::Kind>{TVFileSelectQt::E_Open, TVFileSelectQt::E_Save,
                                                         TVFileSelectQt::E_Directory}));

    Receiver receiver;
    EXPECT_TRUE(TVFileSelectQt::open_file(nullptr, "e", "/d", "", &receiver, SLOT(got_file(std::string))));
    EXPECT_TRUE(receiver.m_keys.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.m_keys, (std::vector<std::string>{"/d/e"}));
}

#include "tvmessageboxqt_test.moc"
