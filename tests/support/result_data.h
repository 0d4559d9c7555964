/* What stands inside rlt_data, put together in both formats at once:
 *
 *   expected_data(branch("interfaces", {entry(1, "interface", {number("ifNum", 1)})}))
 *
 * is the document with <interfaces><interface><ifNum>1</ifNum></interface></interfaces>, in JSON
 * "interfaces": { "1": { "ifNum": 1 } }. */
#ifndef KESTREL_TESTS_SUPPORT_RESULT_DATA_H
#define KESTREL_TESTS_SUPPORT_RESULT_DATA_H

#include "tests/support/answers.h"

#include <stdint.h>
#include <string>
#include <vector>

/* One node with all that is in it. */
struct result_node {
  std::string xml;
  std::string json;
};

/* Leaves. A text whose JSON key is not its tag name gives both. */
result_node number(const std::string &name, int64_t value);
result_node text(const std::string &name, const std::string &value);
result_node text(const std::string &key, const std::string &tag, const std::string &value);

/* Subtrees: one with a name, and an entry of a list. */
result_node branch(const std::string &name, const std::vector<result_node> &children);
result_node entry(unsigned position, const std::string &tag, const std::vector<result_node> &children);

/* The whole answer of an operation that succeeded with data, which may be empty. */
Answers expected_data(const std::vector<result_node> &data,
                      const std::string &message = "Get data successfully.");

#endif
