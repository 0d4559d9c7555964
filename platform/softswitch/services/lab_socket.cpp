/* Lab control's Unix socket: one thread with poll(2) serves all clients. A client that sends nothing, sends
 * without end or never reads holds up nobody: its buffers are bounded, its next command is looked at only
 * when its last reply is gone, and `wait` is answered when its time comes. The commands are lab.cpp. */
#include "platform/softswitch/services/clock.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/lab.h"
#include "platform/softswitch/services/lab_commands.h"
#include "platform/softswitch/services/service_thread.h"
#include "platform/softswitch/softswitch.h"

#include <algorithm>
#include <errno.h>
#include <fcntl.h>
#include <memory>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace softswitch {

static constexpr size_t line_size_max = 4096;
static constexpr size_t clients_max = 64;
/* How often a `wait` looks whether it is over. */
static constexpr int wait_slice_ms = 10;

struct lab_client {
  explicit lab_client(int descriptor) : socket(descriptor) {}
  file_guard socket;
  std::string in;         /* received, not yet carried out */
  std::string out;        /* replies not yet sent */
  bool ended = false;     /* nothing more comes in */
  bool closing = false;   /* to be closed once `out` is sent */
  bool waiting = false;   /* in a `wait` command */
  int64_t wait_until = 0; /* when it gives up */
  int64_t last_heard = 0;
};

struct lab_server {
  lab_server(int listening, int waking, const std::string &at)
      : listener(listening), wake(waking), directory(at) {}
  file_guard listener;
  file_guard wake; /* an eventfd: written when the thread is to end */
  std::string directory;
  std::vector<std::unique_ptr<lab_client>> clients;
  pthread_t thread;
};

/* Destroyed by lab_stop() alone: at the end of a program that does not stop the switch its thread may still
 * run. */
static lab_server *server = nullptr;

/* --- One client ----------------------------------------------------------------------------------------- */

static void reply(lab_client &client, const lab_outcome &outcome) {
  client.out += lab_reply(outcome);
}

static void run_line(lab_client &client, std::string_view line) {
  lab_outcome outcome = lab_run(line);
  client.waiting = outcome.kind == lab_outcome::waiting;
  if (client.waiting)
    client.wait_until = monotonic_ms() + outcome.milliseconds;
  else
    reply(client, outcome);
}

/* Carries out the next whole line, if there is one; the last one of a client that sends no more needs no
 * newline. False when there is none. */
static bool run_next_line(lab_client &client) {
  size_t end = client.in.find('\n');
  bool whole = end != std::string::npos || (client.ended && !client.in.empty());
  if (!whole) return false;
  std::string line = client.in.substr(0, end);
  client.in.erase(0, end == std::string::npos ? end : end + 1);
  run_line(client, line);
  return true;
}

static void end_wait_when_over(lab_client &client) {
  bool applied = wait_applied(0);
  if (!applied && monotonic_ms() < client.wait_until) return;
  client.waiting = false;
  reply(client, lab_wait_outcome(applied));
}

