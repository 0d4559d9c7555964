#include "tools/kestrelctl/answer.h"

#include "tools/kestrelctl/text.h"

#include <charconv>
#include <string.h>
#include <string_view>

/* --- JSON ---------------------------------------------------------------------------------------------- */

struct tokener_release {
  void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};

/* The one value that a text holds; null for anything else. */
static json_holder parse_json(std::string_view text) {
  const std::unique_ptr<json_tokener, tokener_release> tokener(json_tokener_new());
  text = trimmed(text);
  if (tokener == nullptr || text.size() > INT32_MAX) return nullptr;
  json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT);
  json_holder value(json_tokener_parse_ex(tokener.get(), text.data(), static_cast<int>(text.size())));
  const bool whole = json_tokener_get_error(tokener.get()) == json_tokener_success &&
                     json_tokener_get_parse_end(tokener.get()) == text.size();
  return whole ? std::move(value) : nullptr;
}

/* A member of a type; null when there is none. */
static json_object *member(json_object *object, const char *name, json_type type) {
  json_object *found = nullptr;
  if (!json_object_is_type(object, json_type_object) || !json_object_object_get_ex(object, name, &found))
    return nullptr;
  return json_object_is_type(found, type) ? found : nullptr;
}

answer read_json_answer(const std::string &text) {
  answer read = {};
  read.document = parse_json(text);
  json_object *result = member(read.document.get(), "result", json_type_object);
  json_object *code = member(result, "rlt_code", json_type_int);
  json_object *message = member(result, "rlt_mesg", json_type_string);
  if (code == nullptr || message == nullptr) return read;
  read.understood = true;
  read.code = json_object_get_int64(code);
  read.message.assign(json_object_get_string(message),
                      static_cast<size_t>(json_object_get_string_len(message)));
  read.data = member(result, "rlt_data", json_type_object);
  return read;
}

/* --- XML ----------------------------------------------------------------------------------------------- */

/* Takes "<tag>text</tag>" from the beginning. */
static bool take_element(std::string_view *text, const std::string &tag, std::string_view *content) {
  const std::string begin = "<" + tag + ">", end = "</" + tag + ">";
  const size_t end_at = text->find(end);
  if (!text->starts_with(begin) || end_at == text->npos) return false;
  *content = text->substr(begin.size(), end_at - begin.size());
  text->remove_prefix(end_at + end.size());
  return true;
}

answer read_xml_answer(const std::string &text) {
  answer read = {};
  std::string_view rest = trimmed(text), code, message;
  if (!rest.starts_with("<result>") || !rest.ends_with("</result>")) return read;
  rest.remove_prefix(strlen("<result>"));
  if (!take_element(&rest, "rlt_code", &code) || !take_element(&rest, "rlt_mesg", &message)) return read;
  const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), read.code);
  read.understood = error == std::errc() && end == code.data() + code.size();
  read.message = message;
  return read;
}
