/* A small help document with all that the documents made of it tell apart. */
#ifndef KESTREL_TESTS_UNIT_TOOLS_SAMPLE_DOCUMENT_H
#define KESTREL_TESTS_UNIT_TOOLS_SAMPLE_DOCUMENT_H

#include "tools/api/api_description.h"

#include <gtest/gtest.h>

/* The text of an API with these parameter lines, `sessionkey` and `format` put behind them. */
inline std::string api_text(const std::string &name, const std::string &method, const std::string &uri,
                            std::initializer_list<std::string> parameters = {},
                            const std::string &key = "Session key that logging in returned.",
                            const std::string &formats = "{xml | json}") {
  std::string text = "==API-START\n api_name=" + name + "\n api_desc=Does it: " + name +
                     ".\n api_uri=" + uri + "\n api_method=" + method + "\n=API-PARAM-START\n";
  for (const std::string &parameter : parameters) text += " param=" + parameter + "\n";
  return text + " param=sessionkey@" + key + " [String of 32 characters]\n" +
         " param=format@Specified return format. " + formats + "\n=API-PARAM-END\n==API-END\n";
}

inline std::string module_text(const std::string &name, const std::string &apis) {
  return "===MODULE-START\n module_name=" + name + "\n module_desc=About | " + name + ".\n" + apis +
         "===MODULE-END\n";
}

inline std::vector<api_module> described(const std::string &document) {
  std::string error;
  std::vector<api_module> modules = describe_api(document.c_str(), &error);
  EXPECT_EQ(error, "");
  return modules;
}

#endif
