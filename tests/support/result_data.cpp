/* The inside of rlt_data in both formats: see result_data.h. */
#include "tests/support/result_data.h"

static result_node leaf(const std::string &key, const std::string &tag, const std::string &xml,
                        const std::string &json) {
  return {"<" + tag + ">" + xml + "</" + tag + ">", "\"" + key + "\": " + json};
}

static std::string joined_xml(const std::vector<result_node> &nodes) {
  std::string text;
  for (const result_node &node : nodes) text += node.xml;
  return text;
}

static std::string joined_json(const std::vector<result_node> &nodes) {
  std::string text;
  for (const result_node &node : nodes) text += (text.empty() ? "" : ", ") + node.json;
  return text;
}

static result_node subtree(const std::string &key, const std::string &tag,
                           const std::vector<result_node> &children) {
  std::string json = joined_json(children);
  return leaf(key, tag, joined_xml(children), json.empty() ? "{ }" : "{ " + json + " }");
}

result_node number(const std::string &name, int64_t value) {
  std::string digits = std::to_string(value);
  return leaf(name, name, digits, digits);
}

result_node text(const std::string &name, const std::string &value) {
  return text(name, name, value);
}

result_node text(const std::string &key, const std::string &tag, const std::string &value) {
  return leaf(key, tag, value, json_text(value));
}

result_node branch(const std::string &name, const std::vector<result_node> &children) {
  return subtree(name, name, children);
}

result_node entry(unsigned position, const std::string &tag, const std::vector<result_node> &children) {
  return subtree(std::to_string(position), tag, children);
}

Answers expected_data(const std::vector<result_node> &data, const std::string &message) {
  result_node result =
      branch("result", {number("rlt_code", 0), text("rlt_mesg", message), branch("rlt_data", data)});
  return {result.xml + "\n", "{ " + result.json + " }\n"};
}
