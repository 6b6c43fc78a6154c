#include "stat/walk_progress.h"

#include <cmath>
#include <string>
#include <utility>

namespace Quask::Stat {

using namespace std::chrono_literals;

WalkProgress::WalkProgress(std::ostream* out, unsigned buckets,
                           std::function<Clock::time_point()> now)
    : out_(out), buckets_(buckets), now_(std::move(now)), start_(now_()), next_(start_ + 1s)
{}

WalkProgress::~WalkProgress()
{
    if (isShown_) {
        *out_ << "\033[K" << std::flush;
    }
}

void WalkProgress::show(unsigned bucketsDone)
{
    Clock::time_point const now = out_ == nullptr ? next_ : now_();
    if (out_ == nullptr || now < next_ || bucketsDone == 0) {
        return;
    }
    double const elapsed = std::chrono::duration<double>(now - start_).count();
    double const left = elapsed / bucketsDone * (buckets_ - bucketsDone);
    // What comes next on the terminal, even a signal handler's message, begins the line again.
    *out_ << bucketsDone << " of " << buckets_ << " buckets, "
          << static_cast<long long>(std::ceil(left)) << " s left\033[K\r" << std::flush;
    isShown_ = true;
    next_ = now + 200ms;
}

}  // namespace Quask::Stat
