/* Transfers by libcurl; see client.h. Nothing of the process's environment counts but the names of hosts: no
 * proxies, no password or key files of the user that the switch runs as. */
#include "platform/softswitch/transfer/client.h"

#include "platform/softswitch/transfer/outcome.h"
#include "platform/softswitch/transfer/tar_archive.h"
#include "platform/softswitch/transfer/url.h"
#include "platform/softswitch/transfer/watchdog.h"

#include <algorithm>
#include <atomic>
#include <curl/curl.h>
#include <memory>
#include <openssl/evp.h>
#include <stdio.h>
#include <string.h>
#include <string>
#include <string_view>
#include <strings.h>
#include <sys/stat.h>

namespace softswitch {

/* An answer's headers are at most this many bytes, redirections included. */
static constexpr size_t headers_max = size_t{256} * 1024;
static constexpr long redirects_max = 5;
/* TFTP blocks that an Ethernet frame holds (RFC 2348). */
static constexpr long tftp_block_size = 1428;
/* How often the times are looked at when nothing happens. */
static constexpr int slice_ms = 200;

struct transfer_client {
  explicit transfer_client(CURLM *made) : multi(made) {}
  ~transfer_client() { curl_multi_cleanup(multi); }
  transfer_client(const transfer_client &) = delete;
  transfer_client &operator=(const transfer_client &) = delete;
  CURLM *const multi;
  std::atomic<bool> cancelled{false};
  transfer_watchdog watchdog;
};

/* A transfer while it runs. */
struct running_transfer {
  running_transfer(const transfer_request &asked, transfer_result &into)
      : request(asked), result(into), curl(curl_easy_init()), digest(EVP_MD_CTX_new()) {}
  ~running_transfer() {
    curl_easy_cleanup(curl);
    EVP_MD_CTX_free(digest);
  }
  running_transfer(const running_transfer &) = delete;
  running_transfer &operator=(const running_transfer &) = delete;

  const transfer_request &request;
  transfer_result &result; /* OPEN_TRANSFER_NONE until something has decided it */
  url_guard url;
  CURL *const curl;
  EVP_MD_CTX *const digest;
  char message[CURL_ERROR_SIZE] = {0};
  bool connected = false; /* the server has answered and let the switch in */
  bool was_https = false;
  bool head_ended = false; /* all headers of an HTTP server's latest answer have come */
  uint64_t bytes = 0;      /* of the file, moved */
  size_t header_bytes = 0; /* of all answers */
  uint64_t offered = 0;    /* bytes of the file that libcurl has taken for sending */
  int64_t started = 0;     /* milliseconds of the monotonic clock */
  int64_t last_moved = 0;  /* likewise: when a byte moved last, or the connection was made */
};

/* Decides the outcome, once. */
static void decide(running_transfer *run, OPEN_TRANSFER_CODE_t code, const std::string &reason) {
  if (run->result.code == OPEN_TRANSFER_NONE) set_outcome(&run->result, code, reason);
}

/* A byte has come or gone. */
static void note_movement(running_transfer *run) {
  run->connected = true;
  run->last_moved = now_ms();
}

/* --- What libcurl calls --------------------------------------------------------------------------------- */

/* The size that the server has announced; 0 when it has not. */
static uint64_t announced_size(const running_transfer &run) {
  curl_off_t size = -1;
  curl_easy_getinfo(run.curl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
  return size < 0 ? 0 : static_cast<uint64_t>(size);
}

static size_t take_data(char *data, size_t, size_t size, void *argument) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  note_movement(run);
  /* What a server says to an upload is of no interest. */
  if (run->request.upload) return size;
  uint64_t total = announced_size(*run);
  run->bytes += size;
  if (std::max(total, run->bytes) > run->request.size_max) {
    decide(run, OPEN_TRANSFER_TOO_LARGE,
           "the file is larger than " + std::to_string(run->request.size_max) + " bytes");
    return 0;
  }
  if (EVP_DigestUpdate(run->digest, data, size) != 1 ||
      !run->request.take(run->request.context, data, size)) {
    decide(run, OPEN_TRANSFER_STORAGE_FAILED, "the switch cannot store the file");
    return 0;
  }
  run->request.progress(run->request.context, run->bytes, total);
  return size;
}

static size_t give_data(char *buffer, size_t, size_t room, void *argument) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  size_t size = static_cast<size_t>(std::min<uint64_t>(room, run->request.size - run->offered));
  memcpy(buffer, run->request.data + run->offered, size);
  run->offered += size;
  return size;
}

