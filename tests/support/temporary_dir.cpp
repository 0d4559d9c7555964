/* A directory of a test's own: see temporary_dir.h. */
#include "tests/support/temporary_dir.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdlib.h>

TemporaryDir::TemporaryDir() {
  const char *parent = getenv("TMPDIR");
  path_ = std::string(parent == nullptr ? "/tmp" : parent) + "/kestrel-test-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) abort();
}

TemporaryDir::~TemporaryDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(none)";
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void overwrite_file(const std::string &path, const std::string &text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  EXPECT_TRUE(file.good()) << path;
}
