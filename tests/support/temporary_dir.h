/* A directory of a test's own, removed with all that is in it. */
#ifndef KESTREL_TESTS_SUPPORT_TEMPORARY_DIR_H
#define KESTREL_TESTS_SUPPORT_TEMPORARY_DIR_H

#include <string>

class TemporaryDir {
public:
  TemporaryDir(); /* under $TMPDIR or /tmp; aborts when it cannot be made */
  ~TemporaryDir();
  TemporaryDir(const TemporaryDir &) = delete;
  TemporaryDir &operator=(const TemporaryDir &) = delete;

  const std::string &path() const { return path_; }
  std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
  std::string path_;
};

/* A file's content; "(none)" when it cannot be read. */
std::string read_file(const std::string &path);
/* Replaces a file's content in place. Reports a failure when it cannot. */
void overwrite_file(const std::string &path, const std::string &text);

#endif