/* After a redirection the file is sent from its beginning again. */
static int rewind_data(void *argument, curl_off_t offset, int) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  if (offset < 0 || static_cast<uint64_t>(offset) > run->request.size) return CURL_SEEKFUNC_FAIL;
  run->offered = static_cast<uint64_t>(offset);
  return CURL_SEEKFUNC_OK;
}

static int note_progress(void *argument, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  uint64_t bytes = sent < 0 ? 0 : static_cast<uint64_t>(sent);
  if (!run->request.upload || bytes == run->bytes) return 0;
  note_movement(run);
  run->bytes = bytes;
  run->request.progress(run->request.context, bytes, run->request.size);
  return 0;
}

static size_t take_header(char *data, size_t, size_t size, void *argument) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  std::string_view line(data, size);
  if (line.starts_with("HTTP/")) run->head_ended = false;
  if (line == "\r\n" || line == "\n") run->head_ended = true;
  run->last_moved = now_ms(); /* the greeting of an FTP server comes before it lets anybody in */
  run->header_bytes += size;
  if (run->header_bytes <= headers_max) return size;
  decide(run, OPEN_TRANSFER_FAILED, "the server's answer has too many headers");
  return 0;
}

/* The server has answered and is about to be asked for the file. After a redirection that is another one. */
static int note_connected(void *argument, char *, char *, int, int) {
  running_transfer *run = static_cast<running_transfer *>(argument);
  char *scheme = nullptr;
  curl_easy_getinfo(run->curl, CURLINFO_SCHEME, &scheme);
  bool https = scheme && strcasecmp(scheme, "https") == 0;
  if (run->was_https && !https) {
    decide(run, OPEN_TRANSFER_FAILED, "the server redirects from https to http");
    return CURL_PREREQFUNC_ABORT;
  }
  run->was_https = https;
  /* TFTP has no connections: its server has answered when data moves. */
  if (!scheme || strcasecmp(scheme, "tftp") != 0) note_movement(run);
  return CURL_PREREQFUNC_OK;
}

/* --- Options -------------------------------------------------------------------------------------------- */

/* Sets one option after the other, remembering whether one was refused. */
struct option_setter {
  CURL *curl;
  bool good = true;
  template <typename Value> void operator()(CURLoption option, Value value) {
    good = curl_easy_setopt(curl, option, value) == CURLE_OK && good;
  }
};

/* For all schemes. */
static void set_common(option_setter &set, running_transfer *run) {
  const transfer_request &request = run->request;
  set(CURLOPT_CURLU, run->url.handle);
  set(CURLOPT_PROTOCOLS_STR, transfer_schemes);
  set(CURLOPT_PROXY, "");
  set(CURLOPT_NETRC, long{CURL_NETRC_IGNORED});
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L); /* cancelling does not wait for the resolver */
  set(CURLOPT_FORBID_REUSE, 1L);
  set(CURLOPT_ERRORBUFFER, run->message);
  set(CURLOPT_CONNECTTIMEOUT, static_cast<long>(request.connect_seconds));
  set(CURLOPT_SERVER_RESPONSE_TIMEOUT, static_cast<long>(request.stall_seconds));
  set(CURLOPT_PREREQFUNCTION, note_connected);
  set(CURLOPT_PREREQDATA, run);
  set(CURLOPT_HEADERFUNCTION, take_header);
  set(CURLOPT_HEADERDATA, run);
  set(CURLOPT_WRITEFUNCTION, take_data);
  set(CURLOPT_WRITEDATA, run);
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFOFUNCTION, note_progress);
  set(CURLOPT_XFERINFODATA, run);
}

