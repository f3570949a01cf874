#include "LibCore/error/tverrhandlerptr.h"

#include "LibCore/error/tverrhandler.h"
#include "LibCore/error/tverror.h"

TVErrHandlerPtr::TVErrHandlerPtr(TVErrHandler* handler) : m_handler(handler)
{
    get_tverror()->add_handler(handler);
}

TVErrHandlerPtr::~TVErrHandlerPtr()
{
    try {
        get_tverror()->remove_handler(m_handler);
    } catch (...) {
    }
}
