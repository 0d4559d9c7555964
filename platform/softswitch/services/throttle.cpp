/* Token bucket arithmetic; see throttle.h. */
#include "platform/softswitch/services/throttle.h"

namespace softswitch {

throttle_bucket throttle_full(const throttle_rate &rate) {
  return {rate.burst, 0};
}

bool throttle_allows(throttle_bucket *bucket, const throttle_rate &rate, time_t now) {
  if (bucket->tokens >= rate.burst || now < bucket->refilled) {
    /* A full bucket gains nothing; its next period begins when the first token is taken. */
    if (now > bucket->refilled) bucket->refilled = now;
    return bucket->tokens > 0;
  }
  time_t periods = (now - bucket->refilled) / rate.period;
  time_t periods_to_full = (rate.burst - bucket->tokens + rate.refill - 1) / rate.refill;
  if (periods >= periods_to_full) {
    *bucket = {rate.burst, now};
  } else {
    bucket->tokens += static_cast<unsigned>(periods) * rate.refill;
    bucket->refilled += periods * rate.period;
  }
  return bucket->tokens > 0;
}

void throttle_take(throttle_bucket *bucket) {
  bucket->tokens -= 1;
}

} // namespace softswitch
