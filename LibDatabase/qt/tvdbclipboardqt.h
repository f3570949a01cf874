#ifndef TVDBCLIPBOARDQT_H
#define TVDBCLIPBOARDQT_H

// TVDBClipboardQt: the database clipboard with the system clipboard beside
// it. A cut or copy also puts the ids there, as text under C_MimeType with
// the database's file name, so that another window of the same file sees
// something to paste and any other program sees nothing of it; a paste
// asks the system clipboard first, so an id list that another program has
// since replaced is not pasted.

#include "LibDatabase/db/tvdbclipboard.h"

class TVDBClipboardQt : public TVDBClipboard
{
public:
    static const char* const C_MimeType; // "application/x-tarvello-ids"

    explicit TVDBClipboardQt(TVDatabase& db) : TVDBClipboard(db) {}

    void cut(const TVIdList& ids) override;
    void copy(const TVIdList& ids) override;
    bool clipboard_has_object() const override;

private:
    void publish(const TVIdList& ids, bool copied);
    std::string marker() const;
};

#endif // TVDBCLIPBOARDQT_H
