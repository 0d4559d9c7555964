/* Queue, sending and lookups of remote logging; see syslog.h. */
#include "platform/softswitch/services/syslog.h"

#include "platform/api/l7proc.h"
#include "platform/softswitch/services/clock.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/service_thread.h"
#include "platform/softswitch/services/syslog_message.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <errno.h>
#include <memory>
#include <mutex>
#include <string.h>

namespace softswitch {

/* When to try again after the socket was full. */
static constexpr int64_t full_ms = 20;
/* How long the end may take. */
static constexpr int64_t farewell_ms = 1000;
/* A host's trouble is logged at most this often, as the line is one more that its host does not get. */
static constexpr int64_t complaint_ms = int64_t{10} * 60 * 1000;
/* Lookups that hang may be left behind by hosts that have been removed. */
static constexpr int lookups_max = 16;
static constexpr int64_t never = INT64_MAX;

static std::atomic<int> severity_max{L7PROC_EMERGENCY - 1};
static std::atomic<int> lookups_running{0};

/* A host with how far it has got. All is under the lock of the state but the socket, which is the sending
 * thread's. */
struct host_state {
  syslog_host host;
  uint64_t next = 0;        /* number of the next line to send */
  unsigned long missed = 0; /* lines that it has not got and not been told of */
  int64_t retry_at = 0;     /* nothing is sent before */
  int64_t complain_at = 0;  /* no trouble is logged before */
  socket_address address;   /* size 0: not known yet */
  bool looking_up = false;
  int64_t look_up_at = never; /* of names: when the address is to be looked up again */

  /* One for each host, so that what the network holds back of one takes no room from the others. */
  std::unique_ptr<file_guard> socket;
  int socket_family = AF_UNSPEC;
};

struct queued_line {
  int severity;
  std::string message;
};

/* Shared by the sending thread, lookups and the rest; a lookup that hangs may outlive the service. */
struct syslog_state {
  std::mutex lock;
  std::condition_variable changed; /* for the sending thread */
  syslog_settings settings;
  std::vector<std::shared_ptr<host_state>> hosts;
  std::deque<queued_line> lines;
  uint64_t first = 0;      /* number of the first of them */
  size_t bytes = 0;        /* of all of them */
  int64_t stop_at = never; /* when the service ends at the latest */

