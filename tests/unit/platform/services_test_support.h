/* What the tests of the switch's services share: a state directory of their own and whole files. */
#ifndef KESTREL_TESTS_SERVICES_TEST_SUPPORT_H
#define KESTREL_TESTS_SERVICES_TEST_SUPPORT_H

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>
#include <vector>

/* A fresh directory that goes with its user. */
class temporary_directory {
public:
  temporary_directory() {
    char name[] = "/tmp/kestrel-test-XXXXXX";
    path = mkdtemp(name) ? name : "";
  }
  ~temporary_directory() {
    std::error_code ignored;
    if (!path.empty()) std::filesystem::remove_all(path, ignored);
  }
  temporary_directory(const temporary_directory &) = delete;
  temporary_directory &operator=(const temporary_directory &) = delete;
  std::string path;
};

inline std::string file_content(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

inline void write_file(const std::string &path, const std::string &content, mode_t mode = 0600) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
  chmod(path.c_str(), mode);
}

/* Permission bits; 0 when there is no such file. */
inline mode_t mode_of(const std::string &path) {
  struct stat found;
  return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

inline std::vector<std::string> lines_of(const std::string &text) {
  std::vector<std::string> lines;
  std::stringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

#endif
