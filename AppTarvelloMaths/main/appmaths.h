#ifndef APPMATHS_H
#define APPMATHS_H

#include <QPointer>

#include <iosfwd>
#include <memory>
#include <string>

#include "AppTarvelloMaths/qt/mathsmainqt.h"
#include "LibGui/qt/tvapplicationqt.h"

class MathsDB;


// The maths program's application object: its identity, its one
// positional parameter (the maths file to open) and its start.
class AppMaths : public TVApplicationQt
{
    Q_OBJECT

public:
    static const char* const C_FileExtension; // ".tvmaths"

    AppMaths(int argc, char** argv, TVQtApp& app);
    ~AppMaths() override;

    void dump(std::ostream& out, int indent) const override;
    int load_file(const std::string& file) override;
    int run() override;
    int parameters(TVParam& param, TVParamCmdLine& cmdline, TVParamFile& file) override;

    // The maths file to open; empty for the default file.
    const std::string& get_mathsdb() const { return m_mathsDB; }
    // The main window from run() until it closes; null otherwise.
    MathsMainQt* get_main_window() const { return m_mainWindow.data(); }
    // The database run() made; null before.
    MathsDB* get_db() const { return m_db.get(); }

    static TVAppIdentity identity();

private:
    std::string m_mathsDB;
    // A file the system asked us to open; it wins over the command line,
    // which is read after such an early request.
    std::string m_openRequest;
    // The window deletes itself on close; the database outlives it.
    QPointer<MathsMainQt> m_mainWindow;
    std::unique_ptr<MathsDB> m_db;
};

#endif
