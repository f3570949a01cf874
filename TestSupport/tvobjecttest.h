#ifndef TVOBJECTTEST_H
#define TVOBJECTTEST_H

// Fixture verbs for the object model's tests: write an object to text,
// read text into a new object, and look at the warning a call left behind.

#include "LibObject/object/tvobject.h"
#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

class TVObjectTest : public TVQuietErrorTest
{
protected:
    static constexpr int C_Version = 0;

    // The object's bytes; fails the test if writing fails.
    static std::string write(const TVObject& object)
    {
        std::ostringstream out;
        EXPECT_EQ(object.write_class(out, C_Version), TVErrC_ok);
        return out.str();
    }

    // A new object of the class the text names, or null after a fault.
    template <class T = TVObject>
    static std::unique_ptr<T> read(const std::string& text)
    {
        std::istringstream in(text);
        TVObject* object = nullptr;
        const int result = TVObject::read_class(in, object, C_Version);
        std::unique_ptr<TVObject> owned(object);
        if (istvwarn(result) || owned == nullptr)
            return nullptr;
        T* typed = dynamic_cast<T*>(owned.get());
        if (typed != nullptr)
            owned.release();
        return std::unique_ptr<T>(typed);
    }

    // Reads text and writes what was read.
    static std::string rewrite(const std::string& text)
    {
        std::unique_ptr<TVObject> object = read(text);
        return object == nullptr ? std::string("<read failed>") : write(*object);
    }

    // Code and system text of the newest pending error, then clears all.
    static TVRaised take_pending()
    {
        TVRaised r;
        if (get_tverror()->is_error()) {
            r.code = get_tverror()->get_code();
            r.text = tvsysinfo_get();
        }
        get_tverror()->clear_all();
        return r;
    }
};

#endif // TVOBJECTTEST_H