  uint64_t end() const { return first + lines.size(); }
};

struct running_syslog {
  std::mutex lock;
  std::shared_ptr<syslog_state> state; /* null while no thread runs */
  pthread_t thread;
};

/* Never destroyed, as other threads may log while the program ends. */
static running_syslog &running() {
  static running_syslog &only = *new running_syslog;
  return only;
}

/* --- The queue ------------------------------------------------------------------------------------------ */

/* Notes that a host does not get a line. Who takes no warnings cannot be told. */
static void note_missed(host_state *host) {
  if (host->host.severity >= L7PROC_WARNING) host->missed++;
}

static void remove_first(syslog_state *state) {
  state->bytes -= state->lines.front().message.size();
  state->lines.pop_front();
  state->first++;
}

/* Makes room at the cost of the hosts that are furthest behind. */
static void drop_first(syslog_state *state) {
  for (const auto &host : state->hosts) {
    if (host->next != state->first) continue;
    if (state->lines.front().severity <= host->host.severity) note_missed(host.get());
    host->next++;
  }
  remove_first(state);
}

/* Removes what every host has got. */
static void remove_sent(syslog_state *state) {
  uint64_t next = state->end();
  for (const auto &host : state->hosts) next = std::min(next, host->next);
  while (state->first < next) remove_first(state);
}

/* Lets a host pass the lines that are not severe enough for it. */
static void skip_unwanted(const syslog_state &state, host_state *host) {
  while (host->next < state.end() && state.lines[host->next - state.first].severity > host->host.severity)
    host->next++;
}

int syslog_severity() {
  return severity_max.load(std::memory_order_relaxed);
}

void syslog_write(int severity, std::string_view line) {
  running_syslog &syslog = running();
  std::lock_guard<std::mutex> hold_syslog(syslog.lock);
  if (!syslog.state) return;
  syslog_state &state = *syslog.state;
  std::lock_guard<std::mutex> hold(state.lock);
  state.lines.push_back({severity, syslog_message(state.settings.hostname, severity, line)});
  state.bytes += state.lines.back().message.size();
  while (state.bytes > state.settings.queue_bytes_max) drop_first(&state);
  state.changed.notify_one();
}

/* --- Trouble -------------------------------------------------------------------------------------------- */

/* Whether a host's trouble is to be logged now. Under the lock of the state; logging it must not be. */
static bool shall_complain(const syslog_state &state, host_state *host, int64_t now) {
  if (state.stop_at != never || now < host->complain_at) return false;
  host->complain_at = now + complaint_ms;
  return true;
}

static void complain(const std::string &address, const std::string &reason) {
  l7proc_logf(L7PROC_WARNING, 0, "syslog.cpp", __LINE__, "nothing can be sent to the logging host %s: %s",
              address.c_str(), reason.c_str());
}

/* --- Lookups -------------------------------------------------------------------------------------------- */

struct lookup {
  std::shared_ptr<syslog_state> state;
  std::shared_ptr<host_state> host;
  std::string name;
  decltype(syslog_settings::look_up) look_up;
};

/* Looks up the address of a host. A lookup that fails leaves the one that is known. */
static void *run_lookup(void *argument) {
  std::unique_ptr<lookup> job(static_cast<lookup *>(argument));
  syslog_state &state = *job->state;
  host_state &host = *job->host;
  std::string error;
  socket_address address;
  bool found = job->look_up(job->name, &address, &error);
  int64_t now = monotonic_ms();
  std::unique_lock<std::mutex> hold(state.lock);
  host.looking_up = false;
  host.look_up_at = now + (found ? state.settings.good_ms : state.settings.bad_ms);
  if (found) host.address = address;
  bool complaining = !found && shall_complain(state, &host, now);
  state.changed.notify_one();
  hold.unlock();
  if (complaining) complain(job->name, error);
  lookups_running--;
  return nullptr;
}

/* Begins to look up the address of a host, if that is due. */
static void renew_address(const std::shared_ptr<syslog_state> &state, const std::shared_ptr<host_state> &host,
                          int64_t now) {
  if (host->looking_up || host->look_up_at > now) return;
  host->look_up_at = now + state->settings.bad_ms;
  if (lookups_running >= lookups_max) return;
  auto job = std::make_unique<lookup>(lookup{state, host, host->host.address, state->settings.look_up});
  pthread_t thread;
  lookups_running++;
  host->looking_up = service_thread_start(&thread, "kestrel-lookup", run_lookup, job.get());
  if (host->looking_up) {
    pthread_detach(thread);
    job.release();
  } else {
    lookups_running--;
  }
}

/* --- Sending -------------------------------------------------------------------------------------------- */

/* Sends a message, if that can be done without waiting; 0 or the reason as an errno. */
static int send_message(host_state *host, const socket_address &address, const std::string &message) {
  if (!host->socket || host->socket->fd < 0 || host->socket_family != address.storage.ss_family) {
    host->socket_family = address.storage.ss_family;
    host->socket = std::make_unique<file_guard>(socket(host->socket_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  }
  if (host->socket->fd < 0) return errno;
  auto *to = reinterpret_cast<const struct sockaddr *>(&address.storage);
  ssize_t size =
      sendto(host->socket->fd, message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL, to, address.size);
  return size < 0 ? errno : 0;
}

/* What a host is to get next. */
struct outgoing {
  socket_address address;
  std::string message;
  bool is_line = true;      /* otherwise the message says what the host has missed */
  uint64_t number = 0;      /* of the line */
  unsigned long missed = 0; /* what it says */
};

static outgoing take_next(const syslog_state &state, host_state *host) {
  outgoing next;
  next.address = host->address;
  socket_address_set_port(&next.address, host->host.port);
  if (host->missed > 0) {
    next.is_line = false;
    next.missed = host->missed;
    std::string text = std::to_string(host->missed) + " lines were dropped: they could not be sent in time";
    next.message = syslog_message(state.settings.hostname, L7PROC_WARNING,
                                  log_format(L7PROC_WARNING, "syslog.cpp", __LINE__, text));
  } else {
    next.number = host->next++;
    next.message = state.lines[next.number - state.first].message;
  }
  return next;
}

/* Puts back what could not be sent. */
static void put_back(const syslog_state &state, host_state *host, const outgoing &unsent) {
  if (!unsent.is_line) return;
  if (unsent.number < state.first)
    note_missed(host);
  else
    host->next = unsent.number;
}

/* Sends a host the next that it is to get. The lock is open meanwhile. */
static void send_next(syslog_state *state, host_state *host, std::unique_lock<std::mutex> *hold) {
  outgoing next = take_next(*state, host);
  hold->unlock();
  int failure = send_message(host, next.address, next.message);
  int64_t now = monotonic_ms();
  hold->lock();
  if (failure == 0) {
    host->missed -= next.missed;
    return;
  }
  put_back(*state, host, next);
  bool full = failure == EAGAIN || failure == ENOBUFS || failure == EINTR;
  host->retry_at = now + (full ? full_ms : state->settings.bad_ms);
  if (full || !shall_complain(*state, host, now)) return;
  std::string address = host->host.address;
  hold->unlock();
  complain(address, strerror(failure));
  hold->lock();
}

/* --- The sending thread --------------------------------------------------------------------------------- */

/* When there is something to do for a host. */
static int64_t due_at(const syslog_state &state, const host_state &host) {
  if (host.next == state.end() && host.missed == 0) return never;
  if (host.address.size > 0) return host.retry_at;
  return host.looking_up ? state.stop_at : host.look_up_at;
}

/* Of the hosts for which there is something to do now the one that is furthest behind; null when there is
 * none, and `wake_at` is then when there will be. */
static std::shared_ptr<host_state> next_host(const syslog_state &state, int64_t now, int64_t *wake_at) {
  std::shared_ptr<host_state> found;
  *wake_at = never;
  for (const auto &host : state.hosts) {
    skip_unwanted(state, host.get());
    int64_t due = due_at(state, *host);
    *wake_at = std::min(*wake_at, due);
    if (due <= now && (!found || host->next < found->next)) found = host;
  }
  return found;
}

static void *send_lines(void *argument) {
  std::unique_ptr<std::shared_ptr<syslog_state>> owned(
      static_cast<std::shared_ptr<syslog_state> *>(argument));
  const std::shared_ptr<syslog_state> &state = *owned;
  std::unique_lock<std::mutex> hold(state->lock);
  for (;;) {
    int64_t now = monotonic_ms(), wake_at;
    std::shared_ptr<host_state> host = next_host(*state, now, &wake_at);
    if (now >= state->stop_at || (!host && state->stop_at != never && wake_at > state->stop_at)) break;
    if (host) {
      renew_address(state, host, now);
      if (host->address.size > 0) send_next(state.get(), host.get(), &hold);
      remove_sent(state.get());
    } else if (wake_at == never) {
      remove_sent(state.get());
      state->changed.wait(hold);
    } else {
      state->changed.wait_for(hold, std::chrono::milliseconds(wake_at - now));
    }
  }
  return nullptr;
}

/* --- Starting, changing, stopping ----------------------------------------------------------------------- */

/* Starts the thread when none runs; the caller holds the lock of `syslog`. */
static bool ensure_thread(running_syslog &syslog) {
  if (syslog.state) return true;
  auto state = std::make_shared<syslog_state>();
  auto for_thread = std::make_unique<std::shared_ptr<syslog_state>>(state);
  if (!service_thread_start(&syslog.thread, "kestrel-syslog", send_lines, for_thread.get())) return false;
  for_thread.release();
  syslog.state = state;
  return true;
}

/* The state of a host: that which it has, or a new one. */
static std::shared_ptr<host_state> state_of(const syslog_state &state, const syslog_host &wanted) {
  for (const auto &present : state.hosts) {
    if (present->host.address == wanted.address) return present;
  }
  auto made = std::make_shared<host_state>();
  made->next = state.end();
  if (!socket_address_read(wanted.address, &made->address)) made->look_up_at = 0;
  return made;
}

static void take_settings(syslog_state *state, const syslog_settings &settings) {
  std::lock_guard<std::mutex> hold(state->lock);
  std::vector<std::shared_ptr<host_state>> hosts;
  for (const syslog_host &wanted : settings.hosts) {
    hosts.push_back(state_of(*state, wanted));
    hosts.back()->host = wanted;
    hosts.back()->retry_at = 0;
  }
  state->hosts = std::move(hosts);
  state->settings = settings;
  state->changed.notify_one();
}

/* Ends the service within some time. Its own thread may log meanwhile, so that no lock is held. */
static void end_service(int64_t milliseconds) {
  running_syslog &syslog = running();
  std::unique_lock<std::mutex> hold_syslog(syslog.lock);
  severity_max.store(L7PROC_EMERGENCY - 1, std::memory_order_relaxed);
  if (!syslog.state) return;
  std::shared_ptr<syslog_state> state = std::move(syslog.state);
  pthread_t thread = syslog.thread;
  hold_syslog.unlock();
  {
    std::lock_guard<std::mutex> hold(state->lock);
    state->stop_at = monotonic_ms() + milliseconds;
    state->changed.notify_one();
  }
  pthread_join(thread, nullptr);
}

void syslog_configure(const syslog_settings &settings) {
  if (settings.hosts.empty()) return end_service(0);
  running_syslog &syslog = running();
  std::unique_lock<std::mutex> hold(syslog.lock);
  if (!ensure_thread(syslog)) {
    hold.unlock();
    complain(settings.hosts.front().address, "there is no thread for it");
    return;
  }
  take_settings(syslog.state.get(), settings);
  int severity = L7PROC_EMERGENCY;
  for (const syslog_host &host : settings.hosts) severity = std::max(severity, host.severity);
  severity_max.store(severity, std::memory_order_relaxed);
}

void syslog_stop() {
  end_service(farewell_ms);
}

} // namespace softswitch
