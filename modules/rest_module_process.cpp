/* Memory and CPU. The platform's CPU texts are pieces of "NAME:VALUE" between semicolons, by line for the
 * processes. */
#include "modules/rest_module_process.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_proc.h"

#include <stdlib.h>
#include <string>
#include <string_view>

enum { TASK_TEXT_SIZE = 16384 };

/* --- Memory --------------------------------------------------------------------------------------------- */

int api_process_get_memory(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t total = 0, alloc = 0, unused = 0;
  open_error_t rc = rpcclt_openapiProcMemInfoGet(client_handle, &total, &alloc, &unused);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  append_tree_number(tree, "total_memory", total);
  append_tree_number(tree, "alloc_memory", alloc);
  append_tree_number(tree, "free_memory", unused);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Cutting texts -------------------------------------------------------------------------------------- */

/* Takes the text up to a separator off the front, the separator with it; all of it when there is none. */
static std::string_view take_until(std::string_view *text, char separator) {
  size_t end = text->find(separator);
  std::string_view piece = text->substr(0, end);
  text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
  return piece;
}

/* The next piece that is not empty; empty at the end of the text. */
static std::string_view take_piece(std::string_view *text, char separator) {
  std::string_view piece;
  while (piece.empty() && !text->empty()) piece = take_until(text, separator);
  return piece;
}

static void append_text(node_t *node, std::string_view name, std::string_view value) {
  std::string key(name), text(value);
  append_tree_string(node, key.c_str(), key.c_str(), text.c_str());
}

/* --- CPU ------------------------------------------------------------------------------------------------ */

/* "last_5s: 3%;last_60s: 1%": the colon stays with the value. */
static void append_total(node_t *tree, std::string_view text) {
  node_t *total = append_branch(tree, "total_CPU_utilization");
  for (std::string_view piece = take_piece(&text, ';'); !piece.empty(); piece = take_piece(&text, ';')) {
    size_t colon = piece.find(':');
    if (colon == 0) continue;
    std::string_view value = colon == std::string_view::npos ? "" : piece.substr(colon);
    append_text(total, piece.substr(0, colon), value.substr(0, value.find_first_of("\t\n")));
  }
}

/* "last_5s:3%;last_60s:1%": as many as there are periods. */
static void append_periods(node_t *process, std::string_view text, uint32_t periods) {
  for (uint32_t i = 0; i < periods && !text.empty(); i++) {
    std::string_view name = take_until(&text, ':');
    std::string_view value = take_until(&text, ';');
    if (name.empty() || value.empty()) return;
    append_text(process, name, value);
  }
}

/* "PID,NAME,PERIODS" */
static void append_process(node_t *process, std::string_view line, uint32_t periods) {
  std::string pid(take_until(&line, ','));
  append_tree_int(process, "PID", "PID", text_to_int(pid.c_str()));
  append_text(process, "name", take_until(&line, ','));
  append_periods(process, line.substr(0, line.find('\t')), periods);
}

static void append_processes(node_t *tree, std::string_view text, uint32_t periods) {
  node_t *processes = append_branch(tree, "processes_CPU_utilization");
  uint32_t n = 1;
  for (std::string_view line = take_piece(&text, '\n'); !line.empty(); line = take_piece(&text, '\n'))
    append_process(append_entry(processes, n++, "process"), line, periods);
}

int api_process_get_cpu(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t periods = 0, count = 0; /* the processes are counted by their lines */
  platform_text_256 total;
  open_error_t rc = rpcclt_openapiProcTotalCpuUtilGet(client_handle, &periods, &total.desc);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  /* One byte more than the platform may fill, so that its text always ends. */
  heap_array<char> text(static_cast<char *>(calloc(TASK_TEXT_SIZE + 1, 1)));
  if (!text) return fail(conn, OPEN_E_INTERNAL, nullptr);

  node_t *tree = new_tree();
  append_total(tree, total.text);
  open_buffdesc tasks = {TASK_TEXT_SIZE, text.get()};
  rc = rpcclt_openapiProcTaskCpuUtilGet(client_handle, &count, &tasks);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  append_processes(tree, text.get(), periods);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/process/memory%s", ROUTE_EXACT, nullptr, api_process_get_memory},
    {REQUEST_METHOD_GET, "/process/cpu%s", ROUTE_EXACT, nullptr, api_process_get_cpu},
};

int process_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> process_api_routes(void) {
  return routes;
}
