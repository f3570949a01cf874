#include "LibCore/fileutils/tvdirectory.h"

#include <algorithm>
#include <dirent.h>
#include <fnmatch.h>
#include <ostream>
#include <sys/stat.h>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

namespace {

std::vector<std::string> parse_filter(const std::string& filter)
{
    std::vector<std::string> patterns;
    for (std::string pattern : tv_tokenise(filter, ',')) {
        tv_elim_whitespace(pattern, true, true, true, true);
        if (!pattern.empty())
            patterns.push_back(pattern);
    }
    return patterns;
}

bool passes(const std::vector<std::string>& patterns, const std::string& name)
{
    if (patterns.empty())
        return true;
    for (const std::string& pattern : patterns)
        if (::fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0)
            return true;
    return false;
}

std::string join(const std::string& dir, const std::string& name)
{
    if (!dir.empty() && dir.back() == '/')
        return dir + name;
    return dir + "/" + name;
}

// Adds the path of every file that passes below dir to files. False only
// when dir itself can't be read.
bool collect(const std::string& dir, const std::vector<std::string>& patterns, bool subdirs,
             std::vector<std::string>& files)
{
    DIR* handle = ::opendir(dir.c_str());
    if (handle == nullptr)
        return false;
    std::vector<std::string> folders;
    while (const dirent* entry = ::readdir(handle)) {
        const std::string name = entry->d_name;
        if (name.empty() || name[0] == '.')
            continue;
        const std::string path = join(dir, name);
        struct stat st;
        if (::stat(path.c_str(), &st) != 0)
            continue; // a dangling link, or gone since readdir
        if (S_ISDIR(st.st_mode)) {
            struct stat lst;
            if (subdirs && ::lstat(path.c_str(), &lst) == 0 && !S_ISLNK(lst.st_mode))
                folders.push_back(path);
        } else if (S_ISREG(st.st_mode) && passes(patterns, name)) {
            files.push_back(path);
        }
    }
    ::closedir(handle);
    // Descend after closing, so a deep tree holds one handle at a time.
    for (const std::string& folder : folders)
        collect(folder, patterns, subdirs, files);
    return true;
}

} // namespace

struct TVDirectory::TVDirImpl {
    std::string m_filter;
    std::vector<TVFile> m_file;
};

TVDirectory::TVDirectory()
    : d(new TVDirImpl)
{
    set_defaults(true);
}

TVDirectory::TVDirectory(const std::string& path)
    : TVFile(path)
    , d(new TVDirImpl)
{
    set_defaults(true);
}

TVDirectory::TVDirectory(const TVDirectory& other)
    : TVFile(other)
    , d(new TVDirImpl(*other.d))
{
}

TVDirectory& TVDirectory::operator=(const TVDirectory& other)
{
    if (this != &other) {
        TVFile::operator=(other);
        *d = *other.d;
    }
    return *this;
}

TVDirectory::~TVDirectory() = default;

void TVDirectory::set_defaults(bool /*constructing*/)
{
    d->m_filter.clear();
    d->m_file.clear();
}

void TVDirectory::set_filter(const std::string& filter)
{
    d->m_filter = filter;
}

const std::string& TVDirectory::get_filter() const
{
    return d->m_filter;
}

int TVDirectory::load(bool subdirs)
{
    d->m_file.clear();
    const std::string& path = get_pathname();
    if (!tv_dir_exists(path))
        return tvwarning(TVErrC_FileNotExist, TVLOCATION, "The directory %s does not exist.",
                         path.c_str());
    read_status();

    std::vector<std::string> files;
    if (!collect(path, parse_filter(d->m_filter), subdirs, files))
        return tverror(TVErrC_FileOpen, TVLOCATION, "Could not read the directory %s",
                       path.c_str());
    std::sort(files.begin(), files.end());

    d->m_file.reserve(files.size());
    for (const std::string& file : files) {
        TVFile entry(file);
        if (entry.read_status()) // else gone since it was listed
            d->m_file.push_back(std::move(entry));
    }
    return TVErrC_ok;
}

int TVDirectory::load(const std::string& filter, bool subdirs)
{
    set_filter(filter);
    return load(subdirs);
}

int TVDirectory::get_nfiles() const
{
    return static_cast<int>(d->m_file.size());
}

const TVFile* TVDirectory::get_file_by_index(int index) const
{
    if (index < 0 || index >= get_nfiles())
        return nullptr;
    return &d->m_file[static_cast<size_t>(index)];
}

const TVFile* TVDirectory::get_file_by_pathname(const std::string& pathName) const
{
    // The list is in path order, so the search can halve.
    const auto it = std::lower_bound(
        d->m_file.begin(), d->m_file.end(), pathName,
        [](const TVFile& file, const std::string& name) { return file.get_pathname() < name; });
    if (it == d->m_file.end() || it->get_pathname() != pathName)
        return nullptr;
    return &*it;
}

void TVDirectory::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDirectory\n";
    TVFile::dump(out, indent + 1);
    out << pad << "    filter = " << d->m_filter << "\n";
    out << pad << "    files = " << d->m_file.size() << "\n";
    for (const TVFile& file : d->m_file)
        file.dump(out, indent + 1);
}

bool TVDirectory::operator==(const TVDirectory& other) const
{
    return TVFile::operator==(other) && d->m_filter == other.d->m_filter &&
           d->m_file == other.d->m_file;
}
