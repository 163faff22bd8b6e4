#ifndef TARN_SUPPORT_G_TIME_H
#define TARN_SUPPORT_G_TIME_H

#include <ctime>

// Stopwatch over the processor time of this process (clock), not the wall
// clock: time spent waiting in the panel is not counted.
class g_chrono {
public:
    void Go() { start_ = std::clock(); }
    // Whole milliseconds since Go.
    long Stop() const { return static_cast<long>((std::clock() - start_) * 1000.0 / CLOCKS_PER_SEC); }

private:
    std::clock_t start_ = 0;
};

#endif
