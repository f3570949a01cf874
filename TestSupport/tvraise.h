#ifndef TVRAISE_H
#define TVRAISE_H

// Test helpers for code that reports through the error framework.

#include "LibCore/error/tverror.h"

#include <gtest/gtest.h>

#include <string>

// Gives each test a fresh error singleton with no echo, so expected errors
// don't clutter the output and nothing pending leaks into the next test.
class TVQuietErrorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
    }
    void TearDown() override { TVError::release(); }
};

// What a call raised: whether it threw, and the code and system text.
struct TVRaised {
    bool thrown = false;
    int code = -1;
    std::string text;
};

// Runs f, catches the TVErrDetails that an error throws, and empties the
// error stack afterwards.
template <class F>
TVRaised tv_catch_raise(F&& f)
{
    TVRaised r;
    try {
        f();
    } catch (const TVErrDetails& details) {
        r.thrown = true;
        r.code = details.get_code();
        r.text = details.get_details(TVAspectSystem);
    }
    get_tverror()->clear_all();
    return r;
}

#endif // TVRAISE_H