static void set_upload(option_setter &set, running_transfer *run) {
  if (!run->request.upload) return;
  set(CURLOPT_UPLOAD, 1L);
  set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(run->request.size));
  set(CURLOPT_READFUNCTION, give_data);
  set(CURLOPT_READDATA, run);
  set(CURLOPT_SEEKFUNCTION, rewind_data);
  set(CURLOPT_SEEKDATA, run);
}

/* Whether there is a file to read. What is no regular one counts for none, as opening a FIFO would wait. */
static bool is_there(const char *path) {
  struct stat found;
  return stat(path, &found) == 0 && S_ISREG(found.st_mode);
}

static void set_web(option_setter &set, const transfer_request &request) {
  set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
  set(CURLOPT_USERAGENT, "kestrel");
  set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
  set(CURLOPT_FAILONERROR, 1L);
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  set(CURLOPT_MAXREDIRS, redirects_max);
  set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  /* The system's certificates are in a folder as well, which stays in use. */
  if (is_there(request.trusted_ca)) set(CURLOPT_CAINFO, request.trusted_ca);
}

static void set_others(option_setter &set, const transfer_request &request) {
  bool has_key = is_there(request.private_key);
  long kinds = CURLSSH_AUTH_PASSWORD | CURLSSH_AUTH_KEYBOARD;
  set(CURLOPT_SSH_AUTH_TYPES, has_key ? kinds | CURLSSH_AUTH_PUBLICKEY : kinds);
  if (has_key) set(CURLOPT_SSH_PRIVATE_KEYFILE, request.private_key);
  /* Without such a file libcurl would trust every server; an empty one has it trust none. */
  set(CURLOPT_SSH_KNOWNHOSTS, is_there(request.known_hosts) ? request.known_hosts : "/dev/null");
  set(CURLOPT_FTP_FILEMETHOD, long{CURLFTPMETHOD_NOCWD});
  set(CURLOPT_TFTP_BLKSIZE, tftp_block_size);
  /* libcurl takes the announcement of an empty file for an error, so that there must be none. */
  set(CURLOPT_TFTP_NO_OPTIONS, request.may_be_empty ? 1L : 0L);
}

static bool set_options(running_transfer *run) {
  option_setter set = {run->curl};
  set_common(set, run);
  set_upload(set, run);
  set_web(set, run->request);
  set_others(set, run->request);
  return set.good;
}

/* --- Running -------------------------------------------------------------------------------------------- */

static bool is_over(int64_t since, uint32_t seconds) {
  return now_ms() - since >= int64_t{seconds} * 1000;
}

/* Looks whether the transfer has to end for reasons of the switch's own. */
static void check_end(running_transfer *run, const transfer_client &client) {
  const transfer_request &request = run->request;
  if (client.cancelled) decide(run, OPEN_TRANSFER_CANCELLED, "");
  if (!run->connected && is_over(run->started, request.connect_seconds))
    decide(run, OPEN_TRANSFER_UNREACHABLE, "the server does not answer");
  if (run->connected && is_over(run->last_moved, request.stall_seconds))
    decide(run, OPEN_TRANSFER_TIMED_OUT,
           "no data has moved for " + std::to_string(request.stall_seconds) + " s");
  if (is_over(run->started, request.total_seconds))
    decide(run, OPEN_TRANSFER_TIMED_OUT,
           "it took longer than " + std::to_string(request.total_seconds) + " s");
}

/* How libcurl ended; false while it has not. */
static bool has_ended(CURLM *multi, CURLcode *ended) {
  int left;
  for (CURLMsg *message; (message = curl_multi_info_read(multi, &left));) {
    if (message->msg != CURLMSG_DONE) continue;
    *ended = message->data.result;
    return true;
  }
  return false;
}

/* Moves data until libcurl has ended or something else has decided the outcome. */
static CURLcode move_data(running_transfer *run, transfer_client *client) {
  CURLcode ended = CURLE_OK;
  for (;;) {
    int active;
    client->watchdog.reset();
    if (curl_multi_perform(client->multi, &active) != CURLM_OK) return CURLE_FAILED_INIT;
    if (has_ended(client->multi, &ended)) return ended;
    check_end(run, *client);
    if (run->result.code != OPEN_TRANSFER_NONE) return CURLE_ABORTED_BY_CALLBACK;
    curl_multi_poll(client->multi, nullptr, 0, slice_ms, nullptr);
  }
}

