/* The transfer service; see transfer.h. */
#include "platform/softswitch/services/transfer.h"

#include "platform/api/l7proc.h"
#include "platform/api/openapi_system.h"
#include "platform/softswitch/services/files.h"
#include "platform/softswitch/services/service_thread.h"
#include "platform/softswitch/services/stored_files.h"
#include "platform/softswitch/services/transfer_files.h"
#include "platform/softswitch/services/transfer_library.h"
#include "platform/softswitch/softswitch.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <errno.h>
#include <fcntl.h>
#include <mutex>
#include <string.h>
#include <unistd.h>

namespace softswitch {

static constexpr size_t url_max = 1023;
static constexpr size_t sentence_max = 255;
/* Of what is wrong with a line, which may hold a word of any length from outside. */
static constexpr size_t fault_max = 200;
/* How long an answer that a transfer is in progress takes. */
static constexpr std::chrono::milliseconds in_progress_pause(100);

/* One transfer, as it was asked for. */
struct transfer_job {
  const transfer_functions *library = nullptr;
  bool upload = false;
  std::string file;  /* target or source */
  std::string url;   /* with user and password: never shown */
  std::string shown; /* without */
  std::string data;  /* what is sent, once the thread has gathered it */
  struct limits limits;
};

/* How the current or latest transfer of a direction stands. */
struct transfer_standing {
  OPEN_TRANSFER_CODE_t code = OPEN_TRANSFER_NONE;
  std::string reason; /* of a failure */
  uint64_t bytes = 0;
  uint64_t total = 0; /* 0: not known */
};

struct transfer_service {
  std::mutex lock; /* around everything below; while one is in progress, `job` is its thread's */
  std::condition_variable changed; /* a transfer has ended */
  std::string state_dir;
  transfer_standing download;
  transfer_standing upload;
  bool latest_is_upload = false;
  bool in_progress = false;
  bool thread_made = false; /* and not yet joined */
  bool cancelled = false;
  bool reload_when_done = false;
  pthread_t thread;
  transfer_job job;                  /* of the one in progress */
  transfer_client *client = nullptr; /* while one is in progress */
};

/* Never destroyed, so that its thread may run until the process is gone. */
static transfer_service &the_service() {
  static transfer_service *const only = new transfer_service;
  return *only;
}

static transfer_standing &standing_of(transfer_service &service, bool upload) {
  return upload ? service.upload : service.download;
}

static transfer_standing &latest(transfer_service &service) {
  return standing_of(service, service.latest_is_upload);
}

/* --- Asking --------------------------------------------------------------------------------------------- */

static std::string bytes_words(uint64_t bytes) {
  return std::to_string(bytes) + " bytes.";
}

static std::string sentence(const transfer_standing &standing, bool upload) {
  switch (standing.code) {
  case OPEN_TRANSFER_NONE:
    return upload ? "No upload so far." : "No download so far.";
  case OPEN_TRANSFER_STARTING:
    return "Connecting.";
  case OPEN_TRANSFER_RUNNING: {
    std::string of = standing.total == 0 ? "" : " of " + std::to_string(standing.total);
    return (upload ? "Sending: " : "Receiving: ") + std::to_string(standing.bytes) + of + " bytes.";
  }
  case OPEN_TRANSFER_CHECKING:
    return "Checking the file.";
  case OPEN_TRANSFER_DONE:
    return "Completed: " + bytes_words(standing.bytes);
  case OPEN_TRANSFER_CANCELLED:
    return "Cancelled.";
  default:
    return "Failed: " + standing.reason.substr(0, sentence_max - sizeof "Failed: ") + ".";
  }
}

std::string transfer_status(bool upload) {
  transfer_service &service = the_service();
  std::lock_guard guard(service.lock);
  return sentence(standing_of(service, upload), upload);
}

uint32_t transfer_percent() {
  transfer_service &service = the_service();
  std::lock_guard guard(service.lock);
  const transfer_standing &standing = latest(service);
  if (standing.code == OPEN_TRANSFER_DONE) return 100;
  if (standing.total == 0) return 0;
  return static_cast<uint32_t>(std::min<uint64_t>(standing.bytes * 100 / standing.total, 100));
}

bool transfer_in_progress() {
  transfer_service &service = the_service();
  std::unique_lock lock(service.lock);
  service.changed.wait_for(lock, in_progress_pause, [&] { return !service.in_progress; });
  return service.in_progress;
}

OPEN_TRANSFER_CODE_t transfer_code() {
  transfer_service &service = the_service();
  std::lock_guard guard(service.lock);
  return latest(service).code;
}

/* --- While it runs -------------------------------------------------------------------------------------- */

static std::string part_path(const transfer_service &service) {
  return service.state_dir + "/transfer.part";
}

static void set_code(transfer_service &service, OPEN_TRANSFER_CODE_t code) {
  std::lock_guard guard(service.lock);
  latest(service).code = code;
}

static bool is_cancelled(transfer_service &service) {
  std::lock_guard guard(service.lock);
  return service.cancelled;
}

static void log_notice(const transfer_job &job, const std::string &what) {
  l7proc_logf(L7PROC_NOTICE, 0, "transfer.cpp", __LINE__, "%s of %s %s %s: %s",
              job.upload ? "upload" : "download", job.file.c_str(), job.upload ? "to" : "from",
              job.shown.c_str(), what.c_str());
}

/* How a transfer ended. */
struct transfer_end {
  OPEN_TRANSFER_CODE_t code;
  std::string reason = "";
};

/* What the network side moves data with. */
struct transfer_context {
  transfer_service &service;
  int fd = -1;           /* where a download goes */
  int write_failure = 0; /* errno */
};

static bool take_data(void *argument, const char *data, size_t size) {
  transfer_context *context = static_cast<transfer_context *>(argument);
  if (write_all(context->fd, {data, size})) return true;
  context->write_failure = errno;
  return false;
}

static void note_progress(void *argument, uint64_t bytes, uint64_t total) {
  transfer_service &service = static_cast<transfer_context *>(argument)->service;
  std::lock_guard guard(service.lock);
  transfer_standing &standing = latest(service);
  standing.code = OPEN_TRANSFER_RUNNING;
  standing.bytes = bytes;
  standing.total = total;
}

/* Moves the data by the library. */
static transfer_result move_data(transfer_service &service, transfer_context *context) {
  const transfer_job &job = service.job;
  const struct limits &limits = job.limits;
  bool image = stored_kind_of(job.file) == stored_kind::image;
  std::string trusted_ca = service.state_dir + "/trusted-ca.pem";
  std::string known_hosts = service.state_dir + "/known_hosts";
  std::string private_key = service.state_dir + "/transfer-key";
  transfer_request request = {};
  request.url = job.url.c_str();
  request.upload = job.upload;
  request.trusted_ca = trusted_ca.c_str();
  request.known_hosts = known_hosts.c_str();
  request.private_key = private_key.c_str();
  request.connect_seconds = limits.transfer_connect_seconds;
  request.stall_seconds = limits.transfer_stall_seconds;
  request.total_seconds = image ? limits.transfer_image_seconds : limits.transfer_text_seconds;
  request.size_max = transfer_size_max(limits, job.file);
  request.may_be_empty = !job.upload && !image;
  request.data = job.data.data();
  request.size = job.data.size();
  request.take = take_data;
  request.progress = note_progress;
  request.context = context;
  transfer_result result;
  job.library->run(service.client, &request, &result);
  return result;
}

/* --- Downloads ------------------------------------------------------------------------------------------ */

/* What is wrong with a line may hold a word of any length from outside. */
static std::string clipped(const std::string &fault) {
  std::string text = fault.substr(0, fault_max);
  for (char &byte : text) {
    if (byte < 0x20 || byte > 0x7e) byte = '?';
  }
  return text;
}

static transfer_end not_stored(const std::string &reason) {
  return {OPEN_TRANSFER_STORAGE_FAILED, "the switch cannot store the file: " + reason};
}

/* Logs what is wrong with the file. */
static transfer_end bad_content(const transfer_job &job, const std::vector<std::string> &faults) {
  for (const std::string &fault : faults) {
    l7proc_logf(L7PROC_WARNING, 0, "transfer.cpp", __LINE__, "%s from %s, %s", job.file.c_str(),
                job.shown.c_str(), clipped(fault).c_str());
  }
  return {OPEN_TRANSFER_BAD_CONTENT, clipped(faults.front())};
}

/* Checks and stores what was fetched. */
static transfer_end store(transfer_service &service, const fetched_file &file) {
  const transfer_job &job = service.job;
  std::string text, error;
  set_code(service, OPEN_TRANSFER_CHECKING);
  if (fsync(file.fd) != 0) return not_stored(strerror(errno));
  std::vector<std::string> faults = transfer_faults(job.file, file, &text);
  if (!faults.empty()) return bad_content(job, faults);
  if (is_cancelled(service)) return {OPEN_TRANSFER_CANCELLED};
  if (!transfer_store(service.state_dir, job.file, file, text, job.shown, &error)) return not_stored(error);
  return {OPEN_TRANSFER_DONE};
}

static transfer_end download(transfer_service &service) {
  std::string path = part_path(service);
  unlink(path.c_str());
  file_guard part(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (part.fd < 0) return not_stored(strerror(errno));
  give_to_directory_owner(part.fd, path);
  transfer_context context = {service, part.fd};
  transfer_result result = move_data(service, &context);
  transfer_end end = {result.code, result.reason};
  if (context.write_failure != 0) end = not_stored(strerror(context.write_failure));
  if (end.code == OPEN_TRANSFER_DONE) {
    if (stored_kind_of(service.job.file) == stored_kind::image)
      log_notice(service.job, std::string("SHA-256 ") + result.sha256);
    end = store(service, {path, part.fd, result.sha256});
  }
  unlink(path.c_str());
  return end;
}

/* --- The thread ----------------------------------------------------------------------------------------- */

static transfer_end upload(transfer_service &service) {
  transfer_job &job = service.job;
  std::string error;
  if (!transfer_gather(*job.library, service.state_dir, job.file, &job.data, &error))
    return {OPEN_TRANSFER_FAILED, clipped(error)};
  transfer_context context = {service};
  transfer_result result = move_data(service, &context);
  return {result.code, result.reason};
}

/* Makes the end known. True when the switch is to reload now. */
static bool finish(transfer_service &service, const transfer_end &end) {
  std::unique_lock lock(service.lock);
  transfer_standing ended = latest(service);
  ended.code = end.code;
  ended.reason = end.reason;
  lock.unlock();
  log_notice(service.job, sentence(ended, service.job.upload));
  lock.lock();
  latest(service) = ended;
  service.job.library->close(service.client);
  service.client = nullptr;
  service.job = {};
  service.in_progress = false;
  service.changed.notify_all();
  return service.reload_when_done && end.code == OPEN_TRANSFER_DONE;
}

static void *run(void *argument) {
  transfer_service &service = *static_cast<transfer_service *>(argument);
  /* The starter holds the lock until all is in place. */
  { std::lock_guard started(service.lock); }
  log_notice(service.job, "begins");
  if (finish(service, service.job.upload ? upload(service) : download(service))) request_reload(OPEN_RELOAD);
  return nullptr;
}

/* --- Starting ------------------------------------------------------------------------------------------- */

static open_error_t cannot_start(const std::string &file, const std::string &reason) {
  l7proc_logf(L7PROC_WARNING, 0, "transfer.cpp", __LINE__, "the transfer of %s cannot be started: %s",
              file.c_str(), reason.c_str());
  return OPEN_E_ERROR;
}

static bool is_busy(transfer_service &service) {
  std::lock_guard guard(service.lock);
  return service.in_progress;
}

/* Reads the URL and sees that nothing else goes on. */
static open_error_t prepare(transfer_service &service, const std::string &url, transfer_job *job) {
  if (url.empty() || url.size() > url_max) return OPEN_E_PARAM;
  job->library = transfer_library();
  if (!job->library) return cannot_start(job->file, "the library of transfers is not there");
  char shown[url_max + 1];
  if (!job->library->url_read(url.c_str(), job->upload, shown, sizeof shown)) return OPEN_E_PARAM;
  job->url = url;
  job->shown = shown;
  return is_busy(service) ? OPEN_E_UNAVAIL : OPEN_E_NONE;
}

/* Starts the thread. Nothing else is in progress. */
static open_error_t begin(transfer_service &service, transfer_job job) {
  {
    locked_switch model;
    job.limits = model->limits;
  }
  std::lock_guard guard(service.lock);
  if (service.thread_made) pthread_join(service.thread, nullptr);
  service.thread_made = false;
  service.client = job.library->open();
  if (!service.client) return cannot_start(job.file, "no memory or no descriptors");
  if (!service_thread_start(&service.thread, "switch-transfer", run, &service)) {
    job.library->close(service.client);
    service.client = nullptr;
    return cannot_start(job.file, "no thread");
  }
  service.thread_made = service.in_progress = true;
  service.cancelled = service.reload_when_done = false;
  service.latest_is_upload = job.upload;
  latest(service) = {OPEN_TRANSFER_STARTING, "", 0, 0};
  service.job = std::move(job);
  return OPEN_E_NONE;
}

/* Whether there is no room for a script that is not there yet. */
static open_error_t check_room(const std::string &state_dir, std::string_view target) {
  if (stored_kind_of(target) != stored_kind::script || stored_exists(state_dir, target)) return OPEN_E_NONE;
  std::vector<std::string> names;
  std::string error;
  if (!scripts_list(state_dir, &names, &error)) return cannot_start(std::string(target), error);
  locked_switch model;
  return names.size() < model->limits.scripts ? OPEN_E_NONE : OPEN_E_FULL;
}

open_error_t transfer_download(const std::string &url, std::string_view target) {
  transfer_service &service = the_service();
  transfer_job job;
  if (stored_kind_of(target) == stored_kind::none) return OPEN_E_PARAM;
  job.file = target;
  open_error_t rc = prepare(service, url, &job);
  if (rc == OPEN_E_NONE) rc = check_room(service.state_dir, target);
  return rc == OPEN_E_NONE ? begin(service, std::move(job)) : rc;
}

open_error_t transfer_upload(const std::string &url, std::string_view source) {
  transfer_service &service = the_service();
  transfer_job job;
  if (!is_transfer_source(source)) return OPEN_E_PARAM;
  job.file = source;
  job.upload = true;
  open_error_t rc = prepare(service, url, &job);
  if (rc != OPEN_E_NONE) return rc;
  bool stored = stored_kind_of(source) != stored_kind::none;
  if (stored && !stored_exists(service.state_dir, source))
    return cannot_start(job.file, "there is no such file");
  return begin(service, std::move(job));
}

/* --- Around transfers ----------------------------------------------------------------------------------- */

bool transfer_reload_when_done() {
  transfer_service &service = the_service();
  std::unique_lock lock(service.lock);
  OPEN_TRANSFER_CODE_t code = latest(service).code;
  service.reload_when_done = service.in_progress;
  lock.unlock();
  if (code == OPEN_TRANSFER_DONE) request_reload(OPEN_RELOAD);
  return code != OPEN_TRANSFER_NONE;
}

void transfer_cancel() {
  transfer_service &service = the_service();
  std::unique_lock lock(service.lock);
  if (!service.in_progress) return;
  service.cancelled = true;
  service.job.library->cancel(service.client);
  service.changed.wait(lock, [&] { return !service.in_progress; });
}

void transfers_open(const std::string &state_dir) {
  transfer_service &service = the_service();
  std::lock_guard guard(service.lock);
  service.state_dir = state_dir;
  service.download = service.upload = {};
  service.latest_is_upload = false;
  unlink(part_path(service).c_str());
}

void transfers_close() {
  transfer_cancel();
  transfer_service &service = the_service();
  if (service.thread_made) pthread_join(service.thread, nullptr);
  service.thread_made = false;
}

} // namespace softswitch
