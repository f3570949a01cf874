#ifndef TVOBJECTPREREG_H
#define TVOBJECTPREREG_H

// TVObjectPreReg: puts a class into the class index before main() runs.
// Each registrable class has one file-scope static instance in the .cpp
// that also defines its constructor:
//
//     namespace {
//     constexpr const char* C_ClassName = "TVDBNote";
//     const TVObjectPreReg s_preReg(C_ClassName, TVDBNote::create_tvobject);
//     }
//
// The name is a constant expression so that a constructor running during
// another file's static initialisation never sees it unset.
//
// A static library drops object files that nothing references, and with
// them this registration. Linking the constructor keeps it; a class that a
// program only ever meets by name in a file needs its library linked whole
// (tv_link_registered_classes in LibObject/object/CMakeLists.txt).

#include "LibObject/object/tvobjectindexentry.h"

#include <string>

class TVObjectPreReg
{
public:
    TVObjectPreReg(const std::string& name, TVObjectCreateFn createFn);
    TVObjectPreReg(const TVObjectPreReg&) = delete;
    TVObjectPreReg& operator=(const TVObjectPreReg&) = delete;
};

#endif // TVOBJECTPREREG_H
