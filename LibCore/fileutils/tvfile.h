#ifndef TVFILE_H
#define TVFILE_H

// TVFile: what the file system said of one path when last asked: the
// creation and modification times and the size.
//
// A value: it holds no open file and copies freely. Nothing is read from
// the disk until refresh(); until then, and after a refresh that found
// nothing, both times are the invalid date and the size is 0. The creation
// time is also invalid where the file system keeps none.
//
// Times are to the microsecond, in the default zone (as TVDateUtils::now()).

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "LibDate/core/tvdate.h"

class TVFile
{
public:
    TVFile();
    // Only names the path; call refresh() to read it.
    explicit TVFile(const std::string& pathName);
    TVFile(const TVFile& other);
    TVFile& operator=(const TVFile& other);
    virtual ~TVFile();

    // Forgets the times and the size; the path stays.
    void set_defaults(bool constructing);

    // Reads the times and size. Nothing at the path: the warning
    // TVErrC_FileNotExist "The file %s does not exist.", and the defaults.
    [[nodiscard]] int refresh();
    // Writes the modification time, then refreshes. The systems we build
    // for keep the creation time to themselves, so created is not written.
    // An invalid modified leaves that time as it is. Nothing at the path:
    // the error TVErrC_FileNotExist "The file %s does not exist."; a
    // refusal, the error TVErrC_FileWrite
    // "Could not set the times of %s (error %d - %s)".
    [[nodiscard]] int set_times(const TVDate& created, const TVDate& modified);

    const std::string& get_pathname() const;
    // A new path: the times and size are forgotten.
    void set_pathname(const std::string& pathName);
    // The part behind the last "/".
    std::string get_filename() const;
    const TVDate& get_created() const;
    const TVDate& get_modified() const;
    std::int64_t get_size() const;

    virtual void dump(std::ostream& out, int indent) const;

    // Path, times and size all equal.
    bool operator==(const TVFile& other) const;
    bool operator!=(const TVFile& other) const { return !(*this == other); }

private:
    friend class TVDirectory;
    // refresh() without the warning: false when nothing is at the path.
    bool read_status();

    struct TVFileImpl;
    std::unique_ptr<TVFileImpl> d;
};

std::ostream& operator<<(std::ostream& out, const TVFile& file);

#endif // TVFILE_H
