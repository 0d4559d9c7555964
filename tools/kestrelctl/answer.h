/* The switch's answer: the document {"result": {"rlt_code", "rlt_mesg", "rlt_data"}}, in JSON or XML. */
#ifndef KESTREL_TOOLS_KESTRELCTL_ANSWER_H
#define KESTREL_TOOLS_KESTRELCTL_ANSWER_H

#include <json-c/json.h>
#include <memory>
#include <string>

struct json_release {
  void operator()(json_object *object) const { json_object_put(object); }
};
using json_holder = std::unique_ptr<json_object, json_release>;

enum result_code {
  RESULT_SUCCESS = 0,
  RESULT_SESSION_ENDED = 900,
  RESULT_NO_SESSION_KEY = 905,
};

struct answer {
  bool understood; /* false when the text is no such document */
  int64_t code;
  std::string message;
  json_holder document; /* of JSON: the whole; owns data */
  json_object *data;    /* of JSON: rlt_data; null when there is none */
};

answer read_json_answer(const std::string &text);
/* Code and message only. */
answer read_xml_answer(const std::string &text);

#endif
