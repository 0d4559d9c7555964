/* JSON as people like to read it: what fits stays on one line. */
#ifndef KESTREL_TOOLS_JSON_TEXT_H
#define KESTREL_TOOLS_JSON_TEXT_H

#include <json-c/json.h>
#include <memory>
#include <string>

/* Owns a value with all that it holds. */
struct put_json {
  void operator()(json_object *object) const { json_object_put(object); }
};
using json_owner = std::unique_ptr<json_object, put_json>;

/* The value, indented by two blanks a level, with a newline at its end. An object or array stands on one line
 * when the line has at most 110 columns. */
std::string json_text(json_object *value);

#endif
