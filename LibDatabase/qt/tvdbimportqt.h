#ifndef TVDBIMPORTQT_H
#define TVDBIMPORTQT_H

// TVDBImportQt: brings another database file in: opened as a file of its
// own (a copy in the application's folder), put in place of the present
// data, or merged into it. Ends with one of its three signals (complete
// with the file that is now to be open) and then deletes itself.
//
// The database and the manager must outlive the flow. Main thread only.

#include "LibGui/qt/tvslotqt.h"
#include "LibGui/qt/tvwidgetqt.h"

#include <string>

class TVDatabase;
class TVDBManagerQt;

class TVDBImportQt : public TVWidgetQt
{
    Q_OBJECT

public:
    static const char* const C_Open;    // "Open"
    static const char* const C_Replace; // "Replace"
    static const char* const C_Merge;   // "Merge"

    // With choose, a loaded database offers Open, Replace and Merge;
    // without, the file is opened. With select the user picks the file
    // (file is the chooser's start); without, file is taken as it is.
    static TVDBImportQt* start_import(TVDatabase& db, const std::string& file,
                                      const std::string& fallback, bool choose, bool select,
                                      TVDBManagerQt* manager, const TVSlotQt& on_complete,
                                      const TVSlotQt& on_failed, const TVSlotQt& on_cancelled);
    ~TVDBImportQt() override;

signals:
    void load_complete(std::string file);
    void load_failed();
    void load_cancelled();

public slots:
    void db_import1();
    void db_import2(std::string file);
    void db_import3(std::string choice);

private:
    TVDBImportQt(TVDatabase& db, const std::string& file, TVDBManagerQt* manager);
    // tvslotcall::stopped, and a stop ends the flow (failed).
    bool stopped(int value);
    [[nodiscard]] int open_target(std::string& target) const;
    void complete(const std::string& file);
    void failed();
    void cancelled();
    void finish();

    TVDatabase& m_db;
    TVDBManagerQt* m_manager;
    std::string m_filename;
    std::string m_fallback;
    bool m_choose = true;
    bool m_select = true;
    bool m_finished = false;
};

#endif // TVDBIMPORTQT_H
