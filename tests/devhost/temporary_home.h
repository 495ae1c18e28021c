// A home of a test's own, removed with it.
#ifndef TESTS_DEVHOST_TEMPORARY_HOME_H
#define TESTS_DEVHOST_TEMPORARY_HOME_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

class TemporaryHome {
 public:
  TemporaryHome() : path_(testing::TempDir() + "/home.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp " + path_);
    for (const char* folder : {"/cfg", "/tables"})
      std::filesystem::create_directory(path_ + folder);
  }
  ~TemporaryHome() { std::filesystem::remove_all(path_); }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  const std::string& path() const { return path_; }

  // Writes a file and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(path_ + "/" + name) << text;
    return path_ + "/" + name;
  }

 private:
  std::string path_;
};

#endif  // TESTS_DEVHOST_TEMPORARY_HOME_H
