/* Watching over transfers; see watchdog.h. */
#include "platform/softswitch/transfer/watchdog.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

namespace softswitch {

/* Longer than libcurl is ever away for reasons of its own, a slow disk included. */
static constexpr int64_t patience_ms = 5000;
static constexpr std::chrono::milliseconds slice(500);

int64_t now_ms() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

/* --- Sockets -------------------------------------------------------------------------------------------- */

curl_socket_t transfer_watchdog::open_socket(void *argument, curlsocktype, struct curl_sockaddr *address) {
  transfer_watchdog &watchdog = *static_cast<transfer_watchdog *>(argument);
  std::lock_guard guard(watchdog.lock);
  int fd = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  if (fd < 0) return CURL_SOCKET_BAD;
  watchdog.sockets.push_back(fd);
  return fd;
}

/* Under the lock, so that no descriptor is shut down that is somebody else's by now. */
int transfer_watchdog::close_socket(void *argument, curl_socket_t socket) {
  transfer_watchdog &watchdog = *static_cast<transfer_watchdog *>(argument);
  std::lock_guard guard(watchdog.lock);
  std::erase(watchdog.sockets, socket);
  return close(socket);
}

bool transfer_watchdog::attach(CURL *curl) {
  return curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, open_socket) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_OPENSOCKETDATA, this) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_CLOSESOCKETFUNCTION, close_socket) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_CLOSESOCKETDATA, this) == CURLE_OK;
}

/* Puts a socket without a connection in the place of one, so that reading fails at once. After shutdown()
 * what has come already would be read first, which libssh2 does byte by byte. */
static void cut_off(curl_socket_t place) {
  int dead = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (dead >= 0) dup3(dead, place, O_CLOEXEC);
  if (dead >= 0) close(dead);
}

/* --- Watching ------------------------------------------------------------------------------------------- */

void *transfer_watchdog::watch(void *argument) {
  transfer_watchdog &watchdog = *static_cast<transfer_watchdog *>(argument);
  std::unique_lock hold(watchdog.lock);
  while (!watchdog.ended.wait_for(hold, slice, [&] { return watchdog.ending; })) {
    if (now_ms() - watchdog.well_at < patience_ms) continue;
    for (curl_socket_t socket : watchdog.sockets) cut_off(socket);
  }
  return nullptr;
}

bool transfer_watchdog::start() {
  ending = false;
  well_at = now_ms();
  return pthread_create(&thread, nullptr, watch, this) == 0;
}

void transfer_watchdog::stop() {
  {
    std::lock_guard guard(lock);
    ending = true;
  }
  ended.notify_all();
  pthread_join(thread, nullptr);
}

void transfer_watchdog::reset() {
  std::lock_guard guard(lock);
  well_at = now_ms();
}

} // namespace softswitch
