#ifndef TVSRLOBJECTARRAY_H
#define TVSRLOBJECTARRAY_H

// TVSrlObjectArray<T>: binds a TVPtrArray<T> of owned objects, each written
// as a tagged class by write_class and read back by read_class into a new
// object of whatever registered class the text names, which must be a T.
// The array must own its elements, or a read leaks them. Use it with
// TVObject::serialise_object.

#include "LibCore/error/tverror.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibObject/object/tvobject.h"
#include "LibObject/object/tvsrl.h"
#include "LibObject/object/tvtrail.h"

#include <memory>
#include <type_traits>

template <class T>
class TVSrlObjectArray : public TVSrl
{
    static_assert(std::is_base_of<TVObject, T>::value, "the elements must be TVObjects");

public:
    TVSrlObjectArray(TVPtrArray<T>& objects, int version) : m_objects(&objects), m_version(version)
    {
    }

    bool handle_multiple() const override { return true; }
    int get_nentries() const override { return m_objects->size(); }

    int start_read() override
    {
        m_objects->clear();
        return TVErrC_ok;
    }

    int read(std::istream& in) override
    {
        try {
            TVObject* read = nullptr;
            const int result = TVObject::read_class(in, read, m_version);
            std::unique_ptr<TVObject> object(read);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            if (object == nullptr)
                return tvwarning(TVErrC_NullPointer, TVLOCATION, "Object read failed.");
            T* typed = dynamic_cast<T*>(object.get());
            if (typed == nullptr)
                return tvwarning(TVErrC_DynamicCast, TVLOCATION, "Object read failed.");
            object.release();
            m_objects->add(typed);
            return TVErrC_ok;
        } catch (const TVErrDetails&) {
            tv_trail_throw(TVLOCATION);
        }
    }

    int write(std::ostream& out, int index) const override
    {
        if (index < 0 || index >= get_nentries())
            return tverror(TVErrC_ArrayBounds, TVLOCATION, "Array index %d out of bounds %d", index,
                           get_nentries());
        const T* object = (*m_objects)[index];
        if (object == nullptr)
            return TVErrC_ok;
        try {
            const int result = object->write_class(out, m_version);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            return result;
        } catch (const TVErrDetails&) {
            tv_trail_throw(TVLOCATION);
        }
    }

private:
    TVPtrArray<T>* m_objects;
    int m_version;
};

extern template class TVSrlObjectArray<TVObject>;

#endif // TVSRLOBJECTARRAY_H
