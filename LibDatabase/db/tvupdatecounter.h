#ifndef TVUPDATECOUNTER_H
#define TVUPDATECOUNTER_H

// TVUpdateCounter: the process-wide logical clock behind every "what changed
// since" question. Each mark_update() ticks the main counter and stamps the
// instance with the new value, so "changed since v" is a comparison.
//
// Nothing of it is stored: a save records the main counter, and the next
// partial save writes exactly the objects stamped above it.
//
// The counters are atomics: they are written from whichever thread changes
// an object and read by TVUpdateChecker from another, and are only ever
// compared, never used to order other memory.

#include <atomic>
#include <iosfwd>

class TVUpdateCounter
{
public:
    TVUpdateCounter() = default;
    // A copy carries the stamp of its original (a backup restores from it).
    TVUpdateCounter(const TVUpdateCounter& other);
    TVUpdateCounter& operator=(const TVUpdateCounter& other);
    virtual ~TVUpdateCounter() = default;

    // Ticks the main counter, stamps this instance with it and returns it.
    long mark_update();
    // The main counter; with advance, ticked first as by mark_update.
    static long get_counter(bool advance);
    bool has_changed_since(long value) const { return get_last_update() > value; }
    // -1 until the first mark_update.
    long get_last_update() const { return m_lastUpdate.load(std::memory_order_relaxed); }
    // Puts an earlier stamp back (revert); the main counter is not touched.
    void restore_update(long value) { m_lastUpdate.store(value, std::memory_order_relaxed); }
    // Whole seconds since the last tick of any instance (TVDateUtils' clock).
    static long time_since_update();
    // Whole seconds since 1970 by TVDateUtils' clock (which a test may hold).
    static long clock_seconds();

    virtual void dump(std::ostream& out, int indent) const;

protected:
    // Told of every mark_update, once the stamp is set: a class whose
    // owner keeps a list of what changed hooks in here.
    virtual void stamped() {}

private:
    static long tick();

    static std::atomic<long> m_mainCounter;
    static std::atomic<long> m_lastTime; // seconds since 1970
    std::atomic<long> m_lastUpdate{-1};
};

std::ostream& operator<<(std::ostream& out, const TVUpdateCounter& counter);

#endif // TVUPDATECOUNTER_H