/* What libcurl takes for a success is one when the answer was that of a file, and all of it is there. */
static void check_success(running_transfer *run) {
  long answer = 0;
  std::string scheme = url_part(run->url, CURLUPART_SCHEME);
  curl_easy_getinfo(run->curl, CURLINFO_RESPONSE_CODE, &answer);
  bool web = scheme == "http" || scheme == "https";
  bool good = run->request.upload ? answer / 100 == 2 : answer == 200 || answer == 203;
  if (web && !run->head_ended) decide(run, OPEN_TRANSFER_CUT, "the connection ended before the file did");
  if (web && !good) decide(run, OPEN_TRANSFER_FAILED, "the server answers " + std::to_string(answer));
  if (!run->request.upload && run->bytes < announced_size(*run))
    decide(run, OPEN_TRANSFER_CUT, "the connection ended before the file did");
  if (run->request.upload && run->bytes < run->request.size)
    decide(run, OPEN_TRANSFER_CUT, "the server did not wait for the whole file");
  decide(run, OPEN_TRANSFER_DONE, "");
}

static void finish_digest(running_transfer *run) {
  unsigned char sum[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  EVP_DigestFinal_ex(run->digest, sum, &size);
  for (unsigned i = 0; i < size; i++) snprintf(run->result.sha256 + 2 * i, 3, "%02x", sum[i]);
}

static void run_prepared(running_transfer *run, transfer_client *client) {
  run->started = run->last_moved = now_ms();
  CURLcode ended = move_data(run, client);
  if (ended == CURLE_OK)
    check_success(run);
  else if (run->result.code == OPEN_TRANSFER_NONE)
    set_curl_outcome(&run->result, run->curl, ended, run->connected, run->message, run->url);
  if (!run->request.upload) finish_digest(run);
}

/* With the watchdog on duty. */
static void run_watched(transfer_client *client, const transfer_request *request, transfer_result *result) {
  running_transfer run(*request, *result);
  bool good = run.curl && run.digest && EVP_DigestInit_ex(run.digest, EVP_sha256(), nullptr) == 1 &&
              url_parse(run.url, request->url, request->upload) && set_options(&run) &&
              client->watchdog.attach(run.curl) && curl_multi_add_handle(client->multi, run.curl) == CURLM_OK;
  if (!good) return set_outcome(result, OPEN_TRANSFER_FAILED, "it cannot be started");
  run_prepared(&run, client);
  curl_multi_remove_handle(client->multi, run.curl);
}

static void client_run(transfer_client *client, const transfer_request *request, transfer_result *result) {
  *result = {};
  if (!client->watchdog.start()) return set_outcome(result, OPEN_TRANSFER_FAILED, "it cannot be started");
  run_watched(client, request, result);
  client->watchdog.stop();
}

/* --- The library's functions ---------------------------------------------------------------------------- */

static bool client_url_read(const char *text, bool upload, char *shown, size_t shown_size) {
  url_guard url;
  if (!url_parse(url, text, upload)) return false;
  std::string kept = printable(url_shown(url), shown_size - 1);
  memcpy(shown, kept.c_str(), kept.size() + 1);
  return true;
}

static transfer_client *client_open() {
  CURLM *multi = curl_multi_init();
  return multi ? new transfer_client(multi) : nullptr;
}

static void client_cancel(transfer_client *client) {
  client->cancelled = true;
  curl_multi_wakeup(client->multi);
}

static void client_close(transfer_client *client) {
  delete client;
}

static constexpr transfer_functions functions = {client_url_read, client_open,  client_run,
                                                 client_cancel,   client_close, tar_archive_write};

} // namespace softswitch

const softswitch::transfer_functions *kestrel_transfer_functions(void) {
  /* Once, and never taken back: a resolver's thread may outlive its transfer. */
  static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return ready ? &softswitch::functions : nullptr;
}
