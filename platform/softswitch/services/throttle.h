/* Token buckets: how many failed attempts may be made in a while. accounts.cpp holds one per account, one for
 * all unknown names and one for everybody together. */
#ifndef KESTREL_SOFTSWITCH_THROTTLE_H
#define KESTREL_SOFTSWITCH_THROTTLE_H

#include <time.h>

namespace softswitch {

/* The shape of a bucket: it holds `burst` tokens at most and gains `refill` of them every `period` seconds.
 */
struct throttle_rate {
  unsigned burst;
  unsigned refill;
  time_t period;
};

/* A person who mistypes has ten tries at once and then one every three seconds; a guesser of one account's
 * password gets 28 800 tries a day, which is nothing against a password worth the name. */
inline constexpr throttle_rate throttle_per_account = {10, 1, 3};

/* A failed attempt costs the single-threaded server one hash, some 20 ms. Five a second keep it busy for a
 * tenth of its time at most, however many names a flood of attempts is spread over. */
inline constexpr throttle_rate throttle_in_total = {50, 5, 1};

struct throttle_bucket {
  unsigned tokens;
  time_t refilled; /* up to when refills have been counted in, seconds of a monotonic clock */
};

/* A full bucket, as each begins. */
throttle_bucket throttle_full(const throttle_rate &rate);

/* Counts in what has been gained until `now` and says whether a token is left. A clock that goes back gains
 * nothing. */
bool throttle_allows(throttle_bucket *bucket, const throttle_rate &rate, time_t now);

/* Takes one token; throttle_allows() must have said that there is one. */
void throttle_take(throttle_bucket *bucket);

} // namespace softswitch

#endif
