#include "LibCore/param/tvparamfile.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <sys/stat.h>
#include <ostream>
#include <set>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparambase.h"
#include "LibCore/param/tvparamset.h"
#include "LibCore/param/tvparamvalue.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

const char* const TVParamFile::C_Extension = ".cfg";
const char* const TVParamFile::C_TmpExtension = ".tmp";

namespace {

enum E_LineKind { E_Comment, E_Entry, E_Invalid };

// What a line of the file is; for an entry also its name and value.
E_LineKind classify(const std::string& raw, std::string& name, std::string& value)
{
    std::string line = raw;
    tv_elim_whitespace(line, true, true, true, true);
    if (line.empty() || !std::isalpha(static_cast<unsigned char>(line[0])))
        return E_Comment;
    if (!tv_tag_value(line, TVParamBase::C_TagValueSeparator, name, value))
        return E_Invalid;
    tv_elim_whitespace(name, false, false, true, true);
    tv_elim_whitespace(value, false, false, true, true);
    return E_Entry;
}

// Rewriting keeps an invalid line as it stands, so nothing is lost: the
// user is told, and the rewrite isn't failed for it (a program that stores
// its window sizes would otherwise complain at every move).
void notice_invalid_line(const std::string& raw, const std::string& fileName, int lineNo)
{
    const int value = tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Invalid line %s in %s:%d", raw.c_str(),
                                 fileName.c_str(), lineNo);
    TVError* error = get_tverror();
    if (istvwarn(value) && error->is_error() && error->get_value() == value)
        error->clear_last_error();
}

} // namespace

TVParamFile::TVParamFile() : m_userConfig(false), m_updateCount(0) {}

TVParamFile::TVParamFile(const std::string& fileName, bool userConfig)
    : m_fileName(fileName), m_userConfig(userConfig), m_updateCount(0)
{
}

TVParamFile::TVParamFile(const TVParamFile& other)
    : TVParamCmdLine(other), m_fileName(other.m_fileName), m_userConfig(other.m_userConfig),
      m_dataDir(other.m_dataDir), m_updateCount(other.m_updateCount)
{
    for (const auto& param : other.m_adopted)
        m_adopted.push_back(param->clone());
}

TVParamFile& TVParamFile::operator=(const TVParamFile& other)
{
    if (this != &other) {
        TVParamCmdLine::operator=(other);
        m_fileName = other.m_fileName;
        m_userConfig = other.m_userConfig;
        m_dataDir = other.m_dataDir;
        m_updateCount = other.m_updateCount;
        m_adopted.clear();
        for (const auto& param : other.m_adopted)
            m_adopted.push_back(param->clone());
    }
    return *this;
}

TVParamFile::~TVParamFile() = default;

void TVParamFile::collect_extra(TVParamSet& set) const
{
    for (const auto& param : m_adopted)
        set.add(param.get());
}

TVParamBase* TVParamFile::adopt(const std::string& name, TVParamSet& merged)
{
    TVParamBase* own = get_params().find(name);
    if (own == nullptr) {
        std::unique_ptr<TVParamBase> made;
        if (const TVParamBase* known = merged.find(name)) {
            // Declared elsewhere (say on the command line): the file may
            // give it too, with the same rules.
            made = known->clone();
            made->clear_values();
        } else {
            made = std::make_unique<TVParamValue>(name, "", false, true);
            made->set_hidden(true);
        }
        m_adopted.push_back(std::move(made));
        own = m_adopted.back().get();
    }
    if (merged.find(name) == nullptr) {
        std::unique_ptr<TVParamBase> copy = own->clone();
        copy->clear_values();
        merged.adopt(std::move(copy));
    }
    return own;
}

