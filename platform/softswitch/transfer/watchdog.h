/* Brings libcurl back when a server keeps it from coming back: libssh2 reads what comes before a server's
 * version as long as anything comes, and the end of an FTP session is waited for. The transfer's own times
 * and its cancelling would not be looked at meanwhile. */
#ifndef KESTREL_SOFTSWITCH_TRANSFER_WATCHDOG_H
#define KESTREL_SOFTSWITCH_TRANSFER_WATCHDOG_H

#include <condition_variable>
#include <cstdint>
#include <curl/curl.h>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace softswitch {

/* Knows the sockets of a transfer, and cuts them off when nobody has said for some seconds that all is
 * well. It must outlive the transfer's connections. */
class transfer_watchdog {
public:
  transfer_watchdog() = default;
  transfer_watchdog(const transfer_watchdog &) = delete;
  transfer_watchdog &operator=(const transfer_watchdog &) = delete;

  /* Lets libcurl open and close the sockets of a transfer by way of this. False when an option is refused. */
  bool attach(CURL *curl);
  /* Starts and ends watching. False when the system gives no thread. */
  bool start();
  void stop();
  /* All is well. */
  void reset();

private:
  static void *watch(void *argument);
  static curl_socket_t open_socket(void *argument, curlsocktype purpose, struct curl_sockaddr *address);
  static int close_socket(void *argument, curl_socket_t socket);

  std::mutex lock; /* around what follows but the thread */
  std::condition_variable ended;
  bool ending = false;
  int64_t well_at = 0; /* milliseconds of the monotonic clock */
  std::vector<curl_socket_t> sockets;
  pthread_t thread;
};

/* Milliseconds of the monotonic clock. */
int64_t now_ms();

} // namespace softswitch

#endif
