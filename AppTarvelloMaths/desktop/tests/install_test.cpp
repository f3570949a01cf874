// The install as a packager makes it, into a folder of the test's own, and
// each piece of it checked by the tool that the desktop itself uses.

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMimeDatabase>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <iostream>
#include <memory>

namespace {

const char* const C_AppId = "org.tarvello.Maths";

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
};

Outcome run(const QString& program, const QStringList& args,
            const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment(),
            const QString& folder = QString())
{
    QProcess process;
    process.setProcessEnvironment(env);
    if (!folder.isEmpty())
        process.setWorkingDirectory(folder);
    process.start(program, args);
    EXPECT_TRUE(process.waitForFinished(120000)) << program.toStdString() << " did not end";
    Outcome outcome;
    outcome.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.err = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

class InstallTest : public ::testing::Test
{
protected:
    // One install per test program: `cmake --install` into DESTDIR, as
    // `make install` and the package do.
    static void SetUpTestSuite()
    {
        s_root = std::make_unique<QTemporaryDir>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("DESTDIR", s_root->path());
        const Outcome outcome = run(TV_CMAKE, {"--install", TV_BUILD_DIR, "--prefix", "/usr"}, env);
        s_installed = outcome.exitCode == 0;
        if (!s_installed)
            std::cerr << outcome.out.toStdString() << outcome.err.toStdString();
    }
    static void TearDownTestSuite() { s_root.reset(); }

    void SetUp() override { ASSERT_TRUE(s_installed) << "cmake --install failed"; }

    static QString usr(const QString& path) { return s_root->path() + "/usr/" + path; }

    // Every file of the install, relative to /usr.
    static QStringList installed()
    {
        QStringList found;
        QDirIterator it(usr(""), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            found << QDir(usr("")).relativeFilePath(it.next());
        found.sort();
        return found;
    }

    static QString man_page(const QString& name)
    {
        const Outcome page = run("gzip", {"-dc", usr("share/man/man1/" + name + ".1.gz")});
        EXPECT_EQ(page.exitCode, 0) << page.err.toStdString();
        QString text = page.out;
        text.replace("\\-", "-").replace("\\e", "\\");
        return text;
    }

    static std::unique_ptr<QTemporaryDir> s_root;
    static bool s_installed;
};

std::unique_ptr<QTemporaryDir> InstallTest::s_root;
bool InstallTest::s_installed = false;

// Options as --help prints them: "-h|--help", "-h, --help", "--app NAME",
// "\"tvdb --version\"", but not the hyphen inside a word.
QStringList options_in(const QString& help)
{
    static const QRegularExpression option("(?:^|[\\s\"'\\[(|,])(--?[A-Za-z][\\w-]*)");
    QStringList found;
    for (auto it = option.globalMatch(help); it.hasNext();)
        found << it.next().captured(1);
    found.removeDuplicates();
    return found;
}

// The commands of "tvdb --help": "  name   what it does" after "Commands:".
QStringList commands_in(const QString& help)
{
    static const QRegularExpression command("^  (\\w[\\w-]*)  ");
    QStringList found;
    bool inList = false;
    for (const QString& line : help.split('\n')) {
        if (line == "Commands:")
            inList = true;
        else if (inList && command.match(line).hasMatch())
            found << command.match(line).captured(1);
        else
            inList = false;
    }
    return found;
}

bool names(const QString& page, const QString& word)
{
    const QRegularExpression whole("(?<![\\w-])" + QRegularExpression::escape(word) + "(?![\\w-])");
    return whole.match(page).hasMatch();
}

} // namespace

// The two programs and what the desktop reads; no test programs,
// libraries or build tools.
TEST_F(InstallTest, InstallsTheProgramsAndWhatTheDesktopNeedsOnly)
{
    QStringList expected = {
        "bin/tarvello-maths",
        "bin/tvdb",
        QString("share/applications/%1.desktop").arg(C_AppId),
        QString("share/metainfo/%1.metainfo.xml").arg(C_AppId),
        "share/mime/packages/tarvello-maths.xml",
        QString("share/icons/hicolor/scalable/apps/%1.svg").arg(C_AppId),
        "share/man/man1/tarvello-maths.1.gz",
        "share/man/man1/tvdb.1.gz",
        "share/doc/tarvello-maths/copyright",
        "share/doc/tarvello-maths/changelog.gz",
    };
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256})
        expected << QString("share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(C_AppId);
    expected.sort();
    EXPECT_EQ(installed(), expected);
}

// The launcher entry and the AppStream record pass their validators, the
// record and the entry agree with each other and with the icons
// (validate-tree), and "Open with" hands the program the file.
TEST_F(InstallTest, DesktopEntryAndMetainfoPassTheirValidators)
{
    const QString entry = usr(QString("share/applications/%1.desktop").arg(C_AppId));
    const Outcome desktop = run("desktop-file-validate", {entry});
    EXPECT_EQ(desktop.exitCode, 0) << desktop.out.toStdString() << desktop.err.toStdString();
    EXPECT_EQ(desktop.out + desktop.err, "");

    for (const QStringList& args :
         {QStringList{"validate", "--no-net", usr(QString("share/metainfo/%1.metainfo.xml").arg(C_AppId))},
          QStringList{"validate-tree", "--no-net", s_root->path()}}) {
        SCOPED_TRACE(args.first().toStdString());
        const Outcome appstream = run("appstreamcli", args);
        EXPECT_EQ(appstream.exitCode, 0) << appstream.out.toStdString() << appstream.err.toStdString();
    }

    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QRegularExpression("^Exec=tarvello-maths %f$", QRegularExpression::MultilineOption)));
    EXPECT_TRUE(text.contains(QRegularExpression("^MimeType=application/x-tvmaths;$",
                                                 QRegularExpression::MultilineOption)));
}

