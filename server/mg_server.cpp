/* The server object: creation, options, polling, listeners, end. */
#include "server/http_conn.h"
#include "server/mg_child.h"

#include <fcntl.h>
#include <openssl/ssl.h>
#include <pwd.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* Name and default of each option, in the order of enum mg_option. */
/* clang-format off */
static const char *option_table[2 * MG_NUM_OPTIONS + 1] = {
    "access_control_list", nullptr,
    "access_log_file", nullptr,
    "auth_domain", "mydomain.com",
    "cgi_interpreter", nullptr,
    "cgi_pattern", "**.cgi$|**.pl$|**.php$",
    "dav_auth_file", nullptr,
    "document_root", nullptr,
    "enable_directory_listing", "yes",
    "enable_proxy", nullptr,
    "extra_mime_types", nullptr,
    "global_auth_file", nullptr,
    "hide_files_patterns", nullptr,
    "hexdump_file", nullptr,
    "index_files", "index.html,index.htm,index.shtml,index.cgi,index.php",
    "listening_port", nullptr,
    "run_as_user", nullptr,
    "ssi_pattern", "**.shtml$|**.shtm$",
    "url_rewrites", nullptr,
    nullptr,
};
/* clang-format on */

const char **mg_get_valid_option_names(void) {
  return option_table;
}

static int option_index(const char *name) {
  for (int i = 0; i < MG_NUM_OPTIONS; i++) {
    if (strcmp(option_table[2 * i], name) == 0) return i;
  }
  return -1;
}

struct mg_server *mg_create_server(void *server_data, mg_handler_t handler) {
  auto *server = static_cast<mg_server *>(calloc(1, sizeof(mg_server)));
  if (server == nullptr) return nullptr;
  ns_mgr_init(&server->ns_mgr, server_data);
  for (int i = 0; i < MG_NUM_OPTIONS; i++) {
    const char *value = option_table[2 * i + 1];
    if (value != nullptr) server->config_options[i] = strdup(value);
  }
  server->event_handler = handler;
  return server;
}

void mg_destroy_server(struct mg_server **server) {
  if (server == nullptr || *server == nullptr) return;
  ns_mgr_free(&(*server)->ns_mgr);
  end_children_at_once();
  for (char *value : (*server)->config_options) free(value);
  free(*server);
  *server = nullptr;
}

time_t mg_poll_server(struct mg_server *server, int milliseconds) {
  const time_t now = ns_mgr_poll(&server->ns_mgr, milliseconds);
  reap_children();
  return now;
}

void *mg_start_thread(void *(*fn)(void *), void *param) {
  return ns_start_thread(fn, param);
}

/* --- Options ------------------------------------------------------------------------------------------- */

const char *mg_get_option(const struct mg_server *server, const char *name) {
  const int i = option_index(name);
  if (i < 0) return nullptr;
  const char *value = server->config_options[i];
  return value == nullptr ? "" : value;
}

static void replace_option(struct mg_server *server, int i, const char *value) {
  char *copy = value == nullptr ? nullptr : strdup(value);
  free(server->config_options[i]);
  server->config_options[i] = copy;
}

/* Binds one entry of a list of addresses. The option then reads as the port that was bound. */
static bool bind_entry(struct mg_server *server, const struct vec *entry) {
  char *address = strndup(entry->ptr, entry->len);
  if (address == nullptr) return false;
  const struct ns_connection *listener = ns_bind(&server->ns_mgr, address, mg_ev_handler, nullptr);
  free(address);
  if (listener == nullptr) return false;
  char port[8];
  ns_sock_to_str(listener->sock, port, sizeof(port), 2);
  replace_option(server, LISTENING_PORT, port);
  return true;
}

static const char *bind_ports(struct mg_server *server, const char *list) {
  struct vec entry;
  while ((list = next_option(list, &entry, nullptr)) != nullptr) {
    if (!bind_entry(server, &entry)) return "Cannot bind to port";
  }
  return nullptr;
}

static const char *run_as(const char *user) {
  const struct passwd *pw = getpwnam(user);
  if (pw == nullptr) return "Unknown user";
  if (setgid(pw->pw_gid) != 0) return "setgid() failed";
  if (setuid(pw->pw_uid) != 0) return "setuid() failed";
  return nullptr;
}

const char *mg_set_option(struct mg_server *server, const char *name, const char *value) {
  const int i = option_index(name);
  if (i < 0) return "No such option";
  const char *old = server->config_options[i];
  if (old == value || (old != nullptr && value != nullptr && strcmp(old, value) == 0)) return nullptr;

  const bool unset = value == nullptr || value[0] == '\0';
  replace_option(server, i, unset ? nullptr : value);
  if (i == HEXDUMP_FILE) server->ns_mgr.hexdump_file = server->config_options[i];
  if (unset) return nullptr;
  if (i == LISTENING_PORT) return bind_ports(server, value);
  if (i == RUN_AS_USER) return run_as(value);
  return nullptr;
}

/* --- Shared listeners ---------------------------------------------------------------------------------- */

/* The copy is a connection of its own over the same open socket: it has its own descriptor, buffers and share
 * of the TLS context, so that either server can be destroyed without harm to the other. */
static void copy_listener(const struct ns_connection *original, struct ns_mgr *to) {
  const sock_t sock = fcntl(original->sock, F_DUPFD_CLOEXEC, 0);
  if (sock == -1) return;
  struct ns_connection *copy = ns_add_sock(to, sock, original->callback, original->user_data);
  if (copy == nullptr) {
    close(sock);
    return;
  }
  copy->sa = original->sa;
  copy->flags = original->flags;
  copy->proto_data = original->proto_data;
  copy->last_io_time = original->last_io_time;
  copy->ssl_ctx = original->ssl_ctx;
  if (copy->ssl_ctx != nullptr) SSL_CTX_up_ref(copy->ssl_ctx);
}

void mg_copy_listeners(struct mg_server *from, struct mg_server *to) {
  for (struct ns_connection *c = ns_next(&from->ns_mgr, nullptr); c != nullptr;
       c = ns_next(&from->ns_mgr, c)) {
    if (c->flags & CONN_LISTENING) copy_listener(c, &to->ns_mgr);
  }
}