static void send_replies(lab_client &client) {
  ssize_t size = send(client.socket.fd, client.out.data(), client.out.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (size >= 0) {
    client.out.erase(0, static_cast<size_t>(size));
  } else if (errno != EAGAIN && errno != EINTR) {
    client.out.clear();
    client.in.clear();
    client.closing = true;
  }
}

static void receive(lab_client &client) {
  char block[line_size_max];
  size_t room = line_size_max - client.in.size();
  ssize_t size = recv(client.socket.fd, block, room, MSG_DONTWAIT);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
  client.last_heard = monotonic_ms();
  if (size <= 0)
    client.ended = true;
  else
    client.in.append(block, static_cast<size_t>(size));
}

static bool wants_input(const lab_client &client) {
  return !client.ended && !client.closing && !client.waiting && client.out.empty() &&
         client.in.size() < line_size_max;
}

/* Does all that can be done for a client without waiting. */
static void advance(lab_client &client) {
  if (client.waiting) end_wait_when_over(client);
  if (!client.out.empty()) send_replies(client);
  while (!client.waiting && !client.closing && client.out.empty() && run_next_line(client)) {
    if (!client.out.empty()) send_replies(client);
  }
  if (client.waiting || client.closing || !client.out.empty()) return;
  client.closing = client.ended;
  if (client.in.size() < line_size_max) return;
  client.in.clear();
  client.closing = true;
  reply(client, {lab_outcome::refused, "the line is longer than 4095 characters"});
  send_replies(client);
}

/* --- The thread ----------------------------------------------------------------------------------------- */

/* When all places are taken, the client that has been silent longest gives up its own. */
static void make_room(lab_server &lab) {
  if (lab.clients.size() < clients_max) return;
  auto silent = std::min_element(lab.clients.begin(), lab.clients.end(),
                                 [](const auto &a, const auto &b) { return a->last_heard < b->last_heard; });
  lab.clients.erase(silent);
}

static void accept_client(lab_server &lab) {
  int fd = accept4(lab.listener.fd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (fd < 0) {
    /* Out of descriptors the listener stays ready; this keeps the thread from spinning. */
    poll(nullptr, 0, wait_slice_ms);
    return;
  }
  make_room(lab);
  lab.clients.push_back(std::make_unique<lab_client>(fd));
  lab.clients.back()->last_heard = monotonic_ms();
}

static short events_of(const lab_client &client) {
  return static_cast<short>((wants_input(client) ? POLLIN : 0) | (client.out.empty() ? 0 : POLLOUT));
}

/* What the thread looks at: the wake-up, the listener, then the clients in their order. */
static std::vector<struct pollfd> watched(const lab_server &lab, int *timeout) {
  std::vector<struct pollfd> all = {{lab.wake.fd, POLLIN, 0}, {lab.listener.fd, POLLIN, 0}};
  *timeout = -1;
  for (const auto &client : lab.clients) {
    /* A negative descriptor is passed over: poll() would report a hang-up of a waiting client over and over.
     */
    short events = events_of(*client);
    all.push_back({events ? client->socket.fd : -1, events, 0});
    if (client->waiting) *timeout = wait_slice_ms;
  }
  return all;
}

static void *serve(void *argument) {
  lab_server &lab = *static_cast<lab_server *>(argument);
  for (;;) {
    int timeout;
    std::vector<struct pollfd> polled = watched(lab, &timeout);
    if (poll(polled.data(), polled.size(), timeout) < 0) continue;
    if (polled[0].revents) return nullptr;
    for (size_t i = 0; i < lab.clients.size(); i++) {
      if (polled[i + 2].revents && wants_input(*lab.clients[i])) receive(*lab.clients[i]);
      advance(*lab.clients[i]);
    }
    std::erase_if(lab.clients, [](const auto &client) { return client->closing && client->out.empty(); });
    if (polled[1].revents) accept_client(lab);
  }
}

/* --- The socket file ------------------------------------------------------------------------------------ */

/* The address of the socket by way of an open directory, as a path may be longer than an address can be. */
static struct sockaddr_un address_in(int directory) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::string path = "/proc/self/fd/" + std::to_string(directory) + "/lab.sock";
  memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

static const struct sockaddr *generic(const struct sockaddr_un &address) {
  return reinterpret_cast<const struct sockaddr *>(&address);
}

/* Removes a socket that nobody listens on any more. False when somebody does, or when it is no socket. */
static bool remove_stale(int directory, const struct sockaddr_un &address) {
  struct stat found;
  if (fstatat(directory, "lab.sock", &found, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT;
  errno = EADDRINUSE;
  if (!S_ISSOCK(found.st_mode)) return false;
  file_guard probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  bool alive = connect(probe.fd, generic(address), sizeof address) == 0 || errno == EAGAIN;
  errno = EADDRINUSE;
  return !alive && unlinkat(directory, "lab.sock", 0) == 0;
}

/* Makes the listening socket; -1 with errno set. */
static int listen_in(int directory) {
  struct sockaddr_un address = address_in(directory);
  if (!remove_stale(directory, address)) return -1;
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  /* The file takes over the mode that the socket has when it is bound, so it is never open to others. */
  bool listening = fd >= 0 && fchmod(fd, 0600) == 0 && bind(fd, generic(address), sizeof address) == 0 &&
                   fchmodat(directory, "lab.sock", 0600, 0) == 0 && listen(fd, 16) == 0;
  if (listening) return fd;
  if (fd >= 0) {
    int reason = errno;
    close(fd);
    errno = reason;
  }
  return -1;
}

static bool cannot_listen(const std::string &state_dir, std::string *error) {
  *error = state_dir + "/lab.sock: " + strerror(errno);
  return false;
}

bool lab_start(const std::string &state_dir, std::string *error) {
  file_guard directory(open(state_dir.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (directory.fd < 0) return cannot_listen(state_dir, error);
  int listener = listen_in(directory.fd);
  if (listener < 0) return cannot_listen(state_dir, error);
  auto made = std::make_unique<lab_server>(listener, eventfd(0, EFD_CLOEXEC), state_dir);
  if (made->wake.fd < 0 || !service_thread_start(&made->thread, "kestrel-lab", serve, made.get()))
    return cannot_listen(state_dir, error);
  server = made.release();
  return true;
}

void lab_stop() {
  if (!server) return;
  eventfd_write(server->wake.fd, 1);
  pthread_join(server->thread, nullptr);
  unlink((server->directory + "/lab.sock").c_str());
  delete server;
  server = nullptr;
}

} // namespace softswitch
