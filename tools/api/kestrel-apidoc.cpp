/* Writes what is made of the help document for people and programs: `kestrel-apidoc FOLDER` writes api.md and
 * openapi.json there. The build runs it. */
#include "tools/api/openapi_document.h"
#include "tools/api/reference_page.h"

#include "modules/rest_help_document.h"

#include <stdio.h>

static bool write_file(const std::string &path, const std::string &text) {
  FILE *file = fopen(path.c_str(), "we");
  const bool written = file != nullptr && fwrite(text.data(), 1, text.size(), file) == text.size();
  const bool closed = file != nullptr && fclose(file) == 0;
  if (!written || !closed) perror(path.c_str());
  return written && closed;
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  std::string error;
  const std::vector<api_module> modules = describe_api(restGlobalHelpDocText, &error);
  const std::string openapi = error.empty() ? openapi_document(modules, KESTREL_VERSION, &error) : "";
  if (!error.empty()) {
    fprintf(stderr, "modules/help: %s\n", error.c_str());
    return 1;
  }
  const std::string folder = argv[1];
  const bool done = write_file(folder + "/openapi.json", openapi) &&
                    write_file(folder + "/api.md", reference_page(modules));
  return done ? 0 : 1;
}
