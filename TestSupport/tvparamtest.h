#ifndef TVPARAMTEST_H
#define TVPARAMTEST_H

// Fixture and helpers for tests of the parameters and the configuration
// file: a fresh, quiet error singleton and no TVParam singleton before and
// after each test, a temporary folder, and a program "drill" with two ways
// of being called.

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamfile.h"
#include "LibCore/param/tvparamoption.h"
#include "LibCore/param/tvparamvalue.h"
#include "LibCore/param/tvparamvaluegroup.h"
#include "TestSupport/tvfiletest.h"

// What drill's declarations fill.
struct DrillVars {
    std::string file;
    std::vector<std::string> more;
    bool verbose = false;
    int level = 0;
    std::vector<std::string> include;
    std::string out;
    std::string format;
    double scale = 1.0;
    long seed = 0;
};

// drill [options] file [more...]      run a drill
// drill -e|--export -f ARG out        export the results
inline TVParamCmdLine drill_cmdline(DrillVars& v)
{
    TVParamCmdLine cmd;
    TVParamValueGroup& run = cmd.add_value_group("", "", "Run a drill");
    TVParamOptionGroup& drill = run.add_option_group("Drill", "Options of a drill run.");
    drill.add_option(std::make_unique<TVParamOption>("verbose", "V", "Say more.", &v.verbose));
    TVParamOption& level = drill.add_option(std::make_unique<TVParamOption>("level", "l", "Starting level.", &v.level));
    level.set_environment_variable("DRILL_LEVEL");
    drill.add_option(std::make_unique<TVParamOption>("include", "I", "Add a table.", &v.include));
    drill.add_option(std::make_unique<TVParamOption>("scale", "", "Time scale.", &v.scale));
    TVParamOption& seed = drill.add_option(std::make_unique<TVParamOption>("seed", "", "Random seed.", &v.seed));
    seed.set_hidden(true);
    run.add_value(std::make_unique<TVParamValue>("file", "The drill file.", true, &v.file));
    run.add_value(std::make_unique<TVParamValue>("more", "Further files.", false, &v.more));

    TVParamValueGroup& exp = cmd.add_value_group("e", "export", "Export the results");
    TVParamOptionGroup& format = exp.add_option_group("Export", "Options of an export.");
    format.add_option(std::make_unique<TVParamOption>("f", "format", "Output format.", &v.format, true));
    exp.add_value(std::make_unique<TVParamValue>("out", "Where to write.", true, &v.out));
    return cmd;
}

// An argv that lives as long as the object.
class TVArgv
{
public:
    explicit TVArgv(const std::vector<std::string>& args) : m_store(args)
    {
        m_store.insert(m_store.begin(), "drill");
        for (std::string& arg : m_store)
            m_ptrs.push_back(&arg[0]);
        m_ptrs.push_back(nullptr);
    }
    int argc() const { return static_cast<int>(m_store.size()); }
    char** argv() { return m_ptrs.data(); }

private:
    std::vector<std::string> m_store;
    std::vector<char*> m_ptrs;
};

class TVParamTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
        TVParam::release();
        ASSERT_TRUE(m_dir.isValid());
    }

    void TearDown() override
    {
        TVParam::release();
        TVError::release();
    }

    std::string path(const std::string& name) const { return m_dir.filePath(QString::fromStdString(name)).toStdString(); }
    std::string cfg() const { return path("drill.cfg"); }

    // Installs a TVParam for drill with these arguments as the singleton.
    TVParam* make_param(const std::vector<std::string>& args)
    {
        m_argv = std::make_unique<TVArgv>(args);
        TVParam* param = new TVParam(m_argv->argc(), m_argv->argv(), "drill", "1.2.3", "Arithmetic drill",
                                     "Tarvello", "A. Author", "02-Nov-2022", "drill-1.2.3", "drill-1-2-3-4");
        TVParam::replace(param, true);
        return param;
    }

    // The user's file on cfg(), declaring nothing of its own.
    TVParamFile user_file() const
    {
        TVParamFile file(cfg(), true);
        file.set_data_dir(path("data"));
        return file;
    }

    static void write_file(const std::string& name, const std::vector<std::string>& lines)
    {
        std::ofstream out(name);
        for (const std::string& line : lines)
            out << line << "\n";
    }


    static std::string read_all(const std::string& name)
    {
        std::ifstream in(name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    QTemporaryDir m_dir;
    std::unique_ptr<TVArgv> m_argv;
};

#endif // TVPARAMTEST_H
