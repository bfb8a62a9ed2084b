// A home folder of the test's own, with the environment that leads there, gone with the test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace marbelot {

class TemporaryHome {
 public:
  TemporaryHome() {
    std::string pattern = "/tmp/marbelot-test-XXXXXX";
    path_ = mkdtemp(pattern.data());
    setenv("HOME", path_.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (path_ + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (path_ + "/data").c_str(), 1);
    setenv("TMPDIR", path_.c_str(), 1);
    unsetenv("XDG_CURRENT_DESKTOP");
  }
  ~TemporaryHome() { std::filesystem::remove_all(path_); }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void writeFile(const std::string& path, const std::string& bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace marbelot