int TVParamFile::read_file(TVParamSet& merged)
{
    try {
        if (!tv_file_exists(m_fileName)) {
            std::string from = m_fileName + C_TmpExtension;
            // A ".tmp" without the file is a rewrite stopped between the
            // delete and the rename: it is complete, and newer.
            if (!tv_file_exists(from)) {
                // Earlier versions kept the file among the data.
                const std::string dir = m_dataDir.empty() ? tvapplication()->get_data_dir() : m_dataDir;
                from = dir + "/" + tv_filename(m_fileName);
                if (dir.empty() || from == m_fileName || !tv_file_exists(from))
                    from.clear();
            }
            if (!from.empty()) {
                const int result = tv_rename_file(from, m_fileName, true, false);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }

    const TVParamSet& own = get_params();
    for (int i = 0; i < own.size(); ++i)
        own.at(i).clear_values();
    m_updateCount = TVParamBase::current_update_count();

    std::ifstream in;
    if (!TVFileFaults::should_fail(TVFileFaults::E_OpRead, m_fileName))
        in.open(m_fileName);
    if (!in.is_open())
        return TVErrC_okEndOfFile;

    int reported = TVErrC_ok;
    int lineNo = 0;
    std::string raw, name, value;
    while (std::getline(in, raw)) {
        ++lineNo;
        const E_LineKind kind = classify(raw, name, value);
        if (kind == E_Comment)
            continue;
        if (kind == E_Invalid) {
            const int result = tvwarnuser(TVParam::TVErrC_ParamInvalid, TVLOCATION, "Invalid line %s in %s:%d",
                                          raw.c_str(), m_fileName.c_str(), lineNo);
            if (!istvwarn(reported))
                reported = result;
            continue;
        }
        adopt(name, merged)->set_value(value, m_fileName);
        merged.set_value(name, value, m_fileName);
    }
    m_updateCount = TVParamBase::current_update_count();
    if (istvwarn(reported))
        return tv_trail_return(reported, TVLOCATION);
    return TVErrC_ok;
}

int TVParamFile::rewrite_file()
{
    const std::string tmp = m_fileName + C_TmpExtension;
    {
        // Without the old lines the comments would be lost: a file that is
        // there but won't open stops the rewrite.
        std::ifstream in;
        if (tv_file_exists(m_fileName)) {
            if (!TVFileFaults::should_fail(TVFileFaults::E_OpRead, m_fileName))
                in.open(m_fileName);
            if (!in.is_open())
                return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not open the file %s", m_fileName.c_str());
        }
        std::ofstream out;
        if (!TVFileFaults::should_fail(TVFileFaults::E_OpWrite, tmp))
            out.open(tmp, std::ios::out | std::ios::trunc);
        // The user's sign-in tokens live here: for the owner's eyes only,
        // before a byte is written.
        if (!out.is_open() || ::chmod(tmp.c_str(), S_IRUSR | S_IWUSR) != 0)
            return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not create the file %s", tmp.c_str());

        const TVParamSet& own = get_params();
        std::set<std::string> written;
        int lineNo = 0;
        std::string raw, name, value;
        while (in.is_open() && std::getline(in, raw)) {
            ++lineNo;
            const E_LineKind kind = classify(raw, name, value);
            const TVParamBase* param = kind == E_Entry ? own.find(name) : nullptr;
            if (kind == E_Comment || param == nullptr) {
                if (kind != E_Comment)
                    notice_invalid_line(raw, m_fileName, lineNo);
                out << raw << "\n";
                continue;
            }
            // All values of a parameter stand where its first line stood.
            if (written.insert(name).second)
                param->write_values(out);
        }
        for (int i = 0; i < own.size(); ++i)
            if (written.count(own.at(i).get_name()) == 0)
                own.at(i).write_values(out);
        out.close();
        if (out.fail()) {
            // A part of a file must not pass for a whole one later.
            std::remove(tmp.c_str());
            return tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not write to the file %s", tmp.c_str());
        }
    }

    try {
        const int result = tv_rename_file(tmp, m_fileName, true, true);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    m_updateCount = TVParamBase::current_update_count();
    return TVErrC_ok;
}

bool TVParamFile::needs_write() const
{
    return get_params().modified_since(m_updateCount);
}

void TVParamFile::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamFile Object:\n";
    out << pad << " fileName = " << m_fileName << "\n";
    out << pad << " userConfig = " << m_userConfig << "\n";
    out << pad << " updateCount = " << m_updateCount << "\n";
    TVParamCmdLine::dump(out, indent + 1);
    for (const auto& param : m_adopted)
        param->dump(out, indent + 1);
}
