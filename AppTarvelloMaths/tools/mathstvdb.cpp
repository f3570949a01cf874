// What the maths program tells tvdb: its files by their type, with the
// program's name and company that name their folders (as AppMaths::identity
// gives them), its database class, and the report of a maths file.

#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/tools/mathsreportcommand.h"
#include "LibDatabase/tvdb/tvdbtoolregistry.h"

#include <memory>

namespace {

std::unique_ptr<TVDBCommand> make_report()
{
    return std::make_unique<MathsReportCommand>();
}

const TVDBToolRegistry::Registration s_maths(
    {MathsDB::C_MathsDataType, "TarvelloMaths", "Tarvello", MathsDB::C_ClassName}, {make_report});

} // namespace
