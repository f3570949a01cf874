#include "LibCore/error/tverrorbase.h"

#include <QCoreApplication>
#include <ostream>
#include <string>

#include "LibCore/error/tverror.h"

TVErrorBase::TVErrorBase() = default;
TVErrorBase::~TVErrorBase() = default;

void TVErrorBase::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent < 0 ? 0 : indent) * 4, ' ') << "TVErrorBase Object:\n";
}

int TVErrorBase::on_error(int value)
{
    const int result = value < 0 ? tverrorvalue() : value;
    QCoreApplication::exit(result);
    return result;
}
