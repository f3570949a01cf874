#include "LibObject/object/fuzz/tvserialfuzzcheck.h"

#include "LibCore/error/tverror.h"
#include "LibObject/object/tests/tvtestitem.h"
#include "LibObject/object/tvobject.h"

#include <memory>
#include <sstream>

namespace {

constexpr int C_Version = 0;

// Whether a read gave an object; faults of any severity count as no.
bool read_one(const std::string& text, std::unique_ptr<TVObject>& out)
{
    std::istringstream in(text);
    TVObject* object = nullptr;
    bool ok = false;
    try {
        const int result = TVObject::read_class(in, object, C_Version);
        ok = !istvwarn(result) && object != nullptr;
    } catch (const TVErrDetails&) {
        ok = false;
    }
    out.reset(object);
    get_tverror()->clear_all();
    return ok;
}

bool write_one(const TVObject& object, std::string& text)
{
    bool ok = false;
    try {
        ok = !istvwarn(object.object_to_string(text, C_Version));
    } catch (const TVErrDetails&) {
        ok = false;
    }
    get_tverror()->clear_all();
    return ok;
}

bool holds_unconsumed_class(const TVObject& object)
{
    for (int i = 0; i < object.get_nserentries(); ++i)
        if (object.get_serentry(i)->get_entrytype() == TVSerialisationEntry::E_TaggedClass)
            return true;
    if (const auto* item = dynamic_cast<const TVTestItem*>(&object)) {
        for (const TVTestBase* kid : item->m_kids)
            if (holds_unconsumed_class(*kid))
                return true;
        for (const TVTestNote* note : item->m_notes)
            if (holds_unconsumed_class(*note))
                return true;
    }
    return false;
}

} // namespace

TVSerialFuzzResult tv_serial_fuzz_check(const uint8_t* data, size_t size)
{
    TVSerialFuzzResult out;
    std::string text(reinterpret_cast<const char*>(data), size);
    for (int pass = 0; pass < C_SerialFuzzMaxPasses; ++pass) {
        std::unique_ptr<TVObject> first;
        if (!read_one(text, first))
            return out;
        out.read = true;
        std::string written;
        if (!write_one(*first, written)) {
            out.fault = "An object that was read could not be written.";
            return out;
        }
        if (holds_unconsumed_class(*first)) {
            text = written;
            continue;
        }
        std::unique_ptr<TVObject> second;
        if (!read_one(written, second)) {
            out.fault = "What was written does not read back:\n" + written;
            return out;
        }
        std::string again;
        if (!write_one(*second, again)) {
            out.fault = "An object read from written text could not be written:\n" + written;
            return out;
        }
        if (again != written)
            out.fault = "The second write differs from the first.\n--- first\n" + written +
                        "--- second\n" + again;
        return out;
    }
    return out;
}
