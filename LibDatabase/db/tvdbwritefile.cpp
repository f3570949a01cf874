#include "LibDatabase/db/tvdbwritefile.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace {
std::uintmax_t size_of(const std::string& name)
{
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(name, ec);
    return ec ? 0 : size;
}

// Best effort: the write has already failed, and that is what is reported.
void cut_back(const std::string& name, bool append, std::uintmax_t size)
{
    if (!append)
        return;
    std::error_code ec;
    std::filesystem::resize_file(name, size, ec);
}
} // namespace

int tv_db_write_file(const std::string& name, const std::string& text, bool append, bool sync)
{
    try {
        TV_PASS_ON(tv_create_dir(tv_dirname(name), true));
        const std::uintmax_t before = append ? size_of(name) : 0;
        if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, name))
            return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
        {
            std::ofstream out(name, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
            if (!out)
                return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not create the file %s",
                                 name.c_str());
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            out.close();
            if (!out) {
                cut_back(name, append, before);
                return tverror(TVErrC_FileWrite, TVLOCATION, "Failed write of %s", name.c_str());
            }
        }
        if (!sync)
            return TVErrC_ok;
        int result = TVErrC_ok;
        try {
            result = tv_sync_file(name);
        } catch (const TVErrDetails&) {
            cut_back(name, append, before);
            tv_trail_throw(TVLOCATION);
        }
        if (istvwarn(result)) {
            cut_back(name, append, before);
            return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int tv_db_read_file(const std::string& name, std::string& text)
{
    text.clear();
    std::ifstream in(name, std::ios::binary);
    if (TVFileFaults::should_fail(TVFileFaults::E_OpRead, name) || !in)
        return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not open the file %s", name.c_str());
    std::ostringstream all;
    all << in.rdbuf();
    text = all.str();
    return TVErrC_ok;
}
