#ifndef TVDATABASE_P_H
#define TVDATABASE_P_H

// The private record of TVDatabase, shared with the classes that carry its
// concepts: the reader and writer of its files (TVDBReader, TVDBWriter),
// the loader (TVDBLoader) and the saver (TVDBSaver). Nothing outside
// LibDatabase/db includes this.

#include "LibComms/thread/tvcondvar.h"
#include "LibComms/thread/tvmutex.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbchangejournal.h"
#include "LibDatabase/db/tvdbchecker.h"
#include "LibDatabase/db/tvdbnote.h"
#include "LibDatabase/db/tvdbcontainer.h"
#include "LibDatabase/db/tvdbformat.h"
#include "LibDatabase/db/tvdbindex.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDate/core/tvdate.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>


struct TVDatabase::TVDatabaseImpl {
    TVPtrArray<TVDBObject> m_objects{true}; // owning, in file order
    // Objects replace_object took out of the file, kept alive for whoever
    // still points at them until the objects are next dropped.
    TVPtrArray<TVDBObject> m_retired{true};
    std::map<int, TVDBObject*> m_map;
    int m_uniqueId = 0;
    std::string m_appType;
    std::string m_comment;
    int m_appFileVersion = 0;
    int m_featureCount = 0;
    int m_backupCount = C_DefaultBackupCount;
    TVDate m_writeTime;
    std::string m_writeHost;
    std::string m_appRelease;
    std::string m_noteURL;

    long m_lastFullWrite = 0;
    long m_lastPartialWrite = 0;
    bool m_firstPartialWrite = true;
    std::atomic<long> m_lastStructureChange{0};
    std::string m_completeFile;
    std::string m_partialFile;
    std::string m_baseFile;
    std::string m_indexFile;
    bool m_readOnly = false;
    bool m_isLoaded = false;
    bool m_isResolved = false;
    bool m_autosave = true;
    long m_lastBackup = 0; // seconds since 1970
    int m_loadID = 0;
    int m_databaseFileVersion = TVDBFormat::C_LatestFileVersion;
    TVDBIndex m_index;
    long m_partialGoodBytes = 0;
    // One past the highest transaction tag among the blocks the last
    // partial read applied whole (skipped ones included).
    int m_partialNextTag = 0;
    // The operations those blocks' transaction lines name, by id.
    std::map<int, std::string> m_partialOps;
    // The partial file holds operations that the main file lacks.
    bool m_partialAhead = false;
    // The last load_partial could not open the partial file.
    bool m_partialUnread = false;
    // Records (the database's and objects') the last write wrote.
    int m_recordsWritten = 0;
    TVDBChangeJournal m_journal;
    // Objects the last import_db brought in.
    int m_importCount = 0;

    // The links to shared copies, saved under "External".
    TVPtrArray<TVExternalDB> m_external{true};
    // The latest write time this process stamped or took in; not saved.
    TVDate m_latestWrite;
    // 0 after a load, 1 while a pull pass found nothing, 2 replaced, 3 merged.
    int m_syncState = 0;
    // The update counter when the links last got all of this database (a
    // stamped save, a replace, a load): what changed since, merged data
    // included, a peer may not hold.
    long m_linkWrite = 0;

    // The specs, as the database's children of C_SpecTag. Held apart so
    // that the registration with the database outlives a set_defaults.
    std::unique_ptr<TVDBContainer<TVObjectSpec>> m_specs{
        std::make_unique<TVDBContainer<TVObjectSpec>>(C_SpecTag)};

    // The notes, as the database's children of C_NoteTag; kept like m_specs.
    std::unique_ptr<TVDBContainer<TVDBNote>> m_notes{
        std::make_unique<TVDBContainer<TVDBNote>>(C_NoteTag)};
    // Made at the first get_checker, for this load only.
    std::unique_ptr<TVDBChecker> m_checker;

    TVCondVar m_recalcSignal;
    TVMutex m_completeLock;
    bool m_recalcComplete = false; // under m_completeLock
    TVMutex m_pauseLock;
    bool m_pauseBackground = false; // under m_pauseLock
};


#endif // TVDATABASE_P_H
