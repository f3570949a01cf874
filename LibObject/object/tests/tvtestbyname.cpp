// A class that no code of the tests names: it has no header on purpose.
// It sits alone in the library tvobject_testreg, so it reaches the class
// index only when that library is linked whole, as a program must link
// the libraries of classes that it meets only by name in a file.

#include "LibObject/object/tvobject.h"
#include "LibObject/object/tvobjectprereg.h"

namespace {

constexpr const char* C_ClassName = "TVTestByName";

class TVTestByName : public TVObject
{
public:
    TVTestByName() { register_tvobject(); }

    static int create_tvobject(TVObject*& out, const TVObject* source)
    {
        return tv_create_tvobject<TVTestByName>(out, source, C_ClassName);
    }

    void register_tvobject() override { register_objectname(C_ClassName, create_tvobject); }
};

const TVObjectPreReg s_preReg(C_ClassName, TVTestByName::create_tvobject);

} // namespace
