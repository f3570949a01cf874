#ifndef TVCLOUDBROWSEQT_H
#define TVCLOUDBROWSEQT_H

// TVCloudBrowseQt: the flow that finds a database already in the cloud:
// the user picks the place (for the shared folder, a file in it, or the
// folder; for Google Drive, the sign-in if it is still to come), waits for
// the list of files ("Waiting for the file list..."), picks one when there
// are several, and waits for it to arrive ("Waiting for the file to
// download..."). Every wait has a Cancel button. The first-use question
// and the cloud settings' browse buttons run it.
//
// Main thread; it runs the event loop while it waits.

#include <string>

class QWidget;

class TVCloudBrowseQt
{
public:
    enum E_Service { E_ICloud = 1, E_Google = 2, E_Share = 3 };
    static constexpr const char* C_WaitList = "Waiting for the file list...";
    static constexpr const char* C_WaitFile = "Waiting for the file to download...";
    // A cloud that says nothing for this long is given up.
    static constexpr int C_WaitLimitMs = 120000;
    static constexpr int C_PollMs = 100;

    // The link's type (TVCloudInstance::E_FileType) and name of the file
    // the user chose; TVErrC_okCancel when the user gave up, a warning
    // naming the service when it isn't there.
    [[nodiscard]] static int choose(QWidget* parent, int service, int& type, std::string& name);

    // The text of the wait showing now; empty when none (tests watch it).
    static const std::string& waiting();
};

#endif // TVCLOUDBROWSEQT_H
