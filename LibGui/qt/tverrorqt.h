#ifndef TVERRORQT_H
#define TVERRORQT_H

// TVErrorQt: the error dialog that tvhandle_error opens. A heading by
// severity ("Warning", "Error", "Fatal Error"), the message for the user,
// then "Details: " (the technical text) and "Location: " (the trail of
// source positions). One Ok button.
//
// install() hands the dialog and the active window to the error framework;
// TVApplicationQt does this when it is made. The dialog copies what it
// shows, because a slot that runs while it is open may clear the error
// stack. While a message box answerer is set (tests), the dialog isn't
// shown: the answerer gets the heading as the title, text() as the text and
// the one label "Ok". Where nobody could press Ok
// (TVMessageBoxQt::unattended) it goes to standard error instead.

#include <QDialog>
#include <string>

#include "LibCore/error/tverrdetails.h"

class QLabel;

class TVErrorQt : public QDialog
{
    Q_OBJECT

public:
    static const char* const C_Warning;     // "Warning"
    static const char* const C_Error;       // "Error"
    static const char* const C_FatalError;  // "Fatal Error"
    static const char* const C_Details;     // "Details: "
    static const char* const C_Location;    // "Location: "

    TVErrorQt(const TVErrDetails& details, int dialogSeverity, QWidget* parent);
    ~TVErrorQt() override;

    // Shows the details and waits for Ok. A null parent means the active
    // window.
    static void start(const TVErrDetails* details, int dialogSeverity, QWidget* parent);
    static void install();
    static void uninstall();

    // Fatal Error where the program stops (either severity 4 or more), else
    // Error for an error and Warning for the rest.
    static std::string heading(int severity, int dialogSeverity);
    // The message (the user's text, or the code's description if there is
    // none), then the "Details: " and "Location: " lines for the parts
    // that aren't empty.
    static std::string text(const TVErrDetails& details);

    const std::string& get_heading() const { return m_heading; }

private:
    std::string m_heading;
};

#endif
