#include "LibCore/error/tverrorbase.h"

#include <QCoreApplication>
#include <ostream>
#include <string>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

TVErrorBase::TVErrorBase() = default;
TVErrorBase::~TVErrorBase() = default;

void TVErrorBase::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVErrorBase Object:\n";
}

int TVErrorBase::on_error(int value)
{
    const int result = value < 0 ? tverrorvalue() : value;
    QCoreApplication::exit(result);
    return result;
}
