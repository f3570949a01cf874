#ifndef TVPARAMFILE_H
#define TVPARAMFILE_H

// TVParamFile: one configuration file and the parameters it may hold.
//
// The file is text, one entry per line:
//
//   file    := { line "\n" }
//   line    := comment | entry
//   comment := an empty line, or one whose first non-blank character is
//              not a letter ("#", a digit, ...); kept as it stands
//   entry   := name "=" value          blanks around name and value dropped
//
// The value runs to the end of the line and may itself hold "=" (a tagged
// value is name=tag=value). A multi-value parameter has one line per value.
// A line that starts with a letter but has no "=" is invalid; it is
// reported and kept as it stands.
//
// Parameters come from the groups it declares, like a command line, and
// from the file itself: a name nobody declared is adopted on reading (a
// hidden multi-value parameter), so what the program stored as a system
// value, and what it doesn't know, survives a read and a rewrite. A value
// read from the file has the file's name as its source.
//
// Rewriting writes "<file>.tmp" in full, deletes the file and renames the
// ".tmp" into place, so at every moment one complete copy is on the disk:
// the file, or the ".tmp" that read_file then moves into place.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/param/tvparamcmdline.h"

class TVParamBase;
class TVParamSet;

class TVParamFile : public TVParamCmdLine
{
public:
    static const char* const C_Extension;    // ".cfg"
    static const char* const C_TmpExtension; // ".tmp"

    TVParamFile();
    // userConfig marks the user's own file, where system values go.
    TVParamFile(const std::string& fileName, bool userConfig);
    TVParamFile(const TVParamFile& other);
    TVParamFile& operator=(const TVParamFile& other);
    ~TVParamFile() override;

    void dump(std::ostream& out, int indent) const override;

    const std::string& get_filename() const { return m_fileName; }
    bool is_user_config() const { return m_userConfig; }

    // Where earlier versions kept the file. Empty (the default) means the
    // application's data directory.
    void set_data_dir(const std::string& dir) { m_dataDir = dir; }

    // Reads the file into its own parameters and into merged. A missing
    // file is moved in from "<file>.tmp" (left by a rewrite that stopped
    // before its rename) or else from the data directory, if one of them
    // is there; a file that can't be opened gives TVErrC_okEndOfFile,
    // which is no failure. An
    // invalid line is a user warning (TVErrC_ParamInvalid); the rest of
    // the file is still read.
    [[nodiscard]] int read_file(TVParamSet& merged);
    // Writes the present values back, keeping comments and invalid lines
    // where they were; a parameter takes the place of its first line, and
    // parameters without a line go to the end. An invalid line is told to
    // the user (and taken off the error stack again) but doesn't fail the
    // rewrite. A file that is there but won't open is the warning
    // TVErrC_FileOpen; failure to create the ".tmp" file, TVErrC_FileCreate;
    // both leave the file as it was. A failed move into place is
    // tv_rename_file's error: the old file or the ".tmp" is left, and
    // read_file takes whichever is there.
    [[nodiscard]] int rewrite_file();
    // Whether any parameter changed since the file was last read or written.
    bool needs_write() const;

    // The file's parameter of that name, made if need be (see above); the
    // name is also put into merged if it is missing there. Never null.
    TVParamBase* adopt(const std::string& name, TVParamSet& merged);

protected:
    void collect_extra(TVParamSet& set) const override;

private:
    std::string m_fileName;
    bool m_userConfig;
    std::string m_dataDir;
    long m_updateCount; // the parameters' clock when last read or written
    std::vector<std::unique_ptr<TVParamBase>> m_adopted;
};

#endif // TVPARAMFILE_H
