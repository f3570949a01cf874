#include "LibObject/object/tvconnectiondata.h"

#include "LibObject/object/tvsignalint.h"
#include "LibObject/object/tvsignalobject.h"
#include "LibObject/object/tvsignalvoid.h"
#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

class Sender : public TVObject
{
public:
    TVSignalVoid m_changed;
    TVSignalVoid m_saved; // a second signal of the same shape
    TVSignalInt m_moved;
    TVSignalObject m_picked;
};

// Records each call as a letter (and its argument) in a shared log.
class Listener : public TVObject
{
public:
    Listener(std::string& log, char name) : m_log(log), m_name(name) {}

    int on_void()
    {
        m_log += m_name;
        return m_fail ? tvwarning(TVErrC_InvalidState, TVLOCATION, "slot %c refused", m_name) : TVErrC_ok;
    }
    int on_int(int value)
    {
        m_log += m_name + std::to_string(value);
        return TVErrC_ok;
    }
    int on_object(TVObject* value)
    {
        m_log += m_name;
        m_log += value == this ? "=self" : "=other";
        return TVErrC_ok;
    }

    bool m_fail = false;

private:
    std::string& m_log;
    char m_name;
};

class SignalTest : public TVObjectTest
{
protected:
    void connect_void(Listener& listener, const TVSignalVoid& signal)
    {
        ASSERT_EQ(listener.connect_signal(&sender, signal, &Listener::on_void), TVErrC_ok);
    }

    int emit(const TVSignalVoid& signal) { return sender.emit_signal(signal); }

    std::string log;
    Sender sender;
};

TEST_F(SignalTest, TwoSignalsOfOneClassAreKeptApart)
{
    Listener a(log, 'a'), b(log, 'b');
    connect_void(a, sender.m_changed);
    connect_void(b, sender.m_saved);
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "a");
    ASSERT_EQ(emit(sender.m_saved), TVErrC_ok);
    EXPECT_EQ(log, "ab");
    // Another sender's signal of the same member is another signal too.
    Sender other;
    ASSERT_EQ(other.emit_signal(other.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "ab");
}

TEST_F(SignalTest, SlotsRunInOrderOfConnectionAndOnceEach)
{
    Listener a(log, 'a'), b(log, 'b');
    connect_void(b, sender.m_changed);
    connect_void(a, sender.m_changed);
    connect_void(b, sender.m_changed);
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "ba");
}

TEST_F(SignalTest, IntAndObjectSlotsGetTheValue)
{
    Listener a(log, 'a');
    ASSERT_EQ(a.connect_signal(&sender, sender.m_moved, &Listener::on_int), TVErrC_ok);
    ASSERT_EQ(a.connect_signal(&sender, sender.m_picked, &Listener::on_object), TVErrC_ok);
    ASSERT_EQ(sender.emit_signal(sender.m_moved, 42), TVErrC_ok);
    ASSERT_EQ(sender.emit_signal(sender.m_picked, &a), TVErrC_ok);
    ASSERT_EQ(sender.emit_signal(sender.m_picked, &sender), TVErrC_ok);
    EXPECT_EQ(log, "a42a=selfa=other");
}

TEST_F(SignalTest, SlotWarningStopsTheWalkAndComesBackWithItsTrail)
{
    Listener a(log, 'a'), b(log, 'b'), c(log, 'c');
    connect_void(a, sender.m_changed);
    connect_void(b, sender.m_changed);
    connect_void(c, sender.m_changed);
    b.m_fail = true;
    const int result = emit(sender.m_changed);
    EXPECT_TRUE(istvwarn(result));
    EXPECT_EQ(log, "ab");
    EXPECT_NE(tverrorlocation_get().find("tvobject.cpp"), std::string::npos);
    const TVRaised r = take_pending();
    EXPECT_EQ(r.code, TVErrC_InvalidState);
    EXPECT_EQ(r.text, "slot b refused");
}

TEST_F(SignalTest, BlockingSilencesAndKeepsTheConnections)
{
    Listener a(log, 'a');
    connect_void(a, sender.m_changed);
    sender.block_signals(true);
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "");
    sender.block_signals(false);
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "a");
}

TEST_F(SignalTest, ReceiverDeletedBeforeItsSenderIsForgotten)
{
    auto a = std::make_unique<Listener>(log, 'a');
    Listener b(log, 'b');
    connect_void(*a, sender.m_changed);
    connect_void(b, sender.m_changed);
    a.reset();
    // Under ASan a call into the dead receiver would stop the test here.
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "b");
}

TEST_F(SignalTest, SenderDeletedBeforeItsReceiverIsForgotten)
{
    Listener a(log, 'a');
    {
        Sender shortLived;
        ASSERT_EQ(a.connect_signal(&shortLived, shortLived.m_changed, &Listener::on_void), TVErrC_ok);
        ASSERT_EQ(a.connect_signal(&sender, sender.m_changed, &Listener::on_void), TVErrC_ok);
    }
    // a's death must not reach the dead sender (ASan would report it).
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "a");
}

TEST_F(SignalTest, RemoveConnectionsCutsBothWaysWhicheverSideAsks)
{
    for (bool askReceiver : {false, true}) {
        SCOPED_TRACE(askReceiver ? "receiver asks" : "sender asks");
        auto a = std::make_unique<Listener>(log, 'a');
        connect_void(*a, sender.m_changed);
        if (askReceiver)
            a->remove_connections(&sender);
        else
            sender.remove_connections(a.get());
        ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
        // Once a is gone, a connection left on either side would be followed
        // into freed memory here or at the sender's death.
        a.reset();
        ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
        EXPECT_EQ(log, "");
    }
}

TEST_F(SignalTest, CopiedSenderDoesNotFireTheOriginalsSlotsAndStaysSafe)
{
    auto a = std::make_unique<Listener>(log, 'a');
    connect_void(*a, sender.m_changed);
    auto copy = std::make_unique<Sender>(sender);
    ASSERT_EQ(copy->emit_signal(copy->m_changed), TVErrC_ok);
    EXPECT_EQ(log, ""); // a connection never follows a copy of its signal
    a.reset();          // the copy's table heard of it too
    copy.reset();
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "");
}

TEST_F(SignalTest, EmitWithNobodyConnectedMakesNoTable)
{
    Sender quiet, other;
    ASSERT_EQ(quiet.emit_signal(quiet.m_changed), TVErrC_ok);
    ASSERT_EQ(quiet.emit_signal(quiet.m_moved, 1), TVErrC_ok);
    // Tables compare by identity; two objects without one are equal.
    EXPECT_TRUE(quiet == other);
}

// Neither a receiver of the wrong class nor a null sender ends up connected.
TEST_F(SignalTest, RefusedOrNullConnectionsConnectNothing)
{
    Sender notAListener;
    const TVRaised r = tv_catch_raise(
        [&] { (void)notAListener.connect_signal(&sender, sender.m_changed, &Listener::on_void); });
    EXPECT_EQ(r.code, TVErrC_DynamicCast);
    Listener a(log, 'a');
    EXPECT_EQ(a.connect_signal(nullptr, sender.m_changed, &Listener::on_void), TVErrC_ok);
    ASSERT_EQ(emit(sender.m_changed), TVErrC_ok);
    EXPECT_EQ(log, "");
}

} // namespace
