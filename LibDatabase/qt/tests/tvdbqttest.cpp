#include "LibDatabase/qt/tests/tvdbqttest.h"

#include "LibDatabase/db/tvdbmanager.h"
#include "LibDatabase/db/tvlockfile.h"
#include "TestSupport/tvdbtestnode.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>

void TVDBQtTest::SetUp()
{
    TVDBFileTest::SetUp();
    const std::string root = m_dir.path().toStdString();
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
    qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
    m_app = std::make_unique<TVApplication>(0, nullptr, identity());
    get_tverror()->set_stream(nullptr, TVSevAll);
    // Errors come back as values, so each case sees what survived.
    get_tverror()->set_action(TVActContinue, TVSevError);
    ASSERT_EQ(TVDBManager::get_default_filename(m_file, ""), TVErrC_ok);
    m_db = std::make_unique<TVDBQtTestDB>();
}

TVAppIdentity TVDBQtTest::identity()
{
    TVAppIdentity identity;
    identity.m_application = "TVDBQtTest";
    identity.m_title = "Database Window Test";
    identity.m_extension = C_Extension;
    return identity;
}

void TVDBQtTest::TearDown()
{
    m_db.reset();
    m_app.reset();
    TVDBFileTest::TearDown();
}

int TVDBQtTest::node_id(const TVDatabase& db, const std::string& name)
{
    for (int i = 0; i < db.get_nobjects(); ++i)
        if (const auto* node = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i)))
            if (!node->is_deleted() && node->m_name == name)
                return node->get_id();
    return -1;
}

void TVDBQtTest::write_file(const std::string& file, const std::set<std::string>& nodes)
{
    QFile::remove(QString::fromStdString(file));
    TVDBQtTestDB db;
    ASSERT_EQ(db.load(file, true, std::string(), false, false, true), TVErrC_ok);
    for (const std::string& name : nodes)
        ASSERT_EQ(add(db, name), TVErrC_ok);
    ASSERT_EQ(db.save(true, true, false), TVErrC_ok);
    ASSERT_EQ(db.unload(), TVErrC_ok);
}

bool TVDBQtTest::drain(const std::function<bool()>& done)
{
    for (int i = 0; i < 1000 && !done(); ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return done();
}

void TVDBQtTest::leave_lock_behind(const std::string& file)
{
    TVLockFile holder;
    ASSERT_EQ(holder.lock(file, false), TVErrC_ok);
    const QString path = QString::fromStdString(holder.get_lock_filename());
    QFile in(path);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    const QByteArray bytes = in.readAll();
    in.close();
    holder.unlock();
    QFile out(path);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(bytes);
    out.close();
}

std::string TVDBQtTest::scratch(const std::string& ext) const
{
    return TVDatabase::get_scratch_name(m_file) + ext;
}