// Once update-mime-database has run on the installed description, a maths
// file is known by its name and, under any other name (a backup, a copy),
// by its first line; other text is not taken for one.
TEST_F(InstallTest, FileTypeIsKnownByNameAndByFirstLine)
{
    QTemporaryDir data;
    ASSERT_TRUE(QDir().mkpath(data.filePath("mime/packages")));
    ASSERT_TRUE(QFile::copy(usr("share/mime/packages/tarvello-maths.xml"),
                            data.filePath("mime/packages/tarvello-maths.xml")));
    const Outcome update = run("update-mime-database", {data.filePath("mime")});
    ASSERT_EQ(update.exitCode, 0) << update.err.toStdString();

    const QByteArray maths = "TVDatabase:7685\n!Version!0\n";
    const struct {
        const char* name;
        QByteArray bytes;
        bool isMaths;
    } rows[] = {
        {"x.tvmaths", maths, true},
        {"family.bk3", maths, true},
        {"copy of the file", maths, true},
        {"notes", "TVData is not a database\n", false},
    };
    // Only the folder just made: the machine's own database knows nothing
    // of the type, and must not mask a fault of ours.
    qputenv("XDG_DATA_DIRS", data.path().toLocal8Bit());
    qputenv("XDG_DATA_HOME", data.filePath("home").toLocal8Bit());
    QMimeDatabase db;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QFile file(data.filePath(row.name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.bytes);
        file.close();
        EXPECT_EQ(db.mimeTypeForFile(file.fileName()).name() == "application/x-tvmaths", row.isMaths)
            << db.mimeTypeForFile(file.fileName()).name().toStdString();
    }
}

// Run from the install alone, in a home of its own and with no screen:
// a first start asks its welcome, a file that isn't there is asked about
// through the load flow, and each time nobody answers, Quit ends the
// program with nothing made. The pictures and help pages are compiled in.
TEST_F(InstallTest, InstalledProgramStartsAndEndsOnItsOwn)
{
    QTemporaryDir home;
    QDir(home.path()).mkpath("run");
    QFile::setPermissions(home.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", home.path());
    env.insert("XDG_CONFIG_HOME", home.filePath("config"));
    env.insert("XDG_CACHE_HOME", home.filePath("cache"));
    env.insert("XDG_DATA_HOME", home.filePath("data"));
    env.insert("XDG_RUNTIME_DIR", home.filePath("run"));
    env.insert("PATH", usr("bin") + ":/usr/bin:/bin");
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("ASAN_OPTIONS", "detect_leaks=0");

    const QString missing = home.filePath("gone.tvmaths");
    const struct {
        QStringList args;
        const char* title;
        QString text;
    } rows[] = {
        {{}, "Welcome", "Welcome to Tarvello Maths!"},
        {{missing}, "Load File", "Could not find or access " + missing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        const Outcome outcome = run(usr("bin/tarvello-maths"), row.args, env, home.path());
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_TRUE(outcome.err.contains(QString("Unattended \"%1\" answered").arg(row.title)))
            << outcome.err.toStdString();
        EXPECT_TRUE(outcome.err.contains(row.text)) << outcome.err.toStdString();
        // One question, no error box besides.
        EXPECT_EQ(outcome.err.count("Unattended"), 1) << outcome.err.toStdString();
        // After the first start the program knows of a file, so a missing
        // one is no first start.
        QFile config(home.filePath("config/TarvelloMaths.cfg"));
        ASSERT_TRUE(config.open(QIODevice::WriteOnly | QIODevice::Append));
        config.write(("LastFile=" + home.filePath("other.tvmaths") + ";\n").toUtf8());
    }
    QDirIterator it(home.path(), {"*.tvmaths"}, QDir::Files, QDirIterator::Subdirectories);
    EXPECT_FALSE(it.hasNext()) << it.next().toStdString();
}

// Each page names every option of its program's --help; tvdb's names each
// command and every option of each command's --help.
TEST_F(InstallTest, ManualPagesNameEveryOptionOfTheirHelp)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    env.insert("HOME", home.path());
    env.remove("XDG_CONFIG_HOME");

    const QString maths = man_page("tarvello-maths");
    const Outcome help = run(usr("bin/tarvello-maths"), {"--help"}, env);
    ASSERT_EQ(help.exitCode, 0);
    const QStringList mathsOptions = options_in(help.out);
    EXPECT_TRUE(mathsOptions.contains("--man"));
    for (const QString& option : mathsOptions)
        EXPECT_TRUE(names(maths, option)) << "tarvello-maths.1 lacks " << option.toStdString();
    EXPECT_TRUE(maths.contains("tarvello-maths (DB options) [maths]"));

    const QString tvdb = man_page("tvdb");
    const Outcome tvdbHelp = run(usr("bin/tvdb"), {"--help"}, env);
    ASSERT_EQ(tvdbHelp.exitCode, 0);
    const QStringList commands = commands_in(tvdbHelp.out);
    EXPECT_TRUE(commands.contains("date"));
    QStringList tvdbOptions = options_in(tvdbHelp.out);
    for (const QString& command : commands) {
        EXPECT_TRUE(names(tvdb, "tvdb " + command)) << "tvdb.1 lacks " << command.toStdString();
        const Outcome commandHelp = run(usr("bin/tvdb"), {command, "--help"}, env);
        EXPECT_EQ(commandHelp.exitCode, 0) << command.toStdString();
        tvdbOptions << options_in(commandHelp.out);
    }
    EXPECT_TRUE(tvdbOptions.contains("--app"));
    for (const QString& option : tvdbOptions)
        EXPECT_TRUE(names(tvdb, option)) << "tvdb.1 lacks " << option.toStdString();
}
