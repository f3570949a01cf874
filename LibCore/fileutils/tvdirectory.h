#ifndef TVDIRECTORY_H
#define TVDIRECTORY_H

// TVDirectory: a folder (its own path and times, as a TVFile) and the files
// in it that pass a filter, as last loaded.
//
// The filter is a list of wildcard patterns separated by commas, such as
// "*.jpg,*.png"; blanks around a pattern are ignored, case is ignored (a
// camera writes ".JPG"), and an empty filter passes every file. Patterns
// match the file name only, never the folders on the way.
//
// load() lists regular files (and links to them) in the order of their
// path names, byte by byte, so a file in "a/" comes before "b.txt". With
// subdirectories it walks the whole tree below, but doesn't follow links to
// folders, which could lead round in a circle. Names starting with "." are
// passed over, files and folders alike: they are the system's, not the
// user's. A subfolder that can't be read is passed over too; the folder
// itself not, see load().
//
// A value like TVFile. Pointers from get_file_by_* stay valid until the
// next load, assignment or destruction.

#include <iosfwd>
#include <memory>
#include <string>

#include "LibCore/fileutils/tvfile.h"

class TVDirectory : public TVFile
{
public:
    TVDirectory();
    explicit TVDirectory(const std::string& path);
    TVDirectory(const TVDirectory& other);
    TVDirectory& operator=(const TVDirectory& other);
    ~TVDirectory() override;

    // Empties the list and the filter; the base keeps its own.
    void set_defaults(bool constructing);

    void set_filter(const std::string& filter);
    const std::string& get_filter() const;

    // Reads the folder's own times and its files through the filter; with
    // subdirs, those of every folder below too. The list is emptied first
    // and stays empty on failure. A missing folder is the warning
    // TVErrC_FileNotExist "The directory %s does not exist."; one that can't
    // be read, the error TVErrC_FileOpen "Could not read the directory %s".
    [[nodiscard]] int load(bool subdirs);
    // set_filter(filter), then load(subdirs).
    [[nodiscard]] int load(const std::string& filter, bool subdirs);

    int get_nfiles() const;
    // Null when index is outside 0 .. get_nfiles() - 1.
    const TVFile* get_file_by_index(int index) const;
    // The entry of exactly that path name as listed (folder path, "/",
    // name), or null.
    const TVFile* get_file_by_pathname(const std::string& pathName) const;

    void dump(std::ostream& out, int indent) const override;

    // The folder, the filter and the list all equal.
    bool operator==(const TVDirectory& other) const;
    bool operator!=(const TVDirectory& other) const { return !(*this == other); }

private:
    struct TVDirImpl;
    std::unique_ptr<TVDirImpl> d;
};

// operator<< of TVFile prints a TVDirectory too, through dump.

#endif // TVDIRECTORY_H
