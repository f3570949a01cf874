#ifndef TVFILETEST_H
#define TVFILETEST_H

// Fixture verbs for the tests of the file layer: a scratch folder, files
// written and read back by the test itself (never through the code under
// test), and the outcome of a fallible call whether it threw or warned.

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "LibCore/error/tverror.h"
#include "TestSupport/tvraise.h"

// The lines of a text file without their line ends; none if it can't be read.
inline std::vector<std::string> tv_read_lines(const std::string& path)
{
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// What a fallible call left behind: its severity (0 for success), code and
// system text; thrown tells an error that threw from a returned warning.
struct TVFileOutcome {
    int severity = 0;
    int code = 0;
    bool thrown = false;
    std::string text;
};

class TVFileTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
    }

    std::string path(const std::string& name) const
    {
        return m_dir.path().toStdString() + "/" + name;
    }

    void write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream out(path(name), std::ios::binary);
        out << bytes;
    }

    // The bytes of the file, or "<missing>" when it can't be read.
    std::string read(const std::string& name) const
    {
        std::ifstream in(path(name), std::ios::binary);
        if (!in)
            return "<missing>";
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    void make_dir(const std::string& name) const
    {
        ASSERT_EQ(::mkdir(path(name).c_str(), 0755), 0);
    }

    bool there(const std::string& name) const
    {
        struct stat st;
        return ::lstat(path(name).c_str(), &st) == 0;
    }

    // Root opens everything, so permission cases can't fail for it.
    static bool is_root() { return ::geteuid() == 0; }

    static TVFileOutcome outcome(const std::function<int()>& call)
    {
        TVFileOutcome out;
        try {
            const int value = call();
            out.severity = TVErrDetails::compute_severity(value);
            out.code = TVErrDetails::compute_code(value);
        } catch (const TVErrDetails& details) {
            out.thrown = true;
            out.severity = details.get_severity();
            out.code = details.get_code();
        }
        if (get_tverror()->is_error())
            out.text = tvsysinfo_get();
        get_tverror()->clear_all();
        return out;
    }

private:
    QTemporaryDir m_dir;
};

#endif // TVFILETEST_H
