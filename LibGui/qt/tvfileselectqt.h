#ifndef TVFILESELECTQT_H
#define TVFILESELECTQT_H

// TVFileSelectQt: the system's file and folder choosers. Every form gives
// the chosen path, or "" when the user cancelled.
//
// Tests choose instead of the user through set_chooser (or the scope object
// TVFileSelectQt::Scoped); while a chooser is set nothing is shown. Where
// nobody could choose (TVMessageBoxQt::unattended) it is cancelled at once.

#include <functional>
#include <string>

class QObject;
class QWidget;

class TVFileSelectQt
{
public:
    enum Kind { E_Open, E_Save, E_Directory };
    // filter is empty for E_Directory.
    using Chooser = std::function<std::string(Kind kind, const std::string& caption, const std::string& dir,
                                              const std::string& filter)>;

    // filter as the toolkit takes it: "Maths files (*.tvmaths);;All files (*)".
    static std::string get_open_file(QWidget* parent, const std::string& caption, const std::string& dir,
                                     const std::string& filter);
    static std::string get_save_file(QWidget* parent, const std::string& caption, const std::string& dir,
                                     const std::string& filter);
    static std::string get_directory(QWidget* parent, const std::string& caption, const std::string& dir);

    // Chooses a file to open and hands the path to receiver's slot ("1name(std::string)")
    // from the event loop; a cancel hands "". False if the slot can't be called.
    static bool open_file(QWidget* parent, const std::string& caption, const std::string& dir,
                          const std::string& filter, QObject* receiver, const char* slot);

    // Null puts the user back in charge.
    static void set_chooser(Chooser chooser);
    static bool has_chooser();

    // Sets a chooser for as long as it lives.
    class Scoped
    {
    public:
        explicit Scoped(Chooser chooser);
        ~Scoped();
        Scoped(const Scoped&) = delete;
        Scoped& operator=(const Scoped&) = delete;

    private:
        Chooser m_previous;
    };

private:
    static std::string choose(QWidget* parent, Kind kind, const std::string& caption, const std::string& dir,
                              const std::string& filter);
};

#endif
